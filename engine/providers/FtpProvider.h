#pragma once

#include "engine/files/Provider.h"
#include "engine/providers/curl/FtpPlace.h"

namespace trevane {

/// Controllers over FTP, also over TLS. The store of `place`, which may be null, outlives every file system
/// that is opened.
[[nodiscard]] Provider FtpProvider(FtpPlace place);

}  // namespace trevane

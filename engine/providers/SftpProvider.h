#pragma once

#include "engine/files/Provider.h"

namespace trevane {

class SecretStore;

/// Controllers over SSH. `store`, which may be null, outlives every file system that is opened.
[[nodiscard]] Provider SftpProvider(SecretStore* store);

}  // namespace trevane

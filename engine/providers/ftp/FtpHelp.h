#pragma once

#include "engine/model/ConnectionHelp.h"

namespace trevane {

/// What ReadFtpSettings reads, for people.
[[nodiscard]] ConnectionHelp FtpHelp();

}  // namespace trevane

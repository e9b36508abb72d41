#pragma once

#include "engine/model/ConnectionHelp.h"

namespace trevane {

/// What ReadSftpSettings reads, for people.
[[nodiscard]] ConnectionHelp SftpHelp();

}  // namespace trevane

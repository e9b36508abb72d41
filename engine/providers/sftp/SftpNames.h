#pragma once

#include "engine/providers/network/ServerNames.h"

namespace trevane::sftp {

using Names = ServerNames;

}  // namespace trevane::sftp

#pragma once

#include "engine/providers/LocalFileSystem.h"
#include "engine/providers/linux/FileStatus.h"

namespace trevane {

/// What the sources of LocalFileSystem on this system share.
struct LocalFileSystem::Native {
  local::Credentials user = local::Credentials::Current();
  ItemObserver observer;
};

}  // namespace trevane

#pragma once

#include "engine/providers/local/LeftoverLog.h"
#include "engine/providers/local/LocalFileSystem.h"

namespace trevane {

/// What the sources of LocalFileSystem on this system share.
struct LocalFileSystem::Native {
  LeftoverLog leftovers;
};

}  // namespace trevane

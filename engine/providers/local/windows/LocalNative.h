#pragma once

#include "engine/providers/local/LeftoverLog.h"
#include "engine/providers/local/LocalFileSystem.h"

namespace trevane {

/// The state of a LocalFileSystem on this system.
struct LocalFileSystem::Native {
  LeftoverLog leftovers;
};

}  // namespace trevane

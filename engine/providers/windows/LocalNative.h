#pragma once

#include "engine/providers/LeftoverLog.h"
#include "engine/providers/LocalFileSystem.h"

namespace trevane {

/// What the sources of LocalFileSystem on this system share.
struct LocalFileSystem::Native {
  ItemObserver observer;
  LeftoverLog leftovers;
};

}  // namespace trevane

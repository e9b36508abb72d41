#include "engine/substitute/SubstituteEngine.h"

#include "engine/substitute/SubstituteWorkspace.h"
#include "engine/substitute/SubstituteWorkspaces.h"

namespace trevane {

SubstituteEngine::SubstituteEngine(ProviderTable providers)
    : workspaces_(std::make_shared<SubstituteWorkspaces>(
          std::make_shared<SubstituteWorkspace>(std::move(providers)))) {}

}  // namespace trevane

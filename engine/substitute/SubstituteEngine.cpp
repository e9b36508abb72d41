#include "engine/substitute/SubstituteEngine.h"

#include "engine/substitute/SubstituteWorkspace.h"
#include "engine/substitute/SubstituteWorkspaces.h"

namespace trevane {

SubstituteEngine::SubstituteEngine(ProviderTable providers, RemoteContext* remote)
    : workspaces_(std::make_shared<SubstituteWorkspaces>(
          std::make_shared<SubstituteWorkspace>(std::move(providers), remote))) {}

}  // namespace trevane

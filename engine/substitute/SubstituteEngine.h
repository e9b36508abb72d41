#pragma once

#include "engine/files/Provider.h"
#include "engine/model/IxoEngine.h"

namespace trevane {

/// The whole object tree over any file system: each provider of the table brings its FileSystem, and all
/// rules that do not depend on the file system are here.
class SubstituteEngine final : public IxoEngine {
 public:
  explicit SubstituteEngine(ProviderTable providers);
  SubstituteEngine(const SubstituteEngine&) = delete;
  SubstituteEngine& operator=(const SubstituteEngine&) = delete;

  [[nodiscard]] std::shared_ptr<IxoWorkspaces> Workspaces() override { return workspaces_; }

 private:
  std::shared_ptr<IxoWorkspaces> workspaces_;
};

}  // namespace trevane

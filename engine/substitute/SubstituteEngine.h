#pragma once

#include "engine/files/Provider.h"
#include "engine/model/IxoEngine.h"

namespace trevane {

struct RemoteContext;

/// The whole object tree over any file system: each provider of the table brings its FileSystem, and all
/// rules that do not depend on the file system are here.
class SubstituteEngine final : public IxoEngine {
 public:
  /// `remote` is for providers that are slow, and outlives the engine; without it their calls are waited for
  /// without letting any event run, and they can ask the user nothing.
  explicit SubstituteEngine(ProviderTable providers, RemoteContext* remote = nullptr);
  SubstituteEngine(const SubstituteEngine&) = delete;
  SubstituteEngine& operator=(const SubstituteEngine&) = delete;

  [[nodiscard]] std::shared_ptr<IxoWorkspaces> Workspaces() override { return workspaces_; }

 private:
  std::shared_ptr<IxoWorkspaces> workspaces_;
};

}  // namespace trevane

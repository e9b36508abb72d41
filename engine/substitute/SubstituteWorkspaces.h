#pragma once

#include "engine/model/IxoWorkspaces.h"

namespace trevane {

/// Holds the default workspace and no other.
class SubstituteWorkspaces final : public IxoWorkspaces {
 public:
  explicit SubstituteWorkspaces(std::shared_ptr<IxoWorkspace> workspace) : workspace_(std::move(workspace)) {}

  [[nodiscard]] std::shared_ptr<IxoWorkspace> Item(const Variant& index) override;

 private:
  std::shared_ptr<IxoWorkspace> workspace_;
};

}  // namespace trevane

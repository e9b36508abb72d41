#pragma once

#include "base/Variant.h"

#include <memory>

namespace trevane {

class IxoWorkspace;

class IxoWorkspaces {
 public:
  virtual ~IxoWorkspaces() = default;

  /// The workspace at a position; the 16-bit integer 0 is the default workspace.
  [[nodiscard]] virtual std::shared_ptr<IxoWorkspace> Item(const Variant& index) = 0;
};

}  // namespace trevane

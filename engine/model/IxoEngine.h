#pragma once

#include <memory>

namespace trevane {

class IxoWorkspaces;

/// The root of the engine's object tree. Objects are reference-counted; every member that fails throws
/// RunTimeError, and every call is made from the window's thread.
class IxoEngine {
 public:
  virtual ~IxoEngine() = default;

  [[nodiscard]] virtual std::shared_ptr<IxoWorkspaces> Workspaces() = 0;
};

}  // namespace trevane

#pragma once

#include <cstddef>
#include <memory>

namespace trevane {

class IxoController;

/// Controllers that are opened together: see IxoWorkspace::OpenControllers, whose workspace outlives it. Its
/// destructor ends those that were not taken, and waits for none.
class ControllerOpening {
 public:
  ControllerOpening() = default;
  virtual ~ControllerOpening() = default;
  ControllerOpening(const ControllerOpening&) = delete;
  ControllerOpening& operator=(const ControllerOpening&) = delete;

  /// Waits for the controller of the request at that position, counted from 0, and adds it to the workspace;
  /// each at most once. Fails as IxoWorkspace::AddController, and with error::kCancelled for one that was not
  /// open when the wait was cancelled, or Cancel was called.
  [[nodiscard]] virtual std::shared_ptr<IxoController> Take(size_t position) = 0;

  /// Ends all that are not open yet, as the cancel of a wait does. Those that are can still be taken.
  virtual void Cancel() = 0;
};

}  // namespace trevane

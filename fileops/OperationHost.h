#pragma once

#include "prompts/ShowFailure.h"

#include <memory>

namespace trevane {

/// The services of the main window for long operations.
class OperationHost : public ReasonLine {
 public:
  /// A controller is waited for, or a command lets events run: nothing else may begin.
  [[nodiscard]] virtual bool IsWaiting() const { return false; }
  /// A command begins, and ends with the returned object: so long what was learnt of slow file systems holds.
  [[nodiscard]] virtual std::shared_ptr<void> BeginCommand() { return nullptr; }
  /// A disabled main window takes no input; the gauge above it does.
  virtual void SetMainWindowEnabled(bool enabled) = 0;
  /// Lets pending window events run, once.
  virtual void LetEventsRun() = 0;
  /// Lets the window paint, without letting any input through.
  virtual void LetPaintingRun() = 0;
  /// The hourglass, and the usual pointer again.
  virtual void SetBusyPointer(bool busy) = 0;
};

}  // namespace trevane

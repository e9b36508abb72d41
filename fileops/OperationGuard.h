#pragma once

#include "prompts/UserPrompts.h"
#include "views/navigation/Navigator.h"

#include <QScopedValueRollback>

#include <functional>
#include <utility>

namespace trevane {

/// Lets one operation run at a time, and none while a folder is being displayed, a controller is waited for
/// or the program is ending. Operations let window events through, and so could begin inside one another.
class OperationGuard final {
 public:
  /// Both outlive this. `isWaiting` tells whether a controller is waited for; none is never.
  OperationGuard(
      const Navigator& navigator, const UserPrompts& prompts,
      std::function<bool()> isWaiting = [] { return false; })
      : navigator_(navigator), prompts_(prompts), isWaiting_(std::move(isWaiting)) {}
  OperationGuard(const OperationGuard&) = delete;
  OperationGuard& operator=(const OperationGuard&) = delete;

  [[nodiscard]] bool IsRunning() const noexcept { return running_; }
  /// An operation on files runs; connecting and disconnecting are none.
  [[nodiscard]] bool IsFileOperationRunning() const noexcept { return fileOperation_; }
  [[nodiscard]] bool IsEnding() const { return prompts_.IsEnding(); }
  /// No command of any kind may begin: it would call the engine within one of its calls.
  [[nodiscard]] bool IsWaiting() const { return isWaiting_(); }
  [[nodiscard]] bool MayBegin() const {
    return !running_ && !navigator_.IsDisplaying() && !IsEnding() && !IsWaiting();
  }

  /// Calls `operation`, unless it may not begin now.
  template <typename Operation>
  void Run(Operation&& operation, bool onFiles) {
    if (!MayBegin()) {
      return;
    }
    const QScopedValueRollback running(running_, true);
    const QScopedValueRollback fileOperation(fileOperation_, onFiles);
    operation();
  }

 private:
  const Navigator& navigator_;
  const UserPrompts& prompts_;
  std::function<bool()> isWaiting_;
  bool running_ = false;
  bool fileOperation_ = false;
};

}  // namespace trevane

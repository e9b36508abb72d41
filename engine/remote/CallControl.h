#pragma once

#include <QString>

#include <functional>
#include <memory>

namespace trevane {

class UserPrompts;

/// What the calls of a provider on a controller's thread must know of the window that waits for them. It is
/// the same object for all calls of a controller, and outlives the provider. Every member may be called from
/// any thread of the provider.
class CallControl {
 public:
  CallControl() = default;
  virtual ~CallControl() = default;
  CallControl(const CallControl&) = delete;
  CallControl& operator=(const CallControl&) = delete;

  /// The call that runs is to end as soon as it can, with error::kCancelled. Also true once the connection
  /// has been given up, where no call runs: what a provider still sends as it ends has no answer to wait for.
  [[nodiscard]] virtual bool IsCancelled() const = 0;

  /// Calls `wake` on another thread when the running call is cancelled, or, where none runs, the connection
  /// is given up; at once if it is already: to end a system call that waits. The registration ends with the
  /// returned object; `wake` is not running then.
  [[nodiscard]] virtual std::shared_ptr<void> OnCancel(std::function<void()> wake) = 0;

  /// Bytes have come or gone: silence is counted from now.
  virtual void Alive() = 0;

  /// What is waited for at the moment, as people say it, in place of what the call is for; an empty text ends
  /// that. Nobody may be there to see it.
  virtual void Tell(const QString& /*what*/) {}

  /// Runs `question` on the window's thread and waits for it; silence is not counted meanwhile. False, and
  /// `question` does not run, where nobody waits any more: the answer is Cancel then.
  [[nodiscard]] virtual bool AskUser(const std::function<void(UserPrompts& prompts)>& question) = 0;
};

}  // namespace trevane

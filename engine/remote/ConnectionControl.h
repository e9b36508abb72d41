#pragma once

#include "engine/remote/CallControl.h"
#include "engine/remote/RunningCall.h"

#include <mutex>
#include <vector>

namespace trevane {

class QuestionDesk;
struct RemoteContext;

/// What one connection's provider knows of the window: the call that its thread is at, and those that stand
/// behind it.
class ConnectionControl final : public CallControl, public std::enable_shared_from_this<ConnectionControl> {
 public:
  explicit ConnectionControl(RemoteContext& context);

  /// The window's thread: a call stands in the thread's queue from here on.
  void Add(const std::shared_ptr<RunningCall>& call);
  /// The worker, around each call.
  void Begin(const std::shared_ptr<RunningCall>& call);
  void End(const std::shared_ptr<RunningCall>& call);

  /// Any thread: whoever waits for one of the calls waits for those before it, too.
  void CancelAll();
  /// Any thread: nothing that the connection still does is waited for.
  void GiveUp();

  [[nodiscard]] bool IsCancelled() const override;
  [[nodiscard]] std::shared_ptr<void> OnCancel(std::function<void()> wake) override;
  void Alive() override;
  void Tell(const QString& what) override;
  [[nodiscard]] bool AskUser(const std::function<void(UserPrompts& prompts)>& question) override;

 private:
  [[nodiscard]] std::shared_ptr<RunningCall> Current() const;

  // The window's, for work that runs there.
  WindowQueue* const queue_;
  UserPrompts* const prompts_;

  const std::shared_ptr<WindowQueue::Poster> poster_;
  const std::shared_ptr<QuestionDesk> desk_;
  /// Stands for the connection itself, which is at work also between calls, and when it ends.
  const std::shared_ptr<RunningCall> connection_;
  mutable std::mutex mutex_;
  std::shared_ptr<RunningCall> current_;
  std::vector<std::shared_ptr<RunningCall>> open_;
};

}  // namespace trevane

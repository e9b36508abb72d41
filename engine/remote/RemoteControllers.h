#pragma once

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <vector>

namespace trevane {

class ControllerLink;

/// All connections that have threads of their own.
class RemoteControllers final {
 public:
  /// The threads that run. They share it, since one that was left behind may outlive all else.
  class Count final {
   public:
    void Begin();
    void End();
    /// False when some were still running after `limit`.
    [[nodiscard]] bool WaitForNone(std::chrono::milliseconds limit);

   private:
    std::mutex mutex_;
    std::condition_variable changed_;
    int running_ = 0;
  };

  RemoteControllers() : running_(std::make_shared<Count>()) {}
  RemoteControllers(const RemoteControllers&) = delete;
  RemoteControllers& operator=(const RemoteControllers&) = delete;

  [[nodiscard]] const std::shared_ptr<Count>& Running() const noexcept { return running_; }
  void Add(const std::shared_ptr<ControllerLink>& link);

  /// For the end of the program, on the window's thread: tells all threads to end and gives them `limit`
  /// together. Those that are not back by then are left behind with all that they hold. Every later call of a
  /// controller fails with error::kCancelled. False when some were left behind.
  bool StopAll(std::chrono::milliseconds limit);
  [[nodiscard]] bool AreStopped() const noexcept { return stopped_; }

 private:
  const std::shared_ptr<Count> running_;
  std::vector<std::weak_ptr<ControllerLink>> links_;
  bool stopped_ = false;
};

}  // namespace trevane

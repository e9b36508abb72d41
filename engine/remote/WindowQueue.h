#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>

namespace trevane {

/// The work that controllers' threads hand over to the window's thread, in order: entries of a listing,
/// progress, questions. One for the whole program. It outlives every thread that posts.
class WindowQueue final {
 public:
  using Work = std::function<void()>;

  WindowQueue() = default;
  WindowQueue(const WindowQueue&) = delete;
  WindowQueue& operator=(const WindowQueue&) = delete;

  /// From any thread. `work` throws nothing.
  void Post(Work work);
  /// From any thread: wakes the window's thread without work.
  void Wake();

  /// The window's thread. Runs what was posted, also what is posted meanwhile; work that lets events run may
  /// call this again. True when there was any.
  bool RunPosted();
  /// Something waits to be run.
  [[nodiscard]] bool HasPosted();
  /// The window's thread. Returns when something was posted or woken since the last call, or after `longest`.
  void WaitFor(std::chrono::milliseconds longest);
  /// Called on any thread for each Post and Wake while it is set, to wake an event loop. Null for none.
  void SetWaker(Work waker);

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<Work> posted_;
  bool woken_ = false;
  Work waker_;
};

}  // namespace trevane

#include "engine/remote/WindowQueue.h"

#include <utility>

namespace trevane {

void WindowQueue::Post(Work work) {
  {
    const std::lock_guard lock(mutex_);
    posted_.push_back(std::move(work));
  }
  Wake();
}

void WindowQueue::Wake() {
  const std::lock_guard lock(mutex_);
  woken_ = true;
  changed_.notify_all();
  // Under the lock, so that a waker that was taken away is not running any more.
  if (waker_) {
    waker_();
  }
}

bool WindowQueue::RunPosted() {
  bool any = false;
  for (;;) {
    Work work;
    {
      const std::lock_guard lock(mutex_);
      if (posted_.empty()) {
        return any;
      }
      work = std::move(posted_.front());
      posted_.pop_front();
    }
    any = true;
    work();
  }
}

bool WindowQueue::HasPosted() {
  const std::lock_guard lock(mutex_);
  return !posted_.empty();
}

void WindowQueue::WaitFor(std::chrono::milliseconds longest) {
  std::unique_lock lock(mutex_);
  changed_.wait_for(lock, longest, [this] { return woken_; });
  woken_ = false;
}

void WindowQueue::SetWaker(Work waker) {
  const std::lock_guard lock(mutex_);
  waker_ = std::move(waker);
}

}  // namespace trevane

#include "engine/remote/WindowQueue.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <utility>

namespace trevane {

struct WindowQueue::Poster::State {
  std::mutex mutex;
  std::condition_variable changed;
  std::deque<Work> posted;
  bool woken = false;
  bool ended = false;
  Work waker;
};

WindowQueue::Poster::Poster() : state_(std::make_unique<State>()) {}

WindowQueue::Poster::~Poster() = default;

void WindowQueue::Poster::Post(Work work) {
  {
    const std::lock_guard lock(state_->mutex);
    if (state_->ended) {
      return;
    }
    state_->posted.push_back(std::move(work));
  }
  Wake();
}

void WindowQueue::Poster::Wake() {
  const std::lock_guard lock(state_->mutex);
  state_->woken = true;
  state_->changed.notify_all();
  // Under the lock, so that a waker that was taken away is not running any more.
  if (state_->waker) {
    state_->waker();
  }
}

WindowQueue::~WindowQueue() {
  Poster::State& state = *poster_->state_;
  std::deque<Work> unseen;
  const std::lock_guard lock(state.mutex);
  state.ended = true;
  state.waker = nullptr;
  unseen.swap(state.posted);
}

void WindowQueue::Post(Work work) {
  poster_->Post(std::move(work));
}

bool WindowQueue::RunPosted() {
  Poster::State& state = *poster_->state_;
  bool any = false;
  for (;;) {
    Work work;
    {
      const std::lock_guard lock(state.mutex);
      if (state.posted.empty()) {
        return any;
      }
      work = std::move(state.posted.front());
      state.posted.pop_front();
    }
    any = true;
    work();
  }
}

bool WindowQueue::HasPosted() {
  Poster::State& state = *poster_->state_;
  const std::lock_guard lock(state.mutex);
  return !state.posted.empty();
}

void WindowQueue::WaitFor(std::chrono::milliseconds longest) {
  Poster::State& state = *poster_->state_;
  std::unique_lock lock(state.mutex);
  state.changed.wait_for(lock, longest, [&state] { return state.woken; });
  state.woken = false;
}

void WindowQueue::SetWaker(Work waker) {
  Poster::State& state = *poster_->state_;
  const std::lock_guard lock(state.mutex);
  state.waker = std::move(waker);
}

}  // namespace trevane

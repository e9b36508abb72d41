#include "engine/remote/WorkerQuestion.h"

namespace trevane {

void WorkerQuestion::Withdraw() {
  const std::lock_guard lock(mutex_);
  if (state_ == State::Waiting) {
    state_ = State::Withdrawn;
    changed_.notify_all();
  }
}

bool WorkerQuestion::Wait() {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [this] { return state_ == State::Answered || state_ == State::Withdrawn; });
  return state_ == State::Answered;
}

bool WorkerQuestion::IsWithdrawn() {
  const std::lock_guard lock(mutex_);
  return state_ == State::Withdrawn;
}

void WorkerQuestion::Run(UserPrompts& prompts) {
  {
    const std::lock_guard lock(mutex_);
    if (state_ != State::Waiting) {
      return;
    }
    state_ = State::Running;
  }
  question_(prompts);
  const std::lock_guard lock(mutex_);
  state_ = State::Answered;
  changed_.notify_all();
}

}  // namespace trevane

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
  const auto end = [this](State state) {
    const std::lock_guard lock(mutex_);
    state_ = state;
    changed_.notify_all();
  };
  try {
    question_(prompts);
  } catch (...) {
    // The worker must not wait for ever.
    end(State::Withdrawn);
    throw;
  }
  end(State::Answered);
}

}  // namespace trevane

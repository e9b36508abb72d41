#pragma once

#include "engine/remote/CallControl.h"

#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <utility>

namespace trevane::test {

/// A call that the test cancels itself; nobody is asked.
class CancelControl final : public CallControl {
 public:
  [[nodiscard]] bool IsCancelled() const override { return isCancelled_; }
  [[nodiscard]] std::shared_ptr<void> OnCancel(std::function<void()> wake) override {
    const std::lock_guard lock(mutex_);
    if (isCancelled_) {
      wake();
    }
    const int id = ++last_;
    wakes_[id] = std::move(wake);
    // Waits for one that runs.
    return {this, [id](CancelControl* self) {
              const std::lock_guard ending(self->mutex_);
              self->wakes_.erase(id);
            }};
  }
  void Alive() override { ++alive_; }
  [[nodiscard]] bool AskUser(const std::function<void(UserPrompts& prompts)>& /*question*/) override {
    return false;
  }

  void Cancel() {
    const std::lock_guard lock(mutex_);
    isCancelled_ = true;
    for (const auto& each : wakes_) {
      each.second();
    }
  }
  [[nodiscard]] int AliveCount() const { return alive_; }

 private:
  std::mutex mutex_;
  std::map<int, std::function<void()>> wakes_;
  int last_ = 0;
  std::atomic<bool> isCancelled_ = false;
  std::atomic<int> alive_ = 0;
};

}  // namespace trevane::test

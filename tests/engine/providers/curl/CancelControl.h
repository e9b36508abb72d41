#pragma once

#include "engine/remote/CallControl.h"

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

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
    auto kept = std::make_shared<std::function<void()>>(std::move(wake));
    wakes_.push_back(kept);
    return kept;
  }
  void Alive() override { ++alive_; }
  [[nodiscard]] bool AskUser(const std::function<void(UserPrompts& prompts)>& /*question*/) override {
    return false;
  }

  void Cancel() {
    const std::lock_guard lock(mutex_);
    isCancelled_ = true;
    for (const auto& each : wakes_) {
      if (const auto wake = each.lock()) {
        (*wake)();
      }
    }
  }
  [[nodiscard]] int AliveCount() const { return alive_; }

 private:
  std::mutex mutex_;
  std::vector<std::weak_ptr<std::function<void()>>> wakes_;
  std::atomic<bool> isCancelled_ = false;
  std::atomic<int> alive_ = 0;
};

}  // namespace trevane::test

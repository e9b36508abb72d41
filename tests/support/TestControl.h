#pragma once

#include "engine/remote/CallControl.h"

#include <QString>
#include <QStringList>

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace trevane {

class UserPrompts;

namespace test {

/// A call that the test cancels itself; questions are asked on the thread that asks them.
class TestControl final : public CallControl {
 public:
  explicit TestControl(UserPrompts* prompts = nullptr) : prompts_(prompts) {}

  [[nodiscard]] bool IsCancelled() const override {
    const std::lock_guard lock(mutex_);
    return cancelled_;
  }
  [[nodiscard]] std::shared_ptr<void> OnCancel(std::function<void()> wake) override {
    const std::lock_guard lock(mutex_);
    ++registrations_;
    if (cancelled_) {
      wake();
    }
    auto kept = std::make_shared<std::function<void()>>(std::move(wake));
    wakes_.push_back(kept);
    return kept;
  }
  void Alive() override { ++alive_; }
  void Tell(const QString& what) override {
    const std::lock_guard lock(mutex_);
    told_.append(what);
  }
  [[nodiscard]] bool AskUser(const std::function<void(UserPrompts& prompts)>& question) override {
    if (prompts_ == nullptr || IsCancelled()) {
      return false;
    }
    question(*prompts_);
    return !IsCancelled();
  }

  void Cancel() {
    const std::lock_guard lock(mutex_);
    cancelled_ = true;
    for (const auto& each : wakes_) {
      if (const auto wake = each.lock()) {
        (*wake)();
      }
    }
  }
  /// All that was told, in order.
  [[nodiscard]] QStringList Told() const {
    const std::lock_guard lock(mutex_);
    return told_;
  }
  /// How often something was ready to be woken.
  [[nodiscard]] int Registrations() const {
    const std::lock_guard lock(mutex_);
    return registrations_;
  }

 private:
  UserPrompts* const prompts_;
  mutable std::mutex mutex_;
  std::vector<std::weak_ptr<std::function<void()>>> wakes_;
  bool cancelled_ = false;
  int registrations_ = 0;
  QStringList told_;
  std::atomic<int> alive_ = 0;
};

}  // namespace test

}  // namespace trevane

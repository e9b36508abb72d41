#pragma once

#include "engine/providers/sftp/SftpChannel.h"
#include "engine/providers/sftp/SftpSettings.h"
#include "engine/providers/ssh/SshConnector.h"
#include "engine/providers/ssh/SshPlace.h"
#include "engine/remote/CallControl.h"
#include "tests/support/ScriptedPrompts.h"

#include <QByteArray>
#include <QString>

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace trevane::test {

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
  std::atomic<int> alive_ = 0;
};

/// Sends what begins SFTP and returns the server's answer: its version, and what it can.
inline QByteArray Greet(SftpChannel& channel) {
  QByteArray unsent = QByteArray::fromHex("000000050100000003");
  QByteArray came;
  while (came.size() < 9) {
    came += channel.Exchange(unsent);
  }
  return came;
}

/// What begins the answer of a server that has SFTP version 3: its length is left out.
inline const QByteArray kVersion3 = QByteArray::fromHex("0200000003");

}  // namespace trevane::test

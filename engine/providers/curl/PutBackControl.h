#pragma once

#include "engine/remote/CallControl.h"

#include <QString>

#include <functional>
#include <memory>
#include <utility>

namespace trevane {

/// The control of a controller's calls, whose cancel can be hidden for a while: what a cancelled call has
/// changed is put back over a new line. One thread's alone, except for what the inner one calls.
class PutBackControl final : public CallControl {
 public:
  explicit PutBackControl(std::shared_ptr<CallControl> inner) : inner_(std::move(inner)) {}

  /// Until Show nothing is cancelled, and nobody is asked.
  void Hide() noexcept { isHidden_ = true; }
  void Show() noexcept { isHidden_ = false; }

  [[nodiscard]] bool IsCancelled() const override { return !isHidden_ && inner_->IsCancelled(); }
  [[nodiscard]] std::shared_ptr<void> OnCancel(std::function<void()> wake) override {
    return isHidden_ ? nullptr : inner_->OnCancel(std::move(wake));
  }
  void Alive() override { inner_->Alive(); }
  void Tell(const QString& what) override { inner_->Tell(what); }
  [[nodiscard]] bool AskUser(const std::function<void(UserPrompts& prompts)>& question) override {
    return !isHidden_ && inner_->AskUser(question);
  }

 private:
  const std::shared_ptr<CallControl> inner_;
  bool isHidden_ = false;
};

}  // namespace trevane

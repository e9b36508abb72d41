#include "app/window/LateFailures.h"

#include "prompts/UserPrompts.h"

#include <chrono>
#include <utility>

namespace trevane {

namespace {
constexpr std::chrono::milliseconds kTryEvery(50);
}  // namespace

LateFailures::LateFailures(UserPrompts& prompts, ReasonLine& reasonLine, std::function<bool()> isBusy)
    : prompts_(prompts), reasonLine_(reasonLine), isBusy_(std::move(isBusy)) {
  timer_.setInterval(kTryEvery);
  connect(&timer_, &QTimer::timeout, this, &LateFailures::ShowNext);
}

void LateFailures::Add(const Failure& failure) {
  failures_.push_back(failure);
  timer_.start();
}

void LateFailures::ShowNext() {
  if (prompts_.IsEnding()) {
    failures_.clear();
  }
  if (failures_.empty()) {
    timer_.stop();
    return;
  }
  if (isBusy_()) {
    return;
  }
  const Failure failure = failures_.front();
  failures_.erase(failures_.begin());
  ShowFailure(prompts_, reasonLine_, QStringLiteral("Failed in the Run() method."), failure);
}

}  // namespace trevane

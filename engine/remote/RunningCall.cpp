#include "engine/remote/RunningCall.h"

#include <utility>

namespace trevane {

struct RunningCall::Waking {
  std::mutex mutex;
  std::function<void()> wake;

  void Run() {
    const std::lock_guard lock(mutex);
    if (wake) {
      wake();
    }
  }
  void End() {
    const std::lock_guard lock(mutex);
    wake = nullptr;
  }
};

void RunningCall::Advance(qint64 now) {
  if (IsOver()) {
    return;
  }
  if (turn_) {
    done_ = turn_(now);
    return;
  }
  const bool wasAsked = queue_.OpenQuestions() > 0 || queue_.EndedQuestions() != questionsSeen_;
  questionsSeen_ = queue_.EndedQuestions();
  if (wasAsked || questions_ > 0 || alive_.exchange(false) || silentSince_ < 0) {
    silentSince_ = now;
  }
  if (countsSilence_ && !cancelled_ && now - silentSince_ >= kLongestSilence) {
    timedOut_ = true;
    Cancel();
  }
  if (!cancelled_) {
    return;
  }
  if (endingSince_ < 0) {
    endingSince_ = now;
  }
  if (now - endingSince_ >= kLongestEnding) {
    abandoned_ = true;
  }
}

void RunningCall::Cancel() {
  if (cancelled_.exchange(true)) {
    return;
  }
  std::vector<std::weak_ptr<Waking>> wakings;
  {
    const std::lock_guard lock(mutex_);
    wakings = wakings_;
  }
  for (const std::weak_ptr<Waking>& each : wakings) {
    if (const auto waking = each.lock()) {
      waking->Run();
    }
  }
  poster_->Wake();
}

void RunningCall::Abandon() {
  Cancel();
  abandoned_ = !done_;
}

void RunningCall::Finish() {
  done_ = true;
  poster_->Wake();
}

std::shared_ptr<void> RunningCall::OnCancel(std::function<void()> wake) {
  auto waking = std::make_shared<Waking>();
  waking->wake = std::move(wake);
  {
    const std::lock_guard lock(mutex_);
    std::erase_if(wakings_, [](const std::weak_ptr<Waking>& each) { return each.expired(); });
    wakings_.push_back(waking);
  }
  // After it is known there: a Cancel in between wakes twice rather than never.
  if (cancelled_) {
    waking->Run();
  }
  return std::shared_ptr<void>(waking.get(), [waking](void*) { waking->End(); });
}

}  // namespace trevane

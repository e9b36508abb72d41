#pragma once

#include "engine/remote/WindowQueue.h"

#include <QString>
#include <QtGlobal>

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace trevane {

/// One call that runs on a controller's thread while the window's thread waits for it. It is shared by both:
/// when the window's thread gives it up the worker keeps it.
///
/// It ends by itself, by Cancel, or by silence: 10 s without a byte are as a Cancel whose error is
/// error::kTimeOut. A worker that has not ended the call 2 s after it was told to is abandoned.
class RunningCall final {
 public:
  /// Milliseconds.
  static constexpr qint64 kLongestSilence = 10'000;
  static constexpr qint64 kLongestEnding = 2'000;

  /// `what` is what is waited for, as people say it: "Reading programs".
  RunningCall(WindowQueue& queue, const QString& controller, const QString& what)
      : queue_(queue), poster_(queue.Posting()), controller_(controller), what_(what) {}
  RunningCall(const RunningCall&) = delete;
  RunningCall& operator=(const RunningCall&) = delete;

  /// The name of the controller.
  [[nodiscard]] const QString& Controller() const noexcept { return controller_; }
  /// What is waited for: what the worker has told, or else what the call is for.
  [[nodiscard]] QString What() const {
    const QString told = Told();
    return told.isEmpty() ? what_ : told;
  }
  /// What the worker has told; empty for nothing.
  [[nodiscard]] QString Told() const {
    const std::lock_guard lock(mutex_);
    return told_;
  }

  // For the one who waits, on the window's thread.

  /// Must be called at least every 100 ms during a wait, with the milliseconds of a clock that only goes on.
  /// Applies both limits; time in which a question is open is not counted.
  void Advance(qint64 now);
  /// Tells the worker to end. A second one does nothing.
  void Cancel();
  /// Cancels it, and waits no longer for its end.
  void Abandon();
  /// The worker has ended it, or was abandoned: nothing is to be waited for any more.
  [[nodiscard]] bool IsOver() const noexcept { return done_ || abandoned_; }
  [[nodiscard]] bool IsAbandoned() const noexcept { return abandoned_; }
  /// Makes it a wait for other calls, which have limits of their own: each Advance is passed on to `turn`,
  /// and it is over when that returns true.
  void SetTurn(std::function<bool(qint64 now)> turn) { turn_ = std::move(turn); }
  /// It may be silent for as long as it takes.
  void CountNoSilence() noexcept { countsSilence_ = false; }
  /// It was told to end because of silence.
  [[nodiscard]] bool IsTimedOut() const noexcept { return timedOut_; }
  [[nodiscard]] WindowQueue& Queue() noexcept { return queue_; }

  // For any thread.

  [[nodiscard]] bool IsCancelled() const noexcept { return cancelled_; }
  [[nodiscard]] bool IsDone() const noexcept { return done_; }

  // For the worker.

  /// A byte has come or gone.
  void Alive() noexcept { alive_ = true; }
  /// As CallControl::Tell.
  void Tell(const QString& what) {
    const std::lock_guard lock(mutex_);
    told_ = what;
  }
  /// Nothing more is done for this call. Wakes the window's thread.
  void Finish();
  /// Around a question to the user: silence is not counted.
  void BeginQuestion() noexcept { ++questions_; }
  void EndQuestion() noexcept {
    alive_ = true;
    --questions_;
  }
  /// As CallControl::OnCancel.
  [[nodiscard]] std::shared_ptr<void> OnCancel(std::function<void()> wake);

 private:
  struct Waking;

  WindowQueue& queue_;
  /// The worker's, since an abandoned one may outlive the queue.
  const std::shared_ptr<WindowQueue::Poster> poster_;
  const QString controller_;
  const QString what_;
  std::atomic<bool> done_ = false;
  std::atomic<bool> cancelled_ = false;
  std::atomic<bool> alive_ = true;
  std::atomic<int> questions_ = 0;
  mutable std::mutex mutex_;
  QString told_;
  std::vector<std::weak_ptr<Waking>> wakings_;

  // The window's thread's alone.
  bool abandoned_ = false;
  bool timedOut_ = false;
  bool countsSilence_ = true;
  /// Since when nothing was heard, and since when it is to end; -1 before the first Advance.
  qint64 silentSince_ = -1;
  qint64 endingSince_ = -1;
  /// Of the queue's ended questions those that were seen.
  int questionsSeen_ = 0;
  std::function<bool(qint64 now)> turn_;
};

}  // namespace trevane

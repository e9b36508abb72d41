#pragma once

#include "engine/remote/CallWaiter.h"

#include <QScopedValueRollback>

#include <chrono>
#include <functional>
#include <vector>

namespace trevane::test {

/// Waits as a window does, with a clock that a test moves: without a tick no time passes.
class ScriptedWaiter final : public CallWaiter {
 public:
  static constexpr qint64 kTick = 100;
  /// Called once a turn. True moves the clock by 100 ms; false waits for the workers.
  using Turn = std::function<bool(RunningCall& call)>;

  void SetTurn(Turn turn) { turn_ = std::move(turn); }

  void Wait(RunningCall& call) override {
    const QScopedValueRollback waiting(waiting_, true);
    ++waits_;
    for (;;) {
      call.Queue().RunPosted();
      call.Advance(now_);
      if (call.IsOver()) {
        call.Queue().RunPosted();
        return;
      }
      if (turn_ && turn_(call)) {
        now_ += kTick;
      } else if (!call.IsOver()) {
        call.Queue().WaitFor(std::chrono::seconds(10));
      }
    }
  }
  [[nodiscard]] bool IsWaiting() const override { return waiting_; }

  /// Milliseconds.
  [[nodiscard]] qint64 Now() const { return now_; }
  [[nodiscard]] int Waits() const { return waits_; }

 private:
  Turn turn_;
  qint64 now_ = 0;
  int waits_ = 0;
  bool waiting_ = false;
};

}  // namespace trevane::test

#pragma once

#include "dialogs/WaitClock.h"
#include "engine/remote/WindowQueue.h"

#include <QCoreApplication>

#include <chrono>
#include <functional>

namespace trevane::test {

/// Time that passes by script: each turn of the event loop takes 100 ms, and a call that is blocked for takes
/// as long as it may.
class ScriptedWaitClock final : public WaitClock {
 public:
  static constexpr qint64 kTick = 100;

  [[nodiscard]] qint64 Now() override { return now_; }
  void Block(WindowQueue& queue, qint64 longest) override {
    ++blocks_;
    now_ += blockTakes_ > 0 && blockTakes_ < longest ? blockTakes_ : longest;
    if (onBlock) {
      onBlock();
    }
    queue.WaitFor(std::chrono::milliseconds(0));
  }
  void LetEventsRun() override {
    ++turns_;
    if (onTurn) {
      onTurn();
    }
    QCoreApplication::processEvents();
    now_ += kTick;
    if (afterTurn) {
      afterTurn();
    }
  }

  void BlocksTake(qint64 milliseconds) { blockTakes_ = milliseconds; }
  [[nodiscard]] int Turns() const noexcept { return turns_; }
  [[nodiscard]] int Blocks() const noexcept { return blocks_; }

  std::function<void()> onBlock;
  /// Before and after the events of a turn.
  std::function<void()> onTurn;
  std::function<void()> afterTurn;

 private:
  qint64 now_ = 0;
  qint64 blockTakes_ = 0;
  int turns_ = 0;
  int blocks_ = 0;
};

}  // namespace trevane::test

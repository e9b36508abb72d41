#pragma once

#include <QElapsedTimer>
#include <QtGlobal>

namespace trevane {

class WindowQueue;

/// The time in which a wait passes.
class WaitClock {
 public:
  WaitClock() = default;
  virtual ~WaitClock() = default;
  WaitClock(const WaitClock&) = delete;
  WaitClock& operator=(const WaitClock&) = delete;

  /// In milliseconds; only goes on.
  [[nodiscard]] virtual qint64 Now() = 0;
  /// Blocks until the queue is woken, or for so many milliseconds. No event runs.
  virtual void Block(WindowQueue& queue, qint64 longest) = 0;
  /// Lets window events run: those that are there, or the first one that comes.
  virtual void LetEventsRun() = 0;
};

class SystemWaitClock final : public WaitClock {
 public:
  SystemWaitClock() { clock_.start(); }

  [[nodiscard]] qint64 Now() override { return clock_.elapsed(); }
  void Block(WindowQueue& queue, qint64 longest) override;
  void LetEventsRun() override;

 private:
  QElapsedTimer clock_;
};

}  // namespace trevane

#pragma once

#include <QElapsedTimer>

#include <algorithm>

namespace trevane {

/// When rows that are waiting are to enter the views: the first soon, so that something is seen, and then
/// ever more rarely, because a view lays out all of its rows each time.
class FlushClock final {
 public:
  FlushClock() { timer_.start(); }

  [[nodiscard]] bool IsDue() const { return timer_.elapsed() >= interval_; }
  void Flushed() {
    interval_ = std::min<qint64>(interval_ * 2, 1000);
    timer_.restart();
  }

 private:
  QElapsedTimer timer_;
  qint64 interval_ = 60;  // milliseconds
};

}  // namespace trevane

#pragma once

#include <QElapsedTimer>

#include <algorithm>

namespace trevane {

/// Decides when waiting rows enter the views: the first ones soon, so that the user sees something, and the
/// others at growing intervals, because a view lays out all of its rows each time.
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

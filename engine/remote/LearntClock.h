#pragma once

#include <QElapsedTimer>
#include <QtGlobal>

#include <functional>

namespace trevane {

/// How long what was learnt of slow file systems holds: as long as the command that learnt it runs, or 2 s.
/// The window's thread's alone.
class LearntClock final {
 public:
  /// Milliseconds.
  static constexpr qint64 kLongestMemory = 2'000;

  /// When something was learnt.
  struct Moment {
    qint64 time = 0;
    /// 0 outside of a command.
    quint64 command = 0;
  };

  LearntClock() { real_.start(); }
  LearntClock(const LearntClock&) = delete;
  LearntClock& operator=(const LearntClock&) = delete;

  /// For tests: milliseconds.
  void SetSource(std::function<qint64()> now) { now_ = std::move(now); }

  [[nodiscard]] Moment Now() const { return {now_ ? now_() : real_.elapsed(), depth_ > 0 ? command_ : 0}; }
  [[nodiscard]] bool StillHolds(const Moment& learnt) const {
    const Moment now = Now();
    return (now.command != 0 && learnt.command == now.command) || now.time - learnt.time < kLongestMemory;
  }

 private:
  friend class LearntScope;
  QElapsedTimer real_;
  std::function<qint64()> now_;
  quint64 command_ = 0;
  int depth_ = 0;
};

/// A command runs while it lives. One within another one belongs to that.
class LearntScope final {
 public:
  explicit LearntScope(LearntClock& clock) : clock_(clock) {
    if (clock_.depth_++ == 0) {
      ++clock_.command_;
    }
  }
  ~LearntScope() { --clock_.depth_; }
  LearntScope(const LearntScope&) = delete;
  LearntScope& operator=(const LearntScope&) = delete;

 private:
  LearntClock& clock_;
};

}  // namespace trevane

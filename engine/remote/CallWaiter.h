#pragma once

#include "engine/remote/RunningCall.h"

#include <QElapsedTimer>

namespace trevane {

/// Waits on the window's thread for calls that run on controllers' threads, and keeps the window alive
/// meanwhile. One for the whole program.
class CallWaiter {
 public:
  CallWaiter() = default;
  virtual ~CallWaiter() = default;
  CallWaiter(const CallWaiter&) = delete;
  CallWaiter& operator=(const CallWaiter&) = delete;

  /// Returns when `call.IsOver()`. Runs what is posted to the call's queue, advances the call, and cancels it
  /// when the user or the end of the program asks for that. Never called while IsWaiting.
  virtual void Wait(RunningCall& call) = 0;

  /// A wait is running: an engine call is refused, and so is every command.
  [[nodiscard]] virtual bool IsWaiting() const = 0;
};

/// Waits without letting any event run: where there is no window.
class BlockingWaiter final : public CallWaiter {
 public:
  BlockingWaiter() { clock_.start(); }
  void Wait(RunningCall& call) override;
  [[nodiscard]] bool IsWaiting() const override { return waiting_; }

 private:
  /// One for all waits: a call may run on between two of them.
  QElapsedTimer clock_;
  bool waiting_ = false;
};

}  // namespace trevane

#pragma once

#include "engine/providers/ssh/SocketCalls.h"

namespace trevane::net {

/// Ends a wait of another thread.
class WakeUp final {
 public:
  WakeUp() : pair_(MakeWakePair()) {}
  ~WakeUp() { CloseWakePair(pair_); }
  WakeUp(const WakeUp&) = delete;
  WakeUp& operator=(const WakeUp&) = delete;

  /// The system had sockets for it.
  [[nodiscard]] bool IsMade() const noexcept { return pair_.waiting != kNoSocket; }
  /// Any thread.
  void Set() const noexcept { PutByte(pair_.waking); }
  void Clear() const noexcept { TakeBytes(pair_.waiting); }
  /// Is readable from Set to Clear.
  [[nodiscard]] Socket Waiting() const noexcept { return pair_.waiting; }

 private:
  const WakePair pair_;
};

}  // namespace trevane::net

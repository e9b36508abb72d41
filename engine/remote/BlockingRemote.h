#pragma once

#include "engine/remote/RemoteContext.h"

namespace trevane {

/// A context for where there is no window: nothing happens while a call is waited for, and nobody is asked.
class BlockingRemote final {
 public:
  BlockingRemote() = default;
  BlockingRemote(const BlockingRemote&) = delete;
  BlockingRemote& operator=(const BlockingRemote&) = delete;

  [[nodiscard]] RemoteContext& Context() noexcept { return context_; }

 private:
  WindowQueue queue_;
  BlockingWaiter waiter_;
  RemoteContext context_{queue_, waiter_};
};

}  // namespace trevane

#pragma once

#include "engine/remote/CallWaiter.h"
#include "engine/remote/WindowQueue.h"

namespace trevane {

class UserPrompts;

/// What all controllers with threads of their own share. All of them outlive every controller.
struct RemoteContext {
  WindowQueue& queue;
  CallWaiter& waiter;
  UserPrompts& prompts;
};

}  // namespace trevane

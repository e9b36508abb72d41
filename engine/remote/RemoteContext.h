#pragma once

#include "engine/remote/CallWaiter.h"
#include "engine/remote/LearntClock.h"
#include "engine/remote/QuestionDesk.h"
#include "engine/remote/RemoteControllers.h"
#include "engine/remote/WindowQueue.h"

#include <memory>

namespace trevane {

class UserPrompts;

/// What all controllers with threads of their own share. It outlives every controller, and so does all that
/// it names.
struct RemoteContext {
  WindowQueue& queue;
  CallWaiter& waiter;
  /// Null where there is nobody to ask.
  UserPrompts* prompts = nullptr;
  std::shared_ptr<QuestionDesk> questions = std::make_shared<QuestionDesk>();
  std::shared_ptr<RemoteControllers> controllers = std::make_shared<RemoteControllers>();
  std::shared_ptr<LearntClock> learnt = std::make_shared<LearntClock>();
};

}  // namespace trevane

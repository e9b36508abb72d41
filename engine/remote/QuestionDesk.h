#pragma once

#include "engine/remote/WorkerQuestion.h"

#include <deque>
#include <memory>

namespace trevane {

class WindowQueue;

/// The questions of all workers, of which one at a time stands before the user. The window's thread's alone.
class QuestionDesk final {
 public:
  QuestionDesk() = default;
  QuestionDesk(const QuestionDesk&) = delete;
  QuestionDesk& operator=(const QuestionDesk&) = delete;

  /// Asks it now; where another one stands before the user, after that. Once the program is ending it is
  /// withdrawn.
  void RunInTurn(const std::shared_ptr<WorkerQuestion>& asked, WindowQueue& queue, UserPrompts& prompts);

 private:
  std::deque<std::shared_ptr<WorkerQuestion>> waiting_;
  bool isAsking_ = false;
};

}  // namespace trevane

#include "engine/remote/QuestionDesk.h"

#include "engine/remote/WindowQueue.h"
#include "prompts/UserPrompts.h"

#include <QScopeGuard>
#include <QScopedValueRollback>

namespace trevane {

void QuestionDesk::RunInTurn(const std::shared_ptr<WorkerQuestion>& asked, WindowQueue& queue,
                             UserPrompts& prompts) {
  waiting_.push_back(asked);
  if (isAsking_) {
    return;
  }
  const QScopedValueRollback asking(isAsking_, true);
  while (!waiting_.empty()) {
    const std::shared_ptr<WorkerQuestion> next = waiting_.front();
    waiting_.pop_front();
    // Also Cancel of the operation's gauge, which the one who waits learns of after this.
    if (prompts.IsCancelled()) {
      next->Withdraw();
      continue;
    }
    if (next->IsWithdrawn()) {
      continue;
    }
    try {
      queue.BeginQuestion();
      const auto end = qScopeGuard([&queue] { queue.EndQuestion(); });
      next->Run(prompts);
    } catch (...) {
      // Its worker takes that for Cancel; the others are still to be asked.
      next->Withdraw();
    }
  }
}

}  // namespace trevane

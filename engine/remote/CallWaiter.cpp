#include "engine/remote/CallWaiter.h"

#include <QScopedValueRollback>

#include <chrono>

namespace trevane {

void BlockingWaiter::Wait(RunningCall& call) {
  const QScopedValueRollback waiting(waiting_, true);
  for (;;) {
    call.Queue().RunPosted();
    call.Advance(clock_.elapsed());
    if (call.IsOver()) {
      // What it has posted before its end comes first.
      call.Queue().RunPosted();
      return;
    }
    call.Queue().WaitFor(std::chrono::milliseconds(100));
  }
}

}  // namespace trevane

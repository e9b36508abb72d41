#include "dialogs/WaitClock.h"

#include "engine/remote/WindowQueue.h"

#include <QCoreApplication>
#include <QEventLoop>

#include <chrono>

namespace trevane {

void SystemWaitClock::Block(WindowQueue& queue, qint64 longest) {
  queue.WaitFor(std::chrono::milliseconds(longest));
}

void SystemWaitClock::LetEventsRun() {
  QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
}

}  // namespace trevane

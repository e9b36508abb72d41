#include "engine/remote/ControllerThread.h"

#include "engine/files/ProviderError.h"
#include "engine/remote/IdlePause.h"
#include "engine/remote/RemoteControllers.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>

namespace trevane {

struct ControllerThread::Shared {
  std::mutex mutex;
  std::condition_variable changed;
  std::deque<Task> tasks;
  bool stopped = false;
};

ControllerThread::ControllerThread(RemoteControllers& all, Workbench::Opener open)
    : shared_(std::make_shared<Shared>()) {
  const std::shared_ptr<RemoteControllers::Count>& count = all.Running();
  count->Begin();
  try {
    std::thread([shared = shared_, open = std::move(open), count]() mutable {
      Run(shared, std::move(open));
      count->End();
    }).detach();
  } catch (const std::system_error&) {
    count->End();
    Fail(error::kWin32Error + 8, QStringLiteral("The system has no further thread"), QString());
  }
}

ControllerThread::~ControllerThread() {
  Stop();
}

void ControllerThread::Post(Task task) {
  const std::lock_guard lock(shared_->mutex);
  if (!shared_->stopped) {
    shared_->tasks.push_back(std::move(task));
    shared_->changed.notify_one();
  }
}

void ControllerThread::Stop() {
  const std::lock_guard lock(shared_->mutex);
  shared_->stopped = true;
  shared_->changed.notify_one();
}

void ControllerThread::Run(const std::shared_ptr<Shared>& shared, Workbench::Opener open) {
  Workbench bench(std::move(open));
  IdlePause pause(bench);
  std::unique_lock lock(shared->mutex);
  for (;;) {
    const auto isAwake = [&shared] { return shared->stopped || !shared->tasks.empty(); };
    if (const std::optional<IdlePause::Clock::time_point> next = pause.Next(); !next) {
      shared->changed.wait(lock, isAwake);
    } else if (!shared->changed.wait_until(lock, *next, isAwake)) {
      lock.unlock();
      pause.Idle();
      lock.lock();
      continue;
    }
    if (shared->stopped) {
      shared->tasks.clear();
      return;
    }
    Task task = std::move(shared->tasks.front());
    shared->tasks.pop_front();
    lock.unlock();
    task(bench);
    task = nullptr;
    pause.Begin();
    lock.lock();
  }
}

}  // namespace trevane

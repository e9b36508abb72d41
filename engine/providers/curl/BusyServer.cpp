#include "engine/providers/curl/BusyServer.h"

#include "base/RunTimeError.h"
#include "engine/remote/CallControl.h"

#include <QDeadlineTimer>
#include <QScopeGuard>
#include <QString>

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace trevane::busyserver {
namespace {

/// Shared with whoever cancels, who may still be at it when the pause has ended.
struct Waking {
  std::mutex mutex;
  std::condition_variable changed;
  bool isCancelled = false;
};

void Pause(std::chrono::milliseconds length, CallControl* control) {
  const auto state = std::make_shared<Waking>();
  const std::shared_ptr<void> waking = control == nullptr ? nullptr : control->OnCancel([state] {
    const std::lock_guard lock(state->mutex);
    state->isCancelled = true;
    state->changed.notify_all();
  });
  std::unique_lock lock(state->mutex);
  if (state->changed.wait_for(lock, length, [&state] { return state->isCancelled; })) {
    throw RunTimeError(error::kCancelled, QStringLiteral("Cancelled"));
  }
}

}  // namespace

void ConnectWhenFree(const std::function<void()>& connect, const Patience& patience, CallControl* control) {
  const QDeadlineTimer deadline(patience.whole);
  const auto end = qScopeGuard([control] {
    if (control != nullptr) {
      control->Tell(QString());
    }
  });
  for (;;) {
    try {
      return connect();
    } catch (const RunTimeError& failure) {
      if (failure.Number() != kNoRoom || deadline.hasExpired()) {
        throw;
      }
    }
    if (control != nullptr) {
      control->Tell(QStringLiteral("Busy with another client, trying again"));
      control->Alive();
    }
    Pause(std::chrono::milliseconds(patience.pause), control);
  }
}

}  // namespace trevane::busyserver

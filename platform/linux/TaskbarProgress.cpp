#include "platform/TaskbarProgress.h"

#include "platform/linux/SessionBus.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QVariantMap>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>

namespace trevane {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds kBetweenSignals(100);
constexpr milliseconds kLongestGoodbye(200);

/// Between 0 and 1; nothing for none.
using Progress = std::optional<double>;

}  // namespace

/// Connecting blocks while the bus does not answer, so that a thread does it, which is left behind when it
/// does not come back in time.
class TaskbarProgress::Native final {
 public:
  explicit Native(const QString& desktopFile)
      : application_(QStringLiteral("application://") + desktopFile + QStringLiteral(".desktop")),
        address_(sessionbus::Address()) {}
  Native(const Native&) = delete;
  Native& operator=(const Native&) = delete;

  static void Set(const std::shared_ptr<Native>& native, Progress progress) {
    const std::lock_guard lock(native->mutex_);
    if (native->address_.isEmpty() || native->wanted_ == progress) {
      return;
    }
    native->wanted_ = progress;
    if (!native->running_) {
      try {
        std::thread([native] { native->Run(); }).detach();
        native->running_ = true;
      } catch (const std::system_error&) {
        native->address_.clear();
        return;
      }
    }
    native->changed_.notify_all();
  }

  void End() {
    std::unique_lock lock(mutex_);
    wanted_.reset();
    ending_ = true;
    changed_.notify_all();
    changed_.wait_for(lock, kLongestGoodbye, [this] { return !running_; });
  }

 private:
  void Run() {
    const QString name = QStringLiteral("trevane-taskbar-%1").arg(reinterpret_cast<quintptr>(this));
    {
      QDBusConnection bus = QDBusConnection::connectToBus(address_, name);
      std::unique_lock lock(mutex_);
      Progress shown;
      while (bus.isConnected()) {
        changed_.wait(lock, [&] { return ending_ || wanted_ != shown; });
        if (wanted_ != shown) {
          shown = wanted_;
          lock.unlock();
          bus.send(Update(shown));
          lock.lock();
        }
        if (ending_) {
          break;
        }
        // What changes meanwhile is told by the next signal, which has the last value.
        changed_.wait_for(lock, kBetweenSignals, [this] { return ending_; });
      }
      address_.clear();
    }
    QDBusConnection::disconnectFromBus(name);
    const std::lock_guard lock(mutex_);
    running_ = false;
    changed_.notify_all();
  }

  [[nodiscard]] QDBusMessage Update(Progress progress) const {
    QDBusMessage update = QDBusMessage::createSignal(QStringLiteral("/com/canonical/unity/launcherentry/1"),
                                                     QStringLiteral("com.canonical.Unity.LauncherEntry"),
                                                     QStringLiteral("Update"));
    const QVariantMap properties{{QStringLiteral("progress"), progress.value_or(0.0)},
                                 {QStringLiteral("progress-visible"), progress.has_value()}};
    update.setArguments({application_, properties});
    return update;
  }

  const QString application_;
  std::mutex mutex_;
  std::condition_variable changed_;
  QString address_;
  Progress wanted_;
  bool running_ = false;
  bool ending_ = false;
};

TaskbarProgress::TaskbarProgress(const QString& desktopFile)
    : native_(std::make_shared<Native>(desktopFile)) {}

TaskbarProgress::~TaskbarProgress() {
  native_->End();
}

void TaskbarProgress::SetWindow(quintptr /*window*/) {}

void TaskbarProgress::Show(qint64 done, qint64 whole) {
  Native::Set(native_, std::clamp(static_cast<double>(done) / static_cast<double>(whole), 0.0, 1.0));
}

void TaskbarProgress::Hide() {
  Native::Set(native_, std::nullopt);
}

}  // namespace trevane

#include "platform/TaskbarProgress.h"
#include "tests/platform/FakeLauncher.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>
#include <vector>

namespace trevane::test {
namespace {

class TaskbarProgressTest : public testing::Test {
 protected:
  void TearDown() override {
    if (daemon_.state() != QProcess::NotRunning) {
      daemon_.kill();
      daemon_.waitForFinished();
    }
  }

  /// False where this machine has no bus to start.
  bool StartBus() {
    const QString program = QStandardPaths::findExecutable(QStringLiteral("dbus-daemon"));
    if (program.isEmpty()) {
      return false;
    }
    QFile config(folder_.filePath(QStringLiteral("bus.conf")));
    EXPECT_TRUE(config.open(QIODevice::WriteOnly));
    config.write("<busconfig><type>session</type><listen>unix:path=" +
                 folder_.filePath(QStringLiteral("bus")).toUtf8() +
                 "</listen><policy context=\"default\"><allow send_destination=\"*\" eavesdrop=\"true\"/>"
                 "<allow eavesdrop=\"true\"/><allow own=\"*\"/></policy></busconfig>");
    config.close();
    daemon_.start(program, {QStringLiteral("--config-file=") + config.fileName(), QStringLiteral("--nofork"),
                            QStringLiteral("--print-address")});
    EXPECT_TRUE(daemon_.waitForReadyRead());
    address_ = QString::fromUtf8(daemon_.readLine()).trimmed();
    qputenv("DBUS_SESSION_BUS_ADDRESS", address_.toUtf8());
    return true;
  }

  static bool WaitUntil(const std::function<bool()>& condition) {
    QDeadlineTimer deadline(20000);
    while (!condition() && !deadline.hasExpired()) {
      QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 20);
    }
    return condition();
  }

  int count_ = 1;
  char name_[8] = "test";
  char* arguments_[2] = {name_, nullptr};
  QCoreApplication application_{count_, arguments_};
  QTemporaryDir folder_;
  QProcess daemon_;
  QString address_;
};

TEST_F(TaskbarProgressTest, TheLauncherIsToldTheProgressAndItsEnd) {
  if (!StartBus()) {
    GTEST_SKIP() << "dbus-daemon is not installed";
  }
  FakeLauncher launcher(address_);
  ASSERT_TRUE(launcher.IsConnected());
  {
    TaskbarProgress progress(QStringLiteral("trevane"));
    progress.Show(1, 4);
    ASSERT_TRUE(WaitUntil([&] { return !launcher.seen.empty(); }));
    EXPECT_EQ(launcher.seen[0].application, QStringLiteral("application://trevane.desktop"));
    EXPECT_EQ(launcher.seen[0].progress, 0.25);
    EXPECT_TRUE(launcher.seen[0].visible);
    progress.Hide();
    ASSERT_TRUE(WaitUntil([&] { return launcher.seen.size() == 2; }));
    EXPECT_FALSE(launcher.seen[1].visible);
    progress.Show(9, 4);
    ASSERT_TRUE(WaitUntil([&] { return launcher.seen.size() == 3; }));
    EXPECT_EQ(launcher.seen[2].progress, 1.0);
  }
  // The program ends in the middle of an operation.
  ASSERT_TRUE(WaitUntil([&] { return launcher.seen.size() == 4; }));
  EXPECT_FALSE(launcher.seen[3].visible);
}

TEST_F(TaskbarProgressTest, ManyStepsAreFewSignalsWithTheLastOne) {
  if (!StartBus()) {
    GTEST_SKIP() << "dbus-daemon is not installed";
  }
  FakeLauncher launcher(address_);
  ASSERT_TRUE(launcher.IsConnected());
  TaskbarProgress progress(QStringLiteral("trevane"));
  QElapsedTimer clock;
  clock.start();
  for (int i = 1; i <= 100000; ++i) {
    progress.Show(i, 100000);
  }
  ASSERT_TRUE(WaitUntil([&] { return !launcher.seen.empty() && launcher.seen.back().progress == 1.0; }));
  EXPECT_LE(static_cast<qint64>(launcher.seen.size()), clock.elapsed() / 100 + 2);
}

TEST_F(TaskbarProgressTest, WithoutABusNothingHappens) {
  qunsetenv("DBUS_SESSION_BUS_ADDRESS");
  qputenv("XDG_RUNTIME_DIR", folder_.path().toUtf8());
  TaskbarProgress none(QStringLiteral("trevane"));
  none.Show(1, 2);
  none.Hide();
  // One that is gone.
  qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + folder_.filePath(QStringLiteral("nothing")).toUtf8());
  TaskbarProgress gone(QStringLiteral("trevane"));
  gone.Show(1, 2);
  gone.Hide();
}

}  // namespace
}  // namespace trevane::test

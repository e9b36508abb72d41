// The program as the system starts and ends it: a copy of the real executable in a folder of its own.
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>

#include <gtest/gtest.h>

#include <csignal>

namespace trevane {
namespace {

class ProcessTest : public testing::TestWithParam<int> {
 protected:
  ProcessTest() {
#ifdef Q_OS_WIN
    program_ = folder_.filePath(QStringLiteral("Trevane.exe"));
#else
    program_ = folder_.filePath(QStringLiteral("Trevane"));
#endif
    EXPECT_TRUE(QFile::copy(QStringLiteral(TREVANE_PROGRAM), program_));
    EXPECT_TRUE(QFile::setPermissions(program_, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
  }

  void Start(QProcess& process, const QStringList& arguments = {}) {
    auto environment = QProcessEnvironment::systemEnvironment();
#ifdef Q_OS_WIN
    environment.remove(QStringLiteral("QT_QPA_PLATFORM"));  // the program has the system's own alone
#else
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
#endif
    environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), runtime_.path());
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), runtime_.filePath(QStringLiteral("config")));
    environment.insert(QStringLiteral("XDG_STATE_HOME"), runtime_.filePath(QStringLiteral("state")));
    process.setProcessEnvironment(environment);
    process.setWorkingDirectory(folder_.path());
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(program_, arguments);
    ASSERT_TRUE(process.waitForStarted());
  }

  /// The log is opened near the end of the start; the event loop runs soon after.
  void WaitUntilItRuns() {
    WaitUntilItRuns(folder_.filePath(QStringLiteral("Trevane.log")));
  }
  static void WaitUntilItRuns(const QString& log) {
    QElapsedTimer timer;
    timer.start();
    while (!QFile::exists(log) && timer.elapsed() < 30000) {
      QThread::msleep(5);
    }
    ASSERT_TRUE(QFile::exists(log));
    QThread::msleep(300);  // nothing outside shows that the event loop has been entered
  }

  /// On Windows the program's windows are asked to close: again, until one is there to hear it.
  static bool EndsWhenAsked(QProcess& process) {
    for (int i = 0; i < 60; ++i) {
      process.terminate();
      if (process.waitForFinished(1000)) {
        return true;
      }
    }
    return false;
  }

  QTemporaryDir folder_;
  QTemporaryDir runtime_;
  QString program_;
};

TEST_P(ProcessTest, ARequestToEndSavesTheSettings) {
  QProcess process;
  Start(process);
  WaitUntilItRuns();
  EXPECT_FALSE(QFile::exists(folder_.filePath(QStringLiteral("Trevane.ini"))));
#ifdef Q_OS_WIN
  ASSERT_TRUE(EndsWhenAsked(process));
#else
  ASSERT_EQ(kill(static_cast<pid_t>(process.processId()), GetParam()), 0);
  ASSERT_TRUE(process.waitForFinished(20000));
#endif
  EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
  EXPECT_EQ(process.exitCode(), 0);
  QFile settings(folder_.filePath(QStringLiteral("Trevane.ini")));
  ASSERT_TRUE(settings.open(QIODevice::ReadOnly));
  EXPECT_TRUE(settings.readAll().startsWith("[Form]\r\nWindowState=0\r\n"));
}

#ifndef Q_OS_WIN
/// Each controller that cannot be connected is reported in a box, one after the other, before the window is
/// shown.
TEST_P(ProcessTest, ARequestToEndDuringTheFirstWorkspaceIsHeard) {
  QFile workspace(folder_.filePath(QStringLiteral("cells.fmg")));
  ASSERT_TRUE(workspace.open(QIODevice::WriteOnly));
  for (int i = 0; i < 20; ++i) {
    workspace.write("[c" + QByteArray::number(i) + "]\r\nProvider=None\r\n");
  }
  workspace.close();
  QProcess process;
  Start(process, {workspace.fileName()});
  WaitUntilItRuns();
  ASSERT_EQ(kill(static_cast<pid_t>(process.processId()), GetParam()), 0);
  EXPECT_TRUE(process.waitForFinished(10000));
  EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
  EXPECT_EQ(process.exitCode(), 0);
  EXPECT_TRUE(QFile::exists(folder_.filePath(QStringLiteral("Trevane.ini"))));
}
#endif

#ifdef Q_OS_LINUX
using ReadOnlyFolderTest = ProcessTest;

TEST_F(ReadOnlyFolderTest, SettingsAndLogAreInTheUsersOwnFolders) {
  constexpr auto kOpen = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner;
  ASSERT_TRUE(QFile::setPermissions(folder_.path(), QFile::ReadOwner | QFile::ExeOwner));
  QProcess process;
  Start(process);
  WaitUntilItRuns(runtime_.filePath(QStringLiteral("state/trevane/Trevane.log")));
  ASSERT_EQ(kill(static_cast<pid_t>(process.processId()), SIGTERM), 0);
  EXPECT_TRUE(process.waitForFinished(20000));
  ASSERT_TRUE(QFile::setPermissions(folder_.path(), kOpen));
  EXPECT_EQ(process.exitCode(), 0);
  EXPECT_EQ(QDir(folder_.path()).entryList(QDir::Files), QStringList{QStringLiteral("Trevane")});
  QFile settings(runtime_.filePath(QStringLiteral("config/trevane/Trevane.ini")));
  ASSERT_TRUE(settings.open(QIODevice::ReadOnly));
  EXPECT_TRUE(settings.readAll().startsWith("[Form]\r\n"));
}

TEST_F(ReadOnlyFolderTest, AfterASignalNoBoxReportsAFailedSaving) {
  constexpr auto kOpen = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner;
  QFile blocked(runtime_.filePath(QStringLiteral("config")));
  ASSERT_TRUE(blocked.open(QIODevice::WriteOnly));
  ASSERT_TRUE(QFile::setPermissions(folder_.path(), QFile::ReadOwner | QFile::ExeOwner));
  QProcess process;
  Start(process);
  WaitUntilItRuns(runtime_.filePath(QStringLiteral("state/trevane/Trevane.log")));
  ASSERT_EQ(kill(static_cast<pid_t>(process.processId()), SIGTERM), 0);
  EXPECT_TRUE(process.waitForFinished(20000)) << "a box waits for somebody who is not there";
  ASSERT_TRUE(QFile::setPermissions(folder_.path(), kOpen));
  EXPECT_EQ(process.exitCode(), 0);
  EXPECT_EQ(QDir(folder_.path()).entryList(QDir::Files), QStringList{QStringLiteral("Trevane")});
}
#endif

#ifdef Q_OS_WIN
INSTANTIATE_TEST_SUITE_P(Windows, ProcessTest, testing::Values(0), [](const auto&) { return "Close"; });
#else
INSTANTIATE_TEST_SUITE_P(
    Signals, ProcessTest, testing::Values(SIGTERM, SIGINT, SIGHUP), [](const auto& info) {
      return std::string(info.param == SIGTERM ? "Term" : info.param == SIGINT ? "Int" : "Hup");
    });
#endif

using SecondInstanceTest = ProcessTest;

TEST_F(SecondInstanceTest, ASecondCopyExitsAndAKilledFirstLeavesNoClaim) {
  QProcess first;
  Start(first);
  WaitUntilItRuns();
  QProcess second;
  Start(second);
  ASSERT_TRUE(second.waitForFinished(20000));
  EXPECT_EQ(second.exitCode(), 0);
  EXPECT_EQ(first.state(), QProcess::Running);
  EXPECT_FALSE(QFile::exists(folder_.filePath(QStringLiteral("Trevane.ini"))));

  first.kill();
  ASSERT_TRUE(first.waitForFinished(20000));
  ASSERT_TRUE(QFile::remove(folder_.filePath(QStringLiteral("Trevane.log"))));
  QProcess third;
  Start(third);
  WaitUntilItRuns();
  EXPECT_EQ(third.state(), QProcess::Running);
  EXPECT_TRUE(EndsWhenAsked(third));
}

}  // namespace
}  // namespace trevane

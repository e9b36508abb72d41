#include "base/NameCodec.h"
#include "platform/OpenWithProgram.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QThread>

#include <gtest/gtest.h>

#include <functional>
#include <thread>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace trevane {
namespace {

// A desktop whose opener writes down what it is given.
class OpenWithProgramTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(folder_.isValid());
    ASSERT_TRUE(QDir(folder_.path()).mkpath(QStringLiteral("bin")));
    ASSERT_TRUE(QDir(folder_.path()).mkpath(QStringLiteral("files")));
    oldPath_ = qgetenv("PATH");
    qputenv("PATH", EncodeText(folder_.filePath(QStringLiteral("bin"))) + ":/usr/bin:/bin");
    Write(QStringLiteral("bin/xdg-open"), "#!/bin/sh\nprintf '%s\\n%s' \"$1\" \"$PWD\" > '" +
                                              EncodeText(Told()) + ".part'\nmv '" + EncodeText(Told()) +
                                              ".part' '" + EncodeText(Told()) + "'\n");
    ASSERT_TRUE(QFile::setPermissions(folder_.filePath(QStringLiteral("bin/xdg-open")),
                                      QFile::ReadOwner | QFile::ExeOwner));
  }
  void TearDown() override { qputenv("PATH", oldPath_); }

  void Write(const QString& name, const QByteArray& content) {
    QFile file(folder_.filePath(name));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(content);
  }
  QString Told() const { return folder_.filePath(QStringLiteral("told")); }

  // The argument and the folder that the opener was started with.
  QByteArrayList WaitForOpener() const {
    QElapsedTimer timer;
    timer.start();
    while (!QFile::exists(Told()) && timer.elapsed() < 20000) {
      QThread::msleep(5);  // the opener is a process of its own that says nothing but through its file
    }
    QFile file(Told());
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return file.readAll().split('\n');
  }

  QTemporaryDir folder_;
  QByteArray oldPath_;
};

TEST_F(OpenWithProgramTest, OpenerIsGivenThePathAndRunsInTheFilesFolder) {
  Write(QStringLiteral("files/a b's.txt"), "x");
  const QString path = folder_.filePath(QStringLiteral("files/a b's.txt"));
  const OpenOutcome outcome = OpenWithProgram(path);
  EXPECT_EQ(outcome.code, OpenOutcome::Code::Started);
  EXPECT_TRUE(outcome.text.isEmpty());
  EXPECT_EQ(WaitForOpener(),
            (QByteArrayList{EncodeText(path), EncodeText(folder_.filePath(QStringLiteral("files")))}));
}

TEST_F(OpenWithProgramTest, NameThatIsNoTextArrivesAsItIs) {
  const QString path = folder_.filePath(QStringLiteral("files/x") + QChar(0xDCFF));
  const int fd = ::creat(EncodeText(path).constData(), 0600);
  ASSERT_GE(fd, 0);
  ::close(fd);
  EXPECT_EQ(OpenWithProgram(path).code, OpenOutcome::Code::Started);
  EXPECT_EQ(WaitForOpener().value(0), EncodeText(path));
  // The temporary folder cannot remove such a name by itself.
  EXPECT_EQ(::unlink(EncodeText(path).constData()), 0);
}

TEST_F(OpenWithProgramTest, FileThatIsGoneIsNotFound) {
  const OpenOutcome outcome = OpenWithProgram(folder_.filePath(QStringLiteral("files/none")));
  EXPECT_EQ(outcome.code, OpenOutcome::Code::NotFound);
  EXPECT_FALSE(outcome.text.isEmpty());
  EXPECT_EQ(OpenWithProgram({}).code, OpenOutcome::Code::NotFound);
}

TEST_F(OpenWithProgramTest, DesktopWithoutAnOpenerIsReportedInWords) {
  Write(QStringLiteral("files/a"), "x");
  qputenv("PATH", EncodeText(folder_.filePath(QStringLiteral("files"))));
  const OpenOutcome outcome = OpenWithProgram(folder_.filePath(QStringLiteral("files/a")));
  EXPECT_EQ(outcome.code, OpenOutcome::Code::NoProgram);
  EXPECT_TRUE(outcome.text.contains(u"xdg-open"));
}

TEST_F(OpenWithProgramTest, OpenerThatCannotRunIsAFailure) {
  Write(QStringLiteral("files/a"), "x");
  ASSERT_TRUE(QFile::remove(folder_.filePath(QStringLiteral("bin/xdg-open"))));
  Write(QStringLiteral("bin/xdg-open"), "#!/no/such/interpreter\n");
  ASSERT_TRUE(QFile::setPermissions(folder_.filePath(QStringLiteral("bin/xdg-open")),
                                    QFile::ReadOwner | QFile::ExeOwner));
  const OpenOutcome outcome = OpenWithProgram(folder_.filePath(QStringLiteral("files/a")));
  EXPECT_EQ(outcome.code, OpenOutcome::Code::Failed);
  EXPECT_FALSE(outcome.text.isEmpty());
}

/// Ends with that code, after so many tenths of a second.
struct LateEnd {
  int code;
  int tenths;
};

class LateFailureTest : public OpenWithProgramTest {
 protected:
  LateFailureTest() {
    SetOpenFailureListener([this](const QString& path, const QString& reason) {
      EXPECT_FALSE(reason.isEmpty());
      failures_ += path;
    });
  }
  ~LateFailureTest() override { SetOpenFailureListener({}); }

  void OpenerEnds(const LateEnd& end) {
    ASSERT_TRUE(QFile::remove(folder_.filePath(QStringLiteral("bin/xdg-open"))));
    Write(QStringLiteral("bin/xdg-open"), "#!/bin/sh\nsleep 0." + QByteArray::number(end.tenths) +
                                              "\necho > '" + EncodeText(Told()) + "'\nexit " +
                                              QByteArray::number(end.code) + "\n");
    ASSERT_TRUE(QFile::setPermissions(folder_.filePath(QStringLiteral("bin/xdg-open")),
                                      QFile::ReadOwner | QFile::ExeOwner));
  }
  void RunEvents(const std::function<bool()>& enough) {
    QElapsedTimer timer;
    timer.start();
    while (!enough() && timer.elapsed() < 10000) {
      QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
      QThread::msleep(1);
    }
  }

  int count_ = 1;
  char name_[5] = "test";
  char* values_[2] = {name_, nullptr};
  QCoreApplication application_{count_, values_};
  QStringList failures_;
};

TEST_F(LateFailureTest, OpenerThatEndsWithAFailureIsReported) {
  Write(QStringLiteral("files/a.xyz"), "x");
  const QString path = folder_.filePath(QStringLiteral("files/a.xyz"));
  for (const LateEnd end : {LateEnd{2, 0}, LateEnd{3, 2}, LateEnd{4, 1}}) {
    failures_.clear();
    OpenerEnds(end);
    EXPECT_EQ(OpenWithProgram(path).code, OpenOutcome::Code::Started);
    RunEvents([this] { return !failures_.isEmpty(); });
    EXPECT_EQ(failures_, QStringList{path}) << end.code;
  }
}

TEST_F(LateFailureTest, AnOpenOfAnotherThreadIsReportedToo) {
  Write(QStringLiteral("files/a.xyz"), "x");
  const QString path = folder_.filePath(QStringLiteral("files/a.xyz"));
  OpenerEnds({4, 1});
  OpenOutcome outcome{.code = OpenOutcome::Code::Failed, .text = {}};
  std::thread([&] { outcome = OpenWithProgram(path); }).join();
  EXPECT_EQ(outcome.code, OpenOutcome::Code::Started);
  RunEvents([this] { return !failures_.isEmpty(); });
  EXPECT_EQ(failures_, QStringList{path});
}

TEST_F(LateFailureTest, OtherEndsAreNoFailure) {
  Write(QStringLiteral("files/a"), "x");
  for (const int code : {0, 1, 5, 127}) {
    OpenerEnds({code, 0});
    QFile::remove(Told());
    EXPECT_EQ(OpenWithProgram(folder_.filePath(QStringLiteral("files/a"))).code, OpenOutcome::Code::Started);
    RunEvents([this] { return QFile::exists(Told()); });
  }
  // Every one of them is gone from the system's table, and was no failure.
  RunEvents([] { return ::waitpid(-1, nullptr, WNOHANG) < 0; });
  EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
  EXPECT_TRUE(failures_.isEmpty());
}

}  // namespace
}  // namespace trevane

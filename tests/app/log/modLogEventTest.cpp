#include "app/log/modLogEvent.h"
#include "tests/support/TestFiles.h"

#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#ifdef Q_OS_LINUX
#include <csignal>

#include <sys/resource.h>
#include <sys/stat.h>
#endif

namespace trevane {
namespace {

using test::ContentOf;
using test::WriteFile;

class modLogEventTest : public testing::Test {
 protected:
  [[nodiscard]] QString Log() const { return folder_.filePath(QStringLiteral("Trevane.log")); }
  [[nodiscard]] QString Previous() const { return folder_.filePath(QStringLiteral("Trevane1.log")); }

  QTemporaryDir folder_;
  QDateTime now_{QDate(2026, 3, 7), QTime(0, 4, 9)};
  int failures_ = 0;
  modLogEvent log_{QStringLiteral("Trevane"), [this] { return now_; }};
};

TEST_F(modLogEventTest, EachKindHasItsExactLine) {
  log_.OpenLog(folder_.path());
  log_.LogEvent(QStringLiteral("CONNECT"), QStringLiteral("Cell1"), QStringLiteral("IxoProv.LocalFile"),
                QStringLiteral(""), QStringLiteral("a=b"));
  log_.LogEvent(QStringLiteral("COPY"), QStringLiteral("C:\\a"), QStringLiteral("C:\\b"),
                QStringLiteral("unused"));
  log_.LogEvent(QStringLiteral("MOVE"), QStringLiteral("C:\\a"), QStringLiteral("C:\\b"));
  log_.LogEvent(QStringLiteral("RENAME"), QStringLiteral("C:\\a"), QStringLiteral("b"));
  log_.LogEvent(QStringLiteral("DELETE"), QStringLiteral("C:\\a"), QStringLiteral("unused"));
  log_.LogEvent(QStringLiteral("DISCONNECT"), QStringLiteral("Cell1"));
  log_.LogEvent(QStringLiteral("copy"), QStringLiteral("kinds are case-sensitive"), QStringLiteral("unused"));
  log_.CloseLog();
  EXPECT_EQ(ContentOf(Log()).toStdString(),
            "[2026/03/07 00:04:09] CONNECT \"Cell1\", \"IxoProv.LocalFile\", \"\", \"a=b\"\r\n"
            "[2026/03/07 00:04:09] COPY \"C:\\a\" TO \"C:\\b\"\r\n"
            "[2026/03/07 00:04:09] MOVE \"C:\\a\" TO \"C:\\b\"\r\n"
            "[2026/03/07 00:04:09] RENAME \"C:\\a\" TO \"b\"\r\n"
            "[2026/03/07 00:04:09] DELETE \"C:\\a\"\r\n"
            "[2026/03/07 00:04:09] DISCONNECT \"Cell1\"\r\n"
            "[2026/03/07 00:04:09] copy \"kinds are case-sensitive\"\r\n");
}

TEST_F(modLogEventTest, AfterMidnightTheHourReads00AndAfternoonIsIn24Hours) {
  log_.OpenLog(folder_.path());
  now_ = QDateTime(QDate(2026, 12, 31), QTime(0, 0, 0));
  log_.WriteLogLine(QStringLiteral("x"));
  now_ = QDateTime(QDate(2026, 12, 31), QTime(23, 59, 59));
  log_.WriteLogLine(QStringLiteral("y"));
  EXPECT_EQ(ContentOf(Log()).toStdString(), "[2026/12/31 00:00:00] x\r\n[2026/12/31 23:59:59] y\r\n");
}

TEST_F(modLogEventTest, AQuoteInsideAValueIsNotEscaped) {
  log_.OpenLog(folder_.path());
  log_.LogEvent(QStringLiteral("DELETE"), QStringLiteral("C:\\a\"b"));
  EXPECT_EQ(ContentOf(Log()).toStdString(), "[2026/03/07 00:04:09] DELETE \"C:\\a\"b\"\r\n");
}

TEST_F(modLogEventTest, ControlCharactersForgeNoLines) {
  log_.OpenLog(folder_.path());
  log_.LogEvent(
      QStringLiteral("DELETE"),
      QStringLiteral("a\r\n[2026/03/07 00:04:09] DELETE \"b\u0000\t\u001B\u007F\u0085\u009B\u2028\u2029"));
  log_.LogEvent(QStringLiteral("COPY"), QStringLiteral("C:\\a\nb"), QStringLiteral("c\rd"));
  log_.LogEvent(QStringLiteral("CONNECT"), QStringLiteral("1\n"), QStringLiteral("2\n"),
                QStringLiteral("3\n"), QStringLiteral("4\n"));
  const QString content = QString::fromUtf8(ContentOf(Log()));
  EXPECT_EQ(content.toStdString(),
            QStringLiteral("[2026/03/07 00:04:09] DELETE \"a␍␊[2026/03/07 00:04:09] DELETE \"b␀␉␛␡␤␦␤␤\"\r\n"
                           "[2026/03/07 00:04:09] COPY \"C:\\a␊b\" TO \"c␍d\"\r\n"
                           "[2026/03/07 00:04:09] CONNECT \"1␊\", \"2␊\", \"3␊\", \"4␊\"\r\n")
                .toStdString());
}

TEST_F(modLogEventTest, ANameThatIsNotValidTextIsLoggedWithItsOwnBytes) {
  log_.OpenLog(folder_.path());
  log_.LogEvent(QStringLiteral("DELETE"), QString(QChar(0xDCFF)) + u'\u00e9');
  EXPECT_EQ(ContentOf(Log()).toStdString(), "[2026/03/07 00:04:09] DELETE \"\xff\xc3\xa9\"\r\n");
}

TEST_F(modLogEventTest, ALineIsInTheFileAsSoonAsItIsWritten) {
  log_.OpenLog(folder_.path());
  log_.WriteLogLine(QStringLiteral("first"));
  EXPECT_TRUE(ContentOf(Log()).endsWith("first\r\n"));
}

TEST_F(modLogEventTest, AnExistingLogIsAppendedTo) {
  WriteFile(Log(), "old\r\n");
  log_.OpenLog(folder_.path());
  log_.WriteLogLine(QStringLiteral("new"));
  EXPECT_EQ(ContentOf(Log()).toStdString(), "old\r\n[2026/03/07 00:04:09] new\r\n");
}

TEST_F(modLogEventTest, ALogOfExactly100000BytesIsNotRotated) {
  WriteFile(Log(), QByteArray(100000, 'x'));
  log_.OpenLog(folder_.path());
  EXPECT_EQ(QFile(Log()).size(), 100000);
  EXPECT_FALSE(QFile::exists(Previous()));
}

TEST_F(modLogEventTest, OneByteMoreRotatesByRenaming) {
  const QByteArray old(100001, 'x');
  WriteFile(Log(), old);
  log_.OpenLog(folder_.path());
  EXPECT_EQ(ContentOf(Previous()), old);
  EXPECT_EQ(QFile(Log()).size(), 0);
}

TEST_F(modLogEventTest, RotationReplacesThePreviousGeneration) {
  WriteFile(Previous(), "older");
  WriteFile(Log(), QByteArray(100001, 'y'));
  log_.OpenLog(folder_.path());
  EXPECT_EQ(QFile(Previous()).size(), 100001);
}

TEST_F(modLogEventTest, ARunningProgramDoesNotRotate) {
  log_.OpenLog(folder_.path());
  log_.WriteLogLine(QString(100100, u'z'));
  log_.WriteLogLine(QStringLiteral("more"));
  EXPECT_FALSE(QFile::exists(Previous()));
}

TEST_F(modLogEventTest, AMissingFolderIsMade) {
  log_.OpenLog(folder_.filePath(QStringLiteral("new/below")));
  log_.WriteLogLine(QStringLiteral("x"));
  EXPECT_TRUE(QFile::exists(folder_.filePath(QStringLiteral("new/below/Trevane.log"))));
}

TEST_F(modLogEventTest, ALogThatCannotBeOpenedIsReportedOnce) {
  ASSERT_TRUE(QDir(folder_.path()).mkdir(QStringLiteral("Trevane.log")));
  log_.SetFailureListener([this] { ++failures_; });
  log_.OpenLog(folder_.path());
  EXPECT_FALSE(log_.IsOpen());
  log_.LogEvent(QStringLiteral("DELETE"), QStringLiteral("C:\\a"));
  log_.LogEvent(QStringLiteral("DELETE"), QStringLiteral("C:\\b"));
  EXPECT_EQ(failures_, 1);
}

TEST_F(modLogEventTest, AReadOnlyFirstFolderMovesTheLogToTheOther) {
  ASSERT_TRUE(QDir(folder_.path()).mkdir(QStringLiteral("Trevane.log")));
  log_.SetFailureListener([this] { ++failures_; });
  log_.OpenLog(folder_.path(), folder_.filePath(QStringLiteral("own/state")));
  log_.WriteLogLine(QStringLiteral("x"));
  log_.CloseLog();
  EXPECT_EQ(failures_, 0);
  EXPECT_TRUE(ContentOf(folder_.filePath(QStringLiteral("own/state/Trevane.log"))).endsWith("x\r\n"));
  WriteFile(folder_.filePath(QStringLiteral("own/state/Trevane.log")), QByteArray(100001, 'x'));
  log_.OpenLog(folder_.path(), folder_.filePath(QStringLiteral("own/state")));
  EXPECT_EQ(QFile(folder_.filePath(QStringLiteral("own/state/Trevane1.log"))).size(), 100001);
}

TEST_F(modLogEventTest, TwoReadOnlyFoldersAreReportedOnce) {
  ASSERT_TRUE(QDir(folder_.path()).mkpath(QStringLiteral("Trevane.log")));
  ASSERT_TRUE(QDir(folder_.path()).mkpath(QStringLiteral("own/Trevane.log")));
  log_.SetFailureListener([this] { ++failures_; });
  log_.OpenLog(folder_.path(), folder_.filePath(QStringLiteral("own")));
  log_.WriteLogLine(QStringLiteral("x"));
  EXPECT_EQ(failures_, 1);
}

TEST_F(modLogEventTest, AFailureBeforeThereIsAListenerReachesItLater) {
  ASSERT_TRUE(QDir(folder_.path()).mkdir(QStringLiteral("Trevane.log")));
  log_.OpenLog(folder_.path());
  log_.SetFailureListener([this] { ++failures_; });
  EXPECT_EQ(failures_, 1);
}

TEST_F(modLogEventTest, AWriteThatFailsIsReportedOnce) {
  log_.SetFailureListener([this] { ++failures_; });
  log_.OpenLog(folder_.path());
  EXPECT_EQ(failures_, 0);
  log_.CloseLog();
  log_.WriteLogLine(QStringLiteral("to a log that is closed"));
  log_.WriteLogLine(QStringLiteral("again"));
  EXPECT_EQ(failures_, 1);
}

#ifdef Q_OS_LINUX
TEST_F(modLogEventTest, ANewLogIsForThisUserAlone) {
  log_.OpenLog(folder_.path());
  struct stat status {};
  ASSERT_EQ(::stat(Log().toUtf8().constData(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0600U);
}

TEST_F(modLogEventTest, AWritableLogInAReadOnlyFolderGrows) {
  WriteFile(Log(), QByteArray(100001, 'x'));
  ASSERT_EQ(::chmod(folder_.path().toUtf8().constData(), 0500), 0);
  log_.OpenLog(folder_.path(), folder_.filePath(QStringLiteral("own")));
  const bool isOpen = log_.IsOpen();
  log_.WriteLogLine(QStringLiteral("y"));
  ASSERT_EQ(::chmod(folder_.path().toUtf8().constData(), 0700), 0);
  EXPECT_TRUE(isOpen);
  EXPECT_EQ(ContentOf(Log()).size(), 100001 + 25);
  EXPECT_FALSE(QFile::exists(Previous()));
  EXPECT_FALSE(QFile::exists(folder_.filePath(QStringLiteral("own"))));
}

TEST_F(modLogEventTest, APipeIsNotWaitedFor) {
  ASSERT_EQ(::mkfifo(Log().toUtf8().constData(), 0600), 0);
  log_.SetFailureListener([this] { ++failures_; });
  log_.OpenLog(folder_.path());
  EXPECT_EQ(failures_, 1);
}

// Only on systems that can limit the disk space of a process.
TEST_F(modLogEventTest, AFullDiskIsReportedOnceAndLinesStayWhole) {
  log_.SetFailureListener([this] { ++failures_; });
  log_.OpenLog(folder_.path());
  // No file of this process may grow beyond this: a write gets that far and no further, as on a full disk.
  std::signal(SIGXFSZ, SIG_IGN);
  rlimit before{};
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
  rlimit small = before;
  small.rlim_cur = 100;
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
  for (int i = 0; i < 5; ++i) {
    log_.WriteLogLine(QStringLiteral("line %1 of some length").arg(i));
  }
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
  EXPECT_EQ(failures_, 1);
  const QByteArray content = ContentOf(Log());
  EXPECT_TRUE(content.endsWith("\r\n"));
  EXPECT_EQ(content.count("\r\n"), 2);
  log_.WriteLogLine(QStringLiteral("room again"));
  EXPECT_TRUE(ContentOf(Log()).endsWith("room again\r\n"));
}

#endif

TEST_F(modLogEventTest, OpeningTwiceAndClosingTwiceDoNoHarm) {
  log_.OpenLog(folder_.path());
  log_.OpenLog(folder_.path());
  log_.WriteLogLine(QStringLiteral("x"));
  log_.CloseLog();
  log_.CloseLog();
  EXPECT_EQ(ContentOf(Log()).count('\n'), 1);
}

}  // namespace
}  // namespace trevane

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

using namespace Qt::StringLiterals;
using test::ContentOf;
using test::WriteFile;

class modLogEventTest : public testing::Test {
 protected:
  [[nodiscard]] QString Log() const { return folder_.filePath(u"Trevane.log"_s); }
  [[nodiscard]] QString Previous() const { return folder_.filePath(u"Trevane1.log"_s); }

  QTemporaryDir folder_;
  QDateTime now_{QDate(2026, 3, 7), QTime(0, 4, 9)};
  int failures_ = 0;
  modLogEvent log_{u"Trevane"_s, [this] { return now_; }};
};

TEST_F(modLogEventTest, EachKindHasItsExactLine) {
  log_.OpenLog(folder_.path());
  log_.LogEvent(u"CONNECT"_s, u"Cell1"_s, u"IxoProv.LocalFile"_s, u""_s, u"a=b"_s);
  log_.LogEvent(u"COPY"_s, u"C:\\a"_s, u"C:\\b"_s, u"unused"_s);
  log_.LogEvent(u"MOVE"_s, u"C:\\a"_s, u"C:\\b"_s);
  log_.LogEvent(u"RENAME"_s, u"C:\\a"_s, u"b"_s);
  log_.LogEvent(u"DELETE"_s, u"C:\\a"_s, u"unused"_s);
  log_.LogEvent(u"DISCONNECT"_s, u"Cell1"_s);
  log_.LogEvent(u"copy"_s, u"kinds are case-sensitive"_s, u"unused"_s);
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
  log_.WriteLogLine(u"x"_s);
  now_ = QDateTime(QDate(2026, 12, 31), QTime(23, 59, 59));
  log_.WriteLogLine(u"y"_s);
  EXPECT_EQ(ContentOf(Log()).toStdString(), "[2026/12/31 00:00:00] x\r\n[2026/12/31 23:59:59] y\r\n");
}

TEST_F(modLogEventTest, AQuoteInsideAValueIsNotEscaped) {
  log_.OpenLog(folder_.path());
  log_.LogEvent(u"DELETE"_s, u"C:\\a\"b"_s);
  EXPECT_EQ(ContentOf(Log()).toStdString(), "[2026/03/07 00:04:09] DELETE \"C:\\a\"b\"\r\n");
}

TEST_F(modLogEventTest, ControlCharactersForgeNoLines) {
  log_.OpenLog(folder_.path());
  log_.LogEvent(u"DELETE"_s,
                u"a\r\n[2026/03/07 00:04:09] DELETE \"b\u0000\t\u001B\u007F\u0085\u009B\u2028\u2029"_s);
  log_.LogEvent(u"COPY"_s, u"C:\\a\nb"_s, u"c\rd"_s);
  log_.LogEvent(u"CONNECT"_s, u"1\n"_s, u"2\n"_s, u"3\n"_s, u"4\n"_s);
  const QString content = QString::fromUtf8(ContentOf(Log()));
  EXPECT_EQ(content.toStdString(),
            u"[2026/03/07 00:04:09] DELETE \"a␍␊[2026/03/07 00:04:09] DELETE \"b␀␉␛␡␤␦␤␤\"\r\n"
            u"[2026/03/07 00:04:09] COPY \"C:\\a␊b\" TO \"c␍d\"\r\n"
            u"[2026/03/07 00:04:09] CONNECT \"1␊\", \"2␊\", \"3␊\", \"4␊\"\r\n"_s.toStdString());
}

TEST_F(modLogEventTest, ANameThatIsNotValidTextIsLoggedWithItsOwnBytes) {
  log_.OpenLog(folder_.path());
  log_.LogEvent(u"DELETE"_s, QString(QChar(0xDCFF)) + u'\u00e9');
  EXPECT_EQ(ContentOf(Log()).toStdString(), "[2026/03/07 00:04:09] DELETE \"\xff\xc3\xa9\"\r\n");
}

TEST_F(modLogEventTest, ALineIsInTheFileAsSoonAsItIsWritten) {
  log_.OpenLog(folder_.path());
  log_.WriteLogLine(u"first"_s);
  EXPECT_TRUE(ContentOf(Log()).endsWith("first\r\n"));
}

TEST_F(modLogEventTest, AnExistingLogIsAppendedTo) {
  WriteFile(Log(), "old\r\n");
  log_.OpenLog(folder_.path());
  log_.WriteLogLine(u"new"_s);
  EXPECT_EQ(ContentOf(Log()).toStdString(), "old\r\n[2026/03/07 00:04:09] new\r\n");
}

TEST_F(modLogEventTest, ALogOfExactly100000BytesIsNotRotated) {
  WriteFile(Log(), QByteArray(100000, 'x'));
  log_.OpenLog(folder_.path());
  EXPECT_EQ(QFile(Log()).size(), 100000);
  EXPECT_FALSE(QFile::exists(Previous()));
}

TEST_F(modLogEventTest, OneByteMoreIsRotatedAndWithNoPreviousGenerationThatOnlyRenames) {
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
  log_.WriteLogLine(u"more"_s);
  EXPECT_FALSE(QFile::exists(Previous()));
}

TEST_F(modLogEventTest, AMissingFolderIsMade) {
  log_.OpenLog(folder_.filePath(u"new/below"_s));
  log_.WriteLogLine(u"x"_s);
  EXPECT_TRUE(QFile::exists(folder_.filePath(u"new/below/Trevane.log"_s)));
}

TEST_F(modLogEventTest, ALogThatCannotBeOpenedIsReportedOnceAndStopsNothing) {
  ASSERT_TRUE(QDir(folder_.path()).mkdir(u"Trevane.log"_s));
  log_.SetFailureListener([this] { ++failures_; });
  log_.OpenLog(folder_.path());
  EXPECT_FALSE(log_.IsOpen());
  log_.LogEvent(u"DELETE"_s, u"C:\\a"_s);
  log_.LogEvent(u"DELETE"_s, u"C:\\b"_s);
  EXPECT_EQ(failures_, 1);
}

TEST_F(modLogEventTest, WhereTheFirstFolderIsClosedTheOtherOneHoldsTheLog) {
  ASSERT_TRUE(QDir(folder_.path()).mkdir(u"Trevane.log"_s));
  log_.SetFailureListener([this] { ++failures_; });
  log_.OpenLog(folder_.path(), folder_.filePath(u"own/state"_s));
  log_.WriteLogLine(u"x"_s);
  log_.CloseLog();
  EXPECT_EQ(failures_, 0);
  EXPECT_TRUE(ContentOf(folder_.filePath(u"own/state/Trevane.log"_s)).endsWith("x\r\n"));
  WriteFile(folder_.filePath(u"own/state/Trevane.log"_s), QByteArray(100001, 'x'));
  log_.OpenLog(folder_.path(), folder_.filePath(u"own/state"_s));
  EXPECT_EQ(QFile(folder_.filePath(u"own/state/Trevane1.log"_s)).size(), 100001);
}

TEST_F(modLogEventTest, WhereBothFoldersAreClosedTheFailureIsReportedOnce) {
  ASSERT_TRUE(QDir(folder_.path()).mkpath(u"Trevane.log"_s));
  ASSERT_TRUE(QDir(folder_.path()).mkpath(u"own/Trevane.log"_s));
  log_.SetFailureListener([this] { ++failures_; });
  log_.OpenLog(folder_.path(), folder_.filePath(u"own"_s));
  log_.WriteLogLine(u"x"_s);
  EXPECT_EQ(failures_, 1);
}

TEST_F(modLogEventTest, AFailureBeforeThereIsAListenerReachesItLater) {
  ASSERT_TRUE(QDir(folder_.path()).mkdir(u"Trevane.log"_s));
  log_.OpenLog(folder_.path());
  log_.SetFailureListener([this] { ++failures_; });
  EXPECT_EQ(failures_, 1);
}

TEST_F(modLogEventTest, AWriteThatFailsIsReportedOnce) {
  log_.SetFailureListener([this] { ++failures_; });
  log_.OpenLog(folder_.path());
  EXPECT_EQ(failures_, 0);
  log_.CloseLog();
  log_.WriteLogLine(u"to a log that is closed"_s);
  log_.WriteLogLine(u"again"_s);
  EXPECT_EQ(failures_, 1);
}

#ifdef Q_OS_LINUX
TEST_F(modLogEventTest, ANewLogIsForThisUserAlone) {
  log_.OpenLog(folder_.path());
  struct stat status {};
  ASSERT_EQ(::stat(Log().toUtf8().constData(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0600U);
}

TEST_F(modLogEventTest, AWritableLogInAClosedFolderIsAppendedToAndGrows) {
  WriteFile(Log(), QByteArray(100001, 'x'));
  ASSERT_EQ(::chmod(folder_.path().toUtf8().constData(), 0500), 0);
  log_.OpenLog(folder_.path(), folder_.filePath(u"own"_s));
  const bool isOpen = log_.IsOpen();
  log_.WriteLogLine(u"y"_s);
  ASSERT_EQ(::chmod(folder_.path().toUtf8().constData(), 0700), 0);
  EXPECT_TRUE(isOpen);
  EXPECT_EQ(ContentOf(Log()).size(), 100001 + 25);
  EXPECT_FALSE(QFile::exists(Previous()));
  EXPECT_FALSE(QFile::exists(folder_.filePath(u"own"_s)));
}

TEST_F(modLogEventTest, APipeIsNotWaitedFor) {
  ASSERT_EQ(::mkfifo(Log().toUtf8().constData(), 0600), 0);
  log_.SetFailureListener([this] { ++failures_; });
  log_.OpenLog(folder_.path());
  EXPECT_EQ(failures_, 1);
}

// Where a process can be given less room than the disk has.
TEST_F(modLogEventTest, OnAFullDiskTheLogKeepsWholeLinesAndTheFailureIsReportedOnce) {
  log_.SetFailureListener([this] { ++failures_; });
  log_.OpenLog(folder_.path());
  // No file of this process may grow beyond this: a write gets that far and no further, as on a full disk.
  std::signal(SIGXFSZ, SIG_IGN);
  rlimit before{};
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
  rlimit small = before;
  small.rlim_cur = 100;
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
  for (int i = 0; i < 5; ++i)
    log_.WriteLogLine(u"line %1 of some length"_s.arg(i));
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
  EXPECT_EQ(failures_, 1);
  const QByteArray content = ContentOf(Log());
  EXPECT_TRUE(content.endsWith("\r\n"));
  EXPECT_EQ(content.count("\r\n"), 2);
  log_.WriteLogLine(u"room again"_s);
  EXPECT_TRUE(ContentOf(Log()).endsWith("room again\r\n"));
}

#endif

TEST_F(modLogEventTest, OpeningTwiceAndClosingTwiceDoNoHarm) {
  log_.OpenLog(folder_.path());
  log_.OpenLog(folder_.path());
  log_.WriteLogLine(u"x"_s);
  log_.CloseLog();
  log_.CloseLog();
  EXPECT_EQ(ContentOf(Log()).count('\n'), 1);
}

}  // namespace
}  // namespace trevane

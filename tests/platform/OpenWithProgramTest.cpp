#include "platform/NameCodec.h"
#include "platform/OpenWithProgram.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QThread>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

namespace trevane {
namespace {

using namespace Qt::StringLiterals;

// A desktop whose opener writes down what it is given.
class OpenWithProgramTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(folder_.isValid());
    ASSERT_TRUE(QDir(folder_.path()).mkpath(u"bin"_s));
    ASSERT_TRUE(QDir(folder_.path()).mkpath(u"files"_s));
    oldPath_ = qgetenv("PATH");
    qputenv("PATH", EncodeText(folder_.filePath(u"bin"_s)) + ":/usr/bin:/bin");
    Write(u"bin/xdg-open"_s, "#!/bin/sh\nprintf '%s\\n%s' \"$1\" \"$PWD\" > '" + EncodeText(Told()) +
                                 ".part'\nmv '" + EncodeText(Told()) + ".part' '" + EncodeText(Told()) +
                                 "'\n");
    ASSERT_TRUE(
        QFile::setPermissions(folder_.filePath(u"bin/xdg-open"_s), QFile::ReadOwner | QFile::ExeOwner));
  }
  void TearDown() override { qputenv("PATH", oldPath_); }

  void Write(const QString& name, const QByteArray& content) {
    QFile file(folder_.filePath(name));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(content);
  }
  QString Told() const { return folder_.filePath(u"told"_s); }

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
  Write(u"files/a b's.txt"_s, "x");
  const QString path = folder_.filePath(u"files/a b's.txt"_s);
  const OpenOutcome outcome = OpenWithProgram(path);
  EXPECT_EQ(outcome.code, OpenOutcome::Code::Started);
  EXPECT_TRUE(outcome.text.isEmpty());
  EXPECT_EQ(WaitForOpener(), (QByteArrayList{EncodeText(path), EncodeText(folder_.filePath(u"files"_s))}));
}

TEST_F(OpenWithProgramTest, NameThatIsNoTextArrivesAsItIs) {
  const QString path = folder_.filePath(u"files/x"_s + QChar(0xDCFF));
  const int fd = ::creat(EncodeText(path).constData(), 0600);
  ASSERT_GE(fd, 0);
  ::close(fd);
  EXPECT_EQ(OpenWithProgram(path).code, OpenOutcome::Code::Started);
  EXPECT_EQ(WaitForOpener().value(0), EncodeText(path));
  // The temporary folder cannot remove such a name by itself.
  EXPECT_EQ(::unlink(EncodeText(path).constData()), 0);
}

TEST_F(OpenWithProgramTest, FileThatIsGoneIsNotFound) {
  const OpenOutcome outcome = OpenWithProgram(folder_.filePath(u"files/none"_s));
  EXPECT_EQ(outcome.code, OpenOutcome::Code::NotFound);
  EXPECT_FALSE(outcome.text.isEmpty());
  EXPECT_EQ(OpenWithProgram({}).code, OpenOutcome::Code::NotFound);
}

TEST_F(OpenWithProgramTest, DesktopWithoutAnOpenerIsToldInWords) {
  Write(u"files/a"_s, "x");
  qputenv("PATH", EncodeText(folder_.filePath(u"files"_s)));
  const OpenOutcome outcome = OpenWithProgram(folder_.filePath(u"files/a"_s));
  EXPECT_EQ(outcome.code, OpenOutcome::Code::NoProgram);
  EXPECT_TRUE(outcome.text.contains(u"xdg-open"));
}

TEST_F(OpenWithProgramTest, OpenerThatCannotRunIsAFailure) {
  Write(u"files/a"_s, "x");
  ASSERT_TRUE(QFile::remove(folder_.filePath(u"bin/xdg-open"_s)));
  Write(u"bin/xdg-open"_s, "#!/no/such/interpreter\n");
  ASSERT_TRUE(QFile::setPermissions(folder_.filePath(u"bin/xdg-open"_s), QFile::ReadOwner | QFile::ExeOwner));
  const OpenOutcome outcome = OpenWithProgram(folder_.filePath(u"files/a"_s));
  EXPECT_EQ(outcome.code, OpenOutcome::Code::Failed);
  EXPECT_FALSE(outcome.text.isEmpty());
}

}  // namespace
}  // namespace trevane

// Behaviour that needs symbolic links, pipes and permission bits.

#include "base/NameCodec.h"
#include "platform/PrivateProfile.h"
#include "tests/support/TestFiles.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <csignal>

#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace trevane {
namespace {

using test::ContentOf;
using test::EntriesOf;
using test::WriteFile;

class ProfileFileTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(folder_.isValid());
    path_ = folder_.filePath(QStringLiteral("settings.ini"));
  }

  static bool Put(const QString& path) {
    return privateprofile::WriteString(QStringLiteral("s"), QStringLiteral("k"), QStringLiteral("2"), path);
  }
  static mode_t Mode(const QString& path) {
    struct stat status {};
    EXPECT_EQ(::stat(EncodeText(path).constData(), &status), 0);
    return status.st_mode & 07777;
  }

  QTemporaryDir folder_;
  QString path_;
};

TEST_F(ProfileFileTest, PermissionsStay) {
  WriteFile(path_, "[s]\r\nk=1\r\n");
  for (const mode_t mode : {0600U, 0640U, 0664U, 0755U}) {
    ASSERT_EQ(::chmod(EncodeText(path_).constData(), mode), 0);
    EXPECT_TRUE(Put(path_));
    EXPECT_TRUE(
        privateprofile::WriteString(QStringLiteral("s"), QStringLiteral("k"), QStringLiteral("1"), path_));
    EXPECT_EQ(Mode(path_), mode);
  }
}

TEST_F(ProfileFileTest, NewFileHasWhatTheMaskAllows) {
  const mode_t old = ::umask(027);
  EXPECT_TRUE(Put(path_));
  ::umask(old);
  EXPECT_EQ(Mode(path_), 0640U);
}

TEST_F(ProfileFileTest, LinkStaysAndItsTargetIsWritten) {
  const QString target = folder_.filePath(QStringLiteral("target.ini"));
  WriteFile(target, "[s]\r\nk=1\r\n");
  ASSERT_TRUE(QFile::link(QStringLiteral("target.ini"), path_));
  EXPECT_EQ(privateprofile::GetInt(QStringLiteral("s"), QStringLiteral("k"), 0, path_), 1U);
  EXPECT_TRUE(Put(path_));
  EXPECT_TRUE(QFileInfo(path_).isSymbolicLink());
  EXPECT_FALSE(QFileInfo(target).isSymbolicLink());
  EXPECT_EQ(ContentOf(target), "[s]\r\nk=2\r\n");
}

TEST_F(ProfileFileTest, LinkToAnotherFolderIsWrittenThere) {
  ASSERT_TRUE(QDir(folder_.path()).mkpath(QStringLiteral("a/b")));
  WriteFile(folder_.filePath(QStringLiteral("a/b/real.ini")), "[s]\r\nk=1\r\n");
  ASSERT_TRUE(QFile::link(QStringLiteral("b/real.ini"), folder_.filePath(QStringLiteral("a/middle.ini"))));
  ASSERT_TRUE(QFile::link(folder_.filePath(QStringLiteral("a/middle.ini")), path_));
  EXPECT_TRUE(Put(path_));
  EXPECT_EQ(ContentOf(folder_.filePath(QStringLiteral("a/b/real.ini"))), "[s]\r\nk=2\r\n");
  EXPECT_TRUE(QFileInfo(path_).isSymbolicLink());
  EXPECT_TRUE(QFileInfo(folder_.filePath(QStringLiteral("a/middle.ini"))).isSymbolicLink());
}

TEST_F(ProfileFileTest, LinkToNothingMakesItsTarget) {
  ASSERT_TRUE(QFile::link(QStringLiteral("target.ini"), path_));
  EXPECT_TRUE(Put(path_));
  EXPECT_TRUE(QFileInfo(path_).isSymbolicLink());
  EXPECT_EQ(ContentOf(folder_.filePath(QStringLiteral("target.ini"))), "[s]\r\nk=2\r\n");
}

TEST_F(ProfileFileTest, LinkToItselfIsNoFile) {
  ASSERT_TRUE(QFile::link(QStringLiteral("settings.ini"), path_));
  EXPECT_EQ(
      privateprofile::GetString(QStringLiteral("s"), QStringLiteral("k"), QStringLiteral("d"), 100, path_),
      QStringLiteral("d"));
  EXPECT_FALSE(Put(path_));
}

TEST_F(ProfileFileTest, LinkToAReadOnlyFileIsNotWritten) {
  const QString target = folder_.filePath(QStringLiteral("target.ini"));
  WriteFile(target, "[s]\r\nk=1\r\n");
  ASSERT_TRUE(QFile::setPermissions(target, QFile::ReadOwner));
  ASSERT_TRUE(QFile::link(QStringLiteral("target.ini"), path_));
  EXPECT_FALSE(Put(path_));
  EXPECT_EQ(ContentOf(target), "[s]\r\nk=1\r\n");
}

TEST_F(ProfileFileTest, PipeIsNotWaitedFor) {
  ASSERT_EQ(::mkfifo(EncodeText(path_).constData(), 0600), 0);
  EXPECT_EQ(
      privateprofile::GetString(QStringLiteral("s"), QStringLiteral("k"), QStringLiteral("d"), 100, path_),
      QStringLiteral("d"));
  EXPECT_FALSE(Put(path_));
}

TEST_F(ProfileFileTest, EndlessDeviceIsNotRead) {
  EXPECT_EQ(privateprofile::GetString(QStringLiteral("s"), QStringLiteral("k"), QStringLiteral("d"), 100,
                                      QStringLiteral("/dev/zero")),
            QStringLiteral("d"));
  EXPECT_FALSE(Put(QStringLiteral("/dev/null")));
}

TEST_F(ProfileFileTest, NameThatIsNoTextIsAFileLikeAnyOther) {
  const QString path = folder_.filePath(QStringLiteral("x") + QChar(0xDCFF) + QStringLiteral(".ini"));
  EXPECT_TRUE(Put(path));
  EXPECT_EQ(::access((EncodeText(folder_.path()) + "/x\xFF.ini").constData(), F_OK), 0);
  EXPECT_EQ(privateprofile::GetInt(QStringLiteral("s"), QStringLiteral("k"), 0, path), 2U);
  // The temporary folder cannot remove such a name by itself.
  EXPECT_EQ(::unlink(EncodeText(path).constData()), 0);
}

TEST_F(ProfileFileTest, LongestNameCanBeWritten) {
  const QString path = folder_.filePath(QString(255, u'n'));
  EXPECT_TRUE(Put(path));
  EXPECT_TRUE(
      privateprofile::WriteString(QStringLiteral("s"), QStringLiteral("k"), QStringLiteral("3"), path));
  EXPECT_EQ(privateprofile::GetInt(QStringLiteral("s"), QStringLiteral("k"), 0, path), 3U);
}

TEST_F(ProfileFileTest, WriteIsOneStepAndLeavesNothingBehind) {
  WriteFile(path_, "[s]\r\nk=1\r\n");
  QFile before(path_);
  ASSERT_TRUE(before.open(QIODevice::ReadOnly));
  EXPECT_TRUE(Put(path_));
  // A reader that has the old file open still reads the whole of it: it was replaced, not changed.
  EXPECT_EQ(before.readAll(), "[s]\r\nk=1\r\n");
  EXPECT_EQ(EntriesOf(folder_.path()), QStringList{QStringLiteral("settings.ini")});
}

TEST_F(ProfileFileTest, UnchangedContentIsNotWrittenAgain) {
  WriteFile(path_, "[s]\r\nk=2\r\n");
  struct stat before {};
  struct stat after {};
  ASSERT_EQ(::stat(EncodeText(path_).constData(), &before), 0);
  EXPECT_TRUE(Put(path_));
  ASSERT_EQ(::stat(EncodeText(path_).constData(), &after), 0);
  EXPECT_EQ(before.st_ino, after.st_ino);
}

TEST_F(ProfileFileTest, FailedWriteLeavesTheOldFileAndNothingElse) {
  const QByteArray old = "[s]\r\nk=1\r\n" + QByteArray(8192, ';') + "\r\n";
  WriteFile(path_, old);
  // In a process of its own, where no file can grow beyond one kilobyte: the disk is full, as far as it can
  // see.
  const pid_t child = ::fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    ::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{1024, 1024};
    ::setrlimit(RLIMIT_FSIZE, &limit);
    ::_exit(Put(path_) ? 1 : 0);
  }
  int status = -1;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "the write must fail";
  EXPECT_EQ(ContentOf(path_), old);
  EXPECT_EQ(EntriesOf(folder_.path()), QStringList{QStringLiteral("settings.ini")});
}

TEST_F(ProfileFileTest, Utf16FileKeepsLoneSurrogatesAndItsOddByte) {
  const QByteArray old(
      "\xFF\xFE[\0s\0]\0\n\0k\0=\0"
      "1\0\n\0;\0\x3D\xD8x\0\x00\xDC\n\0q",
      29);
  WriteFile(path_, old);
  EXPECT_TRUE(Put(path_));
  QByteArray expected = old;
  expected.replace(QByteArray("=\0"
                              "1",
                              3),
                   QByteArray("=\0"
                              "2",
                              3));
  EXPECT_EQ(ContentOf(path_).toHex(), expected.toHex());
}

}  // namespace
}  // namespace trevane

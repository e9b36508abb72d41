// Links, pipes, permissions and full disks, as only these systems have or show them.

#include "base/NameCodec.h"
#include "platform/OwnFile.h"
#include "tests/support/FlushFault.h"
#include "tests/support/SmallDisk.h"
#include "tests/support/TestFiles.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>

#include <grp.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace trevane {
namespace {

using test::ContentOf;
using test::EntriesOf;
using test::SmallDisk;
using test::WriteFile;

const ownfile::ReplaceOptions kInPlace{.inPlaceInClosedFolder = true};

class OwnFileSystemTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(folder_.isValid());
    path_ = In(QStringLiteral("file"));
  }
  void TearDown() override { Chmod(folder_.path(), 0700); }

  [[nodiscard]] QString In(const QString& name) const { return folder_.filePath(name); }
  static void Chmod(const QString& path, mode_t mode) {
    ASSERT_EQ(::chmod(EncodeText(path).constData(), mode), 0);
  }
  static struct stat StatusOf(const QString& path) {
    struct stat status {};
    EXPECT_EQ(::stat(EncodeText(path).constData(), &status), 0);
    return status;
  }
  static mode_t Mode(const QString& path) { return StatusOf(path).st_mode & 07777; }

  QTemporaryDir folder_;
  QString path_;
};

TEST_F(OwnFileSystemTest, PipeIsNeitherOpenedNorReplaced) {
  ASSERT_EQ(::mkfifo(EncodeText(path_).constData(), 0600), 0);
  EXPECT_EQ(ownfile::Read(path_).state, ownfile::State::Unreadable);
  EXPECT_TRUE(ownfile::Exists(path_));
  EXPECT_FALSE(ownfile::Replace(path_, "new", kInPlace));
  QFile log;
  EXPECT_FALSE(ownfile::OpenForAppending(log, path_));
  EXPECT_TRUE(S_ISFIFO(StatusOf(path_).st_mode));
}

TEST_F(OwnFileSystemTest, NewFileHasWhatTheMaskAllowsOrIsPrivate) {
  const mode_t old = ::umask(027);
  EXPECT_TRUE(ownfile::Replace(path_, "a"));
  EXPECT_TRUE(ownfile::Replace(In(QStringLiteral("private")), "a", {.isPrivate = true}));
  QFile log;
  EXPECT_TRUE(ownfile::OpenForAppending(log, In(QStringLiteral("log"))));
  EXPECT_TRUE(ownfile::MakePrivateFolder(In(QStringLiteral("made/below"))));
  ::umask(old);
  EXPECT_EQ(Mode(path_), 0640U);
  EXPECT_EQ(Mode(In(QStringLiteral("private"))), 0600U);
  EXPECT_EQ(Mode(In(QStringLiteral("log"))), 0600U);
  EXPECT_EQ(Mode(In(QStringLiteral("made"))), 0700U);
}

TEST_F(OwnFileSystemTest, ReplacedFileKeepsItsPermissionsButNoSetIdBits) {
  WriteFile(path_, "old");
  for (const auto& [before, after] : {std::pair{0600U, 0600U}, {0664U, 0664U}, {06755U, 0755U}}) {
    Chmod(path_, before);
    EXPECT_TRUE(ownfile::Replace(path_, "new", {.isPrivate = true}));
    EXPECT_EQ(Mode(path_), after);
  }
}

TEST_F(OwnFileSystemTest, PermissionsOfAGroupAreNotForAnother) {
  if (::geteuid() != 0) {
    GTEST_SKIP() << "only the superuser can give a file to a group that it is not in";
  }
  WriteFile(path_, "old");
  const QByteArray path = EncodeText(path_);
  ASSERT_EQ(::chown(path.constData(), 65534, 65534), 0);
  Chmod(path_, 0664);
  Chmod(folder_.path(), 0777);
  const pid_t child = ::fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    // The owner, who is not in the file's group.
    const bool left = ::setgroups(0, nullptr) == 0 && ::setresgid(12345, 12345, 12345) == 0 &&
                      ::setresuid(65534, 65534, 65534) == 0;
    ::_exit(left && ownfile::Replace(path_, "new") ? 0 : 1);
  }
  int status = -1;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(StatusOf(path_).st_gid, 12345U);
  EXPECT_EQ(Mode(path_), 0604U);
}

TEST_F(OwnFileSystemTest, IsReadByNobodyElseWhileItIsWritten) {
  WriteFile(path_, "old");
  Chmod(path_, 0644);
  // Seen at the flush, when all of it is written.
  struct Seen {
    QString folder;
    QStringList names;
    mode_t mode = 0;
  } seen{folder_.path(), {}, 0};
  {
    const test::WatchedFlush watch([&seen](int fd) {
      struct stat status {};
      ASSERT_EQ(::fstat(fd, &status), 0);
      seen.mode = status.st_mode & 0777;
      seen.names = EntriesOf(seen.folder);
    });
    EXPECT_TRUE(ownfile::Replace(path_, "new"));
  }
  EXPECT_EQ(seen.mode, 0600U);
  ASSERT_EQ(seen.names.size(), 2);
  EXPECT_TRUE(seen.names[1].startsWith(u"RLX") && seen.names[1].endsWith(u".tmp"));
  EXPECT_EQ(Mode(path_), 0644U);
}

TEST_F(OwnFileSystemTest, FlushThatFailsLeavesTheOldFile) {
  WriteFile(path_, "old");
  const test::FailingFlush full(ENOSPC);
  EXPECT_FALSE(ownfile::Replace(path_, "new"));
  EXPECT_FALSE(ownfile::Replace(In(QStringLiteral("fresh")), "new"));
  EXPECT_EQ(ContentOf(path_), "old");
  EXPECT_EQ(EntriesOf(folder_.path()), QStringList{QStringLiteral("file")});
}

TEST_F(OwnFileSystemTest, NameThatPassedToAnotherFileIsNotTakenOver) {
  WriteFile(path_, "old");
  const test::WatchedFlush watch([this](int) {
    // As another user does it in a folder that all may write to.
    for (const QString& name : QDir(folder_.path()).entryList({QStringLiteral("RLX*")})) {
      ASSERT_TRUE(QFile::remove(In(name)));
      WriteFile(In(name), "foreign");
    }
  });
  EXPECT_FALSE(ownfile::Replace(path_, "new"));
  EXPECT_EQ(ContentOf(path_), "old");
  // The foreign file is not ours to delete.
  EXPECT_EQ(EntriesOf(folder_.path()).size(), 2);
}

TEST_F(OwnFileSystemTest, WritableFileInAReadOnlyFolderIsWrittenInPlace) {
  WriteFile(path_, "old content");
  Chmod(path_, 0640);
  const auto before = StatusOf(path_).st_ino;
  Chmod(folder_.path(), 0500);
  EXPECT_FALSE(ownfile::Replace(path_, "new"));
  EXPECT_FALSE(ownfile::IsWritable(path_));
  EXPECT_TRUE(ownfile::IsWritable(path_, kInPlace));
  for (const QByteArray& bytes :
       {QByteArray("new"), QByteArray(5000, 'x'), QByteArray(), QByteArray("last")}) {
    EXPECT_TRUE(ownfile::Replace(path_, bytes, kInPlace));
    EXPECT_EQ(ContentOf(path_), bytes);
  }
  EXPECT_EQ(StatusOf(path_).st_ino, before);
  EXPECT_EQ(Mode(path_), 0640U);
  EXPECT_FALSE(ownfile::IsWritable(In(QStringLiteral("fresh")), kInPlace));
  EXPECT_FALSE(ownfile::Replace(In(QStringLiteral("fresh")), "new", kInPlace));
}

TEST_F(OwnFileSystemTest, AFailedWriteInPlaceRestoresTheContent) {
  const QByteArray old(600, 'o');
  WriteFile(path_, old);
  Chmod(folder_.path(), 0500);
  // In a process of its own, where no file can grow beyond one kilobyte: the write ends halfway.
  const pid_t child = ::fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    ::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{1024, 1024};
    ::setrlimit(RLIMIT_FSIZE, &limit);
    ::_exit(ownfile::Replace(path_, QByteArray(8192, 'n'), kInPlace) ? 1 : 0);
  }
  int status = -1;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0) << "the write must fail";
  EXPECT_EQ(ContentOf(path_), old);
}

TEST_F(OwnFileSystemTest, FullDiskIsFoundBeforeTheOldContentIsTouched) {
  const SmallDisk disk;
  if (!disk.IsMounted()) {
    GTEST_SKIP() << "a disk of its own can be had by the superuser alone, and only where mounting is allowed";
  }
  const QString path = disk.Path() + QStringLiteral("/file");
  WriteFile(path, "old");
  disk.Fill();
  EXPECT_FALSE(ownfile::Replace(path, QByteArray(200000, 'n')));
  EXPECT_EQ(ContentOf(path), "old");
  EXPECT_EQ(EntriesOf(disk.Path()), (QStringList{QStringLiteral("file"), QStringLiteral("filling")}));
  Chmod(disk.Path(), 0500);
  const auto before = StatusOf(path);
  EXPECT_FALSE(ownfile::Replace(path, QByteArray(200000, 'n'), kInPlace));
  EXPECT_EQ(ContentOf(path), "old");
  EXPECT_EQ(StatusOf(path).st_mtim.tv_nsec, before.st_mtim.tv_nsec);
}

TEST_F(OwnFileSystemTest, FirstFolderThatIsFullIsPassedOver) {
  const SmallDisk disk;
  if (!disk.IsMounted()) {
    GTEST_SKIP() << "a disk of its own can be had by the superuser alone, and only where mounting is allowed";
  }
  disk.Fill();
  EXPECT_TRUE(ownfile::Replace(path_, QByteArray(200000, 'n'), {.firstFolder = disk.Path()}));
  EXPECT_EQ(ContentOf(path_).size(), 200000);
  EXPECT_EQ(EntriesOf(disk.Path()), QStringList{QStringLiteral("filling")});
}

TEST_F(OwnFileSystemTest, FirstFolderWhereWritingFailsIsPassedOver) {
  WriteFile(path_, "old");
  ASSERT_TRUE(QDir(folder_.path()).mkdir(QStringLiteral("first")));
  const int before = test::FlushCount();
  const test::FailingFlush full(ENOSPC, 1);
  EXPECT_TRUE(ownfile::Replace(path_, "new", {.firstFolder = In(QStringLiteral("first"))}));
  EXPECT_EQ(test::FlushCount() - before, 2);
  EXPECT_EQ(ContentOf(path_), "new");
  EXPECT_TRUE(EntriesOf(In(QStringLiteral("first"))).isEmpty());
  EXPECT_EQ(EntriesOf(folder_.path()), (QStringList{QStringLiteral("file"), QStringLiteral("first")}));
}

TEST_F(OwnFileSystemTest, FailureGivesTheSystemsReason) {
  EXPECT_EQ(ownfile::Replace(In(QStringLiteral("none/file")), "new").reason, qt_error_string(ENOENT));
  WriteFile(path_, "old");
  {
    const test::FailingFlush full(ENOSPC);
    EXPECT_EQ(ownfile::Replace(path_, "new").reason, qt_error_string(ENOSPC));
  }
  Chmod(path_, 0400);
  EXPECT_EQ(ownfile::Replace(path_, "new").reason, qt_error_string(EACCES));
  EXPECT_EQ(ownfile::Read(folder_.path()).reason, QStringLiteral("It is no plain file"));
}

TEST_F(OwnFileSystemTest, OneReplacementIsOneWriteAndOneFlush) {
  ASSERT_TRUE(QDir(folder_.path()).mkdir(QStringLiteral("first")));
  const int before = test::FlushCount();
  EXPECT_TRUE(ownfile::Replace(path_, QByteArray(100000, 'x'), {.firstFolder = In(QStringLiteral("first"))}));
  EXPECT_EQ(test::FlushCount() - before, 1);
}

}  // namespace
}  // namespace trevane

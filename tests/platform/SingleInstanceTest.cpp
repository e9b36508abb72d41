#include "base/NameCodec.h"
#include "platform/SingleInstance.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <csignal>
#include <memory>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace trevane {
namespace {

class SingleInstanceTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(folder_.isValid());
    for (const auto* name : {u"copy1", u"copy2", u"locks"}) {
      ASSERT_TRUE(QDir(folder_.path()).mkdir(QString::fromUtf16(name)));
    }
    copy1_ = folder_.filePath(QStringLiteral("copy1"));
    copy2_ = folder_.filePath(QStringLiteral("copy2"));
    locks_ = folder_.filePath(QStringLiteral("locks"));
  }

  QTemporaryDir folder_;
  QString copy1_;
  QString copy2_;
  QString locks_;
};

// Another process that holds the claim until it is killed.
class Holder {
 public:
  Holder(const QString& copy, const QString& locks) {
    int ready[2];
    EXPECT_EQ(::pipe(ready), 0);
    pid_ = ::fork();
    if (pid_ == 0) {
      const SingleInstance instance(copy, locks);
      const char answer = instance.IsFirst() ? 'y' : 'n';
      if (::write(ready[1], &answer, 1) == 1) {
        while (true) {
          ::pause();
        }
      }
      ::_exit(1);
    }
    ::close(ready[1]);
    EXPECT_EQ(::read(ready[0], &answer_, 1), 1);
    ::close(ready[0]);
  }
  ~Holder() { Kill(); }

  void Kill() {
    if (pid_ > 0) {
      ::kill(pid_, SIGKILL);
      ::waitpid(pid_, nullptr, 0);
      pid_ = -1;
    }
  }
  [[nodiscard]] bool IsFirst() const { return answer_ == 'y'; }

 private:
  pid_t pid_ = -1;
  char answer_ = '?';
};

TEST_F(SingleInstanceTest, FirstIsFirstAndSecondIsNot) {
  const SingleInstance first(copy1_, locks_);
  const SingleInstance second(copy1_, locks_);
  EXPECT_TRUE(first.IsFirst());
  EXPECT_FALSE(second.IsFirst());
}

TEST_F(SingleInstanceTest, ClaimEndsWithTheObject) {
  { EXPECT_TRUE(SingleInstance(copy1_, locks_).IsFirst()); }
  EXPECT_TRUE(SingleInstance(copy1_, locks_).IsFirst());
}

TEST_F(SingleInstanceTest, SecondThatEndsDoesNotEndTheClaimOfTheFirst) {
  const SingleInstance first(copy1_, locks_);
  { EXPECT_FALSE(SingleInstance(copy1_, locks_).IsFirst()); }
  EXPECT_FALSE(SingleInstance(copy1_, locks_).IsFirst());
}

TEST_F(SingleInstanceTest, EachInstalledCopyHasItsOwn) {
  const SingleInstance first(copy1_, locks_);
  const SingleInstance other(copy2_, locks_);
  EXPECT_TRUE(other.IsFirst());
}

TEST_F(SingleInstanceTest, CopyReachedByAnotherPathIsTheSameCopy) {
  const SingleInstance first(copy1_, locks_);
  ASSERT_TRUE(QFile::link(QStringLiteral("copy1"), folder_.filePath(QStringLiteral("alias"))));
  EXPECT_FALSE(SingleInstance(folder_.filePath(QStringLiteral("alias")), locks_).IsFirst());
  EXPECT_FALSE(SingleInstance(copy1_ + QStringLiteral("/../copy1/"), locks_).IsFirst());
}

TEST_F(SingleInstanceTest, AnotherProcessIsSeen) {
  const Holder holder(copy1_, locks_);
  EXPECT_TRUE(holder.IsFirst());
  EXPECT_FALSE(SingleInstance(copy1_, locks_).IsFirst());
}

TEST_F(SingleInstanceTest, KilledProcessLeavesNoClaim) {
  Holder holder(copy1_, locks_);
  ASSERT_FALSE(SingleInstance(copy1_, locks_).IsFirst());
  holder.Kill();
  EXPECT_TRUE(SingleInstance(copy1_, locks_).IsFirst());
}

TEST_F(SingleInstanceTest, ProgramStartedByTheFirstDoesNotKeepTheClaim) {
  auto first = std::make_unique<SingleInstance>(copy1_, locks_);
  const pid_t child = ::fork();
  if (child == 0) {
    ::execlp("sleep", "sleep", "30", static_cast<char*>(nullptr));
    ::_exit(1);
  }
  // The child has been replaced by the other program once its command line shows it.
  QFile commandLine(QStringLiteral("/proc/%1/comm").arg(child));
  QByteArray name;
  while (name != "sleep") {
    ASSERT_TRUE(commandLine.open(QIODevice::ReadOnly));
    name = commandLine.readAll().trimmed();
    commandLine.close();
  }
  first.reset();
  EXPECT_TRUE(SingleInstance(copy1_, locks_).IsFirst());
  ::kill(child, SIGKILL);
  ::waitpid(child, nullptr, 0);
}

TEST_F(SingleInstanceTest, LockFileThatWasCleanedUpIsMadeAgain) {
  { EXPECT_TRUE(SingleInstance(copy1_, locks_).IsFirst()); }
  for (const QString& name : QDir(locks_).entryList(QDir::Files)) {
    ASSERT_TRUE(QFile::remove(locks_ + u'/' + name));
  }
  const SingleInstance first(copy1_, locks_);
  EXPECT_TRUE(first.IsFirst());
  EXPECT_FALSE(SingleInstance(copy1_, locks_).IsFirst());
}

TEST_F(SingleInstanceTest, ProgramStartsWhenNoLockCanBeMade) {
  EXPECT_TRUE(SingleInstance(copy1_, folder_.filePath(QStringLiteral("none"))).IsFirst());
}

TEST_F(SingleInstanceTest, LinkInPlaceOfTheLockFileIsRefused) {
  { const SingleInstance first(copy1_, locks_); }
  const QStringList names = QDir(locks_).entryList(QDir::Files);
  ASSERT_EQ(names.size(), 1);
  ASSERT_TRUE(QFile::remove(locks_ + u'/' + names[0]));
  const QString victim = folder_.filePath(QStringLiteral("victim"));
  ASSERT_TRUE(QFile::link(victim, locks_ + u'/' + names[0]));
  EXPECT_TRUE(SingleInstance(copy1_, locks_).IsFirst());
  EXPECT_FALSE(QFileInfo::exists(victim));
}

// The default place of the lock, in a process of its own with its own environment.
class DefaultLockFolder : public SingleInstanceTest {
 protected:
  // Whether an instance in a process with these folders makes its lock below `expected`.
  static void Run(const QString& copy, const QByteArray& runtime, const QByteArray& temporary) {
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      qputenv("XDG_RUNTIME_DIR", runtime);
      qputenv("TMPDIR", temporary);
      const SingleInstance first(copy);
      const SingleInstance second(copy);
      ::_exit(first.IsFirst() && !second.IsFirst() ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
  }
};

TEST_F(DefaultLockFolder, IsTheRuntimeFolder) {
  ASSERT_EQ(::chmod(EncodeText(locks_).constData(), 0700), 0);
  Run(copy1_, EncodeText(locks_), EncodeText(copy2_));
  EXPECT_EQ(QDir(locks_).entryList({QStringLiteral("trevane-*.lock")}, QDir::Files).size(), 1);
  EXPECT_TRUE(QDir(copy2_).isEmpty());
}

TEST_F(DefaultLockFolder, IsAFolderOfTheUserAmongTheTemporaryFiles) {
  if (QFileInfo::exists(QStringLiteral("/run/user/%1").arg(::geteuid()))) {
    GTEST_SKIP() << "this session has a run-time folder";
  }
  Run(copy1_, "", EncodeText(locks_));
  const QString own = locks_ + QStringLiteral("/trevane-%1").arg(::geteuid());
  EXPECT_EQ(QDir(own).entryList({QStringLiteral("trevane-*.lock")}, QDir::Files).size(), 1);
  struct stat status {};
  ASSERT_EQ(::stat(EncodeText(own).constData(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0700U);
}

TEST_F(DefaultLockFolder, RuntimeFolderThatOthersCanEnterIsRefused) {
  if (QFileInfo::exists(QStringLiteral("/run/user/%1").arg(::geteuid()))) {
    GTEST_SKIP() << "this session has a run-time folder";
  }
  ASSERT_EQ(::chmod(EncodeText(locks_).constData(), 0777), 0);
  Run(copy1_, EncodeText(locks_), EncodeText(copy2_));
  EXPECT_TRUE(QDir(locks_).isEmpty());
}

}  // namespace
}  // namespace trevane

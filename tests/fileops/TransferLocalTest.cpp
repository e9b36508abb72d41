#include "engine/files/TemporaryName.h"
#include "tests/fileops/LocalTransferWorld.h"
#include "tests/support/TestFiles.h"
#include "tests/support/Wine.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <gtest/gtest.h>

#include <algorithm>

#ifdef Q_OS_LINUX
#include <fcntl.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace trevane::test {
namespace {

using namespace Qt::StringLiterals;

const QString kC = u"Workspace\\My Computer\\C:"_s;
const QString kIn = kC + u"\\in"_s;
const QString kDisk = u"Workspace\\Disk"_s;

/// Within one controller, and to another: the same must hold.
class TransferLocalTest : public testing::TestWithParam<bool> {
 protected:
  TransferLocalTest() {
    QDir(world.Root()).mkpath(u"in"_s);
    QDir(world.Root()).mkpath(u"tree/sub"_s);
    WriteFile(world.Root() + u"tree/a"_s, "aa");
    WriteFile(world.Root() + u"tree/sub/b"_s, QByteArray(300000, 'b'));
  }
  ~TransferLocalTest() override {
    EXPECT_TRUE(world.host.IsEnabled());
    EXPECT_FALSE(world.prompts.RecordedGauge().IsLoaded());
    // Nothing half-made is left at the destination.
    for (const QString& name : QDir(Into()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot))
      EXPECT_FALSE(IsTemporaryName(name)) << name.toStdString();
  }
  [[nodiscard]] QString IntoAddress() const { return GetParam() ? kDisk : kIn; }
  [[nodiscard]] QString Into() const { return GetParam() ? world.DiskRoot() : world.Root() + u"in/"_s; }
  bool Move(const QString& name, qint32 tag) {
    return world.Paste(OperationState::kCut, kC, name, tag, IntoAddress());
  }

  LocalTransferWorld world;
};

TEST_P(TransferLocalTest, MovesATree) {
  EXPECT_TRUE(Move(u"tree"_s, 0x10));
  EXPECT_EQ(ContentOf(Into() + u"tree/a"_s), "aa");
  EXPECT_EQ(ContentOf(Into() + u"tree/sub/b"_s).size(), 300000);
  EXPECT_FALSE(QFileInfo::exists(world.Root() + u"tree"_s));
}

#ifdef Q_OS_LINUX
TEST_P(TransferLocalTest, NewFilesHaveThePermissionsOfTheirSources) {
  for (const mode_t mode : {0600U, 0750U, 0444U}) {
    ASSERT_EQ(::chmod(QFile::encodeName(world.Root() + u"tree/a"_s).constData(), mode), 0);
    EXPECT_TRUE(world.Paste(OperationState::kCopy, kC, u"tree"_s, 0x10, IntoAddress()));
    struct stat status {};
    ASSERT_EQ(::stat(QFile::encodeName(Into() + u"tree/a"_s).constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, mode);
    QDir(Into() + u"tree"_s).removeRecursively();
  }
}
#endif

TEST_P(TransferLocalTest, ADestinationThatIsAFileKeepsTheSourceAndTheFile) {
  WriteFile(Into() + u"tree"_s, "file");
  world.prompts.AnswerAllChoices(0);
  world.prompts.AnswerAllBoxes(PromptAnswer::Ok);
  EXPECT_FALSE(Move(u"tree"_s, 0x10));
  EXPECT_EQ(ContentOf(Into() + u"tree"_s), "file");
  EXPECT_EQ(ContentOf(world.Root() + u"tree/a"_s), "aa");
}

#ifdef Q_OS_LINUX
// A folder that nobody can write to is a volume mounted read-only.
TEST_P(TransferLocalTest, AReadOnlyFolderKeepsTheSource) {
  const QByteArray place = QFile::encodeName(Into()) + "ro";
  ASSERT_EQ(::mkdir(place.constData(), 0500), 0);
  // The super-user may write anywhere but on a volume that is read-only.
  if (::geteuid() == 0 && ::mount("tmpfs", place.constData(), "tmpfs", MS_RDONLY, nullptr) != 0)
    GTEST_SKIP() << "no volume can be mounted here";
  struct Unmount {
    QByteArray place;
    ~Unmount() { ::umount2(place.constData(), MNT_DETACH); }
  } unmount{place};
  world.prompts.AnswerAllChoices(0);
  world.prompts.AnswerAllBoxes(PromptAnswer::Ok);
  EXPECT_FALSE(world.Paste(OperationState::kCut, kC, u"tree"_s, 0x10, IntoAddress() + u"\\ro"_s));
  EXPECT_EQ(world.prompts.Texts().last(), u"Failed in move operation."_s);
  EXPECT_EQ(ContentOf(world.Root() + u"tree/a"_s), "aa");
  EXPECT_EQ(ContentOf(world.Root() + u"tree/sub/b"_s).size(), 300000);
}

#endif

TEST_P(TransferLocalTest, ASourceThatVanishesIsAFailure) {
  WriteFile(world.Root() + u"first"_s, "first");
  world.state.clipboard.Add(ClipBrdOfItem(world.session.gIxoCtrls(), kC, u"first"_s, 0), {});
  world.state.clipboard.Add(ClipBrdOfItem(world.session.gIxoCtrls(), kC, u"tree"_s, 0x10), {});
  world.state.nFileOpMode = OperationState::kCut;
  world.host.onEvents = [&] { QDir(world.Root() + u"tree"_s).removeRecursively(); };
  world.prompts.ExpectBox(u"Failed in move operation."_s);
  EXPECT_FALSE(world.operations.Transfer(
      ClipBrdOfNode(world.session.gIxoCtrls(), IntoAddress(), 0x10 | (GetParam() ? 0x100000 : 0))));
  EXPECT_EQ(ContentOf(Into() + u"first"_s), "first");
  EXPECT_EQ(world.log.Lines().size(), 1);
  EXPECT_EQ(world.operations.GoneAddresses(), QStringList(kC + u"\\first"_s));
}

#ifdef Q_OS_LINUX
// Names of bytes, small volumes and links, as this system has them.
TEST_P(TransferLocalTest, NamesOf255BytesLongPathsAndNamesThatAreNoText) {
  QByteArray deep = QFile::encodeName(world.Root() + u"tree"_s);
  for (int i = 0; i < 10; ++i) {
    deep += '/' + QByteArray(60, 'd');
    ASSERT_EQ(::mkdir(deep.constData(), 0700), 0);
  }
  WriteFile(QFile::decodeName(deep) + u"/deep"_s, "deep");
  const QByteArray longName(255, 'n');
  WriteFile(world.Root() + u"tree/"_s + QString::fromLatin1(longName), "long");
  const QByteArray raw = QFile::encodeName(world.Root()) + "tree/\xff\xfe";
  FILE* file = std::fopen(raw.constData(), "w");
  ASSERT_NE(file, nullptr);
  std::fputs("raw", file);
  std::fclose(file);
  EXPECT_TRUE(Move(u"tree"_s, 0x10));
  EXPECT_FALSE(QFileInfo::exists(world.Root() + u"tree"_s));
  const QByteArray target = QFile::encodeName(Into()) + "tree/";
  struct stat status {};
  EXPECT_EQ(::stat((target + "\xff\xfe").constData(), &status), 0);
  EXPECT_EQ(status.st_size, 3);
  EXPECT_EQ(::stat((target + longName).constData(), &status), 0);
  EXPECT_EQ(status.st_size, 4);
  EXPECT_EQ(::stat((target + deep.mid(deep.indexOf("/tree/") + 6) + "/deep").constData(), &status), 0);
  EXPECT_EQ(status.st_size, 4);
  world.prompts.ExpectChoice(0);
  EXPECT_TRUE(world.DeleteItem(IntoAddress(), u"tree"_s));
  EXPECT_NE(::stat(target.constData(), &status), 0);
}

TEST_P(TransferLocalTest, AFullDiskKeepsTheSourceAndTheOldContent) {
  const QByteArray place = QFile::encodeName(Into()) + "full";
  ASSERT_EQ(::mkdir(place.constData(), 0700), 0);
  if (::mount("tmpfs", place.constData(), "tmpfs", MS_NOSUID | MS_NODEV, "size=128k") != 0)
    GTEST_SKIP() << "no volume can be mounted here";
  struct Unmount {
    QByteArray place;
    ~Unmount() { ::umount2(place.constData(), MNT_DETACH); }
  } unmount{place};
  WriteFile(QFile::decodeName(place) + u"/b"_s, "old b");
  world.prompts.AnswerAllChoices(0);
  world.prompts.AnswerAllBoxes(PromptAnswer::Ok);
  EXPECT_FALSE(
      world.Paste(OperationState::kCut, kC + u"\\tree\\sub"_s, u"b"_s, 0, IntoAddress() + u"\\full"_s));
  EXPECT_EQ(ContentOf(world.Root() + u"tree/sub/b"_s).size(), 300000);
  EXPECT_EQ(ContentOf(QFile::decodeName(place) + u"/b"_s), "old b");
  EXPECT_TRUE(world.log.Lines().isEmpty());
}

TEST_P(TransferLocalTest, AFolderBelowItselfThroughALinkIsRefusedBeforeAnythingIsWritten) {
  const QByteArray link = QFile::encodeName(Into()) + "link";
  ASSERT_EQ(::symlink(QFile::encodeName(world.Root() + u"tree/sub"_s).constData(), link.constData()), 0);
  world.prompts.ExpectBox(u"Failed in move operation."_s);
  EXPECT_FALSE(world.Paste(OperationState::kCut, kC, u"tree"_s, 0x10, IntoAddress() + u"\\link"_s));
  EXPECT_EQ(QDir(world.Root() + u"tree/sub"_s).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
            QStringList(u"b"_s));
}

#else
TEST_P(TransferLocalTest, NamesOf255CharactersLongPathsAndNamesThatAreNoText) {
  QString deep = QStringLiteral("tree");
  for (int i = 0; i < 10; ++i)
    deep += u'/' + QString(60, u'd');
  ASSERT_TRUE(QDir(world.Root()).mkpath(deep));
  WriteFile(world.Root() + deep + u"/deep"_s, "deep");
  const QString longName(255, u'n');
  WriteFile(world.Root() + u"tree/"_s + longName, "long");
  const QString lone = QStringLiteral("half ") + QChar(0xd83d);
  // Below Wine lies a file system whose names are UTF-8.
  const bool takesAnyUnit = !RunsUnderWine();
  if (takesAnyUnit)
    WriteFile(world.Root() + u"tree/"_s + lone, "raw");
  EXPECT_TRUE(Move(u"tree"_s, 0x10));
  EXPECT_FALSE(QFileInfo::exists(world.Root() + u"tree"_s));
  if (takesAnyUnit) {
    EXPECT_EQ(ContentOf(Into() + u"tree/"_s + lone), "raw");
  }
  EXPECT_EQ(ContentOf(Into() + u"tree/"_s + longName), "long");
  EXPECT_EQ(ContentOf(Into() + deep + u"/deep"_s), "deep");
  world.prompts.ExpectChoice(0);
  EXPECT_TRUE(world.DeleteItem(IntoAddress(), u"tree"_s));
  EXPECT_FALSE(QFileInfo::exists(Into() + u"tree"_s));
}
#endif

INSTANTIATE_TEST_SUITE_P(All, TransferLocalTest, testing::Bool(), [](const auto& info) {
  return std::string(info.param ? "BetweenControllers" : "WithinOneController");
});

#ifdef Q_OS_LINUX
// Links and pipes that any user can make.
TEST(TransferLocalOnceTest, TwoControllersOnOneDiskAreNoticed) {
  LocalTransferWorld world;
  WriteFile(world.DiskRoot() + u"f"_s, "content");
  // The same folder once more, as a folder of C:.
  ASSERT_EQ(::symlink(QFile::encodeName(world.DiskRoot()).constData(),
                      QFile::encodeName(world.Root() + u"same"_s).constData()),
            0);
  world.prompts.ExpectBox(u"Failed in move operation."_s);
  EXPECT_FALSE(world.Paste(OperationState::kCut, kC + u"\\same"_s, u"f"_s, 0, kDisk));
  EXPECT_EQ(ContentOf(world.DiskRoot() + u"f"_s), "content");
}

TEST(TransferLocalOnceTest, APipeIsRefusedAndTheSourceStays) {
  LocalTransferWorld world;
  QDir(world.Root()).mkpath(u"in"_s);
  QDir(world.Root()).mkpath(u"tree"_s);
  ASSERT_EQ(::mkfifo(QFile::encodeName(world.Root() + u"tree/pipe"_s).constData(), 0600), 0);
  world.prompts.AnswerAllChoices(0);
  world.prompts.AnswerAllBoxes(PromptAnswer::Ok);
  for (const QString& into : {kIn, kDisk}) {
    EXPECT_FALSE(world.Paste(OperationState::kCut, kC, u"tree"_s, 0x10, into));
    EXPECT_EQ(world.prompts.Texts().last(), u"Failed in move operation."_s);
    EXPECT_TRUE(QFileInfo::exists(world.Root() + u"tree/pipe"_s));
  }
}

// Another program puts a link in the place of an item while the nth question of a paste stands.
TEST(TransferLocalOnceTest, ALinkThatAppearsDuringAQuestionIsNotWrittenThrough) {
  for (const char* swapped : {"tree", "tree/sub", "tree/a", "tree/sub/b"}) {
    for (int at = 1; at <= 5; ++at) {
      SCOPED_TRACE(testing::Message() << swapped << " at question " << at);
      LocalTransferWorld world;
      for (const QString& root : {world.Root(), world.DiskRoot()}) {
        QDir(root).mkpath(u"tree/sub"_s);
        WriteFile(root + u"tree/a"_s, root.toUtf8());
        WriteFile(root + u"tree/sub/b"_s, root.toUtf8());
        WriteFile(root + u"tree/z"_s, root.toUtf8());
      }
      QDir(world.Root()).mkpath(u"outside/sub"_s);
      for (const QString& name : {u"a"_s, u"b"_s, u"z"_s, u"sub/b"_s}) {
        WriteFile(world.Root() + u"outside/"_s + name, "kept");
      }
      const bool isFolder = !QByteArray(swapped).endsWith('a') && !QByteArray(swapped).endsWith('b');
      const QString item = world.DiskRoot() + QString::fromLatin1(swapped);
      int questions = 0;
      world.prompts.onQuestion = [&](const AskedQuestion& asked) {
        if (asked.kind == AskedQuestion::Kind::Choice && ++questions == at) {
          ASSERT_TRUE(QFile::rename(item, world.DiskRoot() + u"away"_s));
          const QString leadsTo = world.Root() + (isFolder ? u"outside"_s : u"outside/a"_s);
          ASSERT_EQ(::symlink(QFile::encodeName(leadsTo).constData(), QFile::encodeName(item).constData()),
                    0);
        }
      };
      world.prompts.AnswerAllChoices(0);
      world.prompts.AnswerAllBoxes(PromptAnswer::Ok);
      static_cast<void>(world.Paste(OperationState::kCopy, kC, u"tree"_s, 0x10, kDisk));
      EXPECT_GE(questions, std::min(at, 1));
      for (const QString& name : {u"a"_s, u"b"_s, u"z"_s, u"sub/b"_s}) {
        EXPECT_EQ(ContentOf(world.Root() + u"outside/"_s + name), "kept") << name.toStdString();
      }
      EXPECT_EQ(QDir(world.Root() + u"outside"_s).entryList(QDir::AllEntries | QDir::NoDotAndDotDot).size(),
                4);
    }
  }
}

TEST(TransferLocalOnceTest, AMoveOfADeepTreeHoldsFewFoldersOpen) {
  constexpr int kLevels = 200;
  const QByteArray level(40, 'd');
  LocalTransferWorld world;
  QDir(world.Root()).mkpath(u"tree"_s);
  int folder = ::open(QFile::encodeName(world.Root() + u"tree"_s).constData(), O_PATH | O_DIRECTORY);
  for (int i = 0; i < kLevels; ++i) {
    ASSERT_EQ(::mkdirat(folder, level.constData(), 0700), 0);
    const int below = ::openat(folder, level.constData(), O_PATH | O_DIRECTORY);
    ::close(folder);
    folder = below;
  }
  const int file = ::openat(folder, "deep", O_WRONLY | O_CREAT, 0600);
  ASSERT_EQ(::write(file, "deep", 4), 4);
  ::close(file);
  ::close(folder);
  struct rlimit before {};
  ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
  const struct rlimit few { 256, before.rlim_max };
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &few), 0);
  EXPECT_TRUE(world.Paste(OperationState::kCut, kC, u"tree"_s, 0x10, kDisk));
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &before), 0);
  EXPECT_FALSE(QFileInfo::exists(world.Root() + u"tree"_s));
  folder = ::open(QFile::encodeName(world.DiskRoot() + u"tree"_s).constData(), O_PATH | O_DIRECTORY);
  for (int i = 0; i < kLevels; ++i) {
    const int below = ::openat(folder, level.constData(), O_PATH | O_DIRECTORY);
    ::close(folder);
    folder = below;
  }
  EXPECT_EQ(::faccessat(folder, "deep", R_OK, 0), 0);
  ::close(folder);
  world.prompts.ExpectChoice(0);
  EXPECT_TRUE(world.DeleteItem(kDisk, u"tree"_s));
}

TEST(TransferLocalOnceTest, NewFoldersHaveThePermissionsOfTheirSources) {
  LocalTransferWorld world;
  QDir(world.Root()).mkpath(u"tree/closed"_s);
  WriteFile(world.Root() + u"tree/closed/a"_s, "aa");
  const auto nameOf = [](const QString& path) { return QFile::encodeName(path); };
  ASSERT_EQ(::chmod(nameOf(world.Root() + u"tree"_s).constData(), 0700), 0);
  ASSERT_EQ(::chmod(nameOf(world.Root() + u"tree/closed"_s).constData(), 0555), 0);
  EXPECT_TRUE(world.Paste(OperationState::kCopy, kC, u"tree"_s, 0x10, kDisk));
  struct stat status {};
  ASSERT_EQ(::stat(nameOf(world.DiskRoot() + u"tree"_s).constData(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777U, 0700U);
  ASSERT_EQ(::stat(nameOf(world.DiskRoot() + u"tree/closed"_s).constData(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777U, 0555U);
  for (const QString& root : {world.Root(), world.DiskRoot()}) {
    ::chmod(nameOf(root + u"tree/closed"_s).constData(), 0700);
  }
}

TEST(TransferLocalOnceTest, LinksThatCannotBeCopiedAreTold) {
  LocalTransferWorld world;
  QDir(world.Root()).mkpath(u"tree/sub"_s);
  WriteFile(world.Root() + u"tree/a"_s, "aa");
  const auto link = [&](const char* to, const QString& name) {
    ASSERT_EQ(::symlink(to, QFile::encodeName(world.Root() + u"tree/"_s + name).constData()), 0);
  };
  link("sub", u"to folder"_s);
  link("nowhere", u"lost"_s);
  link("a", u"to file"_s);
  world.prompts.ExpectBox(u"2 items were left out."_s);
  EXPECT_TRUE(world.Paste(OperationState::kCut, kC, u"tree"_s, 0x10, kDisk));
  QStringList lines = world.prompts.Asked().back().informativeText.split(u'\n');
  lines.sort();
  EXPECT_EQ(lines, (QStringList{u"lost: The link leads nowhere"_s,
                                u"to folder: A link to a folder is not copied"_s}));
  EXPECT_EQ(ContentOf(world.DiskRoot() + u"tree/to file"_s), "aa");
  EXPECT_EQ(ContentOf(world.Root() + u"tree/a"_s), "aa");
}

TEST(TransferLocalOnceTest, ALinkIsDeletedAndNotWhatItLeadsTo) {
  LocalTransferWorld world;
  QDir(world.Root()).mkpath(u"tree"_s);
  WriteFile(world.Root() + u"tree/a"_s, "aa");
  ASSERT_EQ(::symlink("tree", QFile::encodeName(world.Root() + u"link"_s).constData()), 0);
  world.prompts.ExpectChoice(0);
  EXPECT_TRUE(world.DeleteItem(kC, u"link"_s));
  EXPECT_FALSE(QFileInfo(world.Root() + u"link"_s).isSymLink());
  EXPECT_EQ(ContentOf(world.Root() + u"tree/a"_s), "aa");
}
#endif

}  // namespace
}  // namespace trevane::test

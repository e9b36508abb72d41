#include "engine/files/HeldFolder.h"
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

const QString kC = QStringLiteral("Workspace\\My Computer\\C:");
const QString kIn = kC + QStringLiteral("\\in");
const QString kDisk = QStringLiteral("Workspace\\Disk");

/// Within one controller, and to another: the same must hold.
class TransferLocalTest : public testing::TestWithParam<bool> {
 protected:
  TransferLocalTest() {
    QDir(world.Root()).mkpath(QStringLiteral("in"));
    QDir(world.Root()).mkpath(QStringLiteral("tree/sub"));
    WriteFile(world.Root() + QStringLiteral("tree/a"), "aa");
    WriteFile(world.Root() + QStringLiteral("tree/sub/b"), QByteArray(300000, 'b'));
  }
  ~TransferLocalTest() override {
    EXPECT_TRUE(world.host.IsEnabled());
    EXPECT_FALSE(world.prompts.RecordedGauge().IsLoaded());
    // Nothing half-made is left at the destination.
    for (const QString& name :
         QDir(Into()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot)) {
      EXPECT_FALSE(IsTemporaryName(name)) << name.toStdString();
    }
  }
  [[nodiscard]] QString IntoAddress() const { return GetParam() ? kDisk : kIn; }
  [[nodiscard]] QString Into() const {
    return GetParam() ? world.DiskRoot() : world.Root() + QStringLiteral("in/");
  }
  bool Move(const QString& name, qint32 tag) {
    return world.Paste(OperationState::kCut, kC, name, tag, IntoAddress());
  }

  LocalTransferWorld world;
};

TEST_P(TransferLocalTest, OfSelectedFilesOneThatClashesIsAskedFor) {
  QStringList names;
  for (int i = 0; i < 70; ++i) {
    names.append(QStringLiteral("file %1").arg(i));
    WriteFile(world.Root() + QStringLiteral("tree/") + names.back(), QByteArray::number(i));
  }
  WriteFile(Into() + QStringLiteral("file 2"), "theirs");
  // No.
  world.prompts.ExpectChoice(2);
  EXPECT_TRUE(world.PasteAll(OperationState::kCut, kC + QStringLiteral("\\tree"), names, IntoAddress()));
  for (int i = 0; i < 70; ++i) {
    EXPECT_EQ(QFile::exists(world.Root() + QStringLiteral("tree/") + names[i]), i == 2) << i;
    EXPECT_EQ(ContentOf(Into() + names[i]), i == 2 ? QByteArray("theirs") : QByteArray::number(i)) << i;
  }
  EXPECT_EQ(world.log.Lines().size(), 69);
}

TEST_P(TransferLocalTest, CancelBetweenSelectedFilesKeepsWhatHasArrived) {
  QStringList names;
  for (int i = 0; i < 10; ++i) {
    names.append(QStringLiteral("file %1").arg(i));
    WriteFile(world.Root() + QStringLiteral("tree/") + names.back(), QByteArray::number(i));
  }
  world.prompts.RecordedGauge().CancelAtIncrement(3);
  EXPECT_TRUE(world.PasteAll(OperationState::kCopy, kC + QStringLiteral("\\tree"), names, IntoAddress()));
  const qsizetype logged = world.log.Lines().size();
  EXPECT_GE(logged, 3);
  for (int i = 0; i < 10; ++i) {
    EXPECT_EQ(QFile::exists(Into() + names[i]), i < logged) << i;
  }
}

TEST_P(TransferLocalTest, MovesATree) {
  EXPECT_TRUE(Move(QStringLiteral("tree"), 0x10));
  EXPECT_EQ(ContentOf(Into() + QStringLiteral("tree/a")), "aa");
  EXPECT_EQ(ContentOf(Into() + QStringLiteral("tree/sub/b")).size(), 300000);
  EXPECT_FALSE(QFileInfo::exists(world.Root() + QStringLiteral("tree")));
}

#ifdef Q_OS_LINUX
TEST_P(TransferLocalTest, NewFilesHaveThePermissionsOfTheirSources) {
  for (const mode_t mode : {0600U, 0750U, 0444U}) {
    ASSERT_EQ(::chmod(QFile::encodeName(world.Root() + QStringLiteral("tree/a")).constData(), mode), 0);
    EXPECT_TRUE(world.Paste(OperationState::kCopy, kC, QStringLiteral("tree"), 0x10, IntoAddress()));
    struct stat status {};
    ASSERT_EQ(::stat(QFile::encodeName(Into() + QStringLiteral("tree/a")).constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, mode);
    QDir(Into() + QStringLiteral("tree")).removeRecursively();
  }
}
#endif

TEST_P(TransferLocalTest, ADestinationThatIsAFileKeepsTheSourceAndTheFile) {
  WriteFile(Into() + QStringLiteral("tree"), "file");
  world.prompts.AnswerAllChoices(0);
  world.prompts.AnswerAllBoxes(PromptAnswer::Ok);
  EXPECT_FALSE(Move(QStringLiteral("tree"), 0x10));
  EXPECT_EQ(ContentOf(Into() + QStringLiteral("tree")), "file");
  EXPECT_EQ(ContentOf(world.Root() + QStringLiteral("tree/a")), "aa");
}

#ifdef Q_OS_LINUX
// A folder that nobody can write to is a volume mounted read-only.
TEST_P(TransferLocalTest, AReadOnlyFolderKeepsTheSource) {
  const QByteArray place = QFile::encodeName(Into()) + "ro";
  ASSERT_EQ(::mkdir(place.constData(), 0500), 0);
  // The super-user may write anywhere but on a volume that is read-only.
  if (::geteuid() == 0 && ::mount("tmpfs", place.constData(), "tmpfs", MS_RDONLY, nullptr) != 0) {
    GTEST_SKIP() << "no volume can be mounted here";
  }
  struct Unmount {
    QByteArray place;
    ~Unmount() { ::umount2(place.constData(), MNT_DETACH); }
  } unmount{place};
  world.prompts.AnswerAllChoices(0);
  world.prompts.AnswerAllBoxes(PromptAnswer::Ok);
  EXPECT_FALSE(world.Paste(OperationState::kCut, kC, QStringLiteral("tree"), 0x10,
                           IntoAddress() + QStringLiteral("\\ro")));
  EXPECT_EQ(world.prompts.Texts().last(), QStringLiteral("Failed in move operation."));
  EXPECT_EQ(ContentOf(world.Root() + QStringLiteral("tree/a")), "aa");
  EXPECT_EQ(ContentOf(world.Root() + QStringLiteral("tree/sub/b")).size(), 300000);
}

#endif

TEST_P(TransferLocalTest, ASourceThatVanishesIsAFailure) {
  WriteFile(world.Root() + QStringLiteral("first"), "first");
  world.state.clipboard.Add(ClipBrdOfItem(world.session.gIxoCtrls(), kC, QStringLiteral("first"), 0), {});
  world.state.clipboard.Add(ClipBrdOfItem(world.session.gIxoCtrls(), kC, QStringLiteral("tree"), 0x10), {});
  world.state.nFileOpMode = OperationState::kCut;
  world.host.onEvents = [&] { QDir(world.Root() + QStringLiteral("tree")).removeRecursively(); };
  world.prompts.ExpectBox(QStringLiteral("Failed in move operation."));
  EXPECT_FALSE(world.operations.Transfer(
      ClipBrdOfNode(world.session.gIxoCtrls(), IntoAddress(), 0x10 | (GetParam() ? 0x100000 : 0))));
  EXPECT_EQ(ContentOf(Into() + QStringLiteral("first")), "first");
  EXPECT_EQ(world.log.Lines().size(), 1);
  EXPECT_EQ(world.operations.GoneAddresses(), QStringList(kC + QStringLiteral("\\first")));
}

#ifdef Q_OS_LINUX
// Names of bytes, small volumes and links, as this system has them.
TEST_P(TransferLocalTest, LongNamesLongPathsAndNamesThatAreNoText) {
  QByteArray deep = QFile::encodeName(world.Root() + QStringLiteral("tree"));
  for (int i = 0; i < 10; ++i) {
    deep += '/' + QByteArray(60, 'd');
    ASSERT_EQ(::mkdir(deep.constData(), 0700), 0);
  }
  WriteFile(QFile::decodeName(deep) + QStringLiteral("/deep"), "deep");
  const QByteArray longName(255, 'n');
  WriteFile(world.Root() + QStringLiteral("tree/") + QString::fromLatin1(longName), "long");
  const QByteArray raw = QFile::encodeName(world.Root()) + "tree/\xff\xfe";
  FILE* file = std::fopen(raw.constData(), "w");
  ASSERT_NE(file, nullptr);
  std::fputs("raw", file);
  std::fclose(file);
  EXPECT_TRUE(Move(QStringLiteral("tree"), 0x10));
  EXPECT_FALSE(QFileInfo::exists(world.Root() + QStringLiteral("tree")));
  const QByteArray target = QFile::encodeName(Into()) + "tree/";
  struct stat status {};
  EXPECT_EQ(::stat((target + "\xff\xfe").constData(), &status), 0);
  EXPECT_EQ(status.st_size, 3);
  EXPECT_EQ(::stat((target + longName).constData(), &status), 0);
  EXPECT_EQ(status.st_size, 4);
  EXPECT_EQ(::stat((target + deep.mid(deep.indexOf("/tree/") + 6) + "/deep").constData(), &status), 0);
  EXPECT_EQ(status.st_size, 4);
  world.prompts.ExpectChoice(0);
  EXPECT_TRUE(world.DeleteItem(IntoAddress(), QStringLiteral("tree")));
  EXPECT_NE(::stat(target.constData(), &status), 0);
}

TEST_P(TransferLocalTest, AFullDiskKeepsTheSourceAndTheOldContent) {
  const QByteArray place = QFile::encodeName(Into()) + "full";
  ASSERT_EQ(::mkdir(place.constData(), 0700), 0);
  if (::mount("tmpfs", place.constData(), "tmpfs", MS_NOSUID | MS_NODEV, "size=128k") != 0) {
    GTEST_SKIP() << "no volume can be mounted here";
  }
  struct Unmount {
    QByteArray place;
    ~Unmount() { ::umount2(place.constData(), MNT_DETACH); }
  } unmount{place};
  WriteFile(QFile::decodeName(place) + QStringLiteral("/b"), "old b");
  world.prompts.AnswerAllChoices(0);
  world.prompts.AnswerAllBoxes(PromptAnswer::Ok);
  EXPECT_FALSE(world.Paste(OperationState::kCut, kC + QStringLiteral("\\tree\\sub"), QStringLiteral("b"), 0,
                           IntoAddress() + QStringLiteral("\\full")));
  EXPECT_EQ(ContentOf(world.Root() + QStringLiteral("tree/sub/b")).size(), 300000);
  EXPECT_EQ(ContentOf(QFile::decodeName(place) + QStringLiteral("/b")), "old b");
  EXPECT_TRUE(world.log.Lines().isEmpty());
}

TEST_P(TransferLocalTest, AFolderIntoItselfThroughALinkWritesNothing) {
  const QByteArray link = QFile::encodeName(Into()) + "link";
  ASSERT_EQ(
      ::symlink(QFile::encodeName(world.Root() + QStringLiteral("tree/sub")).constData(), link.constData()),
      0);
  world.prompts.ExpectBox(QStringLiteral("Failed in move operation."));
  EXPECT_FALSE(world.Paste(OperationState::kCut, kC, QStringLiteral("tree"), 0x10,
                           IntoAddress() + QStringLiteral("\\link")));
  EXPECT_EQ(
      QDir(world.Root() + QStringLiteral("tree/sub")).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
      QStringList(QStringLiteral("b")));
}

#else
TEST_P(TransferLocalTest, LongNamesLongPathsAndNamesThatAreNoText) {
  QString deep = QStringLiteral("tree");
  for (int i = 0; i < 10; ++i) {
    deep += u'/' + QString(60, u'd');
  }
  ASSERT_TRUE(QDir(world.Root()).mkpath(deep));
  WriteFile(world.Root() + deep + QStringLiteral("/deep"), "deep");
  const QString longName(255, u'n');
  WriteFile(world.Root() + QStringLiteral("tree/") + longName, "long");
  const QString lone = QStringLiteral("half ") + QChar(0xd83d);
  // Below Wine lies a file system whose names are UTF-8.
  const bool takesAnyUnit = !RunsUnderWine();
  if (takesAnyUnit) {
    WriteFile(world.Root() + QStringLiteral("tree/") + lone, "raw");
  }
  EXPECT_TRUE(Move(QStringLiteral("tree"), 0x10));
  EXPECT_FALSE(QFileInfo::exists(world.Root() + QStringLiteral("tree")));
  if (takesAnyUnit) {
    EXPECT_EQ(ContentOf(Into() + QStringLiteral("tree/") + lone), "raw");
  }
  EXPECT_EQ(ContentOf(Into() + QStringLiteral("tree/") + longName), "long");
  EXPECT_EQ(ContentOf(Into() + deep + QStringLiteral("/deep")), "deep");
  world.prompts.ExpectChoice(0);
  EXPECT_TRUE(world.DeleteItem(IntoAddress(), QStringLiteral("tree")));
  EXPECT_FALSE(QFileInfo::exists(Into() + QStringLiteral("tree")));
}
#endif

INSTANTIATE_TEST_SUITE_P(All, TransferLocalTest, testing::Bool(), [](const auto& info) {
  return std::string(info.param ? "BetweenControllers" : "WithinOneController");
});

#ifdef Q_OS_LINUX
// Links and pipes that any user can make.
TEST(TransferLocalOnceTest, TwoControllersOnOneDiskAreDetected) {
  LocalTransferWorld world;
  WriteFile(world.DiskRoot() + QStringLiteral("f"), "content");
  // The same folder once more, as a folder of C:.
  ASSERT_EQ(::symlink(QFile::encodeName(world.DiskRoot()).constData(),
                      QFile::encodeName(world.Root() + QStringLiteral("same")).constData()),
            0);
  world.prompts.ExpectBox(QStringLiteral("Failed in move operation."));
  EXPECT_FALSE(
      world.Paste(OperationState::kCut, kC + QStringLiteral("\\same"), QStringLiteral("f"), 0, kDisk));
  EXPECT_EQ(ContentOf(world.DiskRoot() + QStringLiteral("f")), "content");
}

TEST(TransferLocalOnceTest, APipeIsRefusedAndTheSourceStays) {
  LocalTransferWorld world;
  QDir(world.Root()).mkpath(QStringLiteral("in"));
  QDir(world.Root()).mkpath(QStringLiteral("tree"));
  ASSERT_EQ(::mkfifo(QFile::encodeName(world.Root() + QStringLiteral("tree/pipe")).constData(), 0600), 0);
  world.prompts.AnswerAllChoices(0);
  world.prompts.AnswerAllBoxes(PromptAnswer::Ok);
  for (const QString& into : {kIn, kDisk}) {
    EXPECT_FALSE(world.Paste(OperationState::kCut, kC, QStringLiteral("tree"), 0x10, into));
    EXPECT_EQ(world.prompts.Texts().last(), QStringLiteral("Failed in move operation."));
    EXPECT_TRUE(QFileInfo::exists(world.Root() + QStringLiteral("tree/pipe")));
  }
}

// Another program puts a link in the place of an item while the nth question of a paste stands.
TEST(TransferLocalOnceTest, LinksMadeDuringAQuestionAreNotFollowed) {
  for (const char* swapped : {"tree", "tree/sub", "tree/a", "tree/sub/b"}) {
    for (int at = 1; at <= 5; ++at) {
      SCOPED_TRACE(testing::Message() << swapped << " at question " << at);
      LocalTransferWorld world;
      for (const QString& root : {world.Root(), world.DiskRoot()}) {
        QDir(root).mkpath(QStringLiteral("tree/sub"));
        WriteFile(root + QStringLiteral("tree/a"), root.toUtf8());
        WriteFile(root + QStringLiteral("tree/sub/b"), root.toUtf8());
        WriteFile(root + QStringLiteral("tree/z"), root.toUtf8());
      }
      QDir(world.Root()).mkpath(QStringLiteral("outside/sub"));
      for (const QString& name :
           {QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("z"), QStringLiteral("sub/b")}) {
        WriteFile(world.Root() + QStringLiteral("outside/") + name, "kept");
      }
      const bool isFolder = !QByteArray(swapped).endsWith('a') && !QByteArray(swapped).endsWith('b');
      const QString item = world.DiskRoot() + QString::fromLatin1(swapped);
      int questions = 0;
      world.prompts.onQuestion = [&](const AskedQuestion& asked) {
        if (asked.kind == AskedQuestion::Kind::Choice && ++questions == at) {
          ASSERT_TRUE(QFile::rename(item, world.DiskRoot() + QStringLiteral("away")));
          const QString leadsTo =
              world.Root() + (isFolder ? QStringLiteral("outside") : QStringLiteral("outside/a"));
          ASSERT_EQ(::symlink(QFile::encodeName(leadsTo).constData(), QFile::encodeName(item).constData()),
                    0);
        }
      };
      world.prompts.AnswerAllChoices(0);
      world.prompts.AnswerAllBoxes(PromptAnswer::Ok);
      static_cast<void>(world.Paste(OperationState::kCopy, kC, QStringLiteral("tree"), 0x10, kDisk));
      EXPECT_GE(questions, std::min(at, 1));
      for (const QString& name :
           {QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("z"), QStringLiteral("sub/b")}) {
        EXPECT_EQ(ContentOf(world.Root() + QStringLiteral("outside/") + name), "kept") << name.toStdString();
      }
      EXPECT_EQ(QDir(world.Root() + QStringLiteral("outside"))
                    .entryList(QDir::AllEntries | QDir::NoDotAndDotDot)
                    .size(),
                4);
    }
  }
}

TEST(TransferLocalOnceTest, MovingADeepTreeKeepsFewFoldersOpen) {
  constexpr int kLevels = 200;
  const QByteArray level(40, 'd');
  LocalTransferWorld world;
  QDir(world.Root()).mkpath(QStringLiteral("tree"));
  int folder =
      ::open(QFile::encodeName(world.Root() + QStringLiteral("tree")).constData(), O_PATH | O_DIRECTORY);
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
  EXPECT_TRUE(world.Paste(OperationState::kCut, kC, QStringLiteral("tree"), 0x10, kDisk));
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &before), 0);
  EXPECT_FALSE(QFileInfo::exists(world.Root() + QStringLiteral("tree")));
  folder =
      ::open(QFile::encodeName(world.DiskRoot() + QStringLiteral("tree")).constData(), O_PATH | O_DIRECTORY);
  for (int i = 0; i < kLevels; ++i) {
    const int below = ::openat(folder, level.constData(), O_PATH | O_DIRECTORY);
    ::close(folder);
    folder = below;
  }
  EXPECT_EQ(::faccessat(folder, "deep", R_OK, 0), 0);
  ::close(folder);
  world.prompts.ExpectChoice(0);
  EXPECT_TRUE(world.DeleteItem(kDisk, QStringLiteral("tree")));
}

TEST(TransferLocalOnceTest, SelectedFilesReachTheTopOfTheirController) {
  LocalTransferWorld world;
  const QStringList names{QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c")};
  struct Row {
    QString top;
    QString root;
  };
  for (const Row& row : {Row{kC, world.Root()}, Row{kDisk, world.DiskRoot()}}) {
    SCOPED_TRACE(row.top.toStdString());
    QDir(row.root).mkpath(QStringLiteral("from"));
    for (const QString& name : names) {
      WriteFile(row.root + QStringLiteral("from/") + name, "content");
    }
    const QString from = row.top + QStringLiteral("\\from");
    for (const qint32 mode : {OperationState::kCopy, OperationState::kCut}) {
      EXPECT_TRUE(world.PasteAll(mode, from, names, row.top));
      for (const QString& name : names) {
        EXPECT_EQ(ContentOf(row.root + name), "content");
        EXPECT_EQ(QFile::exists(row.root + QStringLiteral("from/") + name), mode == OperationState::kCopy);
        EXPECT_TRUE(QFile::remove(row.root + name));
      }
    }
  }
}

struct SelectedFault {
  qint32 mode;
  EngineFault fault;
  FaultSpan span;
};

TEST(TransferLocalOnceTest, SelectedFilesLoseNothingWhicheverCallFails) {
  const QStringList names{QStringLiteral("a"), QStringLiteral("b")};
  for (const auto& [mode, fault, span] :
       {SelectedFault{OperationState::kCopy, EngineFault::Raise, FaultSpan::Once},
        SelectedFault{OperationState::kCut, EngineFault::Raise, FaultSpan::Once},
        SelectedFault{OperationState::kCut, EngineFault::Raise, FaultSpan::FromThenOn},
        SelectedFault{OperationState::kCut, EngineFault::YieldNothing, FaultSpan::Once}}) {
    int call = 1;
    for (bool wentWrong = true; wentWrong && !testing::Test::HasFailure(); ++call) {
      SCOPED_TRACE(testing::Message() << mode << ' ' << static_cast<int>(fault) << ' ' << call);
      LocalTransferWorld world;
      QDir(world.Root()).mkpath(QStringLiteral("in"));
      QDir(world.Root()).mkpath(QStringLiteral("from"));
      for (const QString& name : names) {
        WriteFile(world.Root() + QStringLiteral("from/") + name, "content of " + name.toLatin1());
      }
      // Nothing is there to be replaced, but a failed copy is asked for.
      world.prompts.AnswerAllChoices(2);
      world.prompts.AnswerAllBoxes(PromptAnswer::Ok);
      world.engine->Arm(call, span, error::kTimeOut, fault);
      static_cast<void>(world.PasteAll(mode, kC + QStringLiteral("\\from"), names, kIn));
      wentWrong = world.engine->FaultCount() > 0;
      world.engine->Disarm();
      for (const QString& name : names) {
        SCOPED_TRACE(name.toStdString());
        const QString from = world.Root() + QStringLiteral("from/") + name;
        const QString into = world.Root() + QStringLiteral("in/") + name;
        const QByteArray content = "content of " + name.toLatin1();
        const bool isKept = QFile::exists(from);
        const bool hasArrived = QFile::exists(into);
        EXPECT_TRUE(!isKept || ContentOf(from) == content);
        EXPECT_TRUE(!hasArrived || ContentOf(into) == content);
        EXPECT_TRUE(isKept || (mode == OperationState::kCut && hasArrived));
        const bool isLogged =
            std::ranges::any_of(world.log.Lines(), [&](const QString& line) { return line.endsWith(name); });
        EXPECT_TRUE(!isLogged || hasArrived);
      }
      EXPECT_EQ(world.engine->HeldFiles(), 0);
      EXPECT_EQ(world.engine->LiveFileNames(), QStringList());
    }
    EXPECT_GT(call, 5);
  }
}

TEST(TransferLocalOnceTest, NothingIsListedOnceMoreWhereItIsSeenWhatArrives) {
  LocalTransferWorld world;
  LocalFileSystem disk(world.diskVolumes);
  if (!disk.Hold(QStringLiteral("C:"))->SeesArrivals()) {
    GTEST_SKIP() << "the temporary folder is on no disk of this computer";
  }
  QDir(world.Root()).mkpath(QStringLiteral("tree/sub"));
  const QStringList names{QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c")};
  for (const QString& name : names) {
    WriteFile(world.Root() + QStringLiteral("tree/") + name, "content");
    WriteFile(world.Root() + QStringLiteral("tree/sub/") + name, "content");
  }
  const auto listings = [&] {
    return world.engine->Calls().count(QStringLiteral("IxoFile.List")) +
           world.engine->Calls().count(QStringLiteral("IxoFile.FileNames"));
  };
  world.engine->ClearCalls();
  EXPECT_TRUE(world.Paste(OperationState::kCopy, kC, QStringLiteral("tree"), 0x10, kDisk));
  // The two folders of the source.
  EXPECT_EQ(listings(), 2);
  world.engine->ClearCalls();
  EXPECT_TRUE(world.PasteAll(OperationState::kCopy, kC + QStringLiteral("\\tree"), names, kDisk));
  // Both folders, once.
  EXPECT_EQ(listings(), 2);
  for (const QString& name : names) {
    EXPECT_EQ(ContentOf(world.DiskRoot() + QStringLiteral("tree/sub/") + name), "content");
    EXPECT_EQ(ContentOf(world.DiskRoot() + name), "content");
  }
}

TEST(TransferLocalOnceTest, NewFoldersHaveThePermissionsOfTheirSources) {
  LocalTransferWorld world;
  QDir(world.Root()).mkpath(QStringLiteral("tree/closed"));
  WriteFile(world.Root() + QStringLiteral("tree/closed/a"), "aa");
  const auto nameOf = [](const QString& path) { return QFile::encodeName(path); };
  ASSERT_EQ(::chmod(nameOf(world.Root() + QStringLiteral("tree")).constData(), 0700), 0);
  ASSERT_EQ(::chmod(nameOf(world.Root() + QStringLiteral("tree/closed")).constData(), 0555), 0);
  EXPECT_TRUE(world.Paste(OperationState::kCopy, kC, QStringLiteral("tree"), 0x10, kDisk));
  struct stat status {};
  ASSERT_EQ(::stat(nameOf(world.DiskRoot() + QStringLiteral("tree")).constData(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777U, 0700U);
  ASSERT_EQ(::stat(nameOf(world.DiskRoot() + QStringLiteral("tree/closed")).constData(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777U, 0555U);
  for (const QString& root : {world.Root(), world.DiskRoot()}) {
    ::chmod(nameOf(root + QStringLiteral("tree/closed")).constData(), 0700);
  }
}

TEST(TransferLocalOnceTest, LinksThatCannotBeCopiedAreReported) {
  LocalTransferWorld world;
  QDir(world.Root()).mkpath(QStringLiteral("tree/sub"));
  WriteFile(world.Root() + QStringLiteral("tree/a"), "aa");
  const auto link = [&](const char* to, const QString& name) {
    ASSERT_EQ(::symlink(to, QFile::encodeName(world.Root() + QStringLiteral("tree/") + name).constData()), 0);
  };
  link("../..", QStringLiteral("to folder"));
  link("../nowhere", QStringLiteral("lost"));
  link("../tree/a", QStringLiteral("to file"));
  world.prompts.ExpectBox(QStringLiteral("3 items were left out."));
  EXPECT_TRUE(world.Paste(OperationState::kCut, kC, QStringLiteral("tree"), 0x10, kDisk));
  QStringList names;
  for (const QString& line : world.prompts.Asked().back().informativeText.split(u'\n')) {
    names.append(line.section(QStringLiteral(": "), 0, 0));
    EXPECT_FALSE(line.section(QStringLiteral(": "), 1).isEmpty());
  }
  names.sort();
  EXPECT_EQ(names,
            (QStringList{QStringLiteral("lost"), QStringLiteral("to file"), QStringLiteral("to folder")}));
  EXPECT_FALSE(QFile::exists(world.DiskRoot() + QStringLiteral("tree/to file")));
  EXPECT_EQ(ContentOf(world.Root() + QStringLiteral("tree/a")), "aa");
}

TEST(TransferLocalOnceTest, DeletingALinkKeepsItsTarget) {
  LocalTransferWorld world;
  QDir(world.Root()).mkpath(QStringLiteral("tree"));
  WriteFile(world.Root() + QStringLiteral("tree/a"), "aa");
  ASSERT_EQ(::symlink("tree", QFile::encodeName(world.Root() + QStringLiteral("link")).constData()), 0);
  world.prompts.ExpectChoice(0);
  EXPECT_TRUE(world.DeleteItem(kC, QStringLiteral("link")));
  EXPECT_FALSE(QFileInfo(world.Root() + QStringLiteral("link")).isSymLink());
  EXPECT_EQ(ContentOf(world.Root() + QStringLiteral("tree/a")), "aa");
}
#endif

}  // namespace
}  // namespace trevane::test

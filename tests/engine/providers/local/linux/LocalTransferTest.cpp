#include "engine/files/MoveItem.h"
#include "engine/files/ProviderError.h"
#include "engine/files/TemporaryName.h"
#include "engine/files/WholeFile.h"
#include "engine/providers/local/LocalFileSystem.h"
#include "tests/engine/providers/ProviderBed.h"
#include "tests/engine/providers/local/linux/NativeHelpers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <vector>

#include <fcntl.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace trevane::test {
namespace {

const QString kTop = QStringLiteral("C:");

class LocalTransferTest : public ::testing::Test {
 protected:
  LocalFileSystem& Files() { return world_.Files(); }
  [[nodiscard]] QByteArray Native(const char* below) const { return world_.Native(below); }

  [[nodiscard]] bool AddOtherDevice() { return world_.AddOtherVolume(); }
  void MakeTree(const QString& top) { world_.MakeTree(top); }
  [[nodiscard]] bool IsWholeTree(const QString& top) { return world_.IsWholeTree(top); }
  [[nodiscard]] bool IsThere(const QString& path) {
    return ErrorOf([&] { (void)Files().Stat(path); }) != error::kNotFound;
  }
  /// Expects only known and temporary names in a folder, and removes the temporary items.
  void ExpectOnlyTemporaryBeside(const QString& folder, const QStringList& known) {
    for (const FileEntry& entry : Files().List(folder)) {
      if (!known.contains(entry.name)) {
        EXPECT_TRUE(IsTemporaryName(entry.name)) << entry.name.toStdString();
        Files().Remove(folder + u'\\' + entry.name);
      }
    }
  }
  /// Kills `work` at each of its system calls in turn, with `prepare` before and `check` after each.
  void KillAtEachCall(const std::function<void()>& prepare, const std::function<void()>& work,
                      const std::function<void()>& check) {
    constexpr int kMostStops = 2000;
    for (int call = 1; call < kMostStops; ++call) {
      SCOPED_TRACE(call);
      prepare();
      const ChildEnd end = RunKilledAt(call, work);
      if (end == ChildEnd::CannotTrace) {
        GTEST_SKIP() << "cannot trace here";
      }
      ASSERT_NE(end, ChildEnd::Failed);
      check();
      if (end == ChildEnd::Finished || HasFailure()) {
        EXPECT_GT(call, 10);
        return;
      }
    }
    ADD_FAILURE() << "did not come to its end";
  }
  /// Another program changes C:\f at each call in turn while it is moved to D:. `prepare` is run before each.
  void ExpectChangesKept(const std::function<void()>& prepare) {
    const QString from = QStringLiteral("C:\\f");
    const QString to = QStringLiteral("D:\\f");
    // The gap between the last check of a file and its deletion cannot be closed: it has two stops.
    int lost = 0;
    int kept = 0;
    for (int call = 1;; ++call) {
      SCOPED_TRACE(call);
      WriteFile(Files(), from, "old content");
      prepare();
      bool changed = false;
      const ChildEnd end = RunInterruptedAt(
          call, [&] { MoveItem(Files(), from, to, false); },
          [&] {
            const int file = ::open(Native("f").constData(), O_WRONLY);
            changed = file >= 0 && ::write(file, "NEW", 3) == 3;
            ::close(file);
          });
      if (end == ChildEnd::CannotTrace) {
        GTEST_SKIP() << "cannot trace here";
      }
      if (end == ChildEnd::Failed) {
        EXPECT_TRUE(changed);
        EXPECT_EQ(ReadFile(Files(), from), QByteArray("NEW content"));
        ++kept;
      } else if (changed && ReadFile(Files(), to) != QByteArray("NEW content")) {
        ++lost;
      }
      for (const FileEntry& entry : Files().List(QStringLiteral("D:"))) {
        Files().Remove(QStringLiteral("D:\\") + entry.name);
      }
      if (IsThere(from)) {
        Files().Remove(from);
      }
      if (end == ChildEnd::Finished && !changed) {
        break;
      }
      ASSERT_LT(call, 1000);
    }
    EXPECT_GT(kept, 0);
    // A late tick of the clock may shift the gap by a call, so that it may be met twice.
    EXPECT_LE(lost, 4);
  }
  /// The time of 2100-01-01.
  static constexpr qint64 kToCome = 4102444800;
  void SetToCome(const char* below) {
    const timespec times[] = {{kToCome, 0}, {kToCome, 0}};
    ASSERT_EQ(::utimensat(AT_FDCWD, Native(below).constData(), times, AT_SYMLINK_NOFOLLOW), 0);
  }

  LocalWorld world_;
};

TEST_F(LocalTransferTest, AWriteKilledAtAnyCallLeavesTheOldContentOrTheNew) {
  const QString f = QStringLiteral("C:\\f");
  const QByteArray large(200000, 'n');
  KillAtEachCall([&] { WriteFile(Files(), f, "old"); }, [&] { WriteFile(Files(), f, large); },
                 [&] {
                   const QByteArray now = ReadFile(Files(), f);
                   EXPECT_TRUE(now == "old" || now == large);
                   ExpectOnlyTemporaryBeside(kTop, {QStringLiteral("f")});
                 });
}

TEST_F(LocalTransferTest, AKilledWriteOfANewFileLeavesNothingOrAllOfIt) {
  const QString f = QStringLiteral("C:\\f");
  KillAtEachCall(
      [&] {
        if (IsThere(f)) {
          Files().Remove(f);
        }
      },
      [&] { WriteFile(Files(), f, "new"); },
      [&] {
        EXPECT_TRUE(!IsThere(f) || ReadFile(Files(), f) == "new");
        ExpectOnlyTemporaryBeside(kTop, {QStringLiteral("f")});
      });
}

TEST_F(LocalTransferTest, ACopyKilledAtAnyCallLeavesTheOldContentOrTheNew) {
  WriteFile(Files(), QStringLiteral("f"), QByteArray(200000, 'n'));
  const QString g = QStringLiteral("C:\\g");
  KillAtEachCall([&] { WriteFile(Files(), g, "old"); },
                 [&] { Files().Copy(QStringLiteral("C:\\f"), g, true); },
                 [&] {
                   const QByteArray now = ReadFile(Files(), g);
                   EXPECT_TRUE(now == "old" || now == QByteArray(200000, 'n'));
                   ExpectOnlyTemporaryBeside(kTop, {QStringLiteral("f"), QStringLiteral("g")});
                 });
}

TEST_F(LocalTransferTest, AKilledFolderCopyLeavesNothingOrTheWholeFolder) {
  MakeTree(QStringLiteral("C:\\d"));
  KillAtEachCall(
      [&] {
        if (IsThere(QStringLiteral("C:\\e"))) {
          Files().Remove(QStringLiteral("C:\\e"));
        }
      },
      [&] { Files().Copy(QStringLiteral("C:\\d"), QStringLiteral("C:\\e"), false); },
      [&] {
        EXPECT_TRUE(!IsThere(QStringLiteral("C:\\e")) || IsWholeTree(QStringLiteral("C:\\e")));
        EXPECT_TRUE(IsWholeTree(QStringLiteral("C:\\d")));
        ExpectOnlyTemporaryBeside(kTop, {QStringLiteral("d"), QStringLiteral("e")});
      });
}

TEST_F(LocalTransferTest, AMoveAcrossVolumesKilledAtAnyCallLosesNothing) {
  if (!AddOtherDevice()) {
    GTEST_SKIP() << "no other device here";
  }
  const QString d = QStringLiteral("D:\\d");
  const QString e = QStringLiteral("C:\\e");
  // The source is renewed by a copy, which does not wait for the disk.
  const QString original = QStringLiteral("C:\\original");
  MakeTree(original);
  KillAtEachCall(
      [&] {
        for (const QString& path : {d, e}) {
          if (IsThere(path)) {
            Files().Remove(path);
          }
        }
        Files().Copy(original, e, false);
      },
      [&] { MoveItem(Files(), e, d, false); },
      [&] {
        EXPECT_TRUE(!IsThere(d) || IsWholeTree(d));
        EXPECT_TRUE(IsWholeTree(e) || IsWholeTree(d));
        ExpectOnlyTemporaryBeside(kTop, {QStringLiteral("e"), QStringLiteral("original")});
        ExpectOnlyTemporaryBeside(QStringLiteral("D:"), {QStringLiteral("d")});
      });
}

TEST_F(LocalTransferTest, FilesThatChangeDuringAMoveAreNotLost) {
  if (!AddOtherDevice()) {
    GTEST_SKIP() << "no other device here";
  }
  ExpectChangesKept([] {});
}

TEST_F(LocalTransferTest, FilesWithFutureTimestampsMoveAcrossVolumes) {
  if (!AddOtherDevice()) {
    GTEST_SKIP() << "no other device here";
  }
  MakeTree(QStringLiteral("C:\\d"));
  WriteFile(Files(), QStringLiteral("C:\\f"), "x");
  ASSERT_EQ(::symlink("a", Native("d/link").constData()), 0);
  ASSERT_EQ(::link(Native("d/a").constData(), Native("d/again").constData()), 0);
  for (const char* name : {"f", "d/a", "d/sub/b", "d/link", "d/sub", "d"}) {
    SetToCome(name);
  }
  MoveItem(Files(), QStringLiteral("C:\\f"), QStringLiteral("D:\\f"), false);
  MoveItem(Files(), QStringLiteral("C:\\d"), QStringLiteral("D:\\d"), false);
  EXPECT_EQ(ReadFile(Files(), QStringLiteral("D:\\f")), QByteArray("x"));
  EXPECT_TRUE(IsWholeTree(QStringLiteral("D:\\d")));
  EXPECT_TRUE(Files().List(kTop).empty());
  EXPECT_EQ(Files().Stat(QStringLiteral("D:\\f")).modified, Date{kToCome * 1000});
}

TEST_F(LocalTransferTest, FilesWithFutureTimestampsThatChangeAreNotLost) {
  if (!AddOtherDevice()) {
    GTEST_SKIP() << "no other device here";
  }
  ExpectChangesKept([this] { SetToCome("f"); });
}

TEST_F(LocalTransferTest, TwoNamesThatAreOneInAMergeNeverReplaceOneAnother) {
  struct Row {
    const char* label;
    bool folders;
  };
  for (const Row& row : {Row{"files", false}, {"folders", true}}) {
    SCOPED_TRACE(row.label);
    for (const QString& name : {QStringLiteral("A"), QStringLiteral("a")}) {
      const QString path = QStringLiteral("C:\\from\\") + name;
      if (name == QStringLiteral("A")) {
        Files().CreateFolder(QStringLiteral("C:\\from"));
        Files().CreateFolder(QStringLiteral("C:\\to"));
      }
      if (row.folders) {
        Files().CreateFolder(path);
      }
      WriteFile(Files(), row.folders ? path + QStringLiteral("\\f") : path, name.toLatin1());
    }
    // The second name becomes that of the first item, as in a case-insensitive folder.
    QByteArray first;
    const ItemObserver observer = [&](const ItemProgress& shown) {
      const QByteArray name = shown.name.toUtf8();
      if (name != "a" && name != "A") {
        return true;
      }
      if (first.isEmpty()) {
        first = name;
        return true;
      }
      const QByteArray put = Native("to/") + first;
      const QByteArray folded = Native("to/") + name;
      EXPECT_EQ(row.folders ? ::rename(put.constData(), folded.constData())
                            : ::link(put.constData(), folded.constData()),
                0);
      return true;
    };
    EXPECT_EQ(
        ErrorOf([&] { Files().Copy(QStringLiteral("C:\\from"), QStringLiteral("C:\\to"), true, observer); }),
        error::kExists);
    ASSERT_FALSE(first.isEmpty());
    const QString kept = QStringLiteral("C:\\to\\") +
                         (!row.folders ? QString::fromLatin1(first)
                                       : QString(first == "a" ? u'A' : u'a') + QStringLiteral("\\f"));
    EXPECT_EQ(ReadFile(Files(), kept), first);
    Files().Remove(QStringLiteral("C:\\from"));
    Files().Remove(QStringLiteral("C:\\to"));
  }
}

TEST_F(LocalTransferTest, ReplacementsAreFlushedBeforeTheRename) {
  WriteFile(Files(), QStringLiteral("C:\\f"), "new");
  WriteFile(Files(), QStringLiteral("C:\\g"), "old");
  const auto copy = [&](const QString& to) {
    return SystemCallsOf([&, to] { Files().Copy(QStringLiteral("C:\\f"), to, true); });
  };
  const std::vector<long> replacing = copy(QStringLiteral("C:\\g"));
  if (replacing.empty()) {
    GTEST_SKIP() << "cannot trace here";
  }
  const auto flush = std::find(replacing.begin(), replacing.end(), SYS_fsync);
  const auto rename = std::find_if(replacing.begin(), replacing.end(),
                                   [](long call) { return call == SYS_renameat || call == SYS_renameat2; });
  ASSERT_NE(flush, replacing.end());
  ASSERT_NE(rename, replacing.end());
  EXPECT_LT(flush, rename);
  // A new item is not flushed.
  const std::vector<long> fresh = copy(QStringLiteral("C:\\h"));
  EXPECT_EQ(std::count(fresh.begin(), fresh.end(), SYS_fsync), 0);
}

TEST_F(LocalTransferTest, MovedItemsAreFlushedBeforeTheSourceIsDeleted) {
  if (!AddOtherDevice()) {
    GTEST_SKIP() << "no other device here";
  }
  MakeTree(QStringLiteral("C:\\d"));
  WriteFile(Files(), QStringLiteral("C:\\f"), "x");
  ASSERT_EQ(::symlink("f", Native("l").constData()), 0);
  struct Row {
    const char* label;
    QString name;
    std::vector<long> flushes;
  };
  for (const Row& row : {Row{"a file", QStringLiteral("f"), {SYS_fsync, SYS_fsync}},
                         {"a link", QStringLiteral("l"), {SYS_fsync}},
                         {"a folder", QStringLiteral("d"), {SYS_syncfs, SYS_fsync}}}) {
    SCOPED_TRACE(row.label);
    const std::vector<long> calls = SystemCallsOf([&] {
      MoveItem(Files(), QStringLiteral("C:\\") + row.name, QStringLiteral("D:\\") + row.name, false);
    });
    if (calls.empty()) {
      GTEST_SKIP() << "cannot trace here";
    }
    std::vector<long> flushes;
    for (const long call : calls) {
      if (call == SYS_fsync || call == SYS_syncfs) {
        flushes.push_back(call);
      } else if (call == SYS_unlinkat) {
        break;
      }
    }
    EXPECT_EQ(flushes, row.flushes);
  }
}

TEST_F(LocalTransferTest, FilesThatAppearDuringAMoveAreNotLost) {
  if (!AddOtherDevice()) {
    GTEST_SKIP() << "no other device here";
  }
  for (int call = 1;; ++call) {
    SCOPED_TRACE(call);
    Files().CreateFolder(QStringLiteral("C:\\d"));
    Files().CreateFile(QStringLiteral("C:\\d\\f"));
    bool appeared = false;
    const ChildEnd end = RunInterruptedAt(
        call, [&] { MoveItem(Files(), QStringLiteral("C:\\d"), QStringLiteral("D:\\d"), false); },
        [&] {
          const int file = ::open(Native("d/new").constData(), O_WRONLY | O_CREAT | O_EXCL, 0600);
          appeared = file >= 0;
          ::close(file);
        });
    if (end == ChildEnd::CannotTrace) {
      GTEST_SKIP() << "cannot trace here";
    }
    EXPECT_TRUE(end == ChildEnd::Finished || appeared);
    EXPECT_TRUE(!appeared || IsThere(QStringLiteral("C:\\d\\new")) || IsThere(QStringLiteral("D:\\d\\new")));
    EXPECT_TRUE(IsThere(QStringLiteral("C:\\d\\f")) || IsThere(QStringLiteral("D:\\d\\f")));
    for (const QString& drive : {kTop, QStringLiteral("D:")}) {
      for (const FileEntry& entry : Files().List(drive)) {
        EXPECT_EQ(entry.name, QStringLiteral("d"));
        Files().Remove(drive + u'\\' + entry.name);
      }
    }
    if (end == ChildEnd::Finished && !appeared) {
      break;
    }
    ASSERT_FALSE(HasFailure());
    ASSERT_LT(call, 1000);
  }
}

TEST_F(LocalTransferTest, AMoveAcrossVolumesThatMeetsAPipeKeepsTheSource) {
  if (!AddOtherDevice()) {
    GTEST_SKIP() << "no other device here";
  }
  MakeTree(QStringLiteral("C:\\d"));
  ASSERT_EQ(::mkfifo(Native("d/sub/pipe").constData(), 0600), 0);
  EXPECT_EQ(ErrorOf([&] { MoveItem(Files(), QStringLiteral("C:\\d"), QStringLiteral("D:\\d"), false); }),
            error::kNotSupported);
  EXPECT_TRUE(IsWholeTree(QStringLiteral("C:\\d")));
  EXPECT_TRUE(Files().List(QStringLiteral("D:")).empty());
}

TEST_F(LocalTransferTest, OnAFullDiskTheOldContentStaysAndNothingIsLeftOver) {
  if (::geteuid() != 0) {
    GTEST_SKIP() << "needs the super-user";
  }
  Files().CreateFolder(QStringLiteral("small"));
  const QByteArray place = Native("small");
  if (::mount("tmpfs", place.constData(), "tmpfs", MS_NOSUID | MS_NODEV, "size=256k") != 0) {
    GTEST_SKIP() << "cannot mount here";
  }
  const struct Unmount {
    QByteArray place;
    ~Unmount() { ::umount2(place.constData(), MNT_DETACH); }
  } unmount{place};
  MakeTree(QStringLiteral("C:\\d"));
  WriteFile(Files(), QStringLiteral("small\\f"), "old");
  EXPECT_EQ(ErrorOf([&] { WriteFile(Files(), QStringLiteral("small\\f"), QByteArray(500000, 'x')); }),
            error::kDiskFull);
  EXPECT_EQ(ReadFile(Files(), QStringLiteral("small\\f")), QByteArray("old"));
  EXPECT_EQ(ErrorOf([&] { Files().Copy(QStringLiteral("d\\sub\\b"), QStringLiteral("small\\f"), true); }),
            error::kDiskFull);
  EXPECT_EQ(ReadFile(Files(), QStringLiteral("small\\f")), QByteArray("old"));
  EXPECT_EQ(ErrorOf([&] { Files().Copy(QStringLiteral("d"), QStringLiteral("small\\d"), false); }),
            error::kDiskFull);
  EXPECT_EQ(ErrorOf([&] { MoveItem(Files(), QStringLiteral("d"), QStringLiteral("small\\d"), false); }),
            error::kDiskFull);
  EXPECT_TRUE(IsWholeTree(QStringLiteral("C:\\d")));
  ASSERT_EQ(Files().List(QStringLiteral("small")).size(), 1U);

  // A mount point is neither deleted nor emptied.
  EXPECT_EQ(ErrorOf([&] { Files().Remove(QStringLiteral("small")); }), providererror::kBusy);
  EXPECT_EQ(ReadFile(Files(), QStringLiteral("small\\f")), QByteArray("old"));

  ASSERT_EQ(::mount(nullptr, place.constData(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr), 0);
  EXPECT_NE(Files().Stat(QStringLiteral("small\\f")).attributes & attribute::kReadOnly, 0);
  EXPECT_NE(Files().List(QStringLiteral("small")).front().attributes & attribute::kReadOnly, 0);
  EXPECT_EQ(ErrorOf([&] { WriteFile(Files(), QStringLiteral("small\\f"), "x"); }),
            providererror::kWriteProtected);
  EXPECT_EQ(ErrorOf([&] { Files().Remove(QStringLiteral("small\\f")); }), providererror::kWriteProtected);
}

TEST_F(LocalTransferTest, AFolderSeenAtASecondPlaceIsNotCopiedIntoItself) {
  if (::geteuid() != 0) {
    GTEST_SKIP() << "needs the super-user";
  }
  MakeTree(QStringLiteral("C:\\d"));
  Files().CreateFolder(QStringLiteral("again"));
  const QByteArray place = Native("again");
  if (::mount(Native("d/sub").constData(), place.constData(), nullptr, MS_BIND, nullptr) != 0) {
    GTEST_SKIP() << "cannot mount here";
  }
  const struct Unmount {
    QByteArray place;
    ~Unmount() { ::umount2(place.constData(), MNT_DETACH); }
  } unmount{place};
  EXPECT_EQ(ErrorOf([&] { Files().Copy(QStringLiteral("d"), QStringLiteral("again\\d"), true); }),
            error::kInvalidParameter);
  EXPECT_EQ(ErrorOf([&] { Files().Copy(QStringLiteral("d\\sub\\b"), QStringLiteral("again\\b"), true); }),
            error::kInvalidParameter);
  EXPECT_EQ(ErrorOf([&] { Files().Rename(QStringLiteral("d\\sub\\b"), QStringLiteral("again\\b"), true); }),
            error::kInvalidParameter);
  EXPECT_EQ(ErrorOf([&] { Files().Remove(QStringLiteral("again")); }), providererror::kBusy);
  EXPECT_TRUE(IsWholeTree(QStringLiteral("C:\\d")));
  EXPECT_EQ(Files().List(QStringLiteral("d\\sub")).size(), 2U);
}

TEST_F(LocalTransferTest, AVeryDeepTreeIsCopiedListedAndRemoved) {
  constexpr int kLevels = 3000;
  Files().CreateFolder(QStringLiteral("deep"));
  int folder = ::open(Native("deep").constData(), O_RDONLY | O_DIRECTORY);
  for (int i = 0; i < kLevels; ++i) {
    ASSERT_EQ(::mkdirat(folder, "d", 0700), 0);
    const int next = ::openat(folder, "d", O_RDONLY | O_DIRECTORY);
    ASSERT_GE(next, 0);
    ::close(folder);
    folder = next;
  }
  ASSERT_EQ(::symlinkat("nowhere", folder, "bottom"), 0);
  ::close(folder);
  Files().Copy(QStringLiteral("deep"), QStringLiteral("copy"), false);
  const QString bottom = QStringLiteral("copy") + QStringLiteral("\\d").repeated(kLevels);
  ASSERT_EQ(Files().List(bottom).size(), 1U);
  EXPECT_EQ(Files().List(bottom).front().name, QStringLiteral("bottom"));
  Files().Remove(QStringLiteral("deep"));
  Files().Remove(QStringLiteral("copy"));
  EXPECT_TRUE(Files().List(kTop).empty());
}

TEST_F(LocalTransferTest, FailedFolderCopiesAreTakenAwayAlsoInsideAMerge) {
  MakeTree(QStringLiteral("C:\\d"));
  Files().CreateFolder(QStringLiteral("C:\\d\\new"));
  ASSERT_EQ(::mkfifo(Native("d/new/pipe").constData(), 0600), 0);
  Files().CreateFolder(QStringLiteral("C:\\e"));
  EXPECT_EQ(ErrorOf([&] { Files().Copy(QStringLiteral("d"), QStringLiteral("e"), true); }),
            error::kNotSupported);
  EXPECT_FALSE(IsThere(QStringLiteral("C:\\e\\new")));
  for (const FileEntry& entry : Files().List(QStringLiteral("e"))) {
    EXPECT_FALSE(IsTemporaryName(entry.name));
  }
}

}  // namespace
}  // namespace trevane::test

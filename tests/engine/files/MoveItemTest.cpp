#include "engine/files/HeldFolder.h"
#include "engine/files/MoveItem.h"
#include "engine/files/ProviderError.h"
#include "engine/files/ProviderPath.h"
#include "engine/files/TemporaryName.h"
#include "engine/files/WholeFile.h"
#include "engine/providers/memory/MemoryFileSystem.h"
#include "tests/support/FaultyFileSystem.h"
#include "tests/support/PlainFileSystem.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace trevane::test {
namespace {

const QString kFrom = QStringLiteral("C:\\d");
const QString kTo = QStringLiteral("D:\\e");

/// A tree on C: that is moved to D:.
class MoveItemTest : public testing::Test {
 protected:
  explicit MoveItemTest(bool identity = true)
      : memory_(std::make_shared<MemoryFileSystem>(MemoryFileSystemOptions{
            .drives = {QStringLiteral("C:"), QStringLiteral("D:")}, .identity = identity})),
        files_(memory_) {
    MakeTree();
  }

  void MakeTree() {
    memory_->AddFile(QStringLiteral("C:\\d\\a"), "first");
    memory_->AddFile(QStringLiteral("C:\\d\\sub\\b"), "second");
    memory_->AddLink(QStringLiteral("C:\\d\\sub\\link"), QStringLiteral("C:\\nowhere"));
    memory_->AddFolder(QStringLiteral("C:\\d\\empty"));
  }

  qint32 Move(const QString& from = kFrom, const QString& to = kTo, bool overwrite = false) {
    try {
      MoveItem(files_, from, to, overwrite);
    } catch (const RunTimeError& failure) {
      text_ = failure.Description();
      return failure.Number();
    }
    return 0;
  }
  [[nodiscard]] bool IsWholeAt(const QString& top) const {
    return memory_->Exists(top + QStringLiteral("\\empty")) &&
           memory_->Exists(top + QStringLiteral("\\sub\\link")) &&
           memory_->Exists(top + QStringLiteral("\\a")) &&
           memory_->Exists(top + QStringLiteral("\\sub\\b")) &&
           memory_->Content(top + QStringLiteral("\\a")) == "first" &&
           memory_->Content(top + QStringLiteral("\\sub\\b")) == "second";
  }
  /// Runs `work` once, before the first call of `operation`.
  void Before(FileSystemOperation operation, std::function<void()> work) {
    files_.SetHook([operation, work = std::move(work), done = false](const FileSystemCall& call) mutable {
      if (call.operation == operation && !std::exchange(done, true)) {
        work();
      }
    });
  }

  std::shared_ptr<MemoryFileSystem> memory_;
  FaultyFileSystem files_;
  QString text_;
};

class MoveItemWithoutIdentityTest : public MoveItemTest {
 protected:
  MoveItemWithoutIdentityTest() : MoveItemTest(false) {}
};

TEST_F(MoveItemTest, TreesMoveAcrossDrives) {
  EXPECT_EQ(Move(), 0);
  EXPECT_TRUE(IsWholeAt(kTo));
  EXPECT_FALSE(memory_->Exists(kFrom));
  EXPECT_EQ(memory_->List(QStringLiteral("D:")).size(), 1U);
}

TEST_F(MoveItemTest, OneDriveNeedsNoCopy) {
  EXPECT_EQ(Move(kFrom, QStringLiteral("C:\\e")), 0);
  EXPECT_TRUE(IsWholeAt(QStringLiteral("C:\\e")));
  ASSERT_EQ(files_.CallCount(), 1);
  EXPECT_EQ(files_.Calls().front().operation, FileSystemOperation::Rename);
}

TEST_F(MoveItemTest, AFaultAtAnyCallLosesNothing) {
  for (const Fault fault : {Fault::Refuse, Fault::DoAndFail, Fault::Lie}) {
    for (const FaultSpan span : {FaultSpan::Once, FaultSpan::FromThenOn}) {
      for (int call = 1;; ++call) {
        SCOPED_TRACE(testing::Message()
                     << static_cast<int>(fault) << ' ' << static_cast<int>(span) << ' ' << call);
        memory_->Vanish(kFrom);
        for (const FileEntry& entry : memory_->List(QStringLiteral("D:"))) {
          memory_->Vanish(providerpath::Child(QStringLiteral("D:"), entry.name));
        }
        MakeTree();
        files_.Arm(call, span, error::kTimeOut, fault);
        const qint32 result = Move();
        EXPECT_TRUE(IsWholeAt(kFrom) || IsWholeAt(kTo));
        // Under its final name a copy is whole.
        EXPECT_TRUE(IsWholeAt(kTo) || !memory_->Exists(kTo));
        EXPECT_TRUE(result == 0 || files_.FaultCount() > 0);
        if (files_.FaultCount() == 0 || HasFailure()) {
          EXPECT_GT(call, 20);
          break;
        }
      }
    }
  }
}

TEST_F(MoveItemTest, AFileThatAppearsIsNotLost) {
  Before(FileSystemOperation::Copy, [this] { memory_->AddFile(QStringLiteral("C:\\d\\sub\\new"), "x"); });
  EXPECT_EQ(Move(), providererror::kChanged);
  EXPECT_TRUE(IsWholeAt(kFrom));
  EXPECT_TRUE(memory_->Exists(QStringLiteral("C:\\d\\sub\\new")));
  EXPECT_TRUE(memory_->List(QStringLiteral("D:")).empty());
}

TEST_F(MoveItemTest, AFileThatChangesAfterTheFlushIsNotLost) {
  Before(FileSystemOperation::Flush,
         [this] { WriteFile(*memory_, QStringLiteral("C:\\d\\sub\\b"), "third!"); });
  EXPECT_EQ(Move(), providererror::kChanged);
  EXPECT_EQ(memory_->Content(QStringLiteral("C:\\d\\sub\\b")), "third!");
  EXPECT_TRUE(IsWholeAt(kTo));
}

TEST_F(MoveItemTest, ACopyThatIsNotWholeIsTakenAway) {
  files_.SetHook([this](const FileSystemCall& call) {
    const QString name = call.path.section(u'\\', 1);
    if (IsTemporaryName(name) && call.operation == FileSystemOperation::Stat) {
      memory_->Vanish(call.path + QStringLiteral("\\sub\\b"));
    }
  });
  EXPECT_EQ(Move(), providererror::kChanged);
  EXPECT_EQ(text_, QStringLiteral("The copy could not be verified; the source was kept: C:\\d\\sub\\b"));
  EXPECT_TRUE(IsWholeAt(kFrom));
  EXPECT_TRUE(memory_->List(QStringLiteral("D:")).empty());
}

TEST_F(MoveItemTest, AFullDiskNamesTheDestination) {
  memory_->SetCapacity(15);
  EXPECT_EQ(Move(), error::kDiskFull);
  EXPECT_TRUE(text_.endsWith(QStringLiteral(": D:\\e"))) << text_.toStdString();
  EXPECT_TRUE(IsWholeAt(kFrom));
}

TEST_F(MoveItemTest, FoldersReplaceOnlyEmptyFolders) {
  memory_->AddFile(QStringLiteral("D:\\e\\own"), "x");
  EXPECT_NE(Move(kFrom, kTo, true), 0);
  EXPECT_TRUE(IsWholeAt(kFrom));
  memory_->Vanish(QStringLiteral("D:\\e\\own"));
  EXPECT_EQ(Move(kFrom, kTo, false), error::kExists);
  EXPECT_EQ(Move(kFrom, kTo, true), 0);
  EXPECT_TRUE(IsWholeAt(kTo));
  EXPECT_FALSE(memory_->Exists(kFrom));
}

TEST_F(MoveItemTest, ReplacementsAreFlushedBeforeTheRename) {
  const QString a = QStringLiteral("C:\\d\\a");
  memory_->AddFile(kTo, "old");
  EXPECT_EQ(Move(a, kTo, true), 0);
  std::vector<FileSystemOperation> order;
  for (const FileSystemCall& call : files_.Calls()) {
    if (call.operation == FileSystemOperation::Flush || call.operation == FileSystemOperation::Rename ||
        call.operation == FileSystemOperation::Remove) {
      order.push_back(call.operation);
    }
  }
  EXPECT_EQ(order, (std::vector<FileSystemOperation>{FileSystemOperation::Rename, FileSystemOperation::Flush,
                                                     FileSystemOperation::Rename, FileSystemOperation::Flush,
                                                     FileSystemOperation::Remove}));
  EXPECT_EQ(memory_->Content(kTo), "first");
}

TEST_F(MoveItemWithoutIdentityTest, WithoutIdentityNothingIsReplaced) {
  memory_->AddFile(kTo, "old");
  EXPECT_EQ(Move(QStringLiteral("C:\\d\\a"), kTo, true), providererror::kNotSameDevice);
  EXPECT_EQ(memory_->Content(kTo), "old");
  EXPECT_TRUE(IsWholeAt(kFrom));
  EXPECT_EQ(Move(QStringLiteral("C:\\d\\a"), QStringLiteral("D:\\new"), true), 0);
  EXPECT_EQ(memory_->Content(QStringLiteral("D:\\new")), "first");
}

/// Dates that differ by less than two seconds prove nothing.
class CoarseDatesTest : public MoveItemTest {
 protected:
  CoarseDatesTest() : coarse_(memory_, {.identities = true, .dateStep = 2000}), faulty_(Borrowed()) {}

  [[nodiscard]] std::shared_ptr<FileSystem> Borrowed() {
    return std::shared_ptr<FileSystem>(std::shared_ptr<void>(), &coarse_);
  }
  void Postpone(const QString& path, qint64 msecs) {
    const FileEntry entry = memory_->Stat(path);
    memory_->SetTimes(path, entry.created, entry.accessed, Date{entry.modified.msecs + msecs});
  }
  /// Moves a file whose copy gets another date when it has its name.
  qint32 MoveWhileItIsPostponed(qint64 msecs) {
    faulty_.SetHook([this, msecs, done = false](const FileSystemCall& call) mutable {
      if (call.operation == FileSystemOperation::Stat && call.path == kTo && memory_->Exists(kTo) &&
          !std::exchange(done, true)) {
        Postpone(kTo, msecs);
      }
    });
    try {
      MoveItem(faulty_, QStringLiteral("C:\\d\\a"), kTo, false);
    } catch (const RunTimeError& failure) {
      return failure.Number();
    }
    return 0;
  }

  PlainFileSystem coarse_;
  FaultyFileSystem faulty_;
};

TEST_F(CoarseDatesTest, AMoveRestsOnNoDateWithinTheStep) {
  EXPECT_EQ(MoveWhileItIsPostponed(1999), 0);
  EXPECT_FALSE(memory_->Exists(QStringLiteral("C:\\d\\a")));
  EXPECT_EQ(memory_->Content(kTo), "first");
}

TEST_F(CoarseDatesTest, AMoveThatIsOverwrittenKeepsTheSource) {
  EXPECT_EQ(MoveWhileItIsPostponed(2000), providererror::kChanged);
  EXPECT_EQ(memory_->Content(QStringLiteral("C:\\d\\a")), "first");
}

TEST_F(CoarseDatesTest, AContentThatChangedWithinTheStepIsNotLost) {
  const QString from = QStringLiteral("C:\\d\\sub\\b");
  const FileEntry before = memory_->Stat(from);
  // Nothing but the dates would show it.
  PlainFileSystem plain(memory_, {.identities = false, .dateStep = 2000});
  FaultyFileSystem faulty(std::shared_ptr<FileSystem>(std::shared_ptr<void>(), &plain));
  faulty.SetHook([&, done = false](const FileSystemCall& call) mutable {
    if (call.operation == FileSystemOperation::Flush && !std::exchange(done, true)) {
      memory_->AddFile(from, "later!");
      memory_->SetTimes(from, before.created, before.accessed, Date{before.modified.msecs + 1500});
    }
  });
  EXPECT_THROW(MoveItem(faulty, from, kTo, false), RunTimeError);
  EXPECT_EQ(memory_->Content(from), "later!");
}

TEST_F(CoarseDatesTest, ARemovalRestsOnNoDateWithinTheStep) {
  const QString name = QStringLiteral("a");
  const std::shared_ptr<HeldFolder> folder = coarse_.Hold(kFrom);
  const std::optional<SeenItem> seen = folder->Find(name);
  ASSERT_TRUE(seen);
  Postpone(QStringLiteral("C:\\d\\a"), 2000);
  EXPECT_THROW(folder->RemoveAlone(name, *seen), RunTimeError);
  Postpone(QStringLiteral("C:\\d\\a"), -1);
  folder->RemoveAlone(name, *seen);
  EXPECT_FALSE(memory_->Exists(QStringLiteral("C:\\d\\a")));
}

}  // namespace
}  // namespace trevane::test

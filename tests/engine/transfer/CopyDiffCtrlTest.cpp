#include "engine/items/clsIxoFile.h"
#include "tests/support/EngineWorld.h"
#include "tests/support/WrongSizes.h"

#include <QRegularExpression>

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

namespace trevane::test {
namespace {

class CopyDiffCtrlTest : public testing::Test {
 protected:
  CopyDiffCtrlTest() {
    source().AddFile(QStringLiteral("C:\\tree\\a"), "new a");
    source().AddFile(QStringLiteral("C:\\tree\\b"), "new b");
    source().AddFile(QStringLiteral("C:\\tree\\sub\\c"), "new c");
    source().AddFile(QStringLiteral("C:\\tree\\sub\\deep\\d"), "new d");
    source().AddFolder(QStringLiteral("C:\\tree\\zempty"));
    source().AddFile(QStringLiteral("C:\\single"), "new single");
    target().AddFolder(QStringLiteral("in"));
  }
  void TearDown() override {
    EXPECT_EQ(world_.engine->LiveFileNames(), QStringList()) << "left cached by the engine";
    EXPECT_EQ(world_.engine->HeldFiles(), 0);
  }

  MemoryFileSystem& source() { return *world_.local.memory; }
  MemoryFileSystem& target() { return *world_.one.memory; }

  /// Copies, and checks that the source has not changed by it.
  qint32 CopyTo(const QString& destination, const QString& from, const QString& newName = {}) {
    const QStringList before = source().Tree();
    const auto file = world_.File(QStringLiteral("Workspace\\My Computer\\") + from);
    EXPECT_EQ(file->Result(), 0);
    const qint32 result = file->CopyDiffCtrl(destination, newName, observer_);
    EXPECT_EQ(file->Result(), result);
    arrived_ = file->Arrived();
    items_ = file->ArrivedItems();
    text_ = file->ResultText();
    EXPECT_EQ(source().Tree(), before);
    return result;
  }
  qint32 Copy(const QString& from, const QString& newName = {}) {
    return CopyTo(QStringLiteral("Workspace\\Ctrl1\\in"), from, newName);
  }

  EngineWorld world_;
  CrossControllerCopy::ItemObserver observer_;
  Arrival arrived_ = Arrival::Failed;
  qint64 items_ = 0;
  QString text_;
};

TEST_F(CopyDiffCtrlTest, CopiesAFileUnderItsOwnNameOrANewOne) {
  EXPECT_EQ(Copy(QStringLiteral("C:\\single")), 0);
  EXPECT_EQ(arrived_, Arrival::Everything);
  EXPECT_EQ(items_, 1);
  EXPECT_EQ(Copy(QStringLiteral("C:\\single"), QStringLiteral("other")), 0);
  EXPECT_EQ(target().Tree(), (QStringList{QStringLiteral("in\\"), QStringLiteral("in\\other=new single"),
                                          QStringLiteral("in\\single=new single")}));
}

TEST_F(CopyDiffCtrlTest, CopiesAFolderWithEverythingBelow) {
  EXPECT_EQ(Copy(QStringLiteral("C:\\tree")), 0);
  EXPECT_EQ(arrived_, Arrival::Everything);
  EXPECT_EQ(items_, 8);
  EXPECT_EQ(
      target().Tree(),
      (QStringList{QStringLiteral("in\\"), QStringLiteral("in\\tree\\"), QStringLiteral("in\\tree\\a=new a"),
                   QStringLiteral("in\\tree\\b=new b"), QStringLiteral("in\\tree\\sub\\"),
                   QStringLiteral("in\\tree\\sub\\c=new c"), QStringLiteral("in\\tree\\sub\\deep\\"),
                   QStringLiteral("in\\tree\\sub\\deep\\d=new d"), QStringLiteral("in\\tree\\zempty\\")}));
}

TEST_F(CopyDiffCtrlTest, CopiesFromAControllerToTheLocalDisk) {
  target().AddFile(QStringLiteral("in\\x"), "x");
  const auto file = world_.File(QStringLiteral("Workspace\\Ctrl1\\in"));
  EXPECT_EQ(file->CopyDiffCtrl(QStringLiteral("Workspace\\My Computer\\D:"), {}), 0);
  EXPECT_EQ(source().Content(QStringLiteral("D:\\in\\x")), "x");
}

TEST_F(CopyDiffCtrlTest, AsksOncePerExistingItemUntilYesAll) {
  target().AddFile(QStringLiteral("in\\tree\\a"), "old a");
  target().AddFile(QStringLiteral("in\\tree\\b"), "old b");
  target().AddFile(QStringLiteral("in\\tree\\sub\\c"), "old c");
  world_.prompts.ExpectChoice(QStringLiteral("'tree' already existed.\r\nOverwrite?"), 0);
  world_.prompts.ExpectChoice(QStringLiteral("'a' already existed.\r\nOverwrite?"), 0);
  world_.prompts.ExpectChoice(QStringLiteral("'b' already existed.\r\nOverwrite?"), 1);
  EXPECT_EQ(Copy(QStringLiteral("C:\\tree")), 0);
  EXPECT_EQ(arrived_, Arrival::Everything);
  EXPECT_EQ(target().Content(QStringLiteral("in\\tree\\a")), "new a");
  EXPECT_EQ(target().Content(QStringLiteral("in\\tree\\sub\\c")), "new c");
}

TEST_F(CopyDiffCtrlTest, CancelEndsEveryLevel) {
  target().AddFile(QStringLiteral("in\\tree\\sub\\c"), "old c");
  world_.prompts.ExpectChoice(0);
  world_.prompts.ExpectChoice(QStringLiteral("'sub' already existed.\r\nOverwrite?"), 0);
  world_.prompts.ExpectChoice(QStringLiteral("'c' already existed.\r\nOverwrite?"), 3);
  EXPECT_EQ(Copy(QStringLiteral("C:\\tree")), 0);
  EXPECT_EQ(arrived_, Arrival::Cancelled);
  EXPECT_EQ(target().Content(QStringLiteral("in\\tree\\sub\\c")), "old c");
  EXPECT_EQ(target().Content(QStringLiteral("in\\tree\\a")), "new a");
  EXPECT_FALSE(target().Exists(QStringLiteral("in\\tree\\sub\\deep")));
  EXPECT_FALSE(target().Exists(QStringLiteral("in\\tree\\zempty")));
}

TEST_F(CopyDiffCtrlTest, NoSkipsTheItemAndTheNextOneIsAskedFor) {
  target().AddFile(QStringLiteral("in\\tree\\a"), "old a");
  target().AddFile(QStringLiteral("in\\tree\\b"), "old b");
  world_.prompts.ExpectChoice(0);
  world_.prompts.ExpectChoice(2);
  world_.prompts.ExpectChoice(0);
  EXPECT_EQ(Copy(QStringLiteral("C:\\tree")), 0);
  EXPECT_EQ(arrived_, Arrival::Skipped);
  EXPECT_EQ(target().Content(QStringLiteral("in\\tree\\a")), "old a");
  EXPECT_EQ(target().Content(QStringLiteral("in\\tree\\b")), "new b");
  EXPECT_EQ(target().Content(QStringLiteral("in\\tree\\sub\\deep\\d")), "new d");
}

TEST_F(CopyDiffCtrlTest, NoAndCancelLeaveASingleFileUnchanged) {
  target().AddFile(QStringLiteral("in\\single"), "old");
  world_.prompts.ExpectChoice(2);
  EXPECT_EQ(Copy(QStringLiteral("C:\\single")), 0);
  EXPECT_EQ(arrived_, Arrival::Skipped);
  EXPECT_EQ(items_, 0);
  world_.prompts.ExpectChoice(3);
  EXPECT_EQ(Copy(QStringLiteral("C:\\single")), 0);
  EXPECT_EQ(arrived_, Arrival::Cancelled);
  EXPECT_EQ(target().Content(QStringLiteral("in\\single")), "old");
}

TEST_F(CopyDiffCtrlTest, AFolderThatCannotBeCreatedGivesMinusOne) {
  target().SetWriteProtected({}, true);
  EXPECT_EQ(Copy(QStringLiteral("C:\\tree")), -1);
  EXPECT_EQ(arrived_, Arrival::Failed);
  EXPECT_FALSE(text_.isEmpty());
  EXPECT_EQ(target().Tree(), QStringList{QStringLiteral("in\\")});
}

TEST_F(CopyDiffCtrlTest, AMissingDestinationIsAnError) {
  EXPECT_EQ(CopyTo(QStringLiteral("Workspace\\Ctrl1\\none"), QStringLiteral("C:\\single")), error::kNotFound);
  EXPECT_EQ(CopyTo(QStringLiteral("Workspace\\Ctrl9"), QStringLiteral("C:\\single")), error::kNoSuchKey);
  EXPECT_EQ(arrived_, Arrival::Failed);
}

TEST_F(CopyDiffCtrlTest, FewerThanTwoPiecesCopyNothing) {
  EXPECT_EQ(CopyTo(QStringLiteral("Workspace"), QStringLiteral("C:\\single")), -1);
  EXPECT_EQ(arrived_, Arrival::Failed);
  EXPECT_EQ(target().Tree(), QStringList{QStringLiteral("in\\")});
}

TEST_F(CopyDiffCtrlTest, AClashOfKindsReplacesNothing) {
  target().AddFolder(QStringLiteral("in\\single"));
  target().AddFile(QStringLiteral("in\\tree"), "old");
  world_.prompts.ExpectChoice(0);
  EXPECT_EQ(Copy(QStringLiteral("C:\\single")), error::kExists);
  world_.prompts.ExpectChoice(1);
  EXPECT_EQ(Copy(QStringLiteral("C:\\tree")), error::kExists);
  EXPECT_EQ(target().Tree(), (QStringList{QStringLiteral("in\\"), QStringLiteral("in\\single\\"),
                                          QStringLiteral("in\\tree=old")}));
}

TEST_F(CopyDiffCtrlTest, LinksThatLeadOutAreLeftOut) {
  source().AddFolder(QStringLiteral("C:\\outside"));
  source().AddFile(QStringLiteral("C:\\outside\\secret"), "s");
  source().AddLink(QStringLiteral("C:\\tree\\link"), QStringLiteral("C:\\outside"));
  source().AddLink(QStringLiteral("C:\\tree\\filelink"), QStringLiteral("C:\\single"));
  EXPECT_EQ(Copy(QStringLiteral("C:\\tree")), 0);
  EXPECT_EQ(arrived_, Arrival::Skipped);
  EXPECT_FALSE(target().Exists(QStringLiteral("in\\tree\\link")));
  EXPECT_FALSE(target().Exists(QStringLiteral("in\\tree\\filelink")));
  EXPECT_EQ(Copy(QStringLiteral("C:\\tree\\link")), 0);
  EXPECT_EQ(arrived_, Arrival::Skipped);
  EXPECT_FALSE(target().Exists(QStringLiteral("in\\link")));
}

TEST_F(CopyDiffCtrlTest, ABrokenLinkInAFolderIsSkipped) {
  source().AddLink(QStringLiteral("C:\\tree\\aa"), QStringLiteral("C:\\nowhere"));
  EXPECT_EQ(Copy(QStringLiteral("C:\\tree")), 0);
  EXPECT_EQ(arrived_, Arrival::Skipped);
  EXPECT_FALSE(target().Exists(QStringLiteral("in\\tree\\aa")));
  EXPECT_EQ(target().Content(QStringLiteral("in\\tree\\sub\\deep\\d")), "new d");
}

TEST_F(CopyDiffCtrlTest, ABrokenLinkByItselfIsLeftOut) {
  source().AddLink(QStringLiteral("C:\\lost"), QStringLiteral("C:\\nowhere"));
  EXPECT_EQ(Copy(QStringLiteral("C:\\lost")), 0);
  EXPECT_EQ(arrived_, Arrival::Skipped);
  EXPECT_EQ(items_, 0);
  EXPECT_FALSE(target().Exists(QStringLiteral("in\\lost")));
}

TEST_F(CopyDiffCtrlTest, AMoveKeepsWhatWasOnlyClaimedToArrive) {
  for (int call = 1;; ++call) {
    SCOPED_TRACE(call);
    EngineWorld world;
    world.one.memory->AddFolder(QStringLiteral("in"));
    world.local.memory->AddFile(QStringLiteral("C:\\single"), "content");
    const auto file = world.File(QStringLiteral("Workspace\\My Computer\\C:\\single"));
    file->RecordSource();
    world.one.faulty->Arm(call, FaultSpan::Once, 0, Fault::LieAndReckon);
    const bool copied = file->CopyDiffCtrl(QStringLiteral("Workspace\\Ctrl1\\in"), {}) == 0;
    const bool lied = world.one.faulty->FaultCount() > 0;
    world.one.faulty->Disarm();
    clsIxoFile into = world.files.FileAt(QStringLiteral("Workspace\\Ctrl1\\in"));
    if (copied) {
      file->DeleteMoved(into, {}, false);
    }
    const bool arrived = world.one.memory->Exists(QStringLiteral("in\\single")) &&
                         world.one.memory->Content(QStringLiteral("in\\single")) == "content";
    EXPECT_EQ(world.local.memory->Exists(QStringLiteral("C:\\single")), !arrived);
    if (!lied) {
      EXPECT_TRUE(arrived);
      EXPECT_GT(call, 3);
      break;
    }
  }
}

/// One more look at it would cost a call a file.
TEST_F(CopyDiffCtrlTest, ACopyOfOneFileRestsOnTheAnswerToItsCommit) {
  source().AddFile(QStringLiteral("C:\\single"), "content");
  bool armed = false;
  world_.one.faulty->SetHook([&](const FileSystemCall& call) {
    if (call.operation == FileSystemOperation::OpenSink && !std::exchange(armed, true)) {
      // Write is the next call.
      world_.one.faulty->Arm(1, FaultSpan::Once, 0, Fault::LieAndReckon);
    }
  });
  EXPECT_EQ(Copy(QStringLiteral("C:\\single")), 0);
  EXPECT_EQ(target().Content(QStringLiteral("in\\single")), "con");
}

TEST_F(CopyDiffCtrlTest, AMoveFlushesBeforeItDeletesTheSource) {
  const auto file = world_.File(QStringLiteral("Workspace\\My Computer\\C:\\tree"));
  file->RecordSource();
  ASSERT_EQ(file->CopyDiffCtrl(QStringLiteral("Workspace\\Ctrl1\\in"), {}), 0);
  const auto isFlush = [](const FileSystemCall& call) {
    return call.operation == FileSystemOperation::Flush && call.path == u"in\\tree";
  };
  int removals = 0;
  world_.local.faulty->SetHook([&](const FileSystemCall& call) {
    if (call.operation != FileSystemOperation::Remove) {
      return;
    }
    ++removals;
    EXPECT_TRUE(std::ranges::any_of(world_.one.faulty->Calls(), isFlush)) << call.path.toStdString();
  });
  clsIxoFile into = world_.files.FileAt(QStringLiteral("Workspace\\Ctrl1\\in"));
  file->DeleteMoved(into, {}, false);
  EXPECT_EQ(file->Result(), 0);
  EXPECT_EQ(removals, 8);
}

TEST_F(CopyDiffCtrlTest, AFlushThatFailsKeepsTheSource) {
  const QStringList before = source().Tree();
  const auto file = world_.File(QStringLiteral("Workspace\\My Computer\\C:\\tree"));
  file->RecordSource();
  ASSERT_EQ(file->CopyDiffCtrl(QStringLiteral("Workspace\\Ctrl1\\in"), {}), 0);
  world_.one.faulty->SetHook([](const FileSystemCall& call) {
    if (call.operation == FileSystemOperation::Flush) {
      throw RunTimeError(error::kDiskFull, QStringLiteral("The disk is full"));
    }
  });
  clsIxoFile into = world_.files.FileAt(QStringLiteral("Workspace\\Ctrl1\\in"));
  file->DeleteMoved(into, {}, false);
  EXPECT_EQ(file->Result(), error::kDiskFull);
  EXPECT_EQ(source().Tree(), before);
}

TEST_F(CopyDiffCtrlTest, NewItemsGetTheSourcesPermissions) {
  source().SetPermissions(QStringLiteral("C:\\tree\\a"), 0600);
  source().SetPermissions(QStringLiteral("C:\\tree\\sub"), 0500);
  source().SetPermissions(QStringLiteral("C:\\tree\\sub\\c"), 0755);
  target().AddFile(QStringLiteral("in\\tree\\a"), "old a");
  target().SetPermissions(QStringLiteral("in\\tree\\a"), 0640);
  std::optional<quint32> whileFilled;
  world_.one.faulty->SetHook([&](const FileSystemCall& call) {
    if (call.operation == FileSystemOperation::Write && call.path == u"in\\tree\\sub\\c") {
      whileFilled = target().Permissions(QStringLiteral("in\\tree\\sub"));
    }
  });
  world_.prompts.ExpectChoice(1);
  EXPECT_EQ(Copy(QStringLiteral("C:\\tree")), 0);
  EXPECT_EQ(target().Permissions(QStringLiteral("in\\tree\\a")), 0640U) << "a replaced file keeps its own";
  EXPECT_EQ(target().Permissions(QStringLiteral("in\\tree\\b")), std::nullopt);
  EXPECT_EQ(whileFilled, 0700U);
  EXPECT_EQ(target().Permissions(QStringLiteral("in\\tree\\sub")), 0500U);
  EXPECT_EQ(target().Permissions(QStringLiteral("in\\tree\\sub\\c")), 0755U);
}

TEST_F(CopyDiffCtrlTest, AnInterruptedCopyLeavesNoFolderClosed) {
  source().SetPermissions(QStringLiteral("C:\\tree\\sub"), 0755);
  observer_ = [](const ItemProgress& item) { return item.name != u"deep"; };
  EXPECT_EQ(Copy(QStringLiteral("C:\\tree")), 0);
  EXPECT_EQ(arrived_, Arrival::Cancelled);
  EXPECT_EQ(target().Permissions(QStringLiteral("in\\tree\\sub")), 0755U);
}

TEST_F(CopyDiffCtrlTest, AReplacedNewFolderKeepsItsPermissions) {
  for (const QString& before : {QStringLiteral("in\\tree\\sub\\c"), QStringLiteral("in\\tree\\zempty")}) {
    SCOPED_TRACE(before.toStdString());
    source().SetPermissions(QStringLiteral("C:\\tree"), 0755);
    source().SetPermissions(QStringLiteral("C:\\tree\\sub"), 0755);
    bool done = false;
    world_.one.faulty->SetHook([&](const FileSystemCall& call) {
      if (call.path == before && !std::exchange(done, true)) {
        for (const QString& swapped : {QStringLiteral("in\\tree\\sub"), QStringLiteral("in\\tree")}) {
          target().Vanish(swapped);
        }
        target().AddFolder(QStringLiteral("in\\tree\\sub"));
        target().SetPermissions(QStringLiteral("in\\tree"), 0700);
        target().SetPermissions(QStringLiteral("in\\tree\\sub"), 0700);
      }
    });
    EXPECT_NE(Copy(QStringLiteral("C:\\tree")), 0);
    world_.one.faulty->SetHook({});
    EXPECT_TRUE(done);
    EXPECT_EQ(target().Permissions(QStringLiteral("in\\tree")), 0700U);
    EXPECT_EQ(target().Permissions(QStringLiteral("in\\tree\\sub")), 0700U);
    target().Vanish(QStringLiteral("in\\tree"));
  }
}

TEST_F(CopyDiffCtrlTest, LinksMadeDuringTheQuestionAreNotFollowed) {
  for (const bool toFolder : {false, true}) {
    target().AddFile(QStringLiteral("elsewhere\\kept"), "kept");
    target().AddFile(QStringLiteral("in\\single"), "old");
    target().AddFile(QStringLiteral("in\\tree\\a"), "old");
    const QString item = toFolder ? QStringLiteral("tree") : QStringLiteral("single");
    const QString leadsTo = toFolder ? QStringLiteral("elsewhere") : QStringLiteral("elsewhere\\kept");
    world_.prompts.onQuestion = [&](const AskedQuestion&) {
      target().Vanish(QStringLiteral("in\\") + item);
      target().AddLink(QStringLiteral("in\\") + item, leadsTo);
    };
    world_.prompts.ExpectChoice(toFolder ? 1 : 0);
    EXPECT_EQ(Copy(QStringLiteral("C:\\") + item), error::kExists);
    world_.prompts.onQuestion = {};
    EXPECT_EQ(target().Content(QStringLiteral("elsewhere\\kept")), "kept");
    EXPECT_FALSE(target().Exists(QStringLiteral("elsewhere\\a")));
    target().Vanish(QStringLiteral("in\\") + item);
  }
}

TEST_F(CopyDiffCtrlTest, LinksMadeDuringTheCopyAreNotFollowed) {
  // The path-only way looks before each change: a link may come before any call but the change itself. The
  // changes of a batch begin with its first sink.
  for (const QString& swapped :
       {QStringLiteral("in\\tree"), QStringLiteral("in\\tree\\sub"), QStringLiteral("in\\tree\\b")}) {
    const bool isFile = swapped.endsWith(u'b');
    for (int at = 1;; ++at) {
      SCOPED_TRACE(testing::Message() << swapped.toStdString() << " before call " << at);
      EngineWorld world;
      MemoryFileSystem& from = *world.local.memory;
      MemoryFileSystem& into = *world.one.memory;
      from.AddFile(QStringLiteral("C:\\tree\\a"), "new a");
      from.AddFile(QStringLiteral("C:\\tree\\b"), "new b");
      from.AddFile(QStringLiteral("C:\\tree\\sub\\c"), "new c");
      into.AddFile(QStringLiteral("in\\tree\\b"), "old b");
      into.AddFolder(QStringLiteral("in\\tree\\sub"));
      into.AddFile(QStringLiteral("elsewhere\\kept"), "kept");
      const QStringList outside{QStringLiteral("elsewhere\\"), QStringLiteral("elsewhere\\kept=kept")};
      int calls = 0;
      bool done = false;
      world.one.faulty->SetHook([&](const FileSystemCall& call) {
        using enum FileSystemOperation;
        const bool changes = call.operation == Write || call.operation == Commit ||
                             call.operation == OpenSink || call.operation == CreateFolder ||
                             call.operation == Remove || call.operation == CreateFile;
        if (!changes && ++calls == at) {
          done = true;
          into.Vanish(swapped);
          into.AddLink(swapped, isFile ? QStringLiteral("elsewhere\\kept") : QStringLiteral("elsewhere"));
        }
      });
      world.prompts.AnswerAllChoices(1);
      const auto file = world.File(QStringLiteral("Workspace\\My Computer\\C:\\tree"));
      file->CopyDiffCtrl(QStringLiteral("Workspace\\Ctrl1\\in"), {});
      world.one.faulty->SetHook({});
      EXPECT_EQ(into.Tree()
                    .filter(QStringLiteral("elsewhere\\"))
                    .filter(QRegularExpression(QStringLiteral("^elsewhere"))),
                outside);
      if (!done) {
        EXPECT_GT(at, 10);
        break;
      }
      if (HasFailure()) {
        return;
      }
    }
  }
}

TEST_F(CopyDiffCtrlTest, AFolderReplacedWithinABatchFailsTheCopy) {
  // Paths alone are known: nothing is looked at between two files of a batch.
  for (const bool isNew : {false, true}) {
    for (int at = 1;; ++at) {
      SCOPED_TRACE(testing::Message() << (isNew ? "new folder, change " : "change ") << at);
      EngineWorld world;
      MemoryFileSystem& into = *world.one.memory;
      world.local.memory->AddFile(QStringLiteral("C:\\tree\\a"), "new a");
      world.local.memory->AddFile(QStringLiteral("C:\\tree\\b"), "new b");
      into.AddFolder(isNew ? QStringLiteral("in") : QStringLiteral("in\\tree"));
      into.AddFile(QStringLiteral("elsewhere\\kept"), "kept");
      int changes = 0;
      world.one.faulty->SetHook([&](const FileSystemCall& call) {
        using enum FileSystemOperation;
        const bool inBatch =
            call.path.startsWith(QStringLiteral("in\\tree\\")) &&
            (call.operation == OpenSink || call.operation == Write || call.operation == Commit);
        if (inBatch && ++changes == at) {
          into.Vanish(QStringLiteral("in\\tree"));
          into.AddLink(QStringLiteral("in\\tree"), QStringLiteral("elsewhere"));
        }
      });
      world.prompts.AnswerAllChoices(1);
      const auto file = world.File(QStringLiteral("Workspace\\My Computer\\C:\\tree"));
      const qint32 result = file->CopyDiffCtrl(QStringLiteral("Workspace\\Ctrl1\\in"), {});
      world.one.faulty->SetHook({});
      EXPECT_EQ(into.Content(QStringLiteral("elsewhere\\kept")), "kept");
      if (changes < at) {
        EXPECT_EQ(result, 0);
        EXPECT_EQ(changes, 6);
        break;
      }
      EXPECT_NE(result, 0);
      EXPECT_EQ(file->Arrived(), Arrival::Failed);
      EXPECT_TRUE(world.local.memory->Exists(QStringLiteral("C:\\tree\\a")));
      if (HasFailure()) {
        return;
      }
    }
  }
}

TEST_F(CopyDiffCtrlTest, AMoveDeletesNothingOfAReplacedFolder) {
  for (int at = 1;; ++at) {
    SCOPED_TRACE(at);
    EngineWorld world;
    MemoryFileSystem& from = *world.local.memory;
    world.one.memory->AddFolder(QStringLiteral("in"));
    from.AddFile(QStringLiteral("C:\\tree\\sub\\c"), "mine");
    from.AddFile(QStringLiteral("C:\\other\\c"), "mine");
    const auto file = world.File(QStringLiteral("Workspace\\My Computer\\C:\\tree"));
    file->RecordSource();
    ASSERT_EQ(file->CopyDiffCtrl(QStringLiteral("Workspace\\Ctrl1\\in"), {}), 0);
    int calls = 0;
    bool done = false;
    world.local.faulty->SetHook([&](const FileSystemCall& call) {
      if (call.operation != FileSystemOperation::Remove && ++calls == at) {
        done = true;
        from.Vanish(QStringLiteral("C:\\tree\\sub"));
        from.AddLink(QStringLiteral("C:\\tree\\sub"), QStringLiteral("C:\\other"));
      }
    });
    clsIxoFile into = world.files.FileAt(QStringLiteral("Workspace\\Ctrl1\\in"));
    file->DeleteMoved(into, {}, false);
    EXPECT_EQ(from.Content(QStringLiteral("C:\\other\\c")), "mine");
    if (!done) {
      EXPECT_EQ(file->Result(), 0);
      EXPECT_FALSE(from.Exists(QStringLiteral("C:\\tree")));
      EXPECT_GT(at, 5);
      break;
    }
    EXPECT_NE(file->Result(), 0);
    if (HasFailure()) {
      return;
    }
  }
}

TEST_F(CopyDiffCtrlTest, AFolderAddressedThroughALinkIsFilled) {
  target().AddFolder(QStringLiteral("elsewhere"));
  target().AddLink(QStringLiteral("through"), QStringLiteral("elsewhere"));
  EXPECT_EQ(CopyTo(QStringLiteral("Workspace\\Ctrl1\\through"), QStringLiteral("C:\\tree")), 0);
  EXPECT_EQ(target().Content(QStringLiteral("elsewhere\\tree\\sub\\c")), "new c");
}

TEST_F(CopyDiffCtrlTest, AFolderInPlaceOfAMovedLinkIsKept) {
  source().AddFile(QStringLiteral("C:\\kept\\f"), "kept");
  source().AddLink(QStringLiteral("C:\\link"), QStringLiteral("C:\\kept"));
  source().AddLink(QStringLiteral("D:\\link"), QStringLiteral("C:\\kept"));
  const auto file = world_.File(QStringLiteral("Workspace\\My Computer\\C:\\link"));
  file->RecordSource();
  ASSERT_EQ(file->Result(), 0);
  int looks = 0;
  world_.local.faulty->SetHook([&](const FileSystemCall& call) {
    // Between the last look of the move and its removal.
    if (call.operation == FileSystemOperation::Stat && call.path == u"C:\\link" && ++looks == 3) {
      source().Vanish(QStringLiteral("C:\\link"));
      source().AddFolder(QStringLiteral("C:\\link"));
    }
  });
  clsIxoFile into = world_.files.FileAt(QStringLiteral("Workspace\\My Computer\\D:"));
  file->DeleteMoved(into, {}, false);
  EXPECT_GE(looks, 3);
  EXPECT_NE(file->Result(), 0);
  EXPECT_TRUE(source().Exists(QStringLiteral("C:\\link")));
  EXPECT_EQ(source().Content(QStringLiteral("C:\\kept\\f")), "kept");
}

TEST_F(CopyDiffCtrlTest, FolderLinksAtTheDestinationAreNotFollowed) {
  target().AddFolder(QStringLiteral("elsewhere"));
  target().AddLink(QStringLiteral("in\\tree"), QStringLiteral("elsewhere"));
  world_.prompts.ExpectChoice(1);
  EXPECT_EQ(Copy(QStringLiteral("C:\\tree")), error::kExists);
  EXPECT_FALSE(target().Exists(QStringLiteral("elsewhere\\a")));
}

TEST_F(CopyDiffCtrlTest, FileLinksAtTheDestinationAreNotFollowed) {
  for (const QString& leadsTo : {QStringLiteral("elsewhere"), QStringLiteral("nowhere")}) {
    target().AddFile(QStringLiteral("elsewhere"), "kept");
    target().AddLink(QStringLiteral("in\\single"), leadsTo);
    const QStringList before = target().Tree();
    world_.prompts.ExpectChoice(0);
    EXPECT_EQ(Copy(QStringLiteral("C:\\single")), error::kExists);
    EXPECT_EQ(target().Tree(), before);
  }
}

TEST_F(CopyDiffCtrlTest, ANewItemThatCannotBeWrittenIsRemoved) {
  target().SetCapacity(3);
  EXPECT_EQ(Copy(QStringLiteral("C:\\single")), -1);
  EXPECT_EQ(target().Tree(), QStringList{QStringLiteral("in\\")});
}

TEST_F(CopyDiffCtrlTest, AReplacedNewFileIsKept) {
  // Between the writing and the question how much has arrived another program puts its own file there.
  bool written = false;
  world_.one.faulty->SetHook([&](const FileSystemCall& call) {
    if (std::exchange(written, call.operation == FileSystemOperation::Write)) {
      target().AddFile(QStringLiteral("in\\single"), "theirs, and longer");
    }
  });
  world_.prompts.ExpectChoice(QStringLiteral("'single' already existed.\r\nOverwrite?"), 2);
  EXPECT_EQ(Copy(QStringLiteral("C:\\single")), 0);
  EXPECT_EQ(arrived_, Arrival::Skipped);
  EXPECT_EQ(target().Content(QStringLiteral("in\\single")), "theirs, and longer");
}

TEST_F(CopyDiffCtrlTest, AFailedWriteKeepsTheOldContent) {
  target().AddFile(QStringLiteral("in\\single"), "old");
  target().SetCapacity(5);
  world_.prompts.ExpectChoice(0);
  EXPECT_EQ(Copy(QStringLiteral("C:\\single")), error::kDiskFull);
  EXPECT_EQ(target().Content(QStringLiteral("in\\single")), "old");
}

TEST_F(CopyDiffCtrlTest, AFalselyReportedWriteIsDetectedAndRemoved) {
  int faults = 0;
  for (int call = 1; call < 40; ++call) {
    world_.one.faulty->Arm(call, FaultSpan::Once, error::kTimeOut, Fault::Lie);
    bool wroteHalf = false;
    world_.one.faulty->SetHook([&, count = 0](const FileSystemCall& made) mutable {
      wroteHalf = wroteHalf || (++count == call && made.operation == FileSystemOperation::Write);
    });
    const qint32 result = Copy(QStringLiteral("C:\\single"));
    world_.one.faulty->Disarm();
    if (wroteHalf) {
      ++faults;
      EXPECT_NE(result, 0);
      EXPECT_FALSE(target().Exists(QStringLiteral("in\\single")));
    }
    if (target().Exists(QStringLiteral("in\\single"))) {
      target().Vanish(QStringLiteral("in\\single"));
    }
  }
  EXPECT_EQ(faults, 1);
}

TEST_F(CopyDiffCtrlTest, ATruncatedReadIsDetected) {
  const auto file = world_.File(QStringLiteral("Workspace\\My Computer\\C:\\single"));
  int call = 0;
  int read = 0;
  world_.local.faulty->Arm(0);
  world_.local.faulty->SetHook([&](const FileSystemCall& made) {
    ++call;
    if (made.operation == FileSystemOperation::Read && read == 0) {
      read = call;
    }
  });
  EXPECT_EQ(file->CopyDiffCtrl(QStringLiteral("Workspace\\Ctrl1\\in"), QStringLiteral("first")), 0);
  ASSERT_GT(read, 0);
  world_.local.faulty->SetHook({});
  world_.local.faulty->Arm(read, FaultSpan::Once, error::kTimeOut, Fault::Lie);
  EXPECT_NE(file->CopyDiffCtrl(QStringLiteral("Workspace\\Ctrl1\\in"), QStringLiteral("second")), 0);
  EXPECT_EQ(file->Arrived(), Arrival::Failed);
  EXPECT_FALSE(target().Exists(QStringLiteral("in\\second")));
}

TEST_F(CopyDiffCtrlTest, ATimeOutIsNotTakenForAFreeName) {
  target().AddFile(QStringLiteral("in\\single"), "old");
  const auto file = world_.File(QStringLiteral("Workspace\\My Computer\\C:\\single"));
  for (int call = 1; call <= 3; ++call) {
    world_.one.faulty->Arm(call);
    world_.prompts.AnswerAllChoices(2);
    const qint32 result = file->CopyDiffCtrl(QStringLiteral("Workspace\\Ctrl1\\in"), {});
    EXPECT_TRUE(result != 0 || file->Arrived() == Arrival::Skipped);
    EXPECT_EQ(target().Content(QStringLiteral("in\\single")), "old");
  }
}

TEST_F(CopyDiffCtrlTest, TheObserverSeesEachItemAndCanEndTheCopy) {
  QStringList seen;
  observer_ = [&seen](const ItemProgress& item) {
    // A file of a batch is seen again when it is read, and when it is written.
    if (!seen.contains(item.name)) {
      seen.append(item.name);
    }
    return seen.size() < 4;
  };
  EXPECT_EQ(Copy(QStringLiteral("C:\\tree")), 0);
  EXPECT_EQ(seen, (QStringList{QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("sub"),
                               QStringLiteral("c")}));
  EXPECT_EQ(arrived_, Arrival::Cancelled);
  EXPECT_TRUE(target().Exists(QStringLiteral("in\\tree\\b")));
  EXPECT_FALSE(target().Exists(QStringLiteral("in\\tree\\sub\\c")));
}

TEST_F(CopyDiffCtrlTest, ASourceThatVanishesEndsTheCopy) {
  observer_ = [this](const ItemProgress& item) {
    if (item.name == QStringLiteral("b")) {
      source().Vanish(QStringLiteral("C:\\tree\\b"));
    }
    return true;
  };
  const auto file = world_.File(QStringLiteral("Workspace\\My Computer\\C:\\tree"));
  EXPECT_EQ(file->CopyDiffCtrl(QStringLiteral("Workspace\\Ctrl1\\in"), {}, observer_), error::kNotFound);
  EXPECT_EQ(file->Arrived(), Arrival::Failed);
  EXPECT_EQ(target().Content(QStringLiteral("in\\tree\\a")), "new a");
}

TEST_F(CopyDiffCtrlTest, NamesThatDifferInCaseClashAtTheDestination) {
  EngineWorld mixed(true);
  MemoryFileSystemOptions options;
  options.caseSensitive = false;
  const auto folding = EngineWorld::MakeMachine(options);
  mixed.Connect(QStringLiteral("Folding"), folding);
  mixed.local.memory->AddFile(QStringLiteral("C:\\tree\\A"), "upper");
  mixed.local.memory->AddFile(QStringLiteral("C:\\tree\\a"), "lower");
  mixed.prompts.ExpectChoice(2);
  const auto file = mixed.File(QStringLiteral("Workspace\\My Computer\\C:\\tree"));
  EXPECT_EQ(file->CopyDiffCtrl(QStringLiteral("Workspace\\Folding"), {}), 0);
  EXPECT_EQ(file->Arrived(), Arrival::Skipped);
  EXPECT_EQ(folding.memory->Content(QStringLiteral("tree\\a")), "upper");
}

TEST_F(CopyDiffCtrlTest, AnItemUnderTwoAddressesIsNotCopiedOntoItself) {
  world_.Connect(QStringLiteral("Same"), world_.local, QStringLiteral("C:\\tree"));
  const auto same = world_.File(QStringLiteral("Workspace\\Same\\a"));
  world_.Connect(QStringLiteral("Other"), world_.local, QStringLiteral("C:\\tree"));
  const QStringList before = source().Tree();
  EXPECT_NE(same->CopyDiffCtrl(QStringLiteral("Workspace\\Other"), {}), 0);
  EXPECT_EQ(source().Tree(), before);
}

TEST_F(CopyDiffCtrlTest, AFolderIsNotCopiedIntoItsOtherAddress) {
  world_.Connect(QStringLiteral("Whole"), world_.local, QStringLiteral("C:\\"));
  world_.Connect(QStringLiteral("Part"), world_.local, QStringLiteral("C:\\tree\\sub"));
  const QStringList before = source().Tree();
  const auto tree = world_.File(QStringLiteral("Workspace\\Whole\\tree"));
  ASSERT_EQ(tree->Result(), 0);
  EXPECT_NE(tree->CopyDiffCtrl(QStringLiteral("Workspace\\Part\\deep"), {}), 0);
  EXPECT_NE(tree->CopyDiffCtrl(QStringLiteral("Workspace\\Part"), {}), 0);
  EXPECT_EQ(source().Tree(), before);
}

TEST_F(CopyDiffCtrlTest, AFolderIsNotCopiedIntoItselfThroughALink) {
  source().AddLink(QStringLiteral("C:\\way"), QStringLiteral("C:\\tree"));
  world_.Connect(QStringLiteral("Whole"), world_.local, QStringLiteral("C:\\"));
  world_.Connect(QStringLiteral("Way"), world_.local, QStringLiteral("C:\\way"));
  const auto tree = world_.File(QStringLiteral("Workspace\\Whole\\tree"));
  EXPECT_NE(tree->CopyDiffCtrl(QStringLiteral("Workspace\\Way\\sub"), {}), 0);
  EXPECT_EQ(source().Content(QStringLiteral("C:\\tree\\a")), "new a");
}

TEST_F(CopyDiffCtrlTest, AFileOfAWrongSizeArrivesAndIsTold) {
  for (const auto threads : {EngineWorld::Threads::None, EngineWorld::Threads::OnePerController}) {
    SCOPED_TRACE(static_cast<int>(threads));
    EngineWorld world(true, threads);
    EngineWorld::Machine odd = EngineWorld::MakeMachine({});
    odd.memory->AddFile(QStringLiteral("made"), "made while it is read");
    odd.faulty = std::make_shared<FaultyFileSystem>(std::make_shared<WrongSizes>(odd.memory));
    world.Connect(QStringLiteral("Odd"), odd);
    world.one.memory->AddFolder(QStringLiteral("in"));
    const auto file = world.File(QStringLiteral("Workspace\\Odd\\made"));
    EXPECT_EQ(file->CopyDiffCtrl(QStringLiteral("Workspace\\Ctrl1\\in"), {}, {}), 0);
    EXPECT_EQ(file->Arrived(), Arrival::Skipped) << "a move would delete it";
    ASSERT_EQ(file->LeftOut().size(), 1U);
    EXPECT_TRUE(file->LeftOut()[0].hadWrongSize);
    EXPECT_EQ(file->LeftOut()[0].reason,
              QStringLiteral("It has 21 bytes, and its controller tells another size"));
    EXPECT_EQ(world.one.memory->Tree().last(), QStringLiteral("in\\made=made while it is read"));
  }
}

}  // namespace
}  // namespace trevane::test

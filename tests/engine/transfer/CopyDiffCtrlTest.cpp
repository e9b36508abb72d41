#include "engine/items/clsIxoFile.h"
#include "tests/support/EngineWorld.h"

#include <QRegularExpression>

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

namespace trevane::test {
namespace {

using namespace Qt::StringLiterals;

class CopyDiffCtrlTest : public testing::Test {
 protected:
  CopyDiffCtrlTest() {
    source().AddFile(u"C:\\tree\\a"_s, "new a");
    source().AddFile(u"C:\\tree\\b"_s, "new b");
    source().AddFile(u"C:\\tree\\sub\\c"_s, "new c");
    source().AddFile(u"C:\\tree\\sub\\deep\\d"_s, "new d");
    source().AddFolder(u"C:\\tree\\zempty"_s);
    source().AddFile(u"C:\\single"_s, "new single");
    target().AddFolder(u"in"_s);
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
    const auto file = world_.File(u"Workspace\\My Computer\\"_s + from);
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
    return CopyTo(u"Workspace\\Ctrl1\\in"_s, from, newName);
  }

  EngineWorld world_;
  CrossControllerCopy::ItemObserver observer_;
  Arrival arrived_ = Arrival::Failed;
  qint64 items_ = 0;
  QString text_;
};

TEST_F(CopyDiffCtrlTest, CopiesAFileUnderItsOwnNameOrANewOne) {
  EXPECT_EQ(Copy(u"C:\\single"_s), 0);
  EXPECT_EQ(arrived_, Arrival::Everything);
  EXPECT_EQ(items_, 1);
  EXPECT_EQ(Copy(u"C:\\single"_s, u"other"_s), 0);
  EXPECT_EQ(target().Tree(), (QStringList{u"in\\"_s, u"in\\other=new single"_s, u"in\\single=new single"_s}));
}

TEST_F(CopyDiffCtrlTest, CopiesAFolderWithEverythingBelow) {
  EXPECT_EQ(Copy(u"C:\\tree"_s), 0);
  EXPECT_EQ(arrived_, Arrival::Everything);
  EXPECT_EQ(items_, 8);
  EXPECT_EQ(target().Tree(),
            (QStringList{u"in\\"_s, u"in\\tree\\"_s, u"in\\tree\\a=new a"_s, u"in\\tree\\b=new b"_s,
                         u"in\\tree\\sub\\"_s, u"in\\tree\\sub\\c=new c"_s, u"in\\tree\\sub\\deep\\"_s,
                         u"in\\tree\\sub\\deep\\d=new d"_s, u"in\\tree\\zempty\\"_s}));
}

TEST_F(CopyDiffCtrlTest, CopiesFromAControllerToTheLocalDisk) {
  target().AddFile(u"in\\x"_s, "x");
  const auto file = world_.File(u"Workspace\\Ctrl1\\in"_s);
  EXPECT_EQ(file->CopyDiffCtrl(u"Workspace\\My Computer\\D:"_s, {}), 0);
  EXPECT_EQ(source().Content(u"D:\\in\\x"_s), "x");
}

TEST_F(CopyDiffCtrlTest, AsksOncePerExistingItemUntilYesAll) {
  target().AddFile(u"in\\tree\\a"_s, "old a");
  target().AddFile(u"in\\tree\\b"_s, "old b");
  target().AddFile(u"in\\tree\\sub\\c"_s, "old c");
  world_.prompts.ExpectChoice(u"'tree' already existed.\r\nOverwrite?"_s, 0);
  world_.prompts.ExpectChoice(u"'a' already existed.\r\nOverwrite?"_s, 0);
  world_.prompts.ExpectChoice(u"'b' already existed.\r\nOverwrite?"_s, 1);
  EXPECT_EQ(Copy(u"C:\\tree"_s), 0);
  EXPECT_EQ(arrived_, Arrival::Everything);
  EXPECT_EQ(target().Content(u"in\\tree\\a"_s), "new a");
  EXPECT_EQ(target().Content(u"in\\tree\\sub\\c"_s), "new c");
}

TEST_F(CopyDiffCtrlTest, CancelEndsEveryLevel) {
  target().AddFile(u"in\\tree\\sub\\c"_s, "old c");
  world_.prompts.ExpectChoice(0);
  world_.prompts.ExpectChoice(u"'sub' already existed.\r\nOverwrite?"_s, 0);
  world_.prompts.ExpectChoice(u"'c' already existed.\r\nOverwrite?"_s, 3);
  EXPECT_EQ(Copy(u"C:\\tree"_s), 0);
  EXPECT_EQ(arrived_, Arrival::Cancelled);
  EXPECT_EQ(target().Content(u"in\\tree\\sub\\c"_s), "old c");
  EXPECT_EQ(target().Content(u"in\\tree\\a"_s), "new a");
  EXPECT_FALSE(target().Exists(u"in\\tree\\sub\\deep"_s));
  EXPECT_FALSE(target().Exists(u"in\\tree\\zempty"_s));
}

TEST_F(CopyDiffCtrlTest, NoSkipsTheItemAndTheNextOneIsAskedFor) {
  target().AddFile(u"in\\tree\\a"_s, "old a");
  target().AddFile(u"in\\tree\\b"_s, "old b");
  world_.prompts.ExpectChoice(0);
  world_.prompts.ExpectChoice(2);
  world_.prompts.ExpectChoice(0);
  EXPECT_EQ(Copy(u"C:\\tree"_s), 0);
  EXPECT_EQ(arrived_, Arrival::Skipped);
  EXPECT_EQ(target().Content(u"in\\tree\\a"_s), "old a");
  EXPECT_EQ(target().Content(u"in\\tree\\b"_s), "new b");
  EXPECT_EQ(target().Content(u"in\\tree\\sub\\deep\\d"_s), "new d");
}

TEST_F(CopyDiffCtrlTest, NoAndCancelOnASingleFileLeaveItAlone) {
  target().AddFile(u"in\\single"_s, "old");
  world_.prompts.ExpectChoice(2);
  EXPECT_EQ(Copy(u"C:\\single"_s), 0);
  EXPECT_EQ(arrived_, Arrival::Skipped);
  EXPECT_EQ(items_, 0);
  world_.prompts.ExpectChoice(3);
  EXPECT_EQ(Copy(u"C:\\single"_s), 0);
  EXPECT_EQ(arrived_, Arrival::Cancelled);
  EXPECT_EQ(target().Content(u"in\\single"_s), "old");
}

TEST_F(CopyDiffCtrlTest, AFolderThatCannotBeCreatedIsMinusOne) {
  target().SetWriteProtected({}, true);
  EXPECT_EQ(Copy(u"C:\\tree"_s), -1);
  EXPECT_EQ(arrived_, Arrival::Failed);
  EXPECT_FALSE(text_.isEmpty());
  EXPECT_EQ(target().Tree(), QStringList{u"in\\"_s});
}

TEST_F(CopyDiffCtrlTest, ADestinationThatIsNotThereIsAnError) {
  EXPECT_EQ(CopyTo(u"Workspace\\Ctrl1\\none"_s, u"C:\\single"_s), error::kNotFound);
  EXPECT_EQ(CopyTo(u"Workspace\\Ctrl9"_s, u"C:\\single"_s), error::kNoSuchKey);
  EXPECT_EQ(arrived_, Arrival::Failed);
}

TEST_F(CopyDiffCtrlTest, FewerThanTwoPiecesCopyNothing) {
  EXPECT_EQ(CopyTo(u"Workspace"_s, u"C:\\single"_s), -1);
  EXPECT_EQ(arrived_, Arrival::Failed);
  EXPECT_EQ(target().Tree(), QStringList{u"in\\"_s});
}

TEST_F(CopyDiffCtrlTest, AClashOfKindsReplacesNothing) {
  target().AddFolder(u"in\\single"_s);
  target().AddFile(u"in\\tree"_s, "old");
  world_.prompts.ExpectChoice(0);
  EXPECT_EQ(Copy(u"C:\\single"_s), error::kExists);
  world_.prompts.ExpectChoice(1);
  EXPECT_EQ(Copy(u"C:\\tree"_s), error::kExists);
  EXPECT_EQ(target().Tree(), (QStringList{u"in\\"_s, u"in\\single\\"_s, u"in\\tree=old"_s}));
}

TEST_F(CopyDiffCtrlTest, LinksToFoldersAreNotWalkedAndCountAsNotArrived) {
  source().AddFolder(u"C:\\outside"_s);
  source().AddFile(u"C:\\outside\\secret"_s, "s");
  source().AddLink(u"C:\\tree\\link"_s, u"C:\\outside"_s);
  source().AddLink(u"C:\\tree\\filelink"_s, u"C:\\single"_s);
  EXPECT_EQ(Copy(u"C:\\tree"_s), 0);
  EXPECT_EQ(arrived_, Arrival::Skipped);
  EXPECT_FALSE(target().Exists(u"in\\tree\\link"_s));
  EXPECT_EQ(target().Content(u"in\\tree\\filelink"_s), "new single");
  EXPECT_EQ(Copy(u"C:\\tree\\link"_s), 0);
  EXPECT_EQ(arrived_, Arrival::Skipped);
  EXPECT_FALSE(target().Exists(u"in\\link"_s));
}

TEST_F(CopyDiffCtrlTest, ALinkToNothingWithinAFolderIsSkippedAndTheRestGoesOn) {
  source().AddLink(u"C:\\tree\\aa"_s, u"C:\\nowhere"_s);
  EXPECT_EQ(Copy(u"C:\\tree"_s), 0);
  EXPECT_EQ(arrived_, Arrival::Skipped);
  EXPECT_FALSE(target().Exists(u"in\\tree\\aa"_s));
  EXPECT_EQ(target().Content(u"in\\tree\\sub\\deep\\d"_s), "new d");
}

TEST_F(CopyDiffCtrlTest, ALinkToNothingByItselfIsAnError) {
  source().AddLink(u"C:\\lost"_s, u"C:\\nowhere"_s);
  EXPECT_EQ(Copy(u"C:\\lost"_s), error::kNotFound);
  EXPECT_FALSE(target().Exists(u"in\\lost"_s));
}

TEST_F(CopyDiffCtrlTest, WhatWasMovedIsFlushedBeforeTheSourceGoes) {
  const auto file = world_.File(u"Workspace\\My Computer\\C:\\tree"_s);
  file->RecordSource();
  ASSERT_EQ(file->CopyDiffCtrl(u"Workspace\\Ctrl1\\in"_s, {}), 0);
  const auto isFlush = [](const FileSystemCall& call) {
    return call.operation == FileSystemOperation::Flush && call.path == u"in\\tree";
  };
  int removals = 0;
  world_.local.faulty->SetHook([&](const FileSystemCall& call) {
    if (call.operation != FileSystemOperation::Remove)
      return;
    ++removals;
    EXPECT_TRUE(std::ranges::any_of(world_.one.faulty->Calls(), isFlush)) << call.path.toStdString();
  });
  clsIxoFile into = world_.files.FileAt(u"Workspace\\Ctrl1\\in"_s);
  file->DeleteMoved(into, {}, false);
  EXPECT_EQ(file->Result(), 0);
  EXPECT_EQ(removals, 8);
}

TEST_F(CopyDiffCtrlTest, AFlushThatFailsKeepsTheSource) {
  const QStringList before = source().Tree();
  const auto file = world_.File(u"Workspace\\My Computer\\C:\\tree"_s);
  file->RecordSource();
  ASSERT_EQ(file->CopyDiffCtrl(u"Workspace\\Ctrl1\\in"_s, {}), 0);
  world_.one.faulty->SetHook([](const FileSystemCall& call) {
    if (call.operation == FileSystemOperation::Flush)
      throw RunTimeError(error::kDiskFull, u"The disk is full"_s);
  });
  clsIxoFile into = world_.files.FileAt(u"Workspace\\Ctrl1\\in"_s);
  file->DeleteMoved(into, {}, false);
  EXPECT_EQ(file->Result(), error::kDiskFull);
  EXPECT_EQ(source().Tree(), before);
}

TEST_F(CopyDiffCtrlTest, NewItemsGetTheSourcesPermissions) {
  source().SetPermissions(u"C:\\tree\\a"_s, 0600);
  source().SetPermissions(u"C:\\tree\\sub"_s, 0500);
  source().SetPermissions(u"C:\\tree\\sub\\c"_s, 0755);
  target().AddFile(u"in\\tree\\a"_s, "old a");
  target().SetPermissions(u"in\\tree\\a"_s, 0640);
  std::optional<quint32> whileFilled;
  world_.one.faulty->SetHook([&](const FileSystemCall& call) {
    if (call.operation == FileSystemOperation::Write && call.path == u"in\\tree\\sub\\c") {
      whileFilled = target().Permissions(u"in\\tree\\sub"_s);
    }
  });
  world_.prompts.ExpectChoice(1);
  EXPECT_EQ(Copy(u"C:\\tree"_s), 0);
  EXPECT_EQ(target().Permissions(u"in\\tree\\a"_s), 0640U) << "a replaced file keeps its own";
  EXPECT_EQ(target().Permissions(u"in\\tree\\b"_s), std::nullopt);
  EXPECT_EQ(whileFilled, 0700U);
  EXPECT_EQ(target().Permissions(u"in\\tree\\sub"_s), 0500U);
  EXPECT_EQ(target().Permissions(u"in\\tree\\sub\\c"_s), 0755U);
}

TEST_F(CopyDiffCtrlTest, ACopyThatEndsLeavesNoFolderClosed) {
  source().SetPermissions(u"C:\\tree\\sub"_s, 0755);
  observer_ = [](const QString& name) { return name != u"deep"; };
  EXPECT_EQ(Copy(u"C:\\tree"_s), 0);
  EXPECT_EQ(arrived_, Arrival::Cancelled);
  EXPECT_EQ(target().Permissions(u"in\\tree\\sub"_s), 0755U);
}

TEST_F(CopyDiffCtrlTest, AnothersFolderInThePlaceOfANewOneKeepsItsPermissions) {
  for (const QString& before : {u"in\\tree\\sub\\c"_s, u"in\\tree\\zempty"_s}) {
    SCOPED_TRACE(before.toStdString());
    source().SetPermissions(u"C:\\tree"_s, 0755);
    source().SetPermissions(u"C:\\tree\\sub"_s, 0755);
    bool done = false;
    world_.one.faulty->SetHook([&](const FileSystemCall& call) {
      if (call.path == before && !std::exchange(done, true)) {
        for (const QString& swapped : {u"in\\tree\\sub"_s, u"in\\tree"_s}) {
          target().Vanish(swapped);
        }
        target().AddFolder(u"in\\tree\\sub"_s);
        target().SetPermissions(u"in\\tree"_s, 0700);
        target().SetPermissions(u"in\\tree\\sub"_s, 0700);
      }
    });
    EXPECT_NE(Copy(u"C:\\tree"_s), 0);
    world_.one.faulty->SetHook({});
    EXPECT_TRUE(done);
    EXPECT_EQ(target().Permissions(u"in\\tree"_s), 0700U);
    EXPECT_EQ(target().Permissions(u"in\\tree\\sub"_s), 0700U);
    target().Vanish(u"in\\tree"_s);
  }
}

TEST_F(CopyDiffCtrlTest, ALinkThatAppearsDuringTheQuestionIsNotWrittenThrough) {
  for (const bool toFolder : {false, true}) {
    target().AddFile(u"elsewhere\\kept"_s, "kept");
    target().AddFile(u"in\\single"_s, "old");
    target().AddFile(u"in\\tree\\a"_s, "old");
    const QString item = toFolder ? u"tree"_s : u"single"_s;
    const QString leadsTo = toFolder ? u"elsewhere"_s : u"elsewhere\\kept"_s;
    world_.prompts.onQuestion = [&](const AskedQuestion&) {
      target().Vanish(u"in\\"_s + item);
      target().AddLink(u"in\\"_s + item, leadsTo);
    };
    world_.prompts.ExpectChoice(toFolder ? 1 : 0);
    EXPECT_EQ(Copy(u"C:\\"_s + item), error::kExists);
    world_.prompts.onQuestion = {};
    EXPECT_EQ(target().Content(u"elsewhere\\kept"_s), "kept");
    EXPECT_FALSE(target().Exists(u"elsewhere\\a"_s));
    target().Vanish(u"in\\"_s + item);
  }
}

TEST_F(CopyDiffCtrlTest, NoLinkThatAppearsBeforeACallIsWrittenThrough) {
  // The path-only way looks before each change: a link may come before any call but the change itself.
  for (const QString& swapped : {u"in\\tree"_s, u"in\\tree\\sub"_s, u"in\\tree\\b"_s}) {
    const bool isFile = swapped.endsWith(u'b');
    for (int at = 1;; ++at) {
      SCOPED_TRACE(testing::Message() << swapped.toStdString() << " before call " << at);
      EngineWorld world;
      MemoryFileSystem& from = *world.local.memory;
      MemoryFileSystem& into = *world.one.memory;
      from.AddFile(u"C:\\tree\\a"_s, "new a");
      from.AddFile(u"C:\\tree\\b"_s, "new b");
      from.AddFile(u"C:\\tree\\sub\\c"_s, "new c");
      into.AddFile(u"in\\tree\\b"_s, "old b");
      into.AddFolder(u"in\\tree\\sub"_s);
      into.AddFile(u"elsewhere\\kept"_s, "kept");
      const QStringList outside{u"elsewhere\\"_s, u"elsewhere\\kept=kept"_s};
      int calls = 0;
      bool done = false;
      world.one.faulty->SetHook([&](const FileSystemCall& call) {
        using enum FileSystemOperation;
        const bool changes = call.operation == Write || call.operation == CreateFolder ||
                             call.operation == Remove || call.operation == CreateFile;
        if (!changes && ++calls == at) {
          done = true;
          into.Vanish(swapped);
          into.AddLink(swapped, isFile ? u"elsewhere\\kept"_s : u"elsewhere"_s);
        }
      });
      world.prompts.AnswerAllChoices(1);
      const auto file = world.File(u"Workspace\\My Computer\\C:\\tree"_s);
      file->CopyDiffCtrl(u"Workspace\\Ctrl1\\in"_s, {});
      world.one.faulty->SetHook({});
      EXPECT_EQ(into.Tree().filter(u"elsewhere\\"_s).filter(QRegularExpression(u"^elsewhere"_s)), outside);
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

TEST_F(CopyDiffCtrlTest, AMoveDeletesNothingOfAFolderThatAnotherOneReplaced) {
  for (int at = 1;; ++at) {
    SCOPED_TRACE(at);
    EngineWorld world;
    MemoryFileSystem& from = *world.local.memory;
    world.one.memory->AddFolder(u"in"_s);
    from.AddFile(u"C:\\tree\\sub\\c"_s, "mine");
    from.AddFile(u"C:\\other\\c"_s, "mine");
    const auto file = world.File(u"Workspace\\My Computer\\C:\\tree"_s);
    file->RecordSource();
    ASSERT_EQ(file->CopyDiffCtrl(u"Workspace\\Ctrl1\\in"_s, {}), 0);
    int calls = 0;
    bool done = false;
    world.local.faulty->SetHook([&](const FileSystemCall& call) {
      if (call.operation != FileSystemOperation::Remove && ++calls == at) {
        done = true;
        from.Vanish(u"C:\\tree\\sub"_s);
        from.AddLink(u"C:\\tree\\sub"_s, u"C:\\other"_s);
      }
    });
    clsIxoFile into = world.files.FileAt(u"Workspace\\Ctrl1\\in"_s);
    file->DeleteMoved(into, {}, false);
    EXPECT_EQ(from.Content(u"C:\\other\\c"_s), "mine");
    if (!done) {
      EXPECT_EQ(file->Result(), 0);
      EXPECT_FALSE(from.Exists(u"C:\\tree"_s));
      EXPECT_GT(at, 5);
      break;
    }
    EXPECT_NE(file->Result(), 0);
    if (HasFailure()) {
      return;
    }
  }
}

TEST_F(CopyDiffCtrlTest, AFolderWithALinkToItsOwnFileIsMoved) {
  source().AddLink(u"C:\\tree\\z"_s, u"C:\\tree\\a"_s);
  const auto file = world_.File(u"Workspace\\My Computer\\C:\\tree"_s);
  file->RecordSource();
  ASSERT_EQ(file->CopyDiffCtrl(u"Workspace\\Ctrl1\\in"_s, {}), 0);
  clsIxoFile into = world_.files.FileAt(u"Workspace\\Ctrl1\\in"_s);
  file->DeleteMoved(into, {}, false);
  EXPECT_EQ(file->Result(), 0) << file->ResultText().toStdString();
  EXPECT_FALSE(source().Exists(u"C:\\tree"_s));
}

TEST_F(CopyDiffCtrlTest, AFolderAddressedThroughALinkIsFilled) {
  target().AddFolder(u"elsewhere"_s);
  target().AddLink(u"through"_s, u"elsewhere"_s);
  EXPECT_EQ(CopyTo(u"Workspace\\Ctrl1\\through"_s, u"C:\\tree"_s), 0);
  EXPECT_EQ(target().Content(u"elsewhere\\tree\\sub\\c"_s), "new c");
}

TEST_F(CopyDiffCtrlTest, AMovedLinkThatAFolderReplacedIsNotDeleted) {
  source().AddFile(u"C:\\kept\\f"_s, "kept");
  source().AddLink(u"C:\\link"_s, u"C:\\kept"_s);
  source().AddLink(u"D:\\link"_s, u"C:\\kept"_s);
  const auto file = world_.File(u"Workspace\\My Computer\\C:\\link"_s);
  file->RecordSource();
  ASSERT_EQ(file->Result(), 0);
  int looks = 0;
  world_.local.faulty->SetHook([&](const FileSystemCall& call) {
    // Between the last look of the move and its removal.
    if (call.operation == FileSystemOperation::Stat && call.path == u"C:\\link" && ++looks == 3) {
      source().Vanish(u"C:\\link"_s);
      source().AddFolder(u"C:\\link"_s);
    }
  });
  clsIxoFile into = world_.files.FileAt(u"Workspace\\My Computer\\D:"_s);
  file->DeleteMoved(into, {}, false);
  EXPECT_GE(looks, 3);
  EXPECT_NE(file->Result(), 0);
  EXPECT_TRUE(source().Exists(u"C:\\link"_s));
  EXPECT_EQ(source().Content(u"C:\\kept\\f"_s), "kept");
}

TEST_F(CopyDiffCtrlTest, ALinkToAFileIsReadOnce) {
  source().AddLink(u"C:\\tree\\z"_s, u"C:\\tree\\a"_s);
  world_.local.faulty->ClearCalls();
  EXPECT_EQ(Copy(u"C:\\tree"_s), 0);
  EXPECT_EQ(target().Content(u"in\\tree\\z"_s), "new a");
  EXPECT_EQ(std::ranges::count_if(world_.local.faulty->Calls(),
                                  [](const FileSystemCall& call) {
                                    return call.operation == FileSystemOperation::Read &&
                                           call.path == u"C:\\tree\\z";
                                  }),
            1);
}

TEST_F(CopyDiffCtrlTest, ALinkToAFolderAtTheDestinationIsNotWrittenThrough) {
  target().AddFolder(u"elsewhere"_s);
  target().AddLink(u"in\\tree"_s, u"elsewhere"_s);
  world_.prompts.ExpectChoice(1);
  EXPECT_EQ(Copy(u"C:\\tree"_s), error::kExists);
  EXPECT_FALSE(target().Exists(u"elsewhere\\a"_s));
}

TEST_F(CopyDiffCtrlTest, ALinkAtTheDestinationIsNotWrittenThrough) {
  for (const QString& leadsTo : {u"elsewhere"_s, u"nowhere"_s}) {
    target().AddFile(u"elsewhere"_s, "kept");
    target().AddLink(u"in\\single"_s, leadsTo);
    const QStringList before = target().Tree();
    world_.prompts.ExpectChoice(0);
    EXPECT_EQ(Copy(u"C:\\single"_s), error::kExists);
    EXPECT_EQ(target().Tree(), before);
  }
}

TEST_F(CopyDiffCtrlTest, ANewItemThatCannotBeWrittenIsGoneAgain) {
  target().SetCapacity(3);
  EXPECT_EQ(Copy(u"C:\\single"_s), -1);
  EXPECT_EQ(target().Tree(), QStringList{u"in\\"_s});
}

TEST_F(CopyDiffCtrlTest, AnothersFileInThePlaceOfANewOneIsLeftThere) {
  // Between the writing and the question how much has arrived another program puts its own file there.
  bool written = false;
  world_.one.faulty->SetHook([&](const FileSystemCall& call) {
    if (std::exchange(written, call.operation == FileSystemOperation::Write)) {
      target().AddFile(u"in\\single"_s, "theirs, and longer");
    }
  });
  EXPECT_NE(Copy(u"C:\\single"_s), 0);
  EXPECT_EQ(target().Content(u"in\\single"_s), "theirs, and longer");
}

TEST_F(CopyDiffCtrlTest, AnExistingItemThatCannotBeWrittenKeepsItsContent) {
  target().AddFile(u"in\\single"_s, "old");
  target().SetCapacity(5);
  world_.prompts.ExpectChoice(0);
  EXPECT_EQ(Copy(u"C:\\single"_s), error::kDiskFull);
  EXPECT_EQ(target().Content(u"in\\single"_s), "old");
}

TEST_F(CopyDiffCtrlTest, AWriteThatLiesIsSeenAndItsItemTakenAway) {
  int faults = 0;
  for (int call = 1; call < 40; ++call) {
    world_.one.faulty->Arm(call, FaultSpan::Once, error::kTimeOut, Fault::Lie);
    bool wroteHalf = false;
    world_.one.faulty->SetHook([&, count = 0](const FileSystemCall& made) mutable {
      wroteHalf = wroteHalf || (++count == call && made.operation == FileSystemOperation::Write);
    });
    const qint32 result = Copy(u"C:\\single"_s);
    world_.one.faulty->Disarm();
    if (wroteHalf) {
      ++faults;
      EXPECT_NE(result, 0);
      EXPECT_FALSE(target().Exists(u"in\\single"_s));
    }
    if (target().Exists(u"in\\single"_s)) {
      target().Vanish(u"in\\single"_s);
    }
  }
  EXPECT_EQ(faults, 1);
}

TEST_F(CopyDiffCtrlTest, AReadThatLiesIsSeen) {
  const auto file = world_.File(u"Workspace\\My Computer\\C:\\single"_s);
  int call = 0;
  int read = 0;
  world_.local.faulty->Arm(0);
  world_.local.faulty->SetHook([&](const FileSystemCall& made) {
    ++call;
    if (made.operation == FileSystemOperation::Read) {
      read = call;
    }
  });
  EXPECT_EQ(file->CopyDiffCtrl(u"Workspace\\Ctrl1\\in"_s, u"first"_s), 0);
  ASSERT_GT(read, 0);
  world_.local.faulty->SetHook({});
  world_.local.faulty->Arm(read, FaultSpan::Once, error::kTimeOut, Fault::Lie);
  EXPECT_NE(file->CopyDiffCtrl(u"Workspace\\Ctrl1\\in"_s, u"second"_s), 0);
  EXPECT_EQ(file->Arrived(), Arrival::Failed);
  EXPECT_FALSE(target().Exists(u"in\\second"_s));
}

TEST_F(CopyDiffCtrlTest, ATimeOutOfTheLookUpIsNotReadAsFree) {
  target().AddFile(u"in\\single"_s, "old");
  const auto file = world_.File(u"Workspace\\My Computer\\C:\\single"_s);
  for (int call = 1; call <= 3; ++call) {
    world_.one.faulty->Arm(call);
    world_.prompts.AnswerAllChoices(2);
    const qint32 result = file->CopyDiffCtrl(u"Workspace\\Ctrl1\\in"_s, {});
    EXPECT_TRUE(result != 0 || file->Arrived() == Arrival::Skipped);
    EXPECT_EQ(target().Content(u"in\\single"_s), "old");
  }
}

TEST_F(CopyDiffCtrlTest, TheObserverSeesEachItemInsideAndCanEndTheCopy) {
  QStringList seen;
  observer_ = [&seen](const QString& name) {
    seen.append(name);
    return seen.size() < 4;
  };
  EXPECT_EQ(Copy(u"C:\\tree"_s), 0);
  EXPECT_EQ(seen, (QStringList{u"a"_s, u"b"_s, u"sub"_s, u"c"_s}));
  EXPECT_EQ(arrived_, Arrival::Cancelled);
  EXPECT_TRUE(target().Exists(u"in\\tree\\b"_s));
  EXPECT_FALSE(target().Exists(u"in\\tree\\sub\\c"_s));
}

TEST_F(CopyDiffCtrlTest, ASourceThatVanishesEndsTheCopy) {
  observer_ = [this](const QString& name) {
    if (name == u"b"_s) {
      source().Vanish(u"C:\\tree\\b"_s);
    }
    return true;
  };
  const auto file = world_.File(u"Workspace\\My Computer\\C:\\tree"_s);
  EXPECT_EQ(file->CopyDiffCtrl(u"Workspace\\Ctrl1\\in"_s, {}, observer_), error::kNotFound);
  EXPECT_EQ(file->Arrived(), Arrival::Failed);
  EXPECT_EQ(target().Content(u"in\\tree\\a"_s), "new a");
}

TEST_F(CopyDiffCtrlTest, NamesThatBecomeOneAtTheDestinationAreAClash) {
  EngineWorld mixed(true);
  MemoryFileSystemOptions options;
  options.caseSensitive = false;
  const auto folding = EngineWorld::MakeMachine(options);
  mixed.Connect(u"Folding"_s, folding);
  mixed.local.memory->AddFile(u"C:\\tree\\A"_s, "upper");
  mixed.local.memory->AddFile(u"C:\\tree\\a"_s, "lower");
  mixed.prompts.ExpectChoice(2);
  const auto file = mixed.File(u"Workspace\\My Computer\\C:\\tree"_s);
  EXPECT_EQ(file->CopyDiffCtrl(u"Workspace\\Folding"_s, {}), 0);
  EXPECT_EQ(file->Arrived(), Arrival::Skipped);
  EXPECT_EQ(folding.memory->Content(u"tree\\a"_s), "upper");
}

TEST_F(CopyDiffCtrlTest, AnItemUnderTwoAddressesIsNotCopiedOntoItself) {
  world_.Connect(u"Same"_s, world_.local, u"C:\\tree"_s);
  const auto same = world_.File(u"Workspace\\Same\\a"_s);
  world_.Connect(u"Other"_s, world_.local, u"C:\\tree"_s);
  const QStringList before = source().Tree();
  EXPECT_NE(same->CopyDiffCtrl(u"Workspace\\Other"_s, {}), 0);
  EXPECT_EQ(source().Tree(), before);
}

TEST_F(CopyDiffCtrlTest, AFolderIsNotCopiedIntoItselfUnderAnotherAddress) {
  world_.Connect(u"Whole"_s, world_.local, u"C:\\"_s);
  world_.Connect(u"Part"_s, world_.local, u"C:\\tree\\sub"_s);
  const QStringList before = source().Tree();
  const auto tree = world_.File(u"Workspace\\Whole\\tree"_s);
  ASSERT_EQ(tree->Result(), 0);
  EXPECT_NE(tree->CopyDiffCtrl(u"Workspace\\Part\\deep"_s, {}), 0);
  EXPECT_NE(tree->CopyDiffCtrl(u"Workspace\\Part"_s, {}), 0);
  EXPECT_EQ(source().Tree(), before);
}

TEST_F(CopyDiffCtrlTest, AFolderIsNotCopiedIntoItselfThroughALink) {
  source().AddLink(u"C:\\way"_s, u"C:\\tree"_s);
  world_.Connect(u"Whole"_s, world_.local, u"C:\\"_s);
  world_.Connect(u"Way"_s, world_.local, u"C:\\way"_s);
  const auto tree = world_.File(u"Workspace\\Whole\\tree"_s);
  EXPECT_NE(tree->CopyDiffCtrl(u"Workspace\\Way\\sub"_s, {}), 0);
  EXPECT_EQ(source().Content(u"C:\\tree\\a"_s), "new a");
}

}  // namespace
}  // namespace trevane::test

#include "base/RunTimeError.h"
#include "tests/fileops/TransferWorld.h"

#include <gtest/gtest.h>

namespace trevane::test {
namespace {

using namespace Qt::StringLiterals;

const QString kC = u"Workspace\\My Computer\\C:"_s;
const QString kD = u"Workspace\\My Computer\\D:"_s;
const QString kIn = u"Workspace\\My Computer\\D:\\in"_s;
const QString kOne = u"Workspace\\Ctrl1\\in"_s;
const QString kTwo = u"Workspace\\Ctrl2\\in"_s;
const QString kCopyFailed = u"Failed in copy operation."_s;
const QString kMoveFailed = u"Failed in move operation."_s;

class TransferTest : public testing::Test {
 protected:
  TransferTest() {
    world.local.memory->AddFile(u"C:\\f"_s, "file");
    world.local.memory->AddFile(u"C:\\tree\\a"_s, "aa");
    world.local.memory->AddFile(u"C:\\tree\\sub\\b"_s, "bbb");
    world.local.memory->AddFolder(u"C:\\tree\\empty"_s);
    world.local.memory->AddFolder(u"D:\\in"_s);
    world.one.memory->AddFolder(u"in"_s);
    world.two.memory->AddFolder(u"in"_s);
  }
  ~TransferTest() override {
    EXPECT_TRUE(world.host.IsEnabled());
    EXPECT_FALSE(world.Gauge().IsLoaded());
    EXPECT_EQ(world.engine->HeldFiles(), 0);
    EXPECT_EQ(world.engine->LiveFileNames(), QStringList());
  }

  TransferWorld world;
};

TEST_F(TransferTest, CopiesAFileWithinOneControllerAndLogsEnginePaths) {
  world.Select(kC, u"f"_s);
  bool enabledMeanwhile = true;
  world.host.onEvents = [&] { enabledMeanwhile = world.host.IsEnabled(); };
  EXPECT_TRUE(world.Copy(kIn));
  EXPECT_FALSE(enabledMeanwhile);
  EXPECT_EQ(world.local.memory->Content(u"D:\\in\\f"_s), "file");
  EXPECT_EQ(world.local.memory->Content(u"C:\\f"_s), "file");
  EXPECT_EQ(world.Log(), QStringList(u"COPY|C:\\f|D:\\in\\f"_s));
  EXPECT_TRUE(world.operations.GoneAddresses().isEmpty());
}

TEST_F(TransferTest, ACopyResolvesTwoAddressesHoweverDeep) {
  for (const QString& folder : {u"C:\\a"_s, u"C:\\a\\b\\c\\d\\e\\g"_s}) {
    world.local.memory->AddFile(folder + u"\\deep"_s, "deep");
    world.state.clipboard.Clear();
    world.Select(u"Workspace\\My Computer\\"_s + folder, u"deep"_s);
    for (const QString& into : {kIn, kOne}) {
      SCOPED_TRACE((folder + u" > "_s + into).toStdString());
      world.local.memory->Vanish(u"D:\\in\\deep"_s);
      world.engine->ClearCalls();
      EXPECT_TRUE(world.Copy(into));
      EXPECT_EQ(world.engine->Calls().count(u"IxoController.OpenFile"_s), 2);
      world.one.memory->Vanish(u"in\\deep"_s);
    }
  }
}

TEST_F(TransferTest, AMoveAsksForItsSourceAnewBeforeAndAfterDeleting) {
  world.local.memory->AddFile(u"C:\\a\\b\\c\\d\\deep"_s, "deep");
  world.Select(kC + u"\\a\\b\\c\\d"_s, u"deep"_s);
  world.engine->ClearCalls();
  EXPECT_TRUE(world.Move(kIn));
  EXPECT_FALSE(world.local.memory->Exists(u"C:\\a\\b\\c\\d\\deep"_s));
  // Source and destination, the source once more, and after that its folder tells that it has gone.
  EXPECT_EQ(world.engine->Calls().count(u"IxoController.OpenFile"_s), 5);
}

TEST_F(TransferTest, ShowsTheGaugeWithTheWordTheCountAndEachName) {
  world.Select(kC, u"f"_s);
  world.SelectFolder(kC, u"tree"_s);
  QStringList labels;
  qint32 maximum = 0;
  bool cancelEnabled = false;
  world.Gauge().onIncrement = [&] {
    labels.append(world.Gauge().GageLabel());
    maximum = world.Gauge().GageMax();
    cancelEnabled = world.Gauge().IsCancelEnabled();
  };
  EXPECT_TRUE(world.Move(kIn));
  EXPECT_EQ(world.Gauge().Captions(), QStringList(u"MOVE Files/Directories"_s));
  EXPECT_EQ(labels, QStringList({u"f"_s, u"tree"_s}));
  EXPECT_EQ(maximum, 3);
  EXPECT_TRUE(cancelEnabled);
  EXPECT_EQ(world.Gauge().Unloads(), 1);
  EXPECT_EQ(world.Gauge().WaitedMilliseconds(), 30);
}

TEST_F(TransferTest, MovesAFolderWithinOneControllerAsACopyAndDeletes) {
  world.SelectFolder(kC, u"tree"_s);
  EXPECT_TRUE(world.Move(kIn));
  EXPECT_EQ(world.local.memory->Tree(),
            QStringList({u"C:\\"_s, u"C:\\f=file"_s, u"D:\\"_s, u"D:\\in\\"_s, u"D:\\in\\tree\\"_s,
                         u"D:\\in\\tree\\a=aa"_s, u"D:\\in\\tree\\empty\\"_s, u"D:\\in\\tree\\sub\\"_s,
                         u"D:\\in\\tree\\sub\\b=bbb"_s}));
  EXPECT_EQ(world.local.memory->CallCount(FileSystemOperation::Rename), 0);
  // A folder's own name stands in no path of the log: its target is the folder it went into.
  EXPECT_EQ(world.Log(), QStringList(u"MOVE|C:\\tree|D:\\in"_s));
  EXPECT_EQ(world.operations.GoneAddresses(), QStringList(kC + u"\\tree"_s));
}

TEST_F(TransferTest, MovesAFolderToAnotherController) {
  world.SelectFolder(kC, u"tree"_s);
  EXPECT_TRUE(world.Move(kOne));
  EXPECT_EQ(world.one.memory->Tree(),
            QStringList({u"in\\"_s, u"in\\tree\\"_s, u"in\\tree\\a=aa"_s, u"in\\tree\\empty\\"_s,
                         u"in\\tree\\sub\\"_s, u"in\\tree\\sub\\b=bbb"_s}));
  EXPECT_FALSE(world.local.memory->Exists(u"C:\\tree"_s));
  EXPECT_EQ(world.Log(), QStringList(u"MOVE|C:\\tree|Ctrl1\\in"_s));
}

TEST_F(TransferTest, PastingACopiedFileIntoItsOwnFolderFails) {
  world.Select(kC, u"f"_s);
  world.prompts.ExpectBox(kCopyFailed);
  const QStringList before = world.local.memory->Tree();
  EXPECT_FALSE(world.Copy(kC.toUpper()));
  EXPECT_EQ(world.local.memory->Tree(), before);
  ASSERT_EQ(world.prompts.Asked().size(), 1U);
  EXPECT_EQ(world.prompts.Asked()[0].icon, PromptIcon::Exclamation);
  EXPECT_EQ(world.prompts.Asked()[0].buttons, PromptButtons::Ok);
  EXPECT_EQ(world.Gauge().WaitedMilliseconds(), 0);
}

TEST_F(TransferTest, PastingAFolderIntoTheFolderThatHoldsItFails) {
  world.SelectFolder(kC, u"tree"_s);
  world.prompts.ExpectBox(kMoveFailed);
  EXPECT_FALSE(world.Move(kC));
  EXPECT_TRUE(world.local.memory->Exists(u"C:\\tree\\a"_s));
}

TEST_F(TransferTest, AFolderIntoItselfOrASubfolderFails) {
  for (const QString& into : {kC + u"\\tree"_s, kC + u"\\Tree\\SUB"_s}) {
    world.state.clipboard.Clear();
    world.SelectFolder(kC, u"tree"_s);
    world.prompts.ExpectBox(kCopyFailed);
    EXPECT_FALSE(world.Copy(into));
  }
  EXPECT_EQ(world.local.memory->CallCount(FileSystemOperation::Copy), 0);
}

TEST_F(TransferTest, AFolderIntoASiblingWhoseNameBeginsWithItsNameFails) {
  world.local.memory->AddFolder(u"C:\\treeAB"_s);
  world.SelectFolder(kC, u"tree"_s);
  world.prompts.ExpectBox(kCopyFailed);
  EXPECT_FALSE(world.Copy(kC + u"\\treeAB"_s));
  EXPECT_EQ(world.local.memory->CallCount(FileSystemOperation::Copy), 0);
}

TEST_F(TransferTest, AsksWithTheTargetPathAndOverwrites) {
  world.local.memory->AddFile(u"D:\\in\\f"_s, "old");
  world.Select(kC, u"f"_s);
  world.prompts.ExpectChoice(u"'"_s + kIn + u"\\f' already existed.\r\nOverwrite?"_s, 0);
  EXPECT_TRUE(world.Copy(kIn));
  EXPECT_EQ(world.local.memory->Content(u"D:\\in\\f"_s), "file");
  const AskedQuestion& asked = world.prompts.Asked().at(0);
  EXPECT_EQ(asked.title, u"OverWrite"_s);
  EXPECT_EQ(asked.icon, PromptIcon::Information);
  EXPECT_EQ(asked.captions, QStringList({u"Yes(&Y)"_s, u"Yes All(&A)"_s, u"No(&N)"_s, u"Cancel"_s}));
  EXPECT_EQ(asked.defaultButton, 0);
  EXPECT_EQ(asked.cancelButton, 1);
}

TEST_F(TransferTest, YesAllIsNotRememberedForTheNextClash) {
  world.local.memory->AddFile(u"C:\\g"_s, "new g");
  world.local.memory->AddFile(u"D:\\in\\f"_s, "old");
  world.local.memory->AddFile(u"D:\\in\\g"_s, "old");
  world.Select(kC, u"f"_s);
  world.Select(kC, u"g"_s);
  world.prompts.ExpectChoice(1);
  world.prompts.ExpectChoice(1);
  EXPECT_TRUE(world.Copy(kIn));
  EXPECT_EQ(world.local.memory->Content(u"D:\\in\\g"_s), "new g");
}

TEST_F(TransferTest, ASecondFailureAfterYesEndsTheTransfer) {
  world.local.memory->AddFolder(u"D:\\in\\f"_s);
  world.Select(kC, u"f"_s);
  world.SelectFolder(kC, u"tree"_s);
  world.prompts.ExpectChoice(0);
  world.prompts.ExpectBox(kCopyFailed);
  EXPECT_FALSE(world.Copy(kIn));
  EXPECT_FALSE(world.local.memory->Exists(u"D:\\in\\tree"_s));
  EXPECT_TRUE(world.Log().isEmpty());
}

TEST_F(TransferTest, AFailureTellsTheItemAndTheEnginesReason) {
  world.local.faulty->SetHook([](const FileSystemCall& call) {
    if (call.operation == FileSystemOperation::Read && call.path.endsWith(u"sub\\b"_s))
      throw RunTimeError(error::kAccessDenied, u"b is locked\nby another program"_s);
  });
  world.Select(kC, u"f"_s);
  world.SelectFolder(kC, u"tree"_s);
  world.prompts.ExpectBox(kCopyFailed);
  EXPECT_FALSE(world.Copy(kOne));
  EXPECT_EQ(world.prompts.Asked().at(0).informativeText, u"tree\nb is locked\nby another program"_s);
  EXPECT_EQ(world.host.reasons, QStringList{u"b is locked"_s});
}

TEST_F(TransferTest, ASecondCopyThatFailsTellsItsOwnReason) {
  world.local.memory->AddFile(u"D:\\in\\f"_s, "old");
  int copies = 0;
  world.local.faulty->SetHook([&copies](const FileSystemCall& call) {
    if (call.operation == FileSystemOperation::Copy && ++copies == 2)
      throw RunTimeError(error::kDiskFull, u"The disk is full"_s);
  });
  world.Select(kC, u"f"_s);
  world.prompts.ExpectChoice(0);
  world.prompts.ExpectBox(kCopyFailed);
  EXPECT_FALSE(world.Copy(kIn));
  EXPECT_EQ(world.prompts.Asked().back().informativeText, u"f\nThe disk is full"_s);
}

TEST_F(TransferTest, AMoveWhoseSourceStaysTellsWhy) {
  world.local.faulty->SetHook([](const FileSystemCall& call) {
    if (call.operation == FileSystemOperation::Remove)
      throw RunTimeError(error::kAccessDenied, u"f may not be removed"_s);
  });
  world.Select(kC, u"f"_s);
  world.prompts.ExpectBox(kMoveFailed);
  EXPECT_FALSE(world.Move(kOne));
  EXPECT_EQ(world.prompts.Asked().at(0).informativeText, u"f\nf may not be removed"_s);
}

/// The rules that refuse a paste before the engine is asked have reasons, too.
TEST_F(TransferTest, EveryRefusedPasteTellsWhy) {
  world.SelectFolder(kC, u"tree"_s);
  world.local.memory->AddFolder(u"C:\\treeAB"_s);
  for (const QString& into : {kC, kC + u"\\tree\\sub"_s, kC + u"\\treeAB"_s}) {
    world.prompts.ForgetAsked();
    world.prompts.ExpectBox(kCopyFailed);
    EXPECT_FALSE(world.Copy(into));
    const QStringList lines = world.prompts.Asked().at(0).informativeText.split(u'\n');
    ASSERT_EQ(lines.size(), 2) << into.toStdString();
    EXPECT_EQ(lines[0], u"tree"_s);
    EXPECT_TRUE(lines[1].endsWith(into)) << lines[1].toStdString();
  }
  EXPECT_EQ(world.host.reasons.size(), 3);
}

TEST_F(TransferTest, OfFiveMovedFilesTheThirdThatIsAnsweredNoStaysInBothPlaces) {
  for (int i = 1; i <= 5; ++i) {
    world.local.memory->AddFile(u"C:\\five\\%1"_s.arg(i), "new" + QByteArray::number(i));
    world.Select(kC + u"\\five"_s, QString::number(i));
  }
  world.local.memory->AddFile(u"D:\\in\\3"_s, "old3");
  world.prompts.ExpectChoice(2);
  EXPECT_TRUE(world.Move(kIn));
  EXPECT_EQ(world.local.memory->Content(u"C:\\five\\3"_s), "new3");
  EXPECT_EQ(world.local.memory->Content(u"D:\\in\\3"_s), "old3");
  for (const int i : {1, 2, 4, 5}) {
    EXPECT_FALSE(world.local.memory->Exists(u"C:\\five\\%1"_s.arg(i)));
    EXPECT_EQ(world.local.memory->Content(u"D:\\in\\%1"_s.arg(i)), "new" + QByteArray::number(i));
  }
  // What was skipped writes no line.
  EXPECT_EQ(world.Log().size(), 4);
  EXPECT_EQ(world.operations.GoneAddresses().size(), 4);
}

TEST_F(TransferTest, CancelAtTheOverwriteQuestionEndsSilentlyWithTheGaugeClosedAndTheWindowEnabled) {
  world.local.memory->AddFile(u"D:\\in\\f"_s, "old");
  world.Select(kC, u"f"_s);
  world.SelectFolder(kC, u"tree"_s);
  world.prompts.ExpectChoice(3);
  EXPECT_TRUE(world.Move(kIn));
  EXPECT_EQ(world.local.memory->Content(u"C:\\f"_s), "file");
  EXPECT_TRUE(world.local.memory->Exists(u"C:\\tree"_s));
  EXPECT_TRUE(world.Log().isEmpty());
  EXPECT_EQ(world.Gauge().Unloads(), 1);
  EXPECT_EQ(world.Gauge().WaitedMilliseconds(), 0);
}

TEST_F(TransferTest, BetweenControllersTheWrapperAloneAsksOnceForEachItem) {
  world.one.memory->AddFile(u"in\\tree\\a"_s, "old");
  world.SelectFolder(kC, u"tree"_s);
  world.prompts.ExpectChoice(u"'tree' already existed.\r\nOverwrite?"_s, 0);
  world.prompts.ExpectChoice(u"'a' already existed.\r\nOverwrite?"_s, 0);
  EXPECT_TRUE(world.Copy(kOne));
  EXPECT_EQ(world.one.memory->Content(u"in\\tree\\a"_s), "aa");
}

TEST_F(TransferTest, AMoveBetweenControllersThatPartlyArrivedIsLoggedAsACopyAndKeepsItsSource) {
  world.one.memory->AddFile(u"in\\tree\\a"_s, "old");
  world.SelectFolder(kC, u"tree"_s);
  world.prompts.ExpectChoice(0);
  world.prompts.ExpectChoice(2);
  EXPECT_TRUE(world.Move(kOne));
  EXPECT_EQ(world.one.memory->Content(u"in\\tree\\a"_s), "old");
  EXPECT_EQ(world.one.memory->Content(u"in\\tree\\sub\\b"_s), "bbb");
  EXPECT_EQ(world.local.memory->Content(u"C:\\tree\\sub\\b"_s), "bbb");
  EXPECT_EQ(world.Log(), QStringList(u"COPY|C:\\tree|Ctrl1\\in"_s));
  EXPECT_TRUE(world.operations.GoneAddresses().isEmpty());
}

class LeftOutTest : public TransferTest {
 protected:
  void ExpectTold(const QString& text) {
    world.prompts.onQuestion = [this](const AskedQuestion& asked) {
      if (asked.kind == AskedQuestion::Kind::MessageBox) {
        EXPECT_FALSE(world.Gauge().IsLoaded());
        EXPECT_TRUE(world.host.IsEnabled());
      }
    };
    world.prompts.ExpectBox(text);
  }
};

TEST_F(LeftOutTest, LinksThatCannotBeCopiedAreToldAtTheEnd) {
  MemoryFileSystem& local = *world.local.memory;
  local.AddLink(u"C:\\tree\\lost"_s, u"C:\\nowhere"_s);
  local.AddLink(u"C:\\tree\\sub\\up"_s, u"C:\\tree"_s);
  local.AddLink(u"C:\\folder link"_s, u"C:\\tree"_s);
  world.SelectFolder(kC, u"tree"_s);
  world.SelectFolder(kC, u"folder link"_s);
  ExpectTold(u"3 items were left out."_s);
  EXPECT_TRUE(world.Move(kOne));
  const AskedQuestion asked = world.prompts.Asked().back();
  EXPECT_EQ(asked.icon, PromptIcon::Exclamation);
  EXPECT_EQ(asked.buttons, PromptButtons::Ok);
  EXPECT_EQ(asked.informativeText,
            u"lost: The link leads nowhere\nup: A link to a folder is not copied\n"
            "folder link: A link to a folder is not copied"_s);
  EXPECT_EQ(world.Log().size(), 1);
  EXPECT_TRUE(local.Exists(u"C:\\tree\\a"_s)) << "a move of which something was left out stays a copy";
}

TEST_F(LeftOutTest, RefusedNamesAreCountedAndFiveItemsNamed) {
  for (const QString& name : {u".."_s, u"x/y"_s, u"x\\y"_s, u""_s, u"w\n/w"_s, u"v/v"_s}) {
    world.local.memory->AddHostileName(u"C:\\tree"_s, name);
  }
  world.SelectFolder(kC, u"tree"_s);
  ExpectTold(u"6 items were left out."_s);
  EXPECT_TRUE(world.Copy(kOne));
  const QStringList lines = world.prompts.Asked().back().informativeText.split(u'\n');
  EXPECT_EQ(lines.size(), 5);
  EXPECT_EQ(lines.first(), u"..: The name is not valid"_s);
  EXPECT_EQ(lines.last(), u"w\u240A/w: The name is not valid"_s);
}

TEST_F(LeftOutTest, OneIsToldInTheSingularAndANoIsNotCounted) {
  world.local.memory->AddLink(u"C:\\tree\\lost"_s, u"C:\\nowhere"_s);
  world.one.memory->AddFile(u"in\\tree\\a"_s, "old");
  world.SelectFolder(kC, u"tree"_s);
  world.prompts.ExpectChoice(0);
  world.prompts.ExpectChoice(2);
  ExpectTold(u"1 item was left out."_s);
  EXPECT_TRUE(world.Copy(kOne));
}

TEST_F(TransferTest, WhatIsSkippedBetweenControllersWritesNoLine) {
  world.one.memory->AddFile(u"in\\f"_s, "old");
  world.Select(kC, u"f"_s);
  world.prompts.ExpectChoice(2);
  EXPECT_TRUE(world.Move(kOne));
  EXPECT_TRUE(world.Log().isEmpty());
  EXPECT_EQ(world.local.memory->Content(u"C:\\f"_s), "file");
}

TEST_F(TransferTest, CancelAtTheWrappersQuestionEndsTheTransferSilently) {
  world.one.memory->AddFile(u"in\\f"_s, "old");
  world.Select(kC, u"f"_s);
  world.SelectFolder(kC, u"tree"_s);
  world.prompts.ExpectChoice(3);
  EXPECT_TRUE(world.Move(kOne));
  EXPECT_FALSE(world.one.memory->Exists(u"in\\tree"_s));
  EXPECT_TRUE(world.Log().isEmpty());
}

TEST_F(TransferTest, CancelOfTheGaugeEndsAfterTheEntryThatIsBeingDone) {
  world.Select(kC, u"f"_s);
  world.SelectFolder(kC, u"tree"_s);
  world.Gauge().CancelAtIncrement(1);
  EXPECT_TRUE(world.Copy(kIn));
  EXPECT_EQ(world.Log(), QStringList(u"COPY|C:\\f|D:\\in\\f"_s));
  EXPECT_FALSE(world.local.memory->Exists(u"D:\\in\\tree"_s));
  EXPECT_EQ(world.Gauge().WaitedMilliseconds(), 30);
}

TEST_F(TransferTest, CancelIsSeenBetweenTheItemsOfAFolderThatIsCopiedWithinOneController) {
  world.SelectFolder(kC, u"tree"_s);
  world.Select(kC, u"f"_s);
  QStringList labels;
  world.host.onEvents = [&] {
    labels.append(world.Gauge().GageLabel());
    world.Gauge().ClickCancel();
  };
  EXPECT_TRUE(world.Copy(kIn));
  EXPECT_EQ(labels, QStringList(u"a"_s));
  EXPECT_FALSE(world.local.memory->Exists(u"D:\\in\\tree"_s));
  EXPECT_FALSE(world.local.memory->Exists(u"D:\\in\\f"_s));
  EXPECT_TRUE(world.Log().isEmpty());
}

TEST_F(TransferTest, CancelIsSeenBetweenTheItemsOfAFolderThatGoesToAnotherController) {
  world.SelectFolder(kC, u"tree"_s);
  int turns = 0;
  world.host.onEvents = [&] {
    ++turns;
    world.Gauge().ClickCancel();
  };
  EXPECT_TRUE(world.Move(kOne));
  EXPECT_EQ(turns, 1);
  EXPECT_TRUE(world.Log().isEmpty());
  EXPECT_EQ(world.local.memory->Content(u"C:\\tree\\a"_s), "aa");
  EXPECT_EQ(world.local.memory->Content(u"C:\\tree\\sub\\b"_s), "bbb");
}

TEST_F(TransferTest, WhatComesIntoTheClipboardMeanwhileIsNotPasted) {
  world.Select(kC, u"f"_s);
  world.host.onEvents = [&] {
    world.state.clipboard.Clear();
    world.SelectFolder(kC, u"tree"_s);
    world.state.nFileOpMode = OperationState::kCut;
  };
  EXPECT_TRUE(world.Copy(kIn));
  EXPECT_EQ(world.Log(), QStringList(u"COPY|C:\\f|D:\\in\\f"_s));
  EXPECT_FALSE(world.local.memory->Exists(u"D:\\in\\tree"_s));
}

TEST_F(TransferTest, ASecondOperationWhileOneRunsDoesNothing) {
  world.Select(kC, u"f"_s);
  bool nested = false;
  world.host.onEvents = [&] {
    world.host.onEvents = nullptr;
    nested = world.operations.Transfer(world.Destination(kOne));
    EXPECT_TRUE(world.DeleteNode(kC + u"\\tree"_s, kFolderBit));
  };
  EXPECT_TRUE(world.Copy(kIn));
  EXPECT_TRUE(nested);
  EXPECT_FALSE(world.one.memory->Exists(u"in\\f"_s));
  EXPECT_TRUE(world.local.memory->Exists(u"C:\\tree"_s));
}

TEST_F(TransferTest, AnEntryThatWasRenamedSinceFailsAndNothingElseHappens) {
  world.Select(kC, u"missing"_s);
  world.Select(kC, u"f"_s);
  world.prompts.ExpectBox(kMoveFailed);
  const QStringList before = world.local.memory->Tree();
  EXPECT_FALSE(world.Move(kIn));
  EXPECT_EQ(world.local.memory->Tree(), before);
}

TEST_F(TransferTest, EntriesDoneBeforeAFailureStayDone) {
  world.Select(kC, u"f"_s);
  world.Select(kC, u"missing"_s);
  world.prompts.ExpectBox(kMoveFailed);
  EXPECT_FALSE(world.Move(kIn));
  EXPECT_EQ(world.Log(), QStringList(u"MOVE|C:\\f|D:\\in\\f"_s));
  EXPECT_EQ(world.operations.GoneAddresses(), QStringList(kC + u"\\f"_s));
}

TEST_F(TransferTest, ADriveIsNeverPasted) {
  clsClipBrd drive = ClipBrdOfNode(world.session.gIxoCtrls(), kC, TAG_DRIVE | TAG_HDD);
  world.state.clipboard.Add(drive, {});
  world.prompts.ExpectBox(kMoveFailed);
  EXPECT_FALSE(world.Move(kOne));
  EXPECT_TRUE(world.local.memory->Exists(u"C:\\f"_s));
  EXPECT_EQ(world.one.memory->Tree(), QStringList(u"in\\"_s));
}

// One place under two addresses

class OnePlaceTwiceTest : public TransferTest {
 protected:
  OnePlaceTwiceTest() {
    world.one.memory->AddFile(u"in\\f"_s, "on one");
    world.one.memory->AddFile(u"in\\sub\\g"_s, "below");
    world.Connect(u"Again"_s, world.one);
    before_ = world.one.memory->Tree();
  }
  ~OnePlaceTwiceTest() override {
    EXPECT_EQ(world.one.memory->Tree(), before_);
    for (const auto change :
         {FileSystemOperation::Write, FileSystemOperation::CreateFile, FileSystemOperation::CreateFolder,
          FileSystemOperation::Copy, FileSystemOperation::Remove})
      EXPECT_EQ(world.one.memory->CallCount(change), 0);
    EXPECT_EQ(world.prompts.Texts(), QStringList(kMoveFailed));
    EXPECT_TRUE(world.Log().isEmpty());
  }

 private:
  QStringList before_;
};

TEST_F(OnePlaceTwiceTest, AFileIntoItsOwnFolderThroughASecondControllerFails) {
  world.Select(kOne, u"f"_s);
  world.prompts.ExpectBox(kMoveFailed);
  EXPECT_FALSE(world.Move(u"Workspace\\Again\\in"_s));
}

TEST_F(OnePlaceTwiceTest, AFolderIntoItselfThroughASecondControllerFails) {
  world.SelectFolder(u"Workspace\\Ctrl1"_s, u"in"_s);
  world.prompts.ExpectBox(kMoveFailed);
  EXPECT_FALSE(world.Move(u"Workspace\\Again\\in"_s));
}

TEST_F(OnePlaceTwiceTest, AFolderBelowItselfThroughASecondControllerFails) {
  world.SelectFolder(u"Workspace\\Ctrl1"_s, u"in"_s);
  world.prompts.ExpectBox(kMoveFailed);
  EXPECT_FALSE(world.Move(u"Workspace\\Again\\in\\sub"_s));
}

TEST_F(OnePlaceTwiceTest, AFolderIntoTheFolderThatHoldsItThroughASecondControllerFails) {
  world.SelectFolder(kOne, u"sub"_s);
  world.prompts.ExpectBox(kMoveFailed);
  EXPECT_FALSE(world.Move(u"Workspace\\Again\\in"_s));
}

TEST_F(TransferTest, AFolderBelowItselfThroughALinkFails) {
  world.local.memory->AddLink(u"D:\\link"_s, u"C:\\tree\\sub"_s);
  world.one.memory->AddFolder(u"other"_s);
  world.SelectFolder(kC, u"tree"_s);
  world.prompts.ExpectBox(kCopyFailed);
  EXPECT_FALSE(world.Copy(kD + u"\\link"_s));
  EXPECT_EQ(world.local.memory->CallCount(FileSystemOperation::Copy), 0);
}

TEST_F(TransferTest, AFileIntoItsOwnFolderThroughALinkFails) {
  world.local.memory->AddLink(u"D:\\link"_s, u"C:\\tree"_s);
  world.Select(kC + u"\\tree"_s, u"a"_s);
  world.prompts.ExpectBox(kMoveFailed);
  EXPECT_FALSE(world.Move(kD + u"\\link"_s));
  EXPECT_EQ(world.local.memory->Content(u"C:\\tree\\a"_s), "aa");
}

TEST(TransferCaseTest, TwoNamesThatBecomeOneAreAClashAndTheSecondKeepsItsSource) {
  TransferWorld world;
  MemoryFileSystemOptions options;
  options.caseSensitive = false;
  const auto machine = EngineWorld::MakeMachine(options);
  world.Connect(u"Folding"_s, machine);
  machine.memory->AddFolder(u"in"_s);
  world.local.memory->AddFile(u"C:\\two\\A"_s, "upper");
  world.local.memory->AddFile(u"C:\\two\\a"_s, "lower");
  world.Select(kC + u"\\two"_s, u"A"_s);
  world.Select(kC + u"\\two"_s, u"a"_s);
  world.prompts.ExpectChoice(2);
  EXPECT_TRUE(world.Move(u"Workspace\\Folding\\in"_s));
  EXPECT_EQ(machine.memory->Content(u"in\\a"_s), "upper");
  EXPECT_EQ(world.local.memory->Content(u"C:\\two\\a"_s), "lower");
  EXPECT_FALSE(world.local.memory->Exists(u"C:\\two\\A"_s));
}

TEST(TransferCaseTest, TwoNamesOfOneFolderThatBecomeOneCostNeitherSource) {
  TransferWorld world;
  MemoryFileSystemOptions options;
  options.caseSensitive = false;
  const auto machine = EngineWorld::MakeMachine(options);
  world.Connect(u"Folding"_s, machine);
  machine.memory->AddFolder(u"in"_s);
  world.local.memory->AddFile(u"C:\\two\\A"_s, "upper");
  world.local.memory->AddFile(u"C:\\two\\a"_s, "lower");
  world.SelectFolder(kC, u"two"_s);
  world.prompts.ExpectChoice(0);
  world.prompts.ExpectBox(kMoveFailed);
  EXPECT_FALSE(world.Move(u"Workspace\\Folding\\in"_s));
  EXPECT_EQ(world.local.memory->Content(u"C:\\two\\A"_s), "upper");
  EXPECT_EQ(world.local.memory->Content(u"C:\\two\\a"_s), "lower");
}

// A source that changes

class ChangingSourceTest : public TransferTest, public testing::WithParamInterface<bool> {
 protected:
  [[nodiscard]] static QString Into() { return GetParam() ? kOne : kIn; }
};

TEST_P(ChangingSourceTest, AFileThatChangesAfterItWasCopiedStays) {
  world.SelectFolder(kC, u"tree"_s);
  bool changed = false;
  world.local.faulty->SetHook([&](const FileSystemCall& call) {
    if (!changed && call.operation == FileSystemOperation::Remove) {
      ADD_FAILURE() << "deleted before it was seen";
    }
    const bool copied = world.one.memory->Exists(u"in\\tree\\sub\\b"_s) ||
                        world.local.memory->Exists(u"D:\\in\\tree\\sub\\b"_s);
    if (!changed && copied) {
      changed = true;
      // In place, by another program: of the same size, but later.
      world.local.memory->SetNow({world.local.memory->Now().msecs + 1});
      world.local.memory->Write(u"C:\\tree\\sub\\b"_s, "BBB");
    }
  });
  world.prompts.ExpectBox(kMoveFailed);
  EXPECT_FALSE(world.Move(Into()));
  EXPECT_TRUE(changed);
  EXPECT_EQ(world.local.memory->Content(u"C:\\tree\\sub\\b"_s), "BBB");
  EXPECT_EQ(world.local.memory->Content(u"C:\\tree\\a"_s), "aa");
  EXPECT_TRUE(world.Log().isEmpty());
}

TEST_P(ChangingSourceTest, AFileThatComesWhileTheSourceIsDeletedStays) {
  world.SelectFolder(kC, u"tree"_s);
  bool changed = false;
  world.local.faulty->SetHook([&](const FileSystemCall& call) {
    if (!changed && call.operation == FileSystemOperation::Remove) {
      changed = true;
      world.local.memory->AddFile(u"C:\\tree\\late"_s, "late");
    }
  });
  world.prompts.ExpectBox(kMoveFailed);
  EXPECT_FALSE(world.Move(Into()));
  EXPECT_EQ(world.local.memory->Content(u"C:\\tree\\late"_s), "late");
}

TEST_P(ChangingSourceTest, AFileThatChangesDuringTheFlushStays) {
  const QString file = u"C:\\tree\\a"_s;
  for (const QByteArray& changed : {QByteArray("aa and a line more"), QByteArray("AA")}) {
    world.local.memory->AddFile(file, "aa");
    world.state.clipboard.Clear();
    world.Select(kC + u"\\tree"_s, u"a"_s);
    world.local.memory->Vanish(u"D:\\in\\a"_s);
    world.one.memory->Vanish(u"in\\a"_s);
    bool flushed = false;
    const auto append = [&](const FileSystemCall& call) {
      if (!flushed && call.operation == FileSystemOperation::Flush) {
        flushed = true;
        world.local.memory->SetNow({world.local.memory->Now().msecs + 1});
        world.local.memory->Write(file, changed);
      }
    };
    world.local.faulty->SetHook(append);
    world.one.faulty->SetHook(append);
    world.prompts.ExpectBox(kMoveFailed);
    EXPECT_FALSE(world.Move(Into()));
    EXPECT_TRUE(flushed);
    EXPECT_EQ(world.local.memory->Content(file), changed);
  }
  EXPECT_TRUE(world.Log().isEmpty());
}

INSTANTIATE_TEST_SUITE_P(All, ChangingSourceTest, testing::Bool(), [](const auto& info) {
  return std::string(info.param ? "BetweenControllers" : "WithinOneController");
});

TEST_F(TransferTest, TheGaugeIsPaintedBeforeEachEntry) {
  world.Select(kC, u"f"_s);
  world.SelectFolder(kC, u"tree"_s);
  std::vector<qsizetype> painted;
  world.local.faulty->SetHook([&](const FileSystemCall& call) {
    if (call.operation == FileSystemOperation::Copy)
      painted.push_back(world.Gauge().PaintedLabels().size());
  });
  EXPECT_TRUE(world.Copy(kIn));
  EXPECT_EQ(painted, (std::vector<qsizetype>{1, 2}));
  EXPECT_EQ(world.Gauge().PaintedLabels(), (QStringList{u"f"_s, u"tree"_s}));
}

}  // namespace
}  // namespace trevane::test

#include "fileops/FileCommands.h"
#include "tests/fileops/FileCommandsFixture.h"

namespace trevane::test {
namespace {

using namespace Qt::StringLiterals;

class FileCommandsTest : public FileCommandsFixture {};

TEST_F(FileCommandsTest, CopyTakesTheSelectedItemsInListOrderAndEnablesPaste) {
  Select({u"readme.txt"_s, u"Backup"_s});
  Execute(CommandId::Copy);
  EXPECT_EQ(state_.nFileOpMode, OperationState::kCopy);
  EXPECT_EQ(ClipboardAddresses(), (QStringList{Local(u"Backup"_s), Local(u"readme.txt"_s)}));
  EXPECT_EQ(state_.clipboard.Item(qint32{1}).PasteName(), QString());
  EXPECT_EQ(state_.clipboard.Item(qint32{2}).PasteName(), u"readme.txt"_s);
  EXPECT_EQ(state_.clipboard.Item(qint32{2}).Origin(), clsClipBrd::kFromItem);
  EXPECT_TRUE(pasteButton_);
  EXPECT_TRUE(host_.WasBusy());
  EXPECT_FALSE(host_.IsBusy());
  EXPECT_FALSE(list_.Ghosted(Item(u"readme.txt"_s)));
}

TEST_F(FileCommandsTest, CutDimsWhatItTakesAndALaterCopyOfOthersLeavesItDimmed) {
  Select({u"readme.txt"_s});
  Execute(CommandId::Cut);
  EXPECT_EQ(state_.nFileOpMode, OperationState::kCut);
  EXPECT_TRUE(list_.Ghosted(Item(u"readme.txt"_s)));
  Select({u"data.txt"_s});
  Execute(CommandId::Copy);
  EXPECT_TRUE(list_.Ghosted(Item(u"readme.txt"_s)));
  EXPECT_FALSE(list_.Ghosted(Item(u"data.txt"_s)));
  EXPECT_EQ(ClipboardAddresses(), QStringList{Local(u"data.txt"_s)});
  Select({u"readme.txt"_s});
  Execute(CommandId::Copy);
  EXPECT_FALSE(list_.Ghosted(Item(u"readme.txt"_s)));
}

TEST_F(FileCommandsTest, CopyWithNothingSelectedEmptiesTheSetAndPasteShowsAndClosesTheGauge) {
  Select({u"readme.txt"_s});
  Execute(CommandId::Copy);
  Select({});
  Execute(CommandId::Copy);
  EXPECT_EQ(state_.clipboard.Count(), 0);
  EXPECT_TRUE(pasteButton_);
  const QStringList before = memory_->Tree();
  Execute(CommandId::Paste);
  EXPECT_EQ(memory_->Tree(), before);
  EXPECT_EQ(prompts_.RecordedGauge().Captions(), QStringList{u"COPY Files/Directories"_s});
  EXPECT_FALSE(prompts_.RecordedGauge().IsLoaded());
}

TEST_F(FileCommandsTest, CopyFromTheTreeTakesTheCurrentFolder) {
  Display(Local(u"Programs"_s));
  active_ = ActiveSide::Tree;
  Execute(CommandId::Cut);
  ASSERT_EQ(state_.clipboard.Count(), 1);
  EXPECT_EQ(state_.clipboard.Item(qint32{1}).Origin(), clsClipBrd::kFromNode);
  EXPECT_EQ(ClipboardAddresses(), QStringList{Local(u"Programs"_s)});
  EXPECT_TRUE(pasteButton_);
}

TEST_F(FileCommandsTest, CopyFromTheTreeWithNoCurrentNodeAddsNothingAndLeavesThePasteButton) {
  navigator_.Builder().RebuildTree();
  ASSERT_EQ(navigator_.CurrentNode(), nullptr);
  active_ = ActiveSide::Tree;
  Execute(CommandId::Copy);
  EXPECT_EQ(state_.clipboard.Count(), 0);
  EXPECT_FALSE(pasteButton_);
}

TEST_F(FileCommandsTest, PlacesAreNeverCopiedCutOrDeletedFromTheTree) {
  active_ = ActiveSide::Tree;
  const QStringList before = memory_->Tree();
  for (const QString& address :
       {u"Workspace"_s, u"Workspace\\My Computer"_s, Local(), u"Workspace\\Cell"_s}) {
    Display(address);
    for (const CommandId command : {CommandId::Copy, CommandId::Cut, CommandId::Delete}) {
      Execute(command);
      EXPECT_EQ(state_.clipboard.Count(), 0) << address.toStdString();
      EXPECT_FALSE(pasteButton_);
      ExpectPlace(address);
    }
  }
  EXPECT_EQ(memory_->Tree(), before);
}

TEST_F(FileCommandsTest, AFolderOfAControllerThatIsGoneIsNotCopied) {
  Display(u"Workspace\\Cell"_s);
  Display(u"Workspace\\Cell\\pos"_s);
  session_.gIxoCtrls().Remove(u"Cell"_s);
  active_ = ActiveSide::Tree;
  Execute(CommandId::Copy);
  EXPECT_EQ(state_.clipboard.Count(), 0);
  EXPECT_FALSE(pasteButton_);
}

TEST_F(FileCommandsTest, WithNeitherSideNothingIsAdded) {
  Select({u"readme.txt"_s});
  active_ = ActiveSide::Neither;
  Execute(CommandId::Copy);
  EXPECT_EQ(state_.clipboard.Count(), 0);
  EXPECT_FALSE(pasteButton_);
  EXPECT_FALSE(host_.IsBusy());
}

TEST_F(FileCommandsTest, PasteWithNothingSelectedGoesIntoTheFolderThatIsShown) {
  Select({u"readme.txt"_s});
  Execute(CommandId::Copy);
  Display(Local(u"Backup"_s));
  Execute(CommandId::Paste);
  EXPECT_EQ(memory_->Content(u"C:\\Backup\\readme.txt"_s), "12345");
  EXPECT_EQ(ListTexts(), (QStringList{u"Old"_s, u"readme.txt"_s}));
  EXPECT_EQ(log_.Lines(), QStringList{u"COPY|C:\\readme.txt|C:\\Backup\\readme.txt"_s});
  EXPECT_EQ(state_.clipboard.Count(), 1);
  EXPECT_TRUE(pasteButton_);
}

TEST_F(FileCommandsTest, PasteTellsWhatAKilledCopyLeftThere) {
  Select({u"readme.txt"_s});
  Execute(CommandId::Copy);
  Display(Local(u"Backup"_s));
  faulty_->SetLeftovers(
      {{u"C:\\Backup\\.trevane-abcdef.tmp"_s, false}, {u"C:\\Backup\\.trevane-ghijkl.tmp"_s, true}});
  prompts_.ExpectBox(u"Interrupted copies have left 2 items behind."_s);
  prompts_.onQuestion = [this](const AskedQuestion&) { EXPECT_FALSE(host_.IsBusy()); };
  Execute(CommandId::Paste);
  EXPECT_EQ(prompts_.Asked().back().informativeText,
            u"C:\\Backup\\.trevane-abcdef.tmp: still there\nC:\\Backup\\.trevane-ghijkl.tmp: taken away"_s);
  EXPECT_EQ(memory_->Content(u"C:\\Backup\\readme.txt"_s), "12345");
}

TEST_F(FileCommandsTest, PasteGoesIntoTheSelectedFolderAndDeselectsAllItemsButTheFirst) {
  Select({u"readme.txt"_s});
  Execute(CommandId::Copy);
  Select({u"Programs"_s});
  Execute(CommandId::Paste);
  EXPECT_EQ(memory_->Content(u"C:\\Programs\\readme.txt"_s), "12345");
  ExpectPlace(Local());
  for (const FileListModel::Handle item : listView_.SelectedItems())
    EXPECT_EQ(list_.IndexOf(item).row(), 0);
}

TEST_F(FileCommandsTest, PasteWithAFileSelectedGoesIntoTheFolderThatIsShown) {
  Select({u"readme.txt"_s});
  Execute(CommandId::Copy);
  Display(Local(u"Programs"_s));
  Select({u"main.pac"_s});
  Execute(CommandId::Paste);
  EXPECT_TRUE(memory_->Exists(u"C:\\Programs\\readme.txt"_s));
}

TEST_F(FileCommandsTest, OnTheTreeSidePasteGoesIntoTheCurrentFolder) {
  Select({u"readme.txt"_s});
  Execute(CommandId::Copy);
  Display(Local(u"Programs"_s));
  Select({u"Cell1"_s});
  active_ = ActiveSide::Tree;
  Execute(CommandId::Paste);
  EXPECT_TRUE(memory_->Exists(u"C:\\Programs\\readme.txt"_s));
}

TEST_F(FileCommandsTest, PasteIntoTheOwnFolderFailsWithTheCopysMessage) {
  Select({u"readme.txt"_s});
  Execute(CommandId::Copy);
  Select({});
  prompts_.ExpectBox(u"Failed in copy operation."_s);
  Execute(CommandId::Paste);
  EXPECT_EQ(ListTexts(), (QStringList{u"Backup"_s, u"Programs"_s, u"data.txt"_s, u"readme.txt"_s}));
  EXPECT_TRUE(host_.IsEnabled());
}

TEST_F(FileCommandsTest, PasteWithNeitherSideAndASelectedItemEndsAtOnceAndLeavesTheHourglass) {
  Select({u"readme.txt"_s});
  Execute(CommandId::Copy);
  Select({u"Backup"_s});
  active_ = ActiveSide::Neither;
  Execute(CommandId::Paste);
  EXPECT_TRUE(host_.IsBusy());
  EXPECT_FALSE(memory_->Exists(u"C:\\Backup\\readme.txt"_s));
  EXPECT_TRUE(prompts_.RecordedGauge().Captions().isEmpty());
  active_ = ActiveSide::List;
  Execute(CommandId::Copy);
  EXPECT_FALSE(host_.IsBusy());
}

TEST_F(FileCommandsTest, PasteWithNeitherSideAndNothingSelectedGoesIntoTheFolderThatIsShown) {
  Select({u"readme.txt"_s});
  Execute(CommandId::Copy);
  Display(Local(u"Backup"_s));
  active_ = ActiveSide::Neither;
  Execute(CommandId::Paste);
  EXPECT_TRUE(memory_->Exists(u"C:\\Backup\\readme.txt"_s));
  EXPECT_FALSE(host_.IsBusy());
}

TEST_F(FileCommandsTest, PasteIntoAControllerThatIsNotConnectedDoesNothing) {
  Select({u"readme.txt"_s});
  Execute(CommandId::Cut);
  Display(u"Workspace\\Cell"_s);
  session_.gIxoCtrls().Remove(u"Cell"_s);
  Execute(CommandId::Paste);
  EXPECT_EQ(state_.clipboard.Count(), 1);
  EXPECT_TRUE(pasteButton_);
  EXPECT_TRUE(prompts_.RecordedGauge().Captions().isEmpty());
  EXPECT_FALSE(host_.IsBusy());
}

TEST_F(FileCommandsTest, CutThenPasteMovesOnceAndASecondPasteRunsWithAnEmptySet) {
  Select({u"readme.txt"_s});
  Execute(CommandId::Cut);
  Display(Local(u"Backup"_s));
  Execute(CommandId::Paste);
  EXPECT_FALSE(memory_->Exists(u"C:\\readme.txt"_s));
  EXPECT_EQ(memory_->Content(u"C:\\Backup\\readme.txt"_s), "12345");
  EXPECT_EQ(state_.clipboard.Count(), 0);
  EXPECT_FALSE(pasteButton_);
  EXPECT_EQ(log_.Lines(), QStringList{u"MOVE|C:\\readme.txt|C:\\Backup\\readme.txt"_s});
  const QStringList before = memory_->Tree();
  Execute(CommandId::Paste);
  EXPECT_EQ(memory_->Tree(), before);
  EXPECT_EQ(log_.Lines().size(), 1);
}

TEST_F(FileCommandsTest, AFolderMovedAwayLosesItsNodeAndAllBelowIt) {
  Display(Local(u"Programs"_s));
  Display(Local(u"Programs\\Cell1"_s));
  Display(Local());
  Select({u"Programs"_s});
  Execute(CommandId::Cut);
  Select({u"Backup"_s});
  Execute(CommandId::Paste);
  EXPECT_TRUE(memory_->Exists(u"C:\\Backup\\Programs\\Cell1\\Deep"_s));
  EXPECT_EQ(Node(Local(u"Programs"_s)), nullptr);
  EXPECT_EQ(Node(Local(u"Programs\\Cell1"_s)), nullptr);
  EXPECT_EQ(ListTexts(), (QStringList{u"Backup"_s, u"data.txt"_s, u"readme.txt"_s}));
}

TEST_F(FileCommandsTest, WhenTheCurrentPlaceIsMovedAwayTheNearestFolderIsDisplayed) {
  Display(Local(u"Backup"_s));
  Display(Local(u"Programs"_s));
  active_ = ActiveSide::Tree;
  ASSERT_TRUE(commands_.BeginDrag(Node(Local(u"Programs"_s))));
  ASSERT_TRUE(commands_.CanDrop({.node = Node(Local(u"Backup"_s))}));
  commands_.Drop({.node = Node(Local(u"Backup"_s))});
  Execute(CommandId::MoveHere);
  EXPECT_TRUE(memory_->Exists(u"C:\\Backup\\Programs\\main.pac"_s));
  ExpectPlace(Local());
  EXPECT_EQ(Node(Local(u"Programs"_s)), nullptr);
  EXPECT_NE(Node(Local(u"Backup\\Programs"_s)), nullptr);
}

TEST_F(FileCommandsTest, AnEntryRenamedSinceItWasCutFailsAndNothingElseHappens) {
  Select({u"readme.txt"_s});
  Execute(CommandId::Cut);
  EXPECT_FALSE(RenameItem(u"readme.txt"_s, u"notes.txt"_s));
  Display(Local(u"Backup"_s));
  const QStringList before = memory_->Tree();
  prompts_.ExpectBox(u"Failed in move operation."_s);
  Execute(CommandId::Paste);
  EXPECT_EQ(memory_->Tree(), before);
}

TEST_F(FileCommandsTest, BetweenControllersAFileIsCopiedAndShown) {
  Select({u"readme.txt"_s});
  Execute(CommandId::Copy);
  Display(u"Workspace\\Cell"_s);
  Display(u"Workspace\\Cell\\pos"_s);
  Execute(CommandId::Paste);
  EXPECT_EQ(cell_->Content(u"pos\\readme.txt"_s), "12345");
  EXPECT_EQ(ListTexts(), (QStringList{u"home.csv"_s, u"readme.txt"_s}));
}

TEST_F(FileCommandsTest, DeleteInTheListAsksForEachItemAndDisplaysTheFolderAgain) {
  Select({u"Programs"_s, u"data.txt"_s, u"readme.txt"_s});
  prompts_.ExpectChoice(u"'Programs' Do you want to Remove it?"_s, 0);
  prompts_.ExpectChoice(u"'data.txt' Do you want to Remove it?"_s, 2);
  prompts_.ExpectChoice(u"'readme.txt' Do you want to Remove it?"_s, 0);
  Execute(CommandId::Delete);
  EXPECT_EQ(state_.nFileOpMode, OperationState::kDelete);
  EXPECT_EQ(ListTexts(), (QStringList{u"Backup"_s, u"data.txt"_s}));
  EXPECT_EQ(Node(Local(u"Programs"_s)), nullptr);
  EXPECT_EQ(log_.Lines(), (QStringList{u"DELETE|C:\\Programs"_s, u"DELETE|C:\\readme.txt"_s}));
  EXPECT_FALSE(host_.IsBusy());
}

TEST_F(FileCommandsTest, AfterAFailedDeleteTheItemsThatAreGoneLeaveTheList) {
  Display(Local(u"Programs"_s));
  Display(Local());
  Select({u"Programs"_s, u"data.txt"_s, u"readme.txt"_s});
  faulty_->SetHook([](const FileSystemCall& call) {
    if (call.operation == FileSystemOperation::Remove && call.path.endsWith(u"data.txt"))
      throw RunTimeError(error::kAccessDenied, u"denied"_s);
  });
  prompts_.ExpectChoice(1);
  prompts_.ExpectBox(u"Failed in delete operation."_s);
  Execute(CommandId::Delete);
  EXPECT_EQ(ListTexts(), (QStringList{u"Backup"_s, u"data.txt"_s, u"readme.txt"_s}));
  EXPECT_EQ(Node(Local(u"Programs"_s)), nullptr);
  EXPECT_TRUE(memory_->Exists(u"C:\\data.txt"_s));
}

TEST_F(FileCommandsTest, DeleteInTheTreeShowsTheEnginePathAndThenTheParent) {
  Display(Local(u"Programs"_s));
  Display(Local(u"Programs\\Cell1"_s));
  active_ = ActiveSide::Tree;
  prompts_.ExpectBox(u"'C:\\Programs\\Cell1'\r\nRemove this file?"_s, PromptAnswer::Yes);
  Execute(CommandId::Delete);
  EXPECT_FALSE(memory_->Exists(u"C:\\Programs\\Cell1"_s));
  ExpectPlace(Local(u"Programs"_s));
  EXPECT_EQ(Node(Local(u"Programs\\Cell1"_s)), nullptr);
  EXPECT_EQ(ListTexts(), QStringList{u"main.pac"_s});
  EXPECT_EQ(log_.Lines(), QStringList{u"DELETE|C:\\Programs\\Cell1"_s});
}

TEST_F(FileCommandsTest, AFailedDeleteInTheTreeStaysWhereItIs) {
  Display(Local(u"Programs"_s));
  active_ = ActiveSide::Tree;
  faulty_->SetHook([](const FileSystemCall& call) {
    if (call.operation == FileSystemOperation::Remove)
      throw RunTimeError(error::kAccessDenied, u"denied"_s);
  });
  prompts_.ExpectBox(PromptAnswer::Yes);
  prompts_.ExpectBox(u"Failed in delete operation."_s);
  Execute(CommandId::Delete);
  ExpectPlace(Local(u"Programs"_s));
}

TEST_F(FileCommandsTest, DeleteWithNeitherSideAsksNothing) {
  Select({u"readme.txt"_s});
  active_ = ActiveSide::Neither;
  Execute(CommandId::Delete);
  EXPECT_TRUE(memory_->Exists(u"C:\\readme.txt"_s));
  EXPECT_EQ(state_.nFileOpMode, OperationState::kDelete);
}

TEST_F(FileCommandsTest, WhatADeleteActsOnIsFixedWhenItIsGiven) {
  Select({u"data.txt"_s, u"readme.txt"_s});
  prompts_.onQuestion = [this](const AskedQuestion&) { listView_.clearSelection(); };
  prompts_.ExpectChoice(u"'data.txt' Do you want to Remove it?"_s, 0);
  prompts_.ExpectChoice(u"'readme.txt' Do you want to Remove it?"_s, 0);
  Execute(CommandId::Delete);
  EXPECT_EQ(ListTexts(), (QStringList{u"Backup"_s, u"Programs"_s}));
}

TEST_F(FileCommandsTest, WhileOneCommandRunsNoOtherIsTaken) {
  Select({u"readme.txt"_s});
  Execute(CommandId::Copy);
  Display(Local(u"Backup"_s));
  bool asked = false;
  host_.onEvents = [&] {
    asked = true;
    EXPECT_TRUE(guard_.IsRunning());
    Execute(CommandId::Delete);
    commands_.OpenItem(0);
  };
  Execute(CommandId::Paste);
  EXPECT_TRUE(asked);
  EXPECT_EQ(state_.nFileOpMode, OperationState::kCopy);
  EXPECT_FALSE(guard_.IsRunning());
}

TEST_F(FileCommandsTest, WhileAFolderIsBeingDisplayedNoCommandIsTaken) {
  for (int i = 0; i < 50; ++i)
    memory_->AddFile(u"C:\\Backup\\f%1"_s.arg(i));
  int turns = 0;
  onDisplayEvents_ = [&] {
    ++turns;
    active_ = ActiveSide::Tree;
    Execute(CommandId::Delete);
    Execute(CommandId::NewFolder);
  };
  Display(Local(u"Backup"_s));
  EXPECT_GT(turns, 0);
  EXPECT_TRUE(memory_->Exists(u"C:\\Backup\\f1"_s));
  EXPECT_FALSE(memory_->Exists(u"C:\\Backup\\New Folder"_s));
}

TEST_F(FileCommandsTest, MoveHerePastesAndCopyHereOnlyFillsTheSetFromTheSelection) {
  Select({u"readme.txt"_s});
  ASSERT_TRUE(commands_.BeginDrag(nullptr));
  commands_.Drop({.node = nullptr, .item = Item(u"Backup"_s)});
  Select({u"data.txt"_s});
  const QStringList before = memory_->Tree();
  Execute(CommandId::CopyHere);
  EXPECT_EQ(memory_->Tree(), before);
  EXPECT_EQ(ClipboardAddresses(), QStringList{Local(u"data.txt"_s)});
  EXPECT_EQ(state_.nFileOpMode, OperationState::kCopy);

  Select({u"readme.txt"_s});
  ASSERT_TRUE(commands_.BeginDrag(nullptr));
  commands_.Drop({.node = nullptr, .item = Item(u"Backup"_s)});
  Execute(CommandId::MoveHere);
  EXPECT_EQ(memory_->Content(u"C:\\Backup\\readme.txt"_s), "12345");
  EXPECT_FALSE(memory_->Exists(u"C:\\readme.txt"_s));
  EXPECT_EQ(state_.clipboard.Count(), 0);
}

TEST_F(FileCommandsTest, ADragThatIsGivenUpLeavesTheSetOfACut) {
  Select({u"readme.txt"_s, u"data.txt"_s});
  Execute(CommandId::Cut);
  const QStringList cut = ClipboardAddresses();
  ASSERT_EQ(cut.size(), 2);
  Select({u"readme.txt"_s});
  ASSERT_TRUE(commands_.BeginDrag(nullptr));
  commands_.Drop({.node = nullptr, .item = Item(u"Backup"_s)});
  ASSERT_TRUE(commands_.BeginDrag(Node(Local(u"Programs"_s))));
  EXPECT_EQ(ClipboardAddresses(), cut);
  EXPECT_EQ(state_.nFileOpMode, OperationState::kCut);
  EXPECT_TRUE(list_.Ghosted(Item(u"readme.txt"_s)));

  // The Paste is the one of the Cut, also into the folder that was dropped on.
  Select({u"Backup"_s});
  Execute(CommandId::Paste);
  EXPECT_TRUE(memory_->Exists(u"C:\\Backup\\readme.txt"_s));
  EXPECT_TRUE(memory_->Exists(u"C:\\Backup\\data.txt"_s));
  EXPECT_FALSE(memory_->Exists(u"C:\\Backup\\Programs"_s));
}

TEST_F(FileCommandsTest, PlacesAreNotDraggedAndTakeNothingWhereNothingCanBe) {
  EXPECT_FALSE(commands_.BeginDrag(Node(u"Workspace"_s)));
  EXPECT_FALSE(commands_.BeginDrag(Node(Local())));
  EXPECT_FALSE(commands_.BeginDrag(Node(u"Workspace\\Cell"_s)));
  EXPECT_FALSE(commands_.BeginDrag(nullptr)) << "nothing is selected";
  EXPECT_TRUE(commands_.BeginDrag(Node(Local(u"Backup"_s))));

  EXPECT_FALSE(commands_.CanDrop({.node = Node(u"Workspace"_s)}));
  EXPECT_FALSE(commands_.CanDrop({.node = Node(u"Workspace\\My Computer"_s)}));
  EXPECT_TRUE(commands_.CanDrop({.node = Node(Local())}));
  EXPECT_TRUE(commands_.CanDrop({.node = Node(u"Workspace\\Cell"_s)}));
  EXPECT_TRUE(commands_.CanDrop({})) << "the folder that the list shows";
  EXPECT_TRUE(commands_.CanDrop({.item = Item(u"readme.txt"_s)})) << "a file stands for its folder";
  EXPECT_TRUE(commands_.CanDrop({.item = Item(u"Backup"_s)}));
  Display(u"Workspace"_s);
  EXPECT_FALSE(commands_.CanDrop({}));
  EXPECT_FALSE(commands_.CanDrop({.item = Item(u"My Computer"_s)}));
  EXPECT_TRUE(commands_.CanDrop({.item = Item(u"Cell"_s)}));
  Select({u"Cell"_s});
  EXPECT_FALSE(commands_.BeginDrag(nullptr));
  session_.gIxoCtrls().Remove(u"Cell"_s);
  EXPECT_FALSE(commands_.CanDrop({.node = Node(u"Workspace\\Cell"_s)}));
}

TEST_F(FileCommandsTest, AFolderNotFoundOnDisplayGivesTheEnginesTextAndLosesItsNode) {
  Display(Local(u"Programs"_s));
  Display(Local(u"Programs\\Cell1"_s));
  Display(Local());
  memory_->Vanish(u"C:\\Programs"_s);
  prompts_.AnswerAllBoxes(PromptAnswer::Ok);
  Display(Local(u"Programs\\Cell1"_s));
  ASSERT_EQ(prompts_.Asked().size(), 1U);
  EXPECT_TRUE(prompts_.Asked()[0].text.contains(u"Programs"_s)) << prompts_.Asked()[0].text.toStdString();
  ExpectPlace(Local());
  EXPECT_EQ(Node(Local(u"Programs"_s)), nullptr);
}

TEST_F(FileCommandsTest, AfterATimeOutOrARefusalTheNodeStays) {
  for (const qint32 number : {error::kTimeOut, error::kAccessDenied}) {
    Display(Local());
    faulty_->SetHook([number](const FileSystemCall& call) {
      if (call.path.endsWith(u"Backup"))
        throw RunTimeError(number, u"no answer"_s);
    });
    prompts_.ExpectBox(u"no answer"_s);
    Display(Local(u"Backup"_s));
    ExpectPlace(Local(u"Backup"_s));
    faulty_->SetHook({});
  }
}

TEST_F(FileCommandsTest, OpeningAFileRunsItAndAFailureToStartIsSaid) {
  commands_.OpenItem(Item(u"readme.txt"_s));
  EXPECT_EQ(memory_->CallCount(FileSystemOperation::Execute), 1);
  memory_->Vanish(u"C:\\readme.txt"_s);
  prompts_.ExpectBox(u"Failed in the Run() method."_s);
  commands_.OpenItem(Item(u"readme.txt"_s));
  faulty_->SetHook([](const FileSystemCall& call) {
    if (call.operation == FileSystemOperation::Execute)
      throw RunTimeError(error::kNotSupported, u"no program"_s);
  });
  prompts_.ExpectBox(u"Failed in the Run() method."_s);
  commands_.OpenItem(Item(u"data.txt"_s));
  EXPECT_EQ(prompts_.Asked().back().icon, PromptIcon::Exclamation);
  EXPECT_EQ(prompts_.Asked().back().informativeText, u"data.txt\nno program"_s);
  EXPECT_EQ(host_.reasons.back(), u"no program"_s);
  ExpectPlace(Local());
}

TEST_F(FileCommandsTest, OpeningAContainerDisplaysItAndSelectsItsFirstItem) {
  Display(u"Workspace"_s);
  for (const QString& text : {u"My Computer"_s, u"C:"_s, u"Programs"_s}) {
    commands_.OpenItem(Item(text));
    ASSERT_EQ(listView_.SelectedItems().size(), 1U);
    EXPECT_EQ(list_.IndexOf(listView_.SelectedItems().front()).row(), 0);
  }
  ExpectPlace(Local(u"Programs"_s));
  Display(u"Workspace"_s);
  commands_.OpenItem(Item(u"Cell"_s));
  ExpectPlace(u"Workspace\\Cell"_s);
  EXPECT_EQ(memory_->CallCount(FileSystemOperation::Execute), 0);
}

TEST_F(FileCommandsTest, OpeningOneOfTwoFoldersThatDifferInCaseShowsThatOne) {
  memory_->AddFile(u"C:\\Case\\data.txt"_s, "upper");
  memory_->SetAttributes(u"C:\\Case"_s, 0x2);
  Display(Local());
  memory_->AddFile(u"C:\\case\\data.txt"_s, "lower");
  Display(Local());
  ASSERT_EQ(Node(Local(u"case"_s))->Text(), u"Case"_s) << "the tree knew that one first";
  commands_.OpenItem(Item(u"case"_s));
  ExpectPlace(Local(u"case"_s));
  prompts_.ExpectChoice(u"'data.txt' Do you want to Remove it?"_s, 0);
  Execute(CommandId::Delete);
  EXPECT_FALSE(memory_->Exists(u"C:\\case\\data.txt"_s));
  EXPECT_TRUE(memory_->Exists(u"C:\\Case\\data.txt"_s));
}

TEST_F(FileCommandsTest, APasteIntoOneOfTwoFoldersLeavesTheOthersNodeAlone) {
  memory_->AddFolder(u"C:\\Case\\Sub"_s);
  memory_->SetAttributes(u"C:\\Case"_s, 0x2);
  Display(Local());
  Display(Local(u"Case"_s));
  memory_->AddFolder(u"C:\\case"_s);
  Display(Local());
  Select({u"Backup"_s});
  Execute(CommandId::Copy);
  Select({u"case"_s});
  Execute(CommandId::Paste);
  EXPECT_TRUE(memory_->Exists(u"C:\\case\\Backup"_s));
  ASSERT_NE(Node(Local(u"Case"_s)), nullptr);
  EXPECT_EQ(Node(Local(u"Case\\Backup"_s)), nullptr);
}

TEST_F(FileCommandsTest, OpeningNothingDoesNothing) {
  commands_.OpenItem(FileListModel::kNoItem);
  ExpectPlace(Local());
}

TEST_F(FileCommandsTest, RunStartsAllSelectedFilesInListOrder) {
  Select({u"readme.txt"_s, u"data.txt"_s});
  Execute(CommandId::Run);
  QStringList run;
  for (const FileSystemCall& call : memory_->Calls())
    if (call.operation == FileSystemOperation::Execute)
      run += call.path;
  EXPECT_EQ(run, (QStringList{u"C:\\data.txt"_s, u"C:\\readme.txt"_s}));
}

TEST_F(FileCommandsTest, RunStopsInSilenceAtAFileThatIsGone) {
  Select({u"data.txt"_s, u"readme.txt"_s});
  memory_->Vanish(u"C:\\data.txt"_s);
  Execute(CommandId::Run);
  EXPECT_EQ(memory_->CallCount(FileSystemOperation::Execute), 0);
}

TEST_F(FileCommandsTest, RunInTheTreeRunsTheCurrentNodeOrSaysWhyItCannot) {
  Display(Local(u"Programs"_s));
  active_ = ActiveSide::Tree;
  Execute(CommandId::Run);
  EXPECT_EQ(memory_->CallCount(FileSystemOperation::Execute), 1);
  faulty_->SetHook([](const FileSystemCall& call) {
    if (call.path.endsWith(u"Programs"))
      throw RunTimeError(error::kTimeOut, u"The controller does not answer."_s);
  });
  prompts_.ExpectBox(u"The controller does not answer."_s);
  Execute(CommandId::Run);
  EXPECT_EQ(memory_->CallCount(FileSystemOperation::Execute), 1);
}

}  // namespace
}  // namespace trevane::test

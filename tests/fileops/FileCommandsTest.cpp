#include "fileops/FileCommands.h"
#include "tests/fileops/FileCommandsFixture.h"

namespace trevane::test {
namespace {

class FileCommandsTest : public FileCommandsFixture {};

TEST_F(FileCommandsTest, CopyTakesTheSelectionInListOrder) {
  Select({QStringLiteral("readme.txt"), QStringLiteral("Backup")});
  Execute(CommandId::Copy);
  EXPECT_EQ(state_.nFileOpMode, OperationState::kCopy);
  EXPECT_EQ(ClipboardAddresses(),
            (QStringList{Local(QStringLiteral("Backup")), Local(QStringLiteral("readme.txt"))}));
  EXPECT_EQ(state_.clipboard.Item(qint32{1}).PasteName(), QString());
  EXPECT_EQ(state_.clipboard.Item(qint32{2}).PasteName(), QStringLiteral("readme.txt"));
  EXPECT_EQ(state_.clipboard.Item(qint32{2}).Origin(), clsClipBrd::kFromItem);
  EXPECT_TRUE(pasteButton_);
  EXPECT_TRUE(host_.WasBusy());
  EXPECT_FALSE(host_.IsBusy());
  EXPECT_FALSE(list_.Ghosted(Item(QStringLiteral("readme.txt"))));
}

TEST_F(FileCommandsTest, ItemsOfACutStayDimmedAfterACopyOfOthers) {
  Select({QStringLiteral("readme.txt")});
  Execute(CommandId::Cut);
  EXPECT_EQ(state_.nFileOpMode, OperationState::kCut);
  EXPECT_TRUE(list_.Ghosted(Item(QStringLiteral("readme.txt"))));
  Select({QStringLiteral("data.txt")});
  Execute(CommandId::Copy);
  EXPECT_TRUE(list_.Ghosted(Item(QStringLiteral("readme.txt"))));
  EXPECT_FALSE(list_.Ghosted(Item(QStringLiteral("data.txt"))));
  EXPECT_EQ(ClipboardAddresses(), QStringList{Local(QStringLiteral("data.txt"))});
  Select({QStringLiteral("readme.txt")});
  Execute(CommandId::Copy);
  EXPECT_FALSE(list_.Ghosted(Item(QStringLiteral("readme.txt"))));
}

TEST_F(FileCommandsTest, CopyWithoutASelectionEmptiesTheSet) {
  Select({QStringLiteral("readme.txt")});
  Execute(CommandId::Copy);
  Select({});
  Execute(CommandId::Copy);
  EXPECT_EQ(state_.clipboard.Count(), 0);
  EXPECT_TRUE(pasteButton_);
  const QStringList before = memory_->Tree();
  Execute(CommandId::Paste);
  EXPECT_EQ(memory_->Tree(), before);
  EXPECT_EQ(prompts_.RecordedGauge().Captions(), QStringList{QStringLiteral("COPY Files/Directories")});
  EXPECT_FALSE(prompts_.RecordedGauge().IsLoaded());
}

TEST_F(FileCommandsTest, CopyFromTheTreeTakesTheCurrentFolder) {
  Display(Local(QStringLiteral("Programs")));
  active_ = ActiveSide::Tree;
  Execute(CommandId::Cut);
  ASSERT_EQ(state_.clipboard.Count(), 1);
  EXPECT_EQ(state_.clipboard.Item(qint32{1}).Origin(), clsClipBrd::kFromNode);
  EXPECT_EQ(ClipboardAddresses(), QStringList{Local(QStringLiteral("Programs"))});
  EXPECT_TRUE(pasteButton_);
}

TEST_F(FileCommandsTest, CopyWithoutACurrentNodeAddsNothing) {
  navigator_.Builder().RebuildTree();
  ASSERT_EQ(navigator_.CurrentNode(), nullptr);
  active_ = ActiveSide::Tree;
  Execute(CommandId::Copy);
  EXPECT_EQ(state_.clipboard.Count(), 0);
  EXPECT_FALSE(pasteButton_);
}

TEST_F(FileCommandsTest, DrivesAndControllersAreNeverCutOrDeleted) {
  active_ = ActiveSide::Tree;
  const QStringList before = memory_->Tree();
  for (const QString& address : {QStringLiteral("Workspace"), QStringLiteral("Workspace\\My Computer"),
                                 Local(), QStringLiteral("Workspace\\Cell")}) {
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
  Display(QStringLiteral("Workspace\\Cell"));
  Display(QStringLiteral("Workspace\\Cell\\pos"));
  session_.gIxoCtrls().Remove(QStringLiteral("Cell"));
  active_ = ActiveSide::Tree;
  Execute(CommandId::Copy);
  EXPECT_EQ(state_.clipboard.Count(), 0);
  EXPECT_FALSE(pasteButton_);
}

TEST_F(FileCommandsTest, WithNeitherSideNothingIsAdded) {
  Select({QStringLiteral("readme.txt")});
  active_ = ActiveSide::Neither;
  Execute(CommandId::Copy);
  EXPECT_EQ(state_.clipboard.Count(), 0);
  EXPECT_FALSE(pasteButton_);
  EXPECT_FALSE(host_.IsBusy());
}

TEST_F(FileCommandsTest, PasteWithoutASelectionUsesTheShownFolder) {
  Select({QStringLiteral("readme.txt")});
  Execute(CommandId::Copy);
  Display(Local(QStringLiteral("Backup")));
  Execute(CommandId::Paste);
  EXPECT_EQ(memory_->Content(QStringLiteral("C:\\Backup\\readme.txt")), "12345");
  EXPECT_EQ(ListTexts(), (QStringList{QStringLiteral("Old"), QStringLiteral("readme.txt")}));
  EXPECT_EQ(log_.Lines(), QStringList{QStringLiteral("COPY|C:\\readme.txt|C:\\Backup\\readme.txt")});
  EXPECT_EQ(state_.clipboard.Count(), 1);
  EXPECT_TRUE(pasteButton_);
}

TEST_F(FileCommandsTest, PasteTellsWhatAKilledCopyLeftThere) {
  Select({QStringLiteral("readme.txt")});
  Execute(CommandId::Copy);
  Display(Local(QStringLiteral("Backup")));
  faulty_->SetLeftovers({{QStringLiteral("C:\\Backup\\.trevane-abcdef.tmp"), false},
                         {QStringLiteral("C:\\Backup\\.trevane-ghijkl.tmp"), true}});
  prompts_.ExpectBox(QStringLiteral("Interrupted copies have left 2 items behind."));
  prompts_.onQuestion = [this](const AskedQuestion&) { EXPECT_FALSE(host_.IsBusy()); };
  Execute(CommandId::Paste);
  EXPECT_EQ(prompts_.Asked().back().informativeText,
            QStringLiteral(
                "C:\\Backup\\.trevane-abcdef.tmp: still there\nC:\\Backup\\.trevane-ghijkl.tmp: removed"));
  EXPECT_EQ(memory_->Content(QStringLiteral("C:\\Backup\\readme.txt")), "12345");
}

TEST_F(FileCommandsTest, PasteUsesTheSelectedFolder) {
  Select({QStringLiteral("readme.txt")});
  Execute(CommandId::Copy);
  Select({QStringLiteral("Programs")});
  Execute(CommandId::Paste);
  EXPECT_EQ(memory_->Content(QStringLiteral("C:\\Programs\\readme.txt")), "12345");
  ExpectPlace(Local());
  for (const FileListModel::Handle item : listView_.SelectedItems()) {
    EXPECT_EQ(list_.IndexOf(item).row(), 0);
  }
}

TEST_F(FileCommandsTest, PasteWithASelectedFileUsesTheShownFolder) {
  Select({QStringLiteral("readme.txt")});
  Execute(CommandId::Copy);
  Display(Local(QStringLiteral("Programs")));
  Select({QStringLiteral("main.pac")});
  Execute(CommandId::Paste);
  EXPECT_TRUE(memory_->Exists(QStringLiteral("C:\\Programs\\readme.txt")));
}

TEST_F(FileCommandsTest, OnTheTreeSidePasteGoesIntoTheCurrentFolder) {
  Select({QStringLiteral("readme.txt")});
  Execute(CommandId::Copy);
  Display(Local(QStringLiteral("Programs")));
  Select({QStringLiteral("Cell1")});
  active_ = ActiveSide::Tree;
  Execute(CommandId::Paste);
  EXPECT_TRUE(memory_->Exists(QStringLiteral("C:\\Programs\\readme.txt")));
}

TEST_F(FileCommandsTest, PasteIntoTheOwnFolderFails) {
  Select({QStringLiteral("readme.txt")});
  Execute(CommandId::Copy);
  Select({});
  prompts_.ExpectBox(QStringLiteral("Failed in copy operation."));
  Execute(CommandId::Paste);
  EXPECT_EQ(ListTexts(), (QStringList{QStringLiteral("Backup"), QStringLiteral("Programs"),
                                      QStringLiteral("data.txt"), QStringLiteral("readme.txt")}));
  EXPECT_TRUE(host_.IsEnabled());
}

TEST_F(FileCommandsTest, PasteWithoutAnActiveViewLeavesTheHourglass) {
  Select({QStringLiteral("readme.txt")});
  Execute(CommandId::Copy);
  Select({QStringLiteral("Backup")});
  active_ = ActiveSide::Neither;
  Execute(CommandId::Paste);
  EXPECT_TRUE(host_.IsBusy());
  EXPECT_FALSE(memory_->Exists(QStringLiteral("C:\\Backup\\readme.txt")));
  EXPECT_TRUE(prompts_.RecordedGauge().Captions().isEmpty());
  active_ = ActiveSide::List;
  Execute(CommandId::Copy);
  EXPECT_FALSE(host_.IsBusy());
}

TEST_F(FileCommandsTest, PasteWithoutViewAndSelectionUsesTheFolder) {
  Select({QStringLiteral("readme.txt")});
  Execute(CommandId::Copy);
  Display(Local(QStringLiteral("Backup")));
  active_ = ActiveSide::Neither;
  Execute(CommandId::Paste);
  EXPECT_TRUE(memory_->Exists(QStringLiteral("C:\\Backup\\readme.txt")));
  EXPECT_FALSE(host_.IsBusy());
}

TEST_F(FileCommandsTest, PasteIntoADisconnectedControllerDoesNothing) {
  Select({QStringLiteral("readme.txt")});
  Execute(CommandId::Cut);
  Display(QStringLiteral("Workspace\\Cell"));
  session_.gIxoCtrls().Remove(QStringLiteral("Cell"));
  Execute(CommandId::Paste);
  EXPECT_EQ(state_.clipboard.Count(), 1);
  EXPECT_TRUE(pasteButton_);
  EXPECT_TRUE(prompts_.RecordedGauge().Captions().isEmpty());
  EXPECT_FALSE(host_.IsBusy());
}

TEST_F(FileCommandsTest, TheSecondPasteOfACutHasAnEmptySet) {
  Select({QStringLiteral("readme.txt")});
  Execute(CommandId::Cut);
  Display(Local(QStringLiteral("Backup")));
  Execute(CommandId::Paste);
  EXPECT_FALSE(memory_->Exists(QStringLiteral("C:\\readme.txt")));
  EXPECT_EQ(memory_->Content(QStringLiteral("C:\\Backup\\readme.txt")), "12345");
  EXPECT_EQ(state_.clipboard.Count(), 0);
  EXPECT_FALSE(pasteButton_);
  EXPECT_EQ(log_.Lines(), QStringList{QStringLiteral("MOVE|C:\\readme.txt|C:\\Backup\\readme.txt")});
  const QStringList before = memory_->Tree();
  Execute(CommandId::Paste);
  EXPECT_EQ(memory_->Tree(), before);
  EXPECT_EQ(log_.Lines().size(), 1);
}

TEST_F(FileCommandsTest, AFolderMovedAwayLosesItsNodeAndAllBelowIt) {
  Display(Local(QStringLiteral("Programs")));
  Display(Local(QStringLiteral("Programs\\Cell1")));
  Display(Local());
  Select({QStringLiteral("Programs")});
  Execute(CommandId::Cut);
  Select({QStringLiteral("Backup")});
  Execute(CommandId::Paste);
  EXPECT_TRUE(memory_->Exists(QStringLiteral("C:\\Backup\\Programs\\Cell1\\Deep")));
  EXPECT_EQ(Node(Local(QStringLiteral("Programs"))), nullptr);
  EXPECT_EQ(Node(Local(QStringLiteral("Programs\\Cell1"))), nullptr);
  EXPECT_EQ(ListTexts(), (QStringList{QStringLiteral("Backup"), QStringLiteral("data.txt"),
                                      QStringLiteral("readme.txt")}));
}

TEST_F(FileCommandsTest, MovingTheCurrentFolderShowsTheNearestOne) {
  Display(Local(QStringLiteral("Backup")));
  Display(Local(QStringLiteral("Programs")));
  active_ = ActiveSide::Tree;
  ASSERT_TRUE(commands_.BeginDrag(Node(Local(QStringLiteral("Programs")))));
  ASSERT_TRUE(commands_.CanDrop({.node = Node(Local(QStringLiteral("Backup")))}));
  commands_.Drop({.node = Node(Local(QStringLiteral("Backup")))});
  Execute(CommandId::MoveHere);
  EXPECT_TRUE(memory_->Exists(QStringLiteral("C:\\Backup\\Programs\\main.pac")));
  ExpectPlace(Local());
  EXPECT_EQ(Node(Local(QStringLiteral("Programs"))), nullptr);
  EXPECT_NE(Node(Local(QStringLiteral("Backup\\Programs"))), nullptr);
}

TEST_F(FileCommandsTest, EntriesRenamedAfterACutFail) {
  Select({QStringLiteral("readme.txt")});
  Execute(CommandId::Cut);
  EXPECT_FALSE(RenameItem(QStringLiteral("readme.txt"), QStringLiteral("notes.txt")));
  Display(Local(QStringLiteral("Backup")));
  const QStringList before = memory_->Tree();
  prompts_.ExpectBox(QStringLiteral("Failed in move operation."));
  Execute(CommandId::Paste);
  EXPECT_EQ(memory_->Tree(), before);
}

TEST_F(FileCommandsTest, BetweenControllersAFileIsCopiedAndShown) {
  Select({QStringLiteral("readme.txt")});
  Execute(CommandId::Copy);
  Display(QStringLiteral("Workspace\\Cell"));
  Display(QStringLiteral("Workspace\\Cell\\pos"));
  Execute(CommandId::Paste);
  EXPECT_EQ(cell_->Content(QStringLiteral("pos\\readme.txt")), "12345");
  EXPECT_EQ(ListTexts(), (QStringList{QStringLiteral("home.csv"), QStringLiteral("readme.txt")}));
}

TEST_F(FileCommandsTest, DeleteInTheListAsksForEachItem) {
  Select({QStringLiteral("Programs"), QStringLiteral("data.txt"), QStringLiteral("readme.txt")});
  prompts_.ExpectChoice(QStringLiteral("'Programs' Do you want to Remove it?"), 0);
  prompts_.ExpectChoice(QStringLiteral("'data.txt' Do you want to Remove it?"), 2);
  prompts_.ExpectChoice(QStringLiteral("'readme.txt' Do you want to Remove it?"), 0);
  Execute(CommandId::Delete);
  EXPECT_EQ(state_.nFileOpMode, OperationState::kDelete);
  EXPECT_EQ(ListTexts(), (QStringList{QStringLiteral("Backup"), QStringLiteral("data.txt")}));
  EXPECT_EQ(Node(Local(QStringLiteral("Programs"))), nullptr);
  EXPECT_EQ(log_.Lines(),
            (QStringList{QStringLiteral("DELETE|C:\\Programs"), QStringLiteral("DELETE|C:\\readme.txt")}));
  EXPECT_FALSE(host_.IsBusy());
}

TEST_F(FileCommandsTest, DeletedItemsLeaveTheListAfterAFailure) {
  Display(Local(QStringLiteral("Programs")));
  Display(Local());
  Select({QStringLiteral("Programs"), QStringLiteral("data.txt"), QStringLiteral("readme.txt")});
  faulty_->SetHook([](const FileSystemCall& call) {
    if (call.operation == FileSystemOperation::Remove && call.path.endsWith(u"data.txt")) {
      throw RunTimeError(error::kAccessDenied, QStringLiteral("denied"));
    }
  });
  prompts_.ExpectChoice(1);
  prompts_.ExpectBox(QStringLiteral("Failed in delete operation."));
  Execute(CommandId::Delete);
  EXPECT_EQ(ListTexts(), (QStringList{QStringLiteral("Backup"), QStringLiteral("data.txt"),
                                      QStringLiteral("readme.txt")}));
  EXPECT_EQ(Node(Local(QStringLiteral("Programs"))), nullptr);
  EXPECT_TRUE(memory_->Exists(QStringLiteral("C:\\data.txt")));
}

TEST_F(FileCommandsTest, DeleteInTheTreeShowsTheParent) {
  Display(Local(QStringLiteral("Programs")));
  Display(Local(QStringLiteral("Programs\\Cell1")));
  active_ = ActiveSide::Tree;
  prompts_.ExpectBox(QStringLiteral("'C:\\Programs\\Cell1'\r\nRemove this file?"), PromptAnswer::Yes);
  Execute(CommandId::Delete);
  EXPECT_FALSE(memory_->Exists(QStringLiteral("C:\\Programs\\Cell1")));
  ExpectPlace(Local(QStringLiteral("Programs")));
  EXPECT_EQ(Node(Local(QStringLiteral("Programs\\Cell1"))), nullptr);
  EXPECT_EQ(ListTexts(), QStringList{QStringLiteral("main.pac")});
  EXPECT_EQ(log_.Lines(), QStringList{QStringLiteral("DELETE|C:\\Programs\\Cell1")});
}

TEST_F(FileCommandsTest, AFailedDeleteInTheTreeStaysWhereItIs) {
  Display(Local(QStringLiteral("Programs")));
  active_ = ActiveSide::Tree;
  faulty_->SetHook([](const FileSystemCall& call) {
    if (call.operation == FileSystemOperation::Remove) {
      throw RunTimeError(error::kAccessDenied, QStringLiteral("denied"));
    }
  });
  prompts_.ExpectBox(PromptAnswer::Yes);
  prompts_.ExpectBox(QStringLiteral("Failed in delete operation."));
  Execute(CommandId::Delete);
  ExpectPlace(Local(QStringLiteral("Programs")));
}

TEST_F(FileCommandsTest, DeleteWithNeitherSideAsksNothing) {
  Select({QStringLiteral("readme.txt")});
  active_ = ActiveSide::Neither;
  Execute(CommandId::Delete);
  EXPECT_TRUE(memory_->Exists(QStringLiteral("C:\\readme.txt")));
  EXPECT_EQ(state_.nFileOpMode, OperationState::kDelete);
}

TEST_F(FileCommandsTest, WhatADeleteActsOnIsFixedWhenItIsGiven) {
  Select({QStringLiteral("data.txt"), QStringLiteral("readme.txt")});
  prompts_.onQuestion = [this](const AskedQuestion&) { listView_.clearSelection(); };
  prompts_.ExpectChoice(QStringLiteral("'data.txt' Do you want to Remove it?"), 0);
  prompts_.ExpectChoice(QStringLiteral("'readme.txt' Do you want to Remove it?"), 0);
  Execute(CommandId::Delete);
  EXPECT_EQ(ListTexts(), (QStringList{QStringLiteral("Backup"), QStringLiteral("Programs")}));
}

TEST_F(FileCommandsTest, NothingBeginsWhileAControllerIsWaitedFor) {
  Select({QStringLiteral("readme.txt")});
  host_.waiting = true;
  faulty_->ClearCalls();
  for (const CommandId id : {CommandId::Copy, CommandId::Cut, CommandId::Paste, CommandId::MoveHere,
                             CommandId::Delete, CommandId::Run, CommandId::Rename, CommandId::NewFolder,
                             CommandId::Refresh, CommandId::Parent, CommandId::Properties}) {
    Execute(id);
  }
  commands_.OpenItem(Item(QStringLiteral("Backup")));
  EXPECT_FALSE(commands_.BeginDrag(Node(Local(QStringLiteral("Backup")))));
  EXPECT_FALSE(commands_.CanDrop({.node = Node(Local(QStringLiteral("Backup")))}));
  EXPECT_EQ(faulty_->CallCount(), 0);
  EXPECT_TRUE(ClipboardAddresses().isEmpty());
  EXPECT_TRUE(prompts_.Asked().empty());
  ExpectPlace(Local());
}

TEST_F(FileCommandsTest, ACancelledRunSaysSo) {
  memory_->AddFile(QStringLiteral("C:\\a.exe"), "x");
  navigator_.Refresh();
  faulty_->SetHook([](const FileSystemCall& call) {
    if (call.operation == FileSystemOperation::Execute) {
      throw RunTimeError(error::kCancelled, QStringLiteral("interrupted"));
    }
  });
  Select({QStringLiteral("a.exe")});
  prompts_.ExpectBox(QStringLiteral("Failed in the Run() method."));
  Execute(CommandId::Run);
  EXPECT_EQ(prompts_.Asked().at(0).informativeText, QStringLiteral("a.exe\nCancelled."));
}

TEST_F(FileCommandsTest, NoOperationBeginsDuringAnother) {
  Select({QStringLiteral("readme.txt")});
  Execute(CommandId::Copy);
  Display(Local(QStringLiteral("Backup")));
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

TEST_F(FileCommandsTest, AConnectionKeepsOtherCommandsAwayButNoOpening) {
  guard_.Run(
      [&] {
        EXPECT_FALSE(guard_.MayBegin());
        commands_.OpenItem(Item(QStringLiteral("readme.txt")));
      },
      false);
  EXPECT_EQ(memory_->CallCount(FileSystemOperation::Execute), 1);
}

TEST_F(FileCommandsTest, NoOperationBeginsDuringADisplay) {
  for (int i = 0; i < 50; ++i) {
    memory_->AddFile(QStringLiteral("C:\\Backup\\f%1").arg(i));
  }
  int turns = 0;
  onDisplayEvents_ = [&] {
    ++turns;
    active_ = ActiveSide::Tree;
    Execute(CommandId::Delete);
    Execute(CommandId::NewFolder);
  };
  Display(Local(QStringLiteral("Backup")));
  EXPECT_GT(turns, 0);
  EXPECT_TRUE(memory_->Exists(QStringLiteral("C:\\Backup\\f1")));
  EXPECT_FALSE(memory_->Exists(QStringLiteral("C:\\Backup\\New Folder")));
}

TEST_F(FileCommandsTest, MoveHerePastesAndCopyHereFillsTheSet) {
  Select({QStringLiteral("readme.txt")});
  ASSERT_TRUE(commands_.BeginDrag(nullptr));
  commands_.Drop({.node = nullptr, .item = Item(QStringLiteral("Backup"))});
  Select({QStringLiteral("data.txt")});
  const QStringList before = memory_->Tree();
  Execute(CommandId::CopyHere);
  EXPECT_EQ(memory_->Tree(), before);
  EXPECT_EQ(ClipboardAddresses(), QStringList{Local(QStringLiteral("data.txt"))});
  EXPECT_EQ(state_.nFileOpMode, OperationState::kCopy);

  Select({QStringLiteral("readme.txt")});
  ASSERT_TRUE(commands_.BeginDrag(nullptr));
  commands_.Drop({.node = nullptr, .item = Item(QStringLiteral("Backup"))});
  Execute(CommandId::MoveHere);
  EXPECT_EQ(memory_->Content(QStringLiteral("C:\\Backup\\readme.txt")), "12345");
  EXPECT_FALSE(memory_->Exists(QStringLiteral("C:\\readme.txt")));
  EXPECT_EQ(state_.clipboard.Count(), 0);
}

TEST_F(FileCommandsTest, CancelledDragsKeepTheClipboardSet) {
  Select({QStringLiteral("readme.txt"), QStringLiteral("data.txt")});
  Execute(CommandId::Cut);
  const QStringList cut = ClipboardAddresses();
  ASSERT_EQ(cut.size(), 2);
  Select({QStringLiteral("readme.txt")});
  ASSERT_TRUE(commands_.BeginDrag(nullptr));
  commands_.Drop({.node = nullptr, .item = Item(QStringLiteral("Backup"))});
  ASSERT_TRUE(commands_.BeginDrag(Node(Local(QStringLiteral("Programs")))));
  EXPECT_EQ(ClipboardAddresses(), cut);
  EXPECT_EQ(state_.nFileOpMode, OperationState::kCut);
  EXPECT_TRUE(list_.Ghosted(Item(QStringLiteral("readme.txt"))));

  // The Paste moves the entries of the Cut, also into the folder that was dropped on.
  Select({QStringLiteral("Backup")});
  Execute(CommandId::Paste);
  EXPECT_TRUE(memory_->Exists(QStringLiteral("C:\\Backup\\readme.txt")));
  EXPECT_TRUE(memory_->Exists(QStringLiteral("C:\\Backup\\data.txt")));
  EXPECT_FALSE(memory_->Exists(QStringLiteral("C:\\Backup\\Programs")));
}

TEST_F(FileCommandsTest, DrivesAreNotDraggedAndTakeNoDrop) {
  EXPECT_FALSE(commands_.BeginDrag(Node(QStringLiteral("Workspace"))));
  EXPECT_FALSE(commands_.BeginDrag(Node(Local())));
  EXPECT_FALSE(commands_.BeginDrag(Node(QStringLiteral("Workspace\\Cell"))));
  EXPECT_FALSE(commands_.BeginDrag(nullptr)) << "nothing is selected";
  EXPECT_TRUE(commands_.BeginDrag(Node(Local(QStringLiteral("Backup")))));

  EXPECT_FALSE(commands_.CanDrop({.node = Node(QStringLiteral("Workspace"))}));
  EXPECT_FALSE(commands_.CanDrop({.node = Node(QStringLiteral("Workspace\\My Computer"))}));
  EXPECT_TRUE(commands_.CanDrop({.node = Node(Local())}));
  EXPECT_TRUE(commands_.CanDrop({.node = Node(QStringLiteral("Workspace\\Cell"))}));
  EXPECT_TRUE(commands_.CanDrop({})) << "the folder that the list shows";
  EXPECT_TRUE(commands_.CanDrop({.item = Item(QStringLiteral("readme.txt"))}))
      << "a file stands for its folder";
  EXPECT_TRUE(commands_.CanDrop({.item = Item(QStringLiteral("Backup"))}));
  Display(QStringLiteral("Workspace"));
  EXPECT_FALSE(commands_.CanDrop({}));
  EXPECT_FALSE(commands_.CanDrop({.item = Item(QStringLiteral("My Computer"))}));
  EXPECT_TRUE(commands_.CanDrop({.item = Item(QStringLiteral("Cell"))}));
  Select({QStringLiteral("Cell")});
  EXPECT_FALSE(commands_.BeginDrag(nullptr));
  session_.gIxoCtrls().Remove(QStringLiteral("Cell"));
  EXPECT_FALSE(commands_.CanDrop({.node = Node(QStringLiteral("Workspace\\Cell"))}));
}

TEST_F(FileCommandsTest, FoldersNotFoundOnDisplayLoseTheirNode) {
  Display(Local(QStringLiteral("Programs")));
  Display(Local(QStringLiteral("Programs\\Cell1")));
  Display(Local());
  memory_->Vanish(QStringLiteral("C:\\Programs"));
  prompts_.AnswerAllBoxes(PromptAnswer::Ok);
  Display(Local(QStringLiteral("Programs\\Cell1")));
  ASSERT_EQ(prompts_.Asked().size(), 1U);
  EXPECT_TRUE(prompts_.Asked()[0].text.contains(QStringLiteral("Programs")))
      << prompts_.Asked()[0].text.toStdString();
  ExpectPlace(Local());
  EXPECT_EQ(Node(Local(QStringLiteral("Programs"))), nullptr);
}

TEST_F(FileCommandsTest, AfterATimeOutOrARefusalTheNodeStays) {
  for (const qint32 number : {error::kTimeOut, error::kAccessDenied}) {
    Display(Local());
    faulty_->SetHook([number](const FileSystemCall& call) {
      if (call.path.endsWith(u"Backup")) {
        throw RunTimeError(number, QStringLiteral("no answer"));
      }
    });
    prompts_.ExpectBox(QStringLiteral("no answer"));
    Display(Local(QStringLiteral("Backup")));
    ExpectPlace(Local(QStringLiteral("Backup")));
    faulty_->SetHook({});
  }
}

TEST_F(FileCommandsTest, OpeningAFileRunsItAndAFailureToStartIsSaid) {
  commands_.OpenItem(Item(QStringLiteral("readme.txt")));
  EXPECT_EQ(memory_->CallCount(FileSystemOperation::Execute), 1);
  memory_->Vanish(QStringLiteral("C:\\readme.txt"));
  prompts_.ExpectBox(QStringLiteral("Failed in the Run() method."));
  commands_.OpenItem(Item(QStringLiteral("readme.txt")));
  faulty_->SetHook([](const FileSystemCall& call) {
    if (call.operation == FileSystemOperation::Execute) {
      throw RunTimeError(error::kNotSupported, QStringLiteral("no program"));
    }
  });
  prompts_.ExpectBox(QStringLiteral("Failed in the Run() method."));
  commands_.OpenItem(Item(QStringLiteral("data.txt")));
  EXPECT_EQ(prompts_.Asked().back().icon, PromptIcon::Exclamation);
  EXPECT_EQ(prompts_.Asked().back().informativeText, QStringLiteral("data.txt\nno program"));
  EXPECT_EQ(host_.reasons.back(), QStringLiteral("no program"));
  ExpectPlace(Local());
}

TEST_F(FileCommandsTest, OpeningAContainerSelectsItsFirstItem) {
  Display(QStringLiteral("Workspace"));
  for (const QString& text :
       {QStringLiteral("My Computer"), QStringLiteral("C:"), QStringLiteral("Programs")}) {
    commands_.OpenItem(Item(text));
    ASSERT_EQ(listView_.SelectedItems().size(), 1U);
    EXPECT_EQ(list_.IndexOf(listView_.SelectedItems().front()).row(), 0);
  }
  ExpectPlace(Local(QStringLiteral("Programs")));
  Display(QStringLiteral("Workspace"));
  commands_.OpenItem(Item(QStringLiteral("Cell")));
  ExpectPlace(QStringLiteral("Workspace\\Cell"));
  EXPECT_EQ(memory_->CallCount(FileSystemOperation::Execute), 0);
}

TEST_F(FileCommandsTest, OpeningTellsFoldersThatDifferInCaseApart) {
  memory_->AddFile(QStringLiteral("C:\\Case\\data.txt"), "upper");
  memory_->SetAttributes(QStringLiteral("C:\\Case"), 0x2);
  Display(Local());
  memory_->AddFile(QStringLiteral("C:\\case\\data.txt"), "lower");
  Display(Local());
  ASSERT_EQ(Node(Local(QStringLiteral("case")))->Text(), QStringLiteral("Case"))
      << "the tree knew that one first";
  commands_.OpenItem(Item(QStringLiteral("case")));
  ExpectPlace(Local(QStringLiteral("case")));
  prompts_.ExpectChoice(QStringLiteral("'data.txt' Do you want to Remove it?"), 0);
  Execute(CommandId::Delete);
  EXPECT_FALSE(memory_->Exists(QStringLiteral("C:\\case\\data.txt")));
  EXPECT_TRUE(memory_->Exists(QStringLiteral("C:\\Case\\data.txt")));
}

TEST_F(FileCommandsTest, PasteLeavesTheNodeOfAnotherCaseAlone) {
  memory_->AddFolder(QStringLiteral("C:\\Case\\Sub"));
  memory_->SetAttributes(QStringLiteral("C:\\Case"), 0x2);
  Display(Local());
  Display(Local(QStringLiteral("Case")));
  memory_->AddFolder(QStringLiteral("C:\\case"));
  Display(Local());
  Select({QStringLiteral("Backup")});
  Execute(CommandId::Copy);
  Select({QStringLiteral("case")});
  Execute(CommandId::Paste);
  EXPECT_TRUE(memory_->Exists(QStringLiteral("C:\\case\\Backup")));
  ASSERT_NE(Node(Local(QStringLiteral("Case"))), nullptr);
  EXPECT_EQ(Node(Local(QStringLiteral("Case\\Backup"))), nullptr);
}

TEST_F(FileCommandsTest, OpeningNothingDoesNothing) {
  commands_.OpenItem(FileListModel::kNoItem);
  ExpectPlace(Local());
}

TEST_F(FileCommandsTest, RunStartsAllSelectedFilesInListOrder) {
  Select({QStringLiteral("readme.txt"), QStringLiteral("data.txt")});
  Execute(CommandId::Run);
  QStringList run;
  for (const FileSystemCall& call : memory_->Calls()) {
    if (call.operation == FileSystemOperation::Execute) {
      run += call.path;
    }
  }
  EXPECT_EQ(run, (QStringList{QStringLiteral("C:\\data.txt"), QStringLiteral("C:\\readme.txt")}));
}

TEST_F(FileCommandsTest, RunStopsInSilenceAtAFileThatIsGone) {
  Select({QStringLiteral("data.txt"), QStringLiteral("readme.txt")});
  memory_->Vanish(QStringLiteral("C:\\data.txt"));
  Execute(CommandId::Run);
  EXPECT_EQ(memory_->CallCount(FileSystemOperation::Execute), 0);
}

TEST_F(FileCommandsTest, RunInTheTreeRunsTheCurrentNode) {
  Display(Local(QStringLiteral("Programs")));
  active_ = ActiveSide::Tree;
  Execute(CommandId::Run);
  EXPECT_EQ(memory_->CallCount(FileSystemOperation::Execute), 1);
  faulty_->SetHook([](const FileSystemCall& call) {
    if (call.path.endsWith(u"Programs")) {
      throw RunTimeError(error::kTimeOut, QStringLiteral("The controller does not answer."));
    }
  });
  prompts_.ExpectBox(QStringLiteral("The controller does not answer."));
  Execute(CommandId::Run);
  EXPECT_EQ(memory_->CallCount(FileSystemOperation::Execute), 1);
}

}  // namespace
}  // namespace trevane::test

#include "engine/providers/memory/MemoryFileSystem.h"
#include "tests/support/FaultyFileSystem.h"
#include "tests/support/SessionWorld.h"
#include "tests/support/ViewsWorld.h"
#include "views/addresses/NodeTags.h"
#include "views/navigation/NavigatorListener.h"

#include <gtest/gtest.h>

#include <functional>

namespace trevane::test {
namespace {

using namespace Qt::StringLiterals;

/// Stands for the main window.
class RecordingListener final : public NavigatorListener {
 public:
  void ShowStatus(const QString& text) override { status = text; }
  void ShowAddress(const QString& text) override { address = text; }
  void ShowCurrentNode(FolderNode& node) override { selected = node.FullPath(); }
  void UpdateCommandStates(qint32 newTag, bool newEntry) override {
    tag = newTag;
    entry = newEntry;
  }
  void EnableDisconnect(bool enabled) override { disconnect = enabled; }
  bool IsFilteredOut(const QString& fileName) override { return filter && filter(fileName); }
  void LetEventsRun() override {
    ++turns;
    if (onEvents)
      onEvents();
  }
  void DisplayEnded() override { ++ended; }

  QString status;
  QString address;
  QString selected;
  qint32 tag = -1;
  bool entry = true;
  bool disconnect = false;
  int turns = 0;
  int ended = 0;
  std::function<bool(const QString&)> filter;
  std::function<void()> onEvents;
};

class NavigatorTest : public testing::Test {
 protected:
  NavigatorTest() {
    volumes_.Set({{u"A:"_s, u"/a/"_s, drivetype::kRemovable},
                  {u"C:"_s, u"/c/"_s, drivetype::kFixed},
                  {u"D:"_s, u"/d/"_s, drivetype::kCdrom}});
    memory_->AddFolder(u"C:\\Programs\\Cell1"_s);
    memory_->AddFolder(u"C:\\Backup"_s);
    memory_->AddFile(u"C:\\readme.txt"_s, "12345");
    memory_->AddFolder(u"A:\\Floppy"_s);
    shellIcons_.Know(u".TXT"_s, u"Text Document"_s);
    world_.Open({ProviderOf(u"IxoProv.LocalFile"_s, faulty_), ProviderOf(u"IxoProv.Cell"_s, cell_)});
  }

  void Register(const QString& name, const QString& provider, const QString& root = {}) {
    world_.Register(name, provider, root);
  }

  FolderNode& Node(const QString& address) {
    FolderNode* node = tree_.FindByKey(address);
    EXPECT_NE(node, nullptr) << address.toStdString();
    return *node;
  }

  bool HasNode(const QString& address) { return tree_.FindByKey(address) != nullptr; }

  void Display(const QString& address) { navigator_.DisplayNode(Node(address)); }

  QStringList ListTexts() { return views_.ListTexts(); }

  QStringList ChildTexts(const QString& address) {
    QStringList texts;
    for (const FolderNode* child : Node(address).Children())
      texts += child->Text();
    return texts;
  }

  FileListModel::Handle Item(const QString& text) {
    const auto item = list_.FindByText(text);
    EXPECT_NE(item, FileListModel::kNoItem) << text.toStdString();
    return item;
  }

  /// Everybody names the same place.
  void ExpectPlace(const QString& address) {
    EXPECT_EQ(navigator_.CurrentAddress().toStdString(), address.toStdString());
    EXPECT_EQ(listener_.address.toStdString(), address.toStdString());
    EXPECT_EQ(listener_.selected.toStdString(), address.toStdString());
    ASSERT_NE(navigator_.CurrentNode(), nullptr);
    EXPECT_EQ(navigator_.CurrentNode()->FullPath().toStdString(), address.toStdString());
  }

  void AddFiles(const QString& folder, int count) {
    for (int i = 0; i < count; ++i)
      memory_->AddFile(folder + u"\\file%1.dat"_s.arg(i, 4, 10, QChar(u'0')), "x");
  }

  SessionWorld world_;
  FakeVolumes& volumes_ = world_.volumes;
  ScriptedPrompts& prompts_ = world_.prompts;
  EngineSession& session_ = world_.session;
  DriveTable& drives_ = world_.drives;
  std::shared_ptr<MemoryFileSystem> memory_ =
      std::make_shared<MemoryFileSystem>(MemoryFileSystemOptions{.drives = {u"A:"_s, u"C:"_s, u"D:"_s}});
  std::shared_ptr<FaultyFileSystem> faulty_ = std::make_shared<FaultyFileSystem>(memory_);
  std::shared_ptr<MemoryFileSystem> cell_ = std::make_shared<MemoryFileSystem>();
  RecordingListener listener_;
  ViewsWorld views_{world_, listener_};
  FileTypes& fileTypes_ = views_.fileTypes;
  FolderTreeModel& tree_ = views_.tree;
  FileListModel& list_ = views_.list;
  Navigator& navigator_ = views_.navigator;
  FakeShellIcons& shellIcons_ = views_.shellIcons;
};

TEST_F(NavigatorTest, TheTreeStartsWithWorkspaceAndMyComputer) {
  navigator_.Builder().RebuildTree();
  EXPECT_EQ(tree_.FindByIndex(1)->Text(), u"Workspace"_s);
  EXPECT_EQ(tree_.FindByIndex(1)->Tag(), 0x400000);
  EXPECT_EQ(tree_.FindByIndex(2)->Text(), u"My Computer"_s);
  EXPECT_EQ(tree_.FindByIndex(2)->Tag(), 0x280000);
  EXPECT_EQ(tree_.FindByIndex(2)->Parent(), tree_.FindByIndex(1));
  EXPECT_EQ(ChildTexts(u"Workspace\\My Computer"_s), (QStringList{u"A:"_s, u"C:"_s, u"D:"_s}));
}

TEST_F(NavigatorTest, AFixedDiskShowsItsFirstLevelAtOnceAndAFloppyOrCdRomNone) {
  navigator_.Builder().RebuildTree();
  EXPECT_EQ(ChildTexts(u"Workspace\\My Computer\\C:"_s), (QStringList{u"Backup"_s, u"Programs"_s}));
  EXPECT_TRUE(ChildTexts(u"Workspace\\My Computer\\A:"_s).isEmpty());
  Display(u"Workspace\\My Computer\\A:"_s);
  EXPECT_EQ(ChildTexts(u"Workspace\\My Computer\\A:"_s), QStringList{u"Floppy"_s});
}

TEST_F(NavigatorTest, ADriveNodeHasItsKindBitAndItsListItemHasNot) {
  navigator_.Builder().RebuildTree();
  EXPECT_EQ(Node(u"Workspace\\My Computer\\C:"_s).Tag(), 0x44000);
  EXPECT_EQ(Node(u"Workspace\\My Computer\\D:"_s).Tag(), 0x50000);
  Display(u"Workspace\\My Computer"_s);
  EXPECT_EQ(list_.Tag(Item(u"D:"_s)), 0x40000);
  EXPECT_EQ(list_.ImageKey(Item(u"D:"_s)), u"CDROM"_s);
}

TEST_F(NavigatorTest, ADriveOfTypeOneGetsNoNodeAndKeepsAnEmptyImageKey) {
  volumes_.Set({{u"A:"_s, u"/a/"_s, drivetype::kNoRoot}, {u"C:"_s, u"/c/"_s, drivetype::kFixed}});
  navigator_.Builder().RebuildTree();
  EXPECT_EQ(ChildTexts(u"Workspace\\My Computer"_s), QStringList{u"C:"_s});
  EXPECT_EQ(drives_.Drives()[0].ImageKey, QString());
  EXPECT_EQ(drives_.Drives()[1].NodeIndex, Node(u"Workspace\\My Computer\\C:"_s).Index());
}

TEST_F(NavigatorTest, ADriveThatCannotBeReadStaysEmptyAndTheNextAreStillAdded) {
  volumes_.Set({{u"A:"_s, u"/a/"_s, drivetype::kFixed}, {u"C:"_s, u"/c/"_s, drivetype::kFixed}});
  faulty_->SetHook([](const FileSystemCall& call) {
    if (call.operation == FileSystemOperation::List && call.path == u"A:"_s)
      throw RunTimeError(error::kAccessDenied, u"Access is denied: A:"_s);
  });
  navigator_.Builder().RebuildTree();
  EXPECT_TRUE(ChildTexts(u"Workspace\\My Computer\\A:"_s).isEmpty());
  EXPECT_EQ(ChildTexts(u"Workspace\\My Computer\\C:"_s).size(), 2);
}

TEST_F(NavigatorTest, AHiddenFolderAppearsInTheTreeAndAHiddenSystemOneNever) {
  memory_->AddFolder(u"C:\\hidden"_s);
  memory_->SetAttributes(u"C:\\hidden"_s, 0x2);
  memory_->AddFolder(u"C:\\secret"_s);
  memory_->SetAttributes(u"C:\\secret"_s, 0x6);
  navigator_.Builder().RebuildTree();
  EXPECT_TRUE(HasNode(u"Workspace\\My Computer\\C:\\hidden"_s));
  EXPECT_FALSE(HasNode(u"Workspace\\My Computer\\C:\\secret"_s));
  Display(u"Workspace\\My Computer\\C:"_s);
  EXPECT_FALSE(HasNode(u"Workspace\\My Computer\\C:\\secret"_s));
  EXPECT_EQ(ListTexts().indexOf(u"hidden"_s), -1);
  EXPECT_EQ(ListTexts().indexOf(u"secret"_s), -1);
}

TEST_F(NavigatorTest, AHiddenFileAndASystemFileAreNeverListed) {
  memory_->AddFile(u"C:\\Backup\\hidden"_s);
  memory_->SetAttributes(u"C:\\Backup\\hidden"_s, 0x2);
  memory_->AddFile(u"C:\\Backup\\system"_s);
  memory_->SetAttributes(u"C:\\Backup\\system"_s, 0x4);
  memory_->AddFile(u"C:\\Backup\\plain"_s);
  navigator_.Builder().RebuildTree();
  Display(u"Workspace\\My Computer\\C:\\Backup"_s);
  EXPECT_EQ(ListTexts(), QStringList{u"plain"_s});
}

TEST_F(NavigatorTest, DisplayingAFolderShowsItsEntriesWithTheirDetails) {
  navigator_.Builder().RebuildTree();
  Display(u"Workspace\\My Computer\\C:"_s);
  ExpectPlace(u"Workspace\\My Computer\\C:"_s);
  EXPECT_EQ(listener_.status, u"Selected C:"_s);
  const auto file = Item(u"readme.txt"_s);
  EXPECT_EQ(list_.Key(file), u"@readme.txt"_s);
  EXPECT_EQ(list_.ColumnText(file, FileColumn::Size), u"         5"_s);
  EXPECT_EQ(list_.ColumnText(file, FileColumn::Type), u"Text Document"_s);
  EXPECT_EQ(list_.ColumnText(file, FileColumn::Attributes), u"A"_s);
  EXPECT_FALSE(list_.ColumnText(file, FileColumn::Modified).isEmpty());
  const auto folder = Item(u"Backup"_s);
  EXPECT_EQ(list_.ColumnText(folder, FileColumn::Size), QString());
  EXPECT_EQ(list_.ColumnText(folder, FileColumn::Type), u"File folder"_s);
  EXPECT_EQ(list_.Tag(folder), 0x10);
}

TEST_F(NavigatorTest, DisplayingAFolderCostsOneListingAndNoCallAnEntry) {
  AddFiles(u"C:\\Backup"_s, 200);
  navigator_.Builder().RebuildTree();
  const auto calls = [&](int files) {
    faulty_->ClearCalls();
    Display(u"Workspace\\My Computer\\C:\\Backup"_s);
    EXPECT_EQ(list_.Count(), files);
    return faulty_->CallCount();
  };
  const int few = calls(200);
  for (int i = 0; i < 300; ++i)
    memory_->AddFile(u"C:\\Backup\\more%1"_s.arg(i));
  EXPECT_EQ(calls(500), few);
}

TEST_F(NavigatorTest, TheTreeGrowsOneLevelAndDisplayingTwiceAddsNoDuplicates) {
  memory_->AddFolder(u"C:\\Programs\\Cell2\\deep"_s);
  navigator_.Builder().RebuildTree();
  EXPECT_TRUE(ChildTexts(u"Workspace\\My Computer\\C:\\Programs"_s).isEmpty());
  Display(u"Workspace\\My Computer\\C:\\Programs"_s);
  EXPECT_EQ(ChildTexts(u"Workspace\\My Computer\\C:\\Programs"_s), (QStringList{u"Cell1"_s, u"Cell2"_s}));
  Display(u"Workspace\\My Computer\\C:\\Programs"_s);
  EXPECT_EQ(ChildTexts(u"Workspace\\My Computer\\C:\\Programs"_s).size(), 2);
  EXPECT_FALSE(HasNode(u"Workspace\\My Computer\\C:\\Programs\\Cell2\\deep"_s));
}

TEST_F(NavigatorTest, DisplayingMyComputerCollapsesTheLocalBranchAndFollowsTheDrives) {
  navigator_.Builder().RebuildTree();
  Display(u"Workspace\\My Computer\\C:\\Programs"_s);
  volumes_.SetNext({{u"C:"_s, u"/c/"_s, drivetype::kFixed}, {u"E:"_s, u"/e/"_s, drivetype::kRemote}});
  Display(u"Workspace\\My Computer"_s);
  EXPECT_EQ(ChildTexts(u"Workspace\\My Computer"_s), (QStringList{u"C:"_s, u"E:"_s}));
  EXPECT_EQ(ListTexts(), (QStringList{u"C:"_s, u"E:"_s}));
  EXPECT_EQ(ChildTexts(u"Workspace\\My Computer\\C:"_s).size(), 2);
  EXPECT_FALSE(HasNode(u"Workspace\\My Computer\\C:\\Programs\\Cell1"_s));
  ExpectPlace(u"Workspace\\My Computer"_s);
}

TEST_F(NavigatorTest, TheWorkspaceListShowsMyComputerInsteadOfTheLocalController) {
  Register(u"Cell7"_s, u"IxoProv.Cell"_s);
  navigator_.Builder().RebuildTree();
  Display(u"Workspace"_s);
  EXPECT_EQ(ListTexts(), (QStringList{u"My Computer"_s, u"Cell7"_s}));
  EXPECT_EQ(list_.Tag(Item(u"My Computer"_s)), 0x280000);
  EXPECT_EQ(list_.Tag(Item(u"Cell7"_s)), 0x300000);
  EXPECT_EQ(list_.ImageKey(Item(u"Cell7"_s)), u"CONTROLLER"_s);
  EXPECT_FALSE(listener_.disconnect);
  ExpectPlace(u"Workspace"_s);
}

TEST_F(NavigatorTest, EntriesOnAControllerCarryItsBit) {
  cell_->AddFolder(u"prog"_s);
  cell_->AddFile(u"main.pac"_s);
  Register(u"Cell7"_s, u"IxoProv.Cell"_s, u"/"_s);
  navigator_.Builder().RebuildTree();
  tree_.AddTreeNode(tree_.FindByIndex(1), u"CONTROLLER"_s, u"Cell7"_s, kControllerTag);
  Display(u"Workspace\\Cell7"_s);
  EXPECT_EQ(list_.Tag(Item(u"prog"_s)), 0x100010);
  EXPECT_EQ(list_.Tag(Item(u"main.pac"_s)), 0x100020);
  EXPECT_EQ(Node(u"Workspace\\Cell7\\prog"_s).Tag(), 0x100010);
  EXPECT_TRUE(listener_.disconnect);
  Display(u"Workspace\\Cell7\\prog"_s);
  EXPECT_FALSE(listener_.disconnect);
}

TEST_F(NavigatorTest, AFolderOfExactlyFortyEntriesShowsTheGaugeAndOneOfThirtyNineDoesNot) {
  memory_->AddFolder(u"C:\\many"_s);
  AddFiles(u"C:\\many"_s, 38);
  memory_->AddFile(u"C:\\many\\skipped"_s);
  memory_->SetAttributes(u"C:\\many\\skipped"_s, 0x2);
  navigator_.Builder().RebuildTree();
  Display(u"Workspace\\My Computer\\C:\\many"_s);
  EXPECT_TRUE(prompts_.RecordedGauge().Captions().isEmpty());
  EXPECT_EQ(listener_.turns, 0);
  // The fortieth counts although it is skipped.
  memory_->AddFile(u"C:\\many\\skipped2"_s);
  memory_->SetAttributes(u"C:\\many\\skipped2"_s, 0x4);
  qint32 maximum = 0;
  prompts_.RecordedGauge().onIncrement = [&] { maximum = prompts_.RecordedGauge().GageMax(); };
  Display(u"Workspace\\My Computer\\C:\\many"_s);
  EXPECT_EQ(maximum, 41);
  EXPECT_EQ(prompts_.RecordedGauge().Captions(), QStringList{u"Display Folder:many"_s});
  EXPECT_EQ(prompts_.RecordedGauge().Labels().size(), 40);
  EXPECT_EQ(prompts_.RecordedGauge().Labels().front(), u"Display file0000.dat"_s);
  EXPECT_EQ(listener_.turns, 40);
  EXPECT_FALSE(prompts_.RecordedGauge().IsLoaded());
}

TEST_F(NavigatorTest, TheGaugesCancelEndsTheListingWithWhatThereIs) {
  memory_->AddFolder(u"C:\\many"_s);
  AddFiles(u"C:\\many"_s, 60);
  navigator_.Builder().RebuildTree();
  prompts_.RecordedGauge().CancelAtIncrement(10);
  Display(u"Workspace\\My Computer\\C:\\many"_s);
  EXPECT_EQ(list_.rowCount(), 10);
  ExpectPlace(u"Workspace\\My Computer\\C:\\many"_s);
  EXPECT_FALSE(prompts_.RecordedGauge().IsLoaded());
}

TEST_F(NavigatorTest, AClickOnAnotherNodeEndsTheListingAndShowsTheNewNode) {
  memory_->AddFolder(u"C:\\many"_s);
  AddFiles(u"C:\\many"_s, 60);
  navigator_.Builder().RebuildTree();
  int depth = 0;
  listener_.onEvents = [&] {
    ASSERT_EQ(++depth, 1) << "a listing inside a listing";
    if (listener_.turns == 5)
      Display(u"Workspace\\My Computer\\C:\\Programs"_s);
    --depth;
  };
  Display(u"Workspace\\My Computer\\C:\\many"_s);
  EXPECT_EQ(listener_.turns, 5);
  ExpectPlace(u"Workspace\\My Computer\\C:\\Programs"_s);
  EXPECT_EQ(ListTexts(), QStringList{u"Cell1"_s});
  EXPECT_EQ(listener_.ended, 1);
  EXPECT_FALSE(navigator_.IsDisplaying());
}

TEST_F(NavigatorTest, AClickOnMyComputerDuringAListingIsSafe) {
  memory_->AddFolder(u"C:\\many"_s);
  AddFiles(u"C:\\many"_s, 60);
  navigator_.Builder().RebuildTree();
  listener_.onEvents = [&] {
    if (listener_.turns == 5)
      Display(u"Workspace\\My Computer"_s);
  };
  Display(u"Workspace\\My Computer\\C:\\many"_s);
  ExpectPlace(u"Workspace\\My Computer"_s);
  EXPECT_EQ(list_.Count(), 3);
}

TEST_F(NavigatorTest, CancelDisplayEndsTheListing) {
  memory_->AddFolder(u"C:\\many"_s);
  AddFiles(u"C:\\many"_s, 60);
  navigator_.Builder().RebuildTree();
  listener_.onEvents = [&] {
    if (listener_.turns == 7)
      navigator_.CancelDisplay();
  };
  Display(u"Workspace\\My Computer\\C:\\many"_s);
  EXPECT_EQ(listener_.turns, 7);
  EXPECT_EQ(listener_.ended, 1);
}

TEST_F(NavigatorTest, ADriveThatIsNotReadyAsksForADiskAndRetries) {
  navigator_.Builder().RebuildTree();
  int reads = 0;
  faulty_->SetHook([&](const FileSystemCall& call) {
    if (call.operation == FileSystemOperation::List && call.path == u"A:"_s && ++reads <= 2)
      throw RunTimeError(error::kDeviceNotReady, u"The device is not ready: A:"_s);
  });
  prompts_.ExpectBox(u"Place a disk in your drive(A:)."_s, PromptAnswer::Retry);
  prompts_.ExpectBox(u"Place a disk in your drive(A:)."_s, PromptAnswer::Retry);
  Display(u"Workspace\\My Computer\\A:"_s);
  EXPECT_EQ(ListTexts(), QStringList{u"Floppy"_s});
  EXPECT_EQ(prompts_.Asked().front().buttons, PromptButtons::RetryCancel);
  EXPECT_EQ(prompts_.Asked().front().icon, PromptIcon::Exclamation);
  EXPECT_EQ(prompts_.Asked().front().informativeText, u"A:\nThe device is not ready: A:"_s);
}

TEST_F(NavigatorTest, CancelAtTheDiskQuestionEndsTheDisplayWithAnEmptyList) {
  navigator_.Builder().RebuildTree();
  Display(u"Workspace\\My Computer\\C:"_s);
  faulty_->SetHook([&](const FileSystemCall& call) {
    if (call.operation == FileSystemOperation::List && call.path == u"A:"_s)
      throw RunTimeError(error::kDeviceNotReady, u"The device is not ready: A:"_s);
  });
  prompts_.ExpectBox(PromptAnswer::Cancel);
  Display(u"Workspace\\My Computer\\A:"_s);
  EXPECT_EQ(list_.rowCount(), 0);
  ExpectPlace(u"Workspace\\My Computer\\A:"_s);
}

TEST_F(NavigatorTest, AFolderThatCannotBeReadGivesTheEnginesTextAndAUsableWindow) {
  navigator_.Builder().RebuildTree();
  faulty_->SetHook([&](const FileSystemCall& call) {
    if (call.operation == FileSystemOperation::List && call.path == u"C:\\Backup"_s)
      throw RunTimeError(error::kAccessDenied, u"Access is denied: C:\\Backup"_s);
  });
  prompts_.ExpectBox(u"Access is denied: C:\\Backup"_s);
  Display(u"Workspace\\My Computer\\C:\\Backup"_s);
  EXPECT_EQ(prompts_.Asked().front().icon, PromptIcon::Exclamation);
  EXPECT_EQ(list_.rowCount(), 0);
  ExpectPlace(u"Workspace\\My Computer\\C:\\Backup"_s);
  Display(u"Workspace\\My Computer\\C:"_s);
  EXPECT_EQ(list_.rowCount(), 3);
}

TEST_F(NavigatorTest, AFolderThatIsGoneGivesAMessageLosesItsNodeAndTheNearestOneIsDisplayed) {
  navigator_.Builder().RebuildTree();
  memory_->Vanish(u"C:\\Backup"_s);
  prompts_.ExpectBox();
  Display(u"Workspace\\My Computer\\C:\\Backup"_s);
  EXPECT_FALSE(prompts_.Asked().front().text.isEmpty());
  EXPECT_FALSE(HasNode(u"Workspace\\My Computer\\C:\\Backup"_s));
  ExpectPlace(u"Workspace\\My Computer\\C:"_s);
  EXPECT_EQ(ListTexts(), (QStringList{u"Programs"_s, u"readme.txt"_s}));
}

TEST_F(NavigatorTest, AFolderThatIsNoFolderAnyMoreGivesAMessage) {
  navigator_.Builder().RebuildTree();
  memory_->Vanish(u"C:\\Backup"_s);
  memory_->AddFile(u"C:\\Backup"_s, "a file now");
  prompts_.ExpectBox();
  Display(u"Workspace\\My Computer\\C:\\Backup"_s);
  EXPECT_FALSE(prompts_.Asked().front().text.isEmpty());
  EXPECT_EQ(list_.rowCount(), 0);
}

TEST_F(NavigatorTest, AFolderThatDoesNotAnswerInTimeKeepsItsNode) {
  navigator_.Builder().RebuildTree();
  faulty_->SetHook([&](const FileSystemCall& call) {
    if (call.path.endsWith(u"Backup"))
      throw RunTimeError(error::kTimeOut, u"The time limit was exceeded"_s);
  });
  prompts_.ExpectBox(u"The time limit was exceeded"_s);
  Display(u"Workspace\\My Computer\\C:\\Backup"_s);
  EXPECT_TRUE(HasNode(u"Workspace\\My Computer\\C:\\Backup"_s));
  ExpectPlace(u"Workspace\\My Computer\\C:\\Backup"_s);
}

TEST_F(NavigatorTest, AClickOnANodeThatGoesListsTheCurrentPlaceAgainWhole) {
  memory_->AddFolder(u"C:\\many"_s);
  AddFiles(u"C:\\many"_s, 60);
  navigator_.Builder().RebuildTree();
  listener_.onEvents = [&] {
    if (listener_.turns != 5)
      return;
    Display(u"Workspace\\My Computer\\C:\\Programs"_s);
    tree_.RemoveNode(&Node(u"Workspace\\My Computer\\C:\\Programs"_s));
  };
  Display(u"Workspace\\My Computer\\C:\\many"_s);
  ExpectPlace(u"Workspace\\My Computer\\C:\\many"_s);
  EXPECT_EQ(list_.rowCount(), 60);
}

TEST_F(NavigatorTest, OfTwoNamesThatDifferInCaseOnlyTheSecondIsReported) {
  memory_->AddFile(u"C:\\Backup\\Main.pac"_s);
  memory_->AddFile(u"C:\\Backup\\main.PAC"_s);
  memory_->AddFile(u"C:\\Backup\\other"_s);
  navigator_.Builder().RebuildTree();
  prompts_.ExpectBox();
  Display(u"Workspace\\My Computer\\C:\\Backup"_s);
  const QString second = list_.FindByText(u"main.pac"_s) != FileListModel::kNoItem &&
                                 list_.Text(Item(u"main.pac"_s)) == u"Main.pac"_s
                             ? u"main.PAC"_s
                             : u"Main.pac"_s;
  EXPECT_EQ(prompts_.Texts(), QStringList{u"Can't display "_s + second + u"."_s});
  EXPECT_EQ(prompts_.Asked()[0].informativeText,
            second + u"\nThe list has \"%1\" already."_s.arg(list_.Text(Item(u"main.pac"_s))));
  EXPECT_EQ(list_.rowCount(), 2);
}

TEST_F(NavigatorTest, TheGaugesCancelEndsTheBoxesOfNamesThatDifferInCase) {
  for (int i = 0; i < 50; ++i) {
    memory_->AddFile(u"C:\\Backup\\file%1"_s.arg(i));
    memory_->AddFile(u"C:\\Backup\\FILE%1"_s.arg(i));
  }
  navigator_.Builder().RebuildTree();
  prompts_.AnswerAllBoxes(PromptAnswer::Ok);
  int boxes = 0;
  prompts_.onQuestion = [&](const AskedQuestion&) {
    if (++boxes == 2)
      prompts_.RecordedGauge().ClickCancel();
  };
  Display(u"Workspace\\My Computer\\C:\\Backup"_s);
  EXPECT_EQ(boxes, 2);
}

TEST_F(NavigatorTest, AFolderThatHasGotAnotherCaseIsFollowed) {
  memory_->AddFile(u"C:\\Case\\upper.txt"_s);
  navigator_.Builder().RebuildTree();
  memory_->Vanish(u"C:\\Case"_s);
  memory_->AddFile(u"C:\\case\\lower.txt"_s);
  Display(u"Workspace\\My Computer\\C:\\Case"_s);
  EXPECT_EQ(navigator_.CurrentAddress(), u"Workspace\\My Computer\\C:\\case"_s);
  EXPECT_EQ(listener_.address, u"Workspace\\My Computer\\C:\\case"_s);
  EXPECT_EQ(listener_.status, u"Selected case"_s);
  EXPECT_EQ(ListTexts(), QStringList{u"lower.txt"_s});
}

TEST_F(NavigatorTest, AListingSpellsANodeAsTheFolderIsSpeltNow) {
  memory_->AddFolder(u"C:\\Case"_s);
  navigator_.Builder().RebuildTree();
  memory_->AddFolder(u"C:\\case"_s);
  memory_->SetAttributes(u"C:\\case"_s, 0x2);
  Display(u"Workspace\\My Computer\\C:"_s);
  EXPECT_EQ(Node(u"Workspace\\My Computer\\C:\\CASE"_s).Text(), u"Case"_s) << "both are there";
  memory_->Vanish(u"C:\\Case"_s);
  Display(u"Workspace\\My Computer\\C:"_s);
  EXPECT_EQ(Node(u"Workspace\\My Computer\\C:\\CASE"_s).Text(), u"case"_s);
}

TEST_F(NavigatorTest, TheFilterRejectsFilesAndNeverFolders) {
  navigator_.Builder().RebuildTree();
  listener_.filter = [](const QString&) { return true; };
  Display(u"Workspace\\My Computer\\C:"_s);
  EXPECT_EQ(ListTexts(), (QStringList{u"Backup"_s, u"Programs"_s}));
}

TEST_F(NavigatorTest, AFreshDisplayIsPlacedByTheCurrentSortState) {
  navigator_.Builder().RebuildTree();
  list_.SetSorting({.sorted = true, .key = 0, .descending = true});
  Display(u"Workspace\\My Computer\\C:"_s);
  EXPECT_EQ(ListTexts(), (QStringList{u"readme.txt"_s, u"Programs"_s, u"Backup"_s}));
}

TEST_F(NavigatorTest, HostileNamesAreListedAsTheyAre) {
  const QStringList names{u"%s%n"_s,
                          u"<b>bold<br>"_s,
                          u"  blanks  "_s,
                          u"quote\"quote"_s,
                          u"new\nline"_s,
                          u"\u65e5\u672c"_s,
                          QString(QChar(0xDCFF)) + u"x"_s,
                          u"&amp"_s,
                          QString(250, u'n')};
  for (const QString& name : names)
    memory_->AddFile(u"C:\\Backup\\"_s + name);
  navigator_.Builder().RebuildTree();
  Display(u"Workspace\\My Computer\\C:\\Backup"_s);
  for (const QString& name : names)
    EXPECT_NE(list_.FindByText(name), FileListModel::kNoItem) << name.toStdString();
}

/// Whatever call fails, the display ends with a message or all entries, the gauge is gone, and the next
/// display works.
TEST_F(NavigatorTest, EveryFailingCallLeavesAUsableWindow) {
  memory_->AddFolder(u"C:\\many"_s);
  AddFiles(u"C:\\many"_s, 45);
  prompts_.AnswerAllBoxes(PromptAnswer::Ok);
  for (const FaultSpan span : {FaultSpan::Once, FaultSpan::FromThenOn}) {
    for (int call = 1; call < 100; ++call) {
      faulty_->Disarm();
      navigator_.Builder().RebuildTree();
      prompts_.ForgetAsked();
      faulty_->Arm(call, span, error::kTimeOut);
      Display(u"Workspace\\My Computer\\C:\\many"_s);
      const bool failed = faulty_->FaultCount() > 0;
      faulty_->Disarm();
      EXPECT_FALSE(prompts_.RecordedGauge().IsLoaded());
      ExpectPlace(u"Workspace\\My Computer\\C:\\many"_s);
      EXPECT_EQ(prompts_.Asked().empty(), list_.rowCount() == 45) << "call " << call;
      Display(u"Workspace\\My Computer\\C:"_s);
      EXPECT_EQ(list_.rowCount(), 4);
      if (!failed)
        break;
      ASSERT_LT(call, 99) << "never ran without a failure";
    }
  }
}

}  // namespace
}  // namespace trevane::test

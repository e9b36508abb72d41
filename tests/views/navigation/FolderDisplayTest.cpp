#include "tests/views/navigation/NavigationFixture.h"

namespace trevane::test {
namespace {

class FolderDisplayTest : public NavigationFixture {};

TEST_F(FolderDisplayTest, HiddenFilesAndSystemFilesAreNotListed) {
  memory_->AddFile(QStringLiteral("C:\\Backup\\hidden"));
  memory_->SetAttributes(QStringLiteral("C:\\Backup\\hidden"), 0x2);
  memory_->AddFile(QStringLiteral("C:\\Backup\\system"));
  memory_->SetAttributes(QStringLiteral("C:\\Backup\\system"), 0x4);
  memory_->AddFile(QStringLiteral("C:\\Backup\\plain"));
  navigator_.Builder().RebuildTree();
  Display(QStringLiteral("Workspace\\My Computer\\C:\\Backup"));
  EXPECT_EQ(ListTexts(), QStringList{QStringLiteral("plain")});
}

TEST_F(FolderDisplayTest, EntriesAreListedWithTheirDetails) {
  navigator_.Builder().RebuildTree();
  Display(QStringLiteral("Workspace\\My Computer\\C:"));
  ExpectLocation(QStringLiteral("Workspace\\My Computer\\C:"));
  EXPECT_EQ(listener_.status, QStringLiteral("Selected C:"));
  const auto file = Item(QStringLiteral("readme.txt"));
  EXPECT_EQ(list_.Key(file), QStringLiteral("@readme.txt"));
  EXPECT_EQ(list_.ColumnText(file, FileColumn::Size), QStringLiteral("         5"));
  EXPECT_EQ(list_.ColumnText(file, FileColumn::Type), QStringLiteral("Text Document"));
  EXPECT_EQ(list_.ColumnText(file, FileColumn::Attributes), QStringLiteral("A"));
  EXPECT_FALSE(list_.ColumnText(file, FileColumn::Modified).isEmpty());
  const auto folder = Item(QStringLiteral("Backup"));
  EXPECT_EQ(list_.ColumnText(folder, FileColumn::Size), QString());
  EXPECT_EQ(list_.ColumnText(folder, FileColumn::Type), QStringLiteral("File folder"));
  EXPECT_EQ(list_.Tag(folder), 0x10);
}

TEST_F(FolderDisplayTest, AFolderCostsOneListingAndNoCallAnEntry) {
  AddFiles(QStringLiteral("C:\\Backup"), 200);
  navigator_.Builder().RebuildTree();
  const auto calls = [&](int files) {
    faulty_->ClearCalls();
    Display(QStringLiteral("Workspace\\My Computer\\C:\\Backup"));
    EXPECT_EQ(list_.Count(), files);
    return faulty_->CallCount();
  };
  const int few = calls(200);
  for (int i = 0; i < 300; ++i) {
    memory_->AddFile(QStringLiteral("C:\\Backup\\more%1").arg(i));
  }
  EXPECT_EQ(calls(500), few);
}

TEST_F(FolderDisplayTest, TheWorkspaceHasMyComputerAndControllers) {
  Register(QStringLiteral("Cell7"), QStringLiteral("IxoProv.Cell"));
  navigator_.Builder().RebuildTree();
  Display(QStringLiteral("Workspace"));
  EXPECT_EQ(ListTexts(), (QStringList{QStringLiteral("My Computer"), QStringLiteral("Cell7")}));
  EXPECT_EQ(list_.Tag(Item(QStringLiteral("My Computer"))), 0x280000);
  EXPECT_EQ(list_.Tag(Item(QStringLiteral("Cell7"))), 0x300000);
  EXPECT_EQ(list_.ImageKey(Item(QStringLiteral("Cell7"))), QStringLiteral("CONTROLLER"));
  EXPECT_FALSE(listener_.disconnect);
  ExpectLocation(QStringLiteral("Workspace"));
}

TEST_F(FolderDisplayTest, EntriesOnAControllerCarryItsBit) {
  cell_->AddFolder(QStringLiteral("prog"));
  cell_->AddFile(QStringLiteral("main.pac"));
  Register(QStringLiteral("Cell7"), QStringLiteral("IxoProv.Cell"), QStringLiteral("/"));
  navigator_.Builder().RebuildTree();
  tree_.AddTreeNode(tree_.FindByIndex(1), QStringLiteral("CONTROLLER"), QStringLiteral("Cell7"),
                    kControllerTag);
  Display(QStringLiteral("Workspace\\Cell7"));
  EXPECT_EQ(list_.Tag(Item(QStringLiteral("prog"))), 0x100010);
  EXPECT_EQ(list_.Tag(Item(QStringLiteral("main.pac"))), 0x100020);
  EXPECT_EQ(Node(QStringLiteral("Workspace\\Cell7\\prog")).Tag(), 0x100010);
  EXPECT_TRUE(listener_.disconnect);
  Display(QStringLiteral("Workspace\\Cell7\\prog"));
  EXPECT_FALSE(listener_.disconnect);
}

TEST_F(FolderDisplayTest, FortyEntriesShowTheGaugeAndThirtyNineDoNot) {
  memory_->AddFolder(QStringLiteral("C:\\many"));
  AddFiles(QStringLiteral("C:\\many"), 38);
  memory_->AddFile(QStringLiteral("C:\\many\\skipped"));
  memory_->SetAttributes(QStringLiteral("C:\\many\\skipped"), 0x2);
  navigator_.Builder().RebuildTree();
  Display(QStringLiteral("Workspace\\My Computer\\C:\\many"));
  EXPECT_TRUE(prompts_.RecordedGauge().Captions().isEmpty());
  EXPECT_EQ(listener_.turns, 0);
  // The fortieth counts although it is skipped.
  memory_->AddFile(QStringLiteral("C:\\many\\skipped2"));
  memory_->SetAttributes(QStringLiteral("C:\\many\\skipped2"), 0x4);
  qint32 maximum = 0;
  prompts_.RecordedGauge().onIncrement = [&] { maximum = prompts_.RecordedGauge().GageMax(); };
  Display(QStringLiteral("Workspace\\My Computer\\C:\\many"));
  EXPECT_EQ(maximum, 41);
  EXPECT_EQ(prompts_.RecordedGauge().Captions(), QStringList{QStringLiteral("Display Folder:many")});
  EXPECT_EQ(prompts_.RecordedGauge().Labels().size(), 40);
  EXPECT_EQ(prompts_.RecordedGauge().Labels().front(), QStringLiteral("Display file0000.dat"));
  EXPECT_EQ(listener_.turns, 40);
  EXPECT_FALSE(prompts_.RecordedGauge().IsLoaded());
}

TEST_F(FolderDisplayTest, CancelInTheGaugeKeepsTheItemsListedSoFar) {
  memory_->AddFolder(QStringLiteral("C:\\many"));
  AddFiles(QStringLiteral("C:\\many"), 60);
  navigator_.Builder().RebuildTree();
  prompts_.RecordedGauge().CancelAtIncrement(10);
  Display(QStringLiteral("Workspace\\My Computer\\C:\\many"));
  EXPECT_EQ(list_.rowCount(), 10);
  ExpectLocation(QStringLiteral("Workspace\\My Computer\\C:\\many"));
  EXPECT_FALSE(prompts_.RecordedGauge().IsLoaded());
}

TEST_F(FolderDisplayTest, ADriveThatIsNotReadyAsksForADiskAndRetries) {
  navigator_.Builder().RebuildTree();
  int reads = 0;
  faulty_->SetHook([&](const FileSystemCall& call) {
    if (call.operation == FileSystemOperation::List && call.path == QStringLiteral("A:") && ++reads <= 2) {
      throw RunTimeError(error::kDeviceNotReady, QStringLiteral("The device is not ready: A:"));
    }
  });
  prompts_.ExpectBox(QStringLiteral("Place a disk in your drive(A:)."), PromptAnswer::Retry);
  prompts_.ExpectBox(QStringLiteral("Place a disk in your drive(A:)."), PromptAnswer::Retry);
  Display(QStringLiteral("Workspace\\My Computer\\A:"));
  EXPECT_EQ(ListTexts(), QStringList{QStringLiteral("Floppy")});
  EXPECT_EQ(prompts_.Asked().front().buttons, PromptButtons::RetryCancel);
  EXPECT_EQ(prompts_.Asked().front().icon, PromptIcon::Exclamation);
  EXPECT_EQ(prompts_.Asked().front().informativeText, QStringLiteral("A:\nThe device is not ready: A:"));
}

TEST_F(FolderDisplayTest, CancelAtTheDiskQuestionLeavesTheListEmpty) {
  navigator_.Builder().RebuildTree();
  Display(QStringLiteral("Workspace\\My Computer\\C:"));
  faulty_->SetHook([&](const FileSystemCall& call) {
    if (call.operation == FileSystemOperation::List && call.path == QStringLiteral("A:")) {
      throw RunTimeError(error::kDeviceNotReady, QStringLiteral("The device is not ready: A:"));
    }
  });
  prompts_.ExpectBox(PromptAnswer::Cancel);
  Display(QStringLiteral("Workspace\\My Computer\\A:"));
  EXPECT_EQ(list_.rowCount(), 0);
  ExpectLocation(QStringLiteral("Workspace\\My Computer\\A:"));
}

TEST_F(FolderDisplayTest, AFolderThatCannotBeReadGivesTheEnginesText) {
  navigator_.Builder().RebuildTree();
  faulty_->SetHook([&](const FileSystemCall& call) {
    if (call.operation == FileSystemOperation::List && call.path == QStringLiteral("C:\\Backup")) {
      throw RunTimeError(error::kAccessDenied, QStringLiteral("Access is denied: C:\\Backup"));
    }
  });
  prompts_.ExpectBox(QStringLiteral("Access is denied: C:\\Backup"));
  Display(QStringLiteral("Workspace\\My Computer\\C:\\Backup"));
  EXPECT_EQ(prompts_.Asked().front().icon, PromptIcon::Exclamation);
  EXPECT_EQ(list_.rowCount(), 0);
  ExpectLocation(QStringLiteral("Workspace\\My Computer\\C:\\Backup"));
  Display(QStringLiteral("Workspace\\My Computer\\C:"));
  EXPECT_EQ(list_.rowCount(), 3);
}

TEST_F(FolderDisplayTest, OfTwoNamesThatDifferInCaseOneIsReported) {
  memory_->AddFile(QStringLiteral("C:\\Backup\\Main.pac"));
  memory_->AddFile(QStringLiteral("C:\\Backup\\main.PAC"));
  memory_->AddFile(QStringLiteral("C:\\Backup\\other"));
  navigator_.Builder().RebuildTree();
  prompts_.ExpectBox();
  Display(QStringLiteral("Workspace\\My Computer\\C:\\Backup"));
  const QString second = list_.FindByText(QStringLiteral("main.pac")) != FileListModel::kNoItem &&
                                 list_.Text(Item(QStringLiteral("main.pac"))) == QStringLiteral("Main.pac")
                             ? QStringLiteral("main.PAC")
                             : QStringLiteral("Main.pac");
  EXPECT_EQ(prompts_.Texts(), QStringList{QStringLiteral("Can't display ") + second + QStringLiteral(".")});
  EXPECT_EQ(
      prompts_.Asked()[0].informativeText,
      second +
          QStringLiteral("\nThe list has \"%1\" already.").arg(list_.Text(Item(QStringLiteral("main.pac")))));
  EXPECT_EQ(list_.rowCount(), 2);
}

TEST_F(FolderDisplayTest, CancelInTheGaugeEndsTheMessagesOfEntries) {
  for (int i = 0; i < 50; ++i) {
    memory_->AddFile(QStringLiteral("C:\\Backup\\file%1").arg(i));
    memory_->AddFile(QStringLiteral("C:\\Backup\\FILE%1").arg(i));
  }
  navigator_.Builder().RebuildTree();
  prompts_.AnswerAllBoxes(PromptAnswer::Ok);
  int boxes = 0;
  prompts_.onQuestion = [&](const AskedQuestion&) {
    if (++boxes == 2) {
      prompts_.RecordedGauge().ClickCancel();
    }
  };
  Display(QStringLiteral("Workspace\\My Computer\\C:\\Backup"));
  EXPECT_EQ(boxes, 2);
}

TEST_F(FolderDisplayTest, TheFilterRejectsFilesAndNeverFolders) {
  navigator_.Builder().RebuildTree();
  listener_.filter = [](const QString&) { return true; };
  Display(QStringLiteral("Workspace\\My Computer\\C:"));
  EXPECT_EQ(ListTexts(), (QStringList{QStringLiteral("Backup"), QStringLiteral("Programs")}));
}

TEST_F(FolderDisplayTest, AFreshDisplayFollowsTheSortState) {
  navigator_.Builder().RebuildTree();
  list_.SetSorting({.sorted = true, .key = 0, .descending = true});
  Display(QStringLiteral("Workspace\\My Computer\\C:"));
  EXPECT_EQ(ListTexts(), (QStringList{QStringLiteral("readme.txt"), QStringLiteral("Programs"),
                                      QStringLiteral("Backup")}));
}

TEST_F(FolderDisplayTest, HostileNamesAreListedAsTheyAre) {
  const QStringList names{QStringLiteral("%s%n"),
                          QStringLiteral("<b>bold<br>"),
                          QStringLiteral("  blanks  "),
                          QStringLiteral("quote\"quote"),
                          QStringLiteral("new\nline"),
                          QStringLiteral("\u65e5\u672c"),
                          QString(QChar(0xDCFF)) + QStringLiteral("x"),
                          QStringLiteral("&amp"),
                          QString(250, u'n')};
  for (const QString& name : names) {
    memory_->AddFile(QStringLiteral("C:\\Backup\\") + name);
  }
  navigator_.Builder().RebuildTree();
  Display(QStringLiteral("Workspace\\My Computer\\C:\\Backup"));
  for (const QString& name : names) {
    EXPECT_NE(list_.FindByText(name), FileListModel::kNoItem) << name.toStdString();
  }
}

TEST_F(FolderDisplayTest, ADisplayAsksAnewForWhatWasLearnt) {
  navigator_.Builder().RebuildTree();
  faulty_->ClearCalls();
  Display(QStringLiteral("Workspace\\My Computer\\C:\\Backup"));
  ASSERT_FALSE(faulty_->Calls().empty());
  EXPECT_EQ(faulty_->Calls().back().operation, FileSystemOperation::List);
  // Right before the listing.
  EXPECT_EQ(faulty_->ForgotAt(), faulty_->CallCount() - 1);
}

class BatchedDisplayTest : public FolderDisplayTest {
 protected:
  BatchedDisplayTest() {
    memory_->AddFolder(QStringLiteral("C:\\many"));
    navigator_.Builder().RebuildTree();
  }

  void DisplayMany() { Display(QStringLiteral("Workspace\\My Computer\\C:\\many")); }
  RecordingGauge& Gauge() { return prompts_.RecordedGauge(); }
};

TEST_F(BatchedDisplayTest, RowsAreSeenWhileTheFolderIsRead) {
  AddFiles(QStringLiteral("C:\\many"), 25);
  QList<int> rows;
  faulty_->SetBatches(10, [&](size_t) { rows.append(list_.rowCount()); });
  DisplayMany();
  ASSERT_EQ(rows.size(), 4);
  EXPECT_EQ(rows[0], 0);
  EXPECT_EQ(rows[1], 10);
  EXPECT_EQ(list_.rowCount(), 25);
  // Events run before the second batch and before the third, so that the rows are painted.
  EXPECT_EQ(listener_.turns, 2);
  EXPECT_TRUE(Gauge().Captions().isEmpty());
}

TEST_F(BatchedDisplayTest, TheGaugeShowsFromTheFortiethEntryRead) {
  AddFiles(QStringLiteral("C:\\many"), 65);
  QList<bool> shown;
  QList<qint32> maxima;
  faulty_->SetBatches(15, [&](size_t) {
    shown.append(Gauge().IsVisible());
    maxima.append(Gauge().IsVisible() ? Gauge().GageMax() : 0);
  });
  qint32 atTheLast = 0;
  Gauge().onIncrement = [&] { atTheLast = Gauge().GageMax(); };
  DisplayMany();
  EXPECT_EQ(shown, (QList<bool>{false, false, false, true, true, true}));
  EXPECT_EQ(maxima, (QList<qint32>{0, 0, 0, 46, 61, 66}));
  EXPECT_EQ(atTheLast, 66);
  EXPECT_EQ(Gauge().Captions(), QStringList{QStringLiteral("Display Folder:many")});
  EXPECT_EQ(Gauge().Labels().back(), QStringLiteral("Display file0064.dat"));
  EXPECT_FALSE(Gauge().IsLoaded());
}

TEST_F(BatchedDisplayTest, TheBarCountsTheEntriesReadBeforeTheGauge) {
  AddFiles(QStringLiteral("C:\\many"), 45);
  faulty_->SetBatches(15);
  int increments = 0;
  Gauge().onIncrement = [&] { ++increments; };
  DisplayMany();
  EXPECT_EQ(increments, 45);
}

TEST_F(BatchedDisplayTest, CancelEndsTheReading) {
  AddFiles(QStringLiteral("C:\\many"), 200);
  int batches = 0;
  faulty_->SetBatches(20, [&](size_t) { ++batches; });
  Gauge().CancelAtIncrement(45);
  DisplayMany();
  EXPECT_EQ(batches, 3);
  EXPECT_EQ(list_.rowCount(), 45);
  EXPECT_FALSE(Gauge().IsLoaded());
}

TEST_F(BatchedDisplayTest, ACancelledReadingKeepsItsRowsWithoutAMessage) {
  AddFiles(QStringLiteral("C:\\many"), 100);
  faulty_->SetBatches(10, [&](size_t given) {
    if (given == 50) {
      throw RunTimeError(error::kCancelled, QStringLiteral("Cancelled."));
    }
  });
  DisplayMany();
  EXPECT_EQ(list_.rowCount(), 50);
  EXPECT_FALSE(Gauge().IsLoaded());
  ExpectLocation(QStringLiteral("Workspace\\My Computer\\C:\\many"));
}

TEST_F(BatchedDisplayTest, AClickOnAnotherNodeEndsTheReading) {
  AddFiles(QStringLiteral("C:\\many"), 30);
  int batches = 0;
  faulty_->SetBatches(10, [&](size_t) { ++batches; });
  listener_.onEvents = [&] {
    listener_.onEvents = nullptr;
    Display(QStringLiteral("Workspace\\My Computer\\C:\\Programs"));
  };
  DisplayMany();
  // The second batch was refused, and the other folder has one and the end.
  EXPECT_EQ(batches, 4);
  EXPECT_EQ(ListTexts(), QStringList{QStringLiteral("Cell1")});
  ExpectLocation(QStringLiteral("Workspace\\My Computer\\C:\\Programs"));
}

TEST_F(BatchedDisplayTest, AFailureHalfWayKeepsTheRowsBeforeIt) {
  AddFiles(QStringLiteral("C:\\many"), 100);
  faulty_->SetBatches(10, [&](size_t given) {
    if (given == 60) {
      throw RunTimeError(error::kTimeOut, QStringLiteral("Nothing was heard."));
    }
  });
  prompts_.ExpectBox(QStringLiteral("Nothing was heard."));
  DisplayMany();
  EXPECT_EQ(list_.rowCount(), 60);
  EXPECT_FALSE(Gauge().IsLoaded());
}

TEST_F(BatchedDisplayTest, ADriveThatFailsHalfWayIsReadAnew) {
  AddFiles(QStringLiteral("C:\\many"), 50);
  bool failed = false;
  faulty_->SetBatches(10, [&](size_t given) {
    if (given == 20 && !failed) {
      failed = true;
      throw RunTimeError(error::kDeviceNotReady, QStringLiteral("The device is not ready."));
    }
  });
  prompts_.ExpectBox(QStringLiteral("Place a disk in your drive(many)."), PromptAnswer::Retry);
  DisplayMany();
  EXPECT_EQ(list_.rowCount(), 50);
}

TEST_F(BatchedDisplayTest, CancelHalfWayLeavesTheListEmpty) {
  for (const size_t failsAt : {20U, 45U}) {
    AddFiles(QStringLiteral("C:\\many"), 50);
    memory_->AddFolder(QStringLiteral("C:\\many\\aside"));
    faulty_->SetBatches(5, [&](size_t given) {
      if (given == failsAt) {
        throw RunTimeError(error::kDeviceNotReady, QStringLiteral("The device is not ready."));
      }
    });
    prompts_.onQuestion = [&](const AskedQuestion&) {
      EXPECT_FALSE(Gauge().IsLoaded());
      EXPECT_EQ(list_.rowCount(), 0);
    };
    prompts_.ExpectBox(QStringLiteral("Place a disk in your drive(many)."), PromptAnswer::Cancel);
    DisplayMany();
    EXPECT_EQ(list_.rowCount(), 0);
    EXPECT_FALSE(Gauge().IsLoaded());
    prompts_.onQuestion = {};
  }
}

TEST_F(BatchedDisplayTest, TwinsInTwoBatchesLeaveTheNodesName) {
  memory_->AddFolder(QStringLiteral("C:\\many\\alone"));
  memory_->AddFolder(QStringLiteral("C:\\many\\twin"));
  DisplayMany();
  memory_->Remove(QStringLiteral("C:\\many\\alone"));
  memory_->AddFolder(QStringLiteral("C:\\many\\ALONE"));
  memory_->AddFolder(QStringLiteral("C:\\many\\TWIN"));
  AddFiles(QStringLiteral("C:\\many"), 5);
  for (const size_t size : {1U, 2U, 100U}) {
    faulty_->SetBatches(size);
    prompts_.ExpectBox();
    DisplayMany();
    EXPECT_EQ(ChildTexts(QStringLiteral("Workspace\\My Computer\\C:\\many")),
              (QStringList{QStringLiteral("ALONE"), QStringLiteral("twin")}));
  }
}

/// Whatever call fails, the display ends with a message or all entries, the gauge is gone, and the next
/// display works.
TEST_F(FolderDisplayTest, EveryFailingCallLeavesAUsableWindow) {
  memory_->AddFolder(QStringLiteral("C:\\many"));
  AddFiles(QStringLiteral("C:\\many"), 45);
  prompts_.AnswerAllBoxes(PromptAnswer::Ok);
  for (const FaultSpan span : {FaultSpan::Once, FaultSpan::FromThenOn}) {
    for (int call = 1; call < 100; ++call) {
      faulty_->Disarm();
      navigator_.Builder().RebuildTree();
      prompts_.ForgetAsked();
      faulty_->Arm(call, span, error::kTimeOut);
      Display(QStringLiteral("Workspace\\My Computer\\C:\\many"));
      const bool failed = faulty_->FaultCount() > 0;
      faulty_->Disarm();
      EXPECT_FALSE(prompts_.RecordedGauge().IsLoaded());
      ExpectLocation(QStringLiteral("Workspace\\My Computer\\C:\\many"));
      EXPECT_EQ(prompts_.Asked().empty(), list_.rowCount() == 45) << "call " << call;
      Display(QStringLiteral("Workspace\\My Computer\\C:"));
      EXPECT_EQ(list_.rowCount(), 4);
      if (!failed) {
        break;
      }
      ASSERT_LT(call, 99) << "never ran without a failure";
    }
  }
}

}  // namespace
}  // namespace trevane::test

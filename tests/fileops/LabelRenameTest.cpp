#include "fileops/LabelRename.h"
#include "tests/fileops/FileCommandsFixture.h"

namespace trevane::test {
namespace {

constexpr auto kFailed = u"Failed to rename the file.";

class LabelRenameTest : public FileCommandsFixture {
 protected:
  using FileCommandsFixture::FileCommandsFixture;

  void ExpectFailure() { prompts_.ExpectBox(QString::fromUtf16(kFailed)); }
};

/// On a file system that ignores case.
class LabelRenameIgnoringCaseTest : public LabelRenameTest {
 protected:
  LabelRenameIgnoringCaseTest() : LabelRenameTest(false) {}
};

TEST_F(LabelRenameTest, RenamedFilesAreLogged) {
  EXPECT_FALSE(RenameItem(QStringLiteral("readme.txt"), QStringLiteral("notes.txt")));
  EXPECT_EQ(memory_->Content(QStringLiteral("C:\\notes.txt")), "12345");
  EXPECT_FALSE(memory_->Exists(QStringLiteral("C:\\readme.txt")));
  EXPECT_EQ(ListTexts(), (QStringList{QStringLiteral("Backup"), QStringLiteral("Programs"),
                                      QStringLiteral("data.txt"), QStringLiteral("notes.txt")}));
  EXPECT_EQ(log_.Lines(), QStringList{QStringLiteral("RENAME|C:\\readme.txt|notes.txt")});
}

TEST_F(LabelRenameTest, ANewExtensionIsANewType) {
  EXPECT_FALSE(RenameItem(QStringLiteral("readme.txt"), QStringLiteral("readme.xyz")));
  const auto item = list_.FindByText(QStringLiteral("readme.xyz"));
  ASSERT_NE(item, FileListModel::kNoItem);
  EXPECT_EQ(list_.ColumnText(item, FileColumn::Type), QStringLiteral(".XYZ file"));
}

TEST_F(LabelRenameTest, FoldersRenamedInTheListRenameTheirNode) {
  FolderNode* node = Node(Local(QStringLiteral("Programs")));
  navigator_.Builder().AddFolderNodes(Local(QStringLiteral("Programs")), *node);
  EXPECT_FALSE(RenameItem(QStringLiteral("Programs"), QStringLiteral("NewPrograms")));
  EXPECT_EQ(node->Text(), QStringLiteral("NewPrograms"));
  EXPECT_EQ(node->Key(), QStringLiteral("workspace\\my computer\\c:\\newprograms"));
  EXPECT_EQ(Node(Local(QStringLiteral("Programs"))), nullptr);
  ASSERT_NE(Node(Local(QStringLiteral("NewPrograms\\Cell1"))), nullptr);
  EXPECT_EQ(Node(Local(QStringLiteral("NewPrograms\\Cell1")))->Key(),
            QStringLiteral("workspace\\my computer\\c:\\newprograms\\cell1"));
}

TEST_F(LabelRenameTest, TheCurrentFolderFollowsARenameInTheTree) {
  Display(Local(QStringLiteral("Programs")));
  Display(Local(QStringLiteral("Programs\\Cell1")));
  EXPECT_FALSE(RenameNode(Local(QStringLiteral("Programs")), QStringLiteral("Work")));
  ExpectPlace(Local(QStringLiteral("Work\\Cell1")));
  EXPECT_TRUE(memory_->Exists(QStringLiteral("C:\\Work\\Cell1\\Deep")));
  EXPECT_EQ(log_.Lines(), QStringList{QStringLiteral("RENAME|C:\\Programs|Work")});
  navigator_.Refresh();
  EXPECT_EQ(ListTexts(), QStringList{QStringLiteral("Deep")});
}

TEST_F(LabelRenameTest, FoldersRenamedInTheTreeChangeInTheList) {
  EXPECT_FALSE(RenameNode(Local(QStringLiteral("Backup")), QStringLiteral("Archive")));
  EXPECT_EQ(ListTexts(), (QStringList{QStringLiteral("Archive"), QStringLiteral("Programs"),
                                      QStringLiteral("data.txt"), QStringLiteral("readme.txt")}));
  ExpectPlace(Local());
}

TEST_F(LabelRenameTest, OnAControllerTheLogNamesTheController) {
  Display(QStringLiteral("Workspace\\Cell"));
  EXPECT_FALSE(RenameItem(QStringLiteral("pos"), QStringLiteral("positions")));
  EXPECT_TRUE(cell_->Exists(QStringLiteral("positions\\home.csv")));
  EXPECT_EQ(log_.Lines(), QStringList{QStringLiteral("RENAME|Cell\\pos|positions")});
  EXPECT_NE(Node(QStringLiteral("Workspace\\Cell\\positions")), nullptr);
}

TEST_F(LabelRenameTest, PlacesCannotBeRenamed) {
  for (const qint32 tag : {TAG_WORKSPACE, kMyComputerTag, kDriveItemTag, kControllerTag}) {
    EXPECT_FALSE(commands_.Labels().BeforeLabelEdit({std::nullopt, tag, QStringLiteral("x")}));
    EXPECT_FALSE(commands_.Labels().BeforeLabelEdit({Local(), tag, QStringLiteral("x")}));
  }
}

TEST_F(LabelRenameTest, ARenameRefusedByTheEngineLeavesTheOldLabel) {
  faulty_->SetHook([](const FileSystemCall& call) {
    if (call.operation == FileSystemOperation::Rename) {
      throw RunTimeError(error::kAccessDenied, QStringLiteral("denied"));
    }
  });
  ExpectFailure();
  EXPECT_TRUE(RenameItem(QStringLiteral("readme.txt"), QStringLiteral("notes.txt")));
  EXPECT_NE(Item(QStringLiteral("readme.txt")), FileListModel::kNoItem);
  EXPECT_EQ(Item(QStringLiteral("notes.txt")), FileListModel::kNoItem);
  EXPECT_TRUE(log_.Lines().isEmpty());
  ASSERT_EQ(prompts_.Asked().size(), 1U);
  EXPECT_EQ(prompts_.Asked()[0].icon, PromptIcon::Exclamation);
  EXPECT_EQ(prompts_.Asked()[0].buttons, PromptButtons::Ok);
  EXPECT_EQ(prompts_.Asked()[0].title, QString());
  EXPECT_EQ(prompts_.Asked()[0].informativeText, QStringLiteral("readme.txt\ndenied"));
  EXPECT_EQ(host_.reasons, QStringList{QStringLiteral("denied")});
}

TEST_F(LabelRenameTest, ACancelledRenameShowsThePlaceAnew) {
  // The server does it although nobody waits for its answer any more.
  faulty_->SetHook([this](const FileSystemCall& call) {
    if (call.operation == FileSystemOperation::Rename) {
      memory_->Rename(QStringLiteral("C:\\readme.txt"), QStringLiteral("C:\\notes.txt"), false);
      throw RunTimeError(error::kCancelled, QStringLiteral("interrupted"));
    }
  });
  prompts_.onQuestion = [this](const AskedQuestion&) {
    EXPECT_TRUE(ListTexts().contains(QStringLiteral("notes.txt")));
  };
  ExpectFailure();
  EXPECT_TRUE(RenameItem(QStringLiteral("readme.txt"), QStringLiteral("notes.txt")));
  EXPECT_EQ(prompts_.Asked().at(0).informativeText, QStringLiteral("readme.txt\nCancelled."));
  EXPECT_TRUE(log_.Lines().isEmpty());
}

TEST_F(LabelRenameTest, ACommitDuringAWaitDoesNothing) {
  LabelEdit edit{std::nullopt, list_.Tag(Item(QStringLiteral("readme.txt"))), QStringLiteral("readme.txt")};
  host_.waiting = true;
  EXPECT_FALSE(commands_.Labels().BeforeLabelEdit(edit));
  bool cancel = false;
  faulty_->ClearCalls();
  commands_.Labels().AfterLabelEdit(edit, QStringLiteral("notes.txt"), &cancel);
  EXPECT_TRUE(cancel);
  EXPECT_EQ(faulty_->CallCount(), 0);
}

TEST_F(LabelRenameTest, EveryRefusalTellsWhy) {
  const auto reason = [this](const QString& from, const QString& to) {
    ExpectFailure();
    prompts_.ForgetAsked();
    EXPECT_TRUE(RenameItem(from, to));
    return prompts_.Asked().at(0).informativeText;
  };
  EXPECT_EQ(reason(QStringLiteral("readme.txt"), QStringLiteral("a/b")),
            QStringLiteral("readme.txt\nThe name is not valid: 'a/b'"));
  EXPECT_EQ(reason(QStringLiteral("readme.txt"), QStringLiteral("Backup")),
            QStringLiteral("readme.txt\nThe existing item cannot be replaced: 'Backup'"));
  memory_->Vanish(QStringLiteral("C:\\data.txt"));
  EXPECT_EQ(reason(QStringLiteral("data.txt"), QStringLiteral("x")).section(u'\n', 0, 0),
            QStringLiteral("data.txt"));
  EXPECT_TRUE(prompts_.Asked().at(0).informativeText.contains(QStringLiteral("C:\\data.txt")));
  faulty_->SetHook([](const FileSystemCall& call) {
    if (call.operation == FileSystemOperation::Stat && call.path.endsWith(QStringLiteral("notes.txt"))) {
      throw RunTimeError(error::kTimeOut, QStringLiteral("no answer"));
    }
  });
  EXPECT_EQ(reason(QStringLiteral("readme.txt"), QStringLiteral("notes.txt")),
            QStringLiteral("readme.txt\nno answer"));
}

TEST_F(LabelRenameTest, InvalidNamesAreRefused) {
  const QStringList before = memory_->Tree();
  for (const QString& name :
       {QStringLiteral(""), QStringLiteral("a/b"), QStringLiteral("a\\b"), QStringLiteral("."),
        QStringLiteral(".."), QStringLiteral("Backup\\readme.txt")}) {
    ExpectFailure();
    EXPECT_TRUE(RenameItem(QStringLiteral("readme.txt"), name)) << name.toStdString();
    ExpectFailure();
    EXPECT_TRUE(RenameNode(Local(QStringLiteral("Programs")), name)) << name.toStdString();
  }
  EXPECT_EQ(memory_->Tree(), before);
  EXPECT_TRUE(log_.Lines().isEmpty());
}

TEST_F(LabelRenameTest, AnEntryThatHasGoneSinceFails) {
  memory_->Vanish(QStringLiteral("C:\\readme.txt"));
  ExpectFailure();
  EXPECT_TRUE(RenameItem(QStringLiteral("readme.txt"), QStringLiteral("notes.txt")));
  EXPECT_NE(Item(QStringLiteral("readme.txt")), FileListModel::kNoItem);
}

TEST_F(LabelRenameTest, RenamingOntoAFileAsksBeforeReplacingIt) {
  for (const int answer : {0, 1}) {
    memory_->AddFile(QStringLiteral("C:\\readme.txt"), "12345");
    memory_->AddFile(QStringLiteral("C:\\data.txt"), "data");
    navigator_.Refresh();
    log_.Clear();
    prompts_.ForgetAsked();
    prompts_.ExpectChoice(QStringLiteral("'data.txt' already existed.\r\nOverwrite?"), answer);
    EXPECT_FALSE(RenameItem(QStringLiteral("readme.txt"), QStringLiteral("data.txt")));
    EXPECT_EQ(memory_->Content(QStringLiteral("C:\\data.txt")), "12345");
    EXPECT_EQ(ListTexts(), (QStringList{QStringLiteral("Backup"), QStringLiteral("Programs"),
                                        QStringLiteral("data.txt")}));
    EXPECT_EQ(log_.Lines(), QStringList{QStringLiteral("RENAME|C:\\readme.txt|data.txt")});
    ASSERT_EQ(prompts_.Asked().size(), 1U);
    EXPECT_EQ(prompts_.Asked()[0].title, QStringLiteral("OverWrite"));
    EXPECT_EQ(prompts_.Asked()[0].cancelButton, 3);
    EXPECT_EQ(prompts_.Asked()[0].defaultButton, 0);
    EXPECT_EQ(prompts_.Asked()[0].captions,
              (QStringList{QStringLiteral("Yes(&Y)"), QStringLiteral("Yes All(&A)"), QStringLiteral("No(&N)"),
                           QStringLiteral("Cancel")}));
  }
}

TEST_F(LabelRenameTest, NoAndCancelKeepBothFilesWithoutAMessage) {
  for (const int answer : {2, 3}) {
    prompts_.ExpectChoice(answer);
    EXPECT_TRUE(RenameItem(QStringLiteral("readme.txt"), QStringLiteral("data.txt")));
  }
  EXPECT_EQ(memory_->Content(QStringLiteral("C:\\data.txt")), "data");
  EXPECT_EQ(memory_->Content(QStringLiteral("C:\\readme.txt")), "12345");
  EXPECT_TRUE(log_.Lines().isEmpty());
}

TEST_F(LabelRenameTest, FoldersAndOtherKindsAreNeverReplaced) {
  memory_->AddDevice(QStringLiteral("C:\\device"));
  memory_->AddLink(QStringLiteral("C:\\link"), QStringLiteral("C:\\data.txt"));
  memory_->AddFolder(QStringLiteral("C:\\Empty"));
  navigator_.Refresh();
  const QStringList before = memory_->Tree();
  const std::pair<QString, QString> rows[] = {{QStringLiteral("readme.txt"), QStringLiteral("Backup")},
                                              {QStringLiteral("Backup"), QStringLiteral("readme.txt")},
                                              {QStringLiteral("Backup"), QStringLiteral("Programs")},
                                              {QStringLiteral("Backup"), QStringLiteral("Empty")},
                                              {QStringLiteral("readme.txt"), QStringLiteral("device")},
                                              {QStringLiteral("readme.txt"), QStringLiteral("link")}};
  for (const auto& [from, to] : rows) {
    ExpectFailure();
    EXPECT_TRUE(RenameItem(from, to)) << from.toStdString() << " to " << to.toStdString();
    EXPECT_EQ(memory_->Tree(), before);
  }
}

TEST_F(LabelRenameTest, AClashThatCouldNotBeAskedForIsAFailure) {
  faulty_->SetHook([](const FileSystemCall& call) {
    if (call.path.endsWith(u"notes.txt")) {
      throw RunTimeError(error::kTimeOut, QStringLiteral("time-out"));
    }
  });
  ExpectFailure();
  EXPECT_TRUE(RenameItem(QStringLiteral("readme.txt"), QStringLiteral("notes.txt")));
  EXPECT_TRUE(memory_->Exists(QStringLiteral("C:\\readme.txt")));
}

TEST_F(LabelRenameTest, OtherSpellingsAreOtherFilesWhereCaseCounts) {
  memory_->AddFile(QStringLiteral("C:\\README.TXT"), "other");
  prompts_.ExpectChoice(QStringLiteral("'README.TXT' already existed.\r\nOverwrite?"), 2);
  EXPECT_TRUE(RenameItem(QStringLiteral("readme.txt"), QStringLiteral("README.TXT")));
  EXPECT_EQ(memory_->Content(QStringLiteral("C:\\README.TXT")), "other");
  EXPECT_EQ(memory_->Content(QStringLiteral("C:\\readme.txt")), "12345");
}

TEST_F(LabelRenameTest, FoldersThatDifferInCaseStayBesideARename) {
  ASSERT_NE(Node(Local(QStringLiteral("Backup"))), nullptr);
  EXPECT_EQ(Node(Local(QStringLiteral("Backup")))->Text(), QStringLiteral("Backup"));
  prompts_.ExpectBox(QStringLiteral("Can't display Backup."));
  static_cast<void>(RenameItem(QStringLiteral("Programs"), QStringLiteral("BACKUP")));
  EXPECT_TRUE(memory_->Exists(QStringLiteral("C:\\Backup\\Old")));
  EXPECT_TRUE(memory_->Exists(QStringLiteral("C:\\BACKUP")));
  ASSERT_NE(Node(Local(QStringLiteral("Backup"))), nullptr);
  EXPECT_EQ(Node(Local(QStringLiteral("Backup")))->Text(), QStringLiteral("Backup"));
  EXPECT_NE(Item(QStringLiteral("Backup")), FileListModel::kNoItem);
}

TEST_F(LabelRenameTest, RenamesBesideAnotherCaseLeaveNoOldNode) {
  memory_->AddFolder(QStringLiteral("C:\\CASE"));
  Display(Local());
  prompts_.AnswerAllBoxes(PromptAnswer::Ok);
  EXPECT_FALSE(RenameItem(QStringLiteral("Backup"), QStringLiteral("case")));
  EXPECT_TRUE(memory_->Exists(QStringLiteral("C:\\case\\Old")));
  EXPECT_EQ(Node(Local(QStringLiteral("Backup"))), nullptr);
  EXPECT_EQ(list_.FindByText(QStringLiteral("Backup")), FileListModel::kNoItem);
  ASSERT_EQ(prompts_.Asked().size(), 1U) << "one of the two cannot be displayed";
}

TEST_F(LabelRenameTest, AChangeOfLetterCaseOnlyIsNoClash) {
  EXPECT_FALSE(RenameItem(QStringLiteral("readme.txt"), QStringLiteral("README.txt")));
  EXPECT_TRUE(memory_->Exists(QStringLiteral("C:\\README.txt")));
  EXPECT_FALSE(RenameNode(Local(QStringLiteral("Backup")), QStringLiteral("BACKUP")));
  EXPECT_TRUE(memory_->Exists(QStringLiteral("C:\\BACKUP\\Old")));
  EXPECT_EQ(Node(Local(QStringLiteral("Backup")))->Text(), QStringLiteral("BACKUP"));
}

TEST_F(LabelRenameIgnoringCaseTest, AChangeOfLetterCaseOnlyIsNoClash) {
  EXPECT_FALSE(RenameItem(QStringLiteral("readme.txt"), QStringLiteral("README.txt")));
  EXPECT_EQ(ListTexts().filter(QStringLiteral("README.txt")).size(), 1);
  EXPECT_FALSE(RenameItem(QStringLiteral("Programs"), QStringLiteral("PROGRAMS")));
  navigator_.Refresh();
  EXPECT_EQ(ListTexts(), (QStringList{QStringLiteral("Backup"), QStringLiteral("PROGRAMS"),
                                      QStringLiteral("README.txt"), QStringLiteral("data.txt")}));
}

TEST_F(LabelRenameIgnoringCaseTest, AnotherFileIsAClashHoweverItIsSpelt) {
  prompts_.ExpectChoice(QStringLiteral("'DATA.txt' already existed.\r\nOverwrite?"), 3);
  EXPECT_TRUE(RenameItem(QStringLiteral("readme.txt"), QStringLiteral("DATA.txt")));
  EXPECT_EQ(memory_->Content(QStringLiteral("C:\\data.txt")), "data");
}

TEST_F(LabelRenameTest, NodesOfVanishedFoldersMakeRoomForRenames) {
  memory_->Vanish(QStringLiteral("C:\\Backup"));
  EXPECT_FALSE(RenameItem(QStringLiteral("Programs"), QStringLiteral("Backup")));
  ASSERT_NE(Node(Local(QStringLiteral("Backup"))), nullptr);
  navigator_.Refresh();
  EXPECT_EQ(ListTexts(), (QStringList{QStringLiteral("Backup"), QStringLiteral("data.txt"),
                                      QStringLiteral("readme.txt")}));
  Display(Local(QStringLiteral("Backup")));
  EXPECT_EQ(ListTexts(), (QStringList{QStringLiteral("Cell1"), QStringLiteral("main.pac")}));
}

TEST_F(LabelRenameTest, RenamesThatReportAnErrorAreShownAndLogged) {
  int renamedAndSaid = 0;
  for (int call = 1; call < 50; ++call) {
    SCOPED_TRACE(call);
    log_.Clear();
    prompts_.AnswerAllBoxes(PromptAnswer::Ok);
    faulty_->Arm(call, FaultSpan::Once, error::kTimeOut, Fault::DoAndFail);
    RenameItem(QStringLiteral("readme.txt"), QStringLiteral("notes.txt"));
    const int faults = faulty_->FaultCount();
    faulty_->Disarm();
    const bool renamed = memory_->Exists(QStringLiteral("C:\\notes.txt"));
    EXPECT_NE(renamed, memory_->Exists(QStringLiteral("C:\\readme.txt")));
    EXPECT_EQ(renamed, Item(QStringLiteral("notes.txt")) != FileListModel::kNoItem);
    EXPECT_NE(renamed, Item(QStringLiteral("readme.txt")) != FileListModel::kNoItem);
    EXPECT_EQ(log_.Lines().size(), renamed ? 1 : 0);
    EXPECT_TRUE(renamed || !prompts_.Asked().empty());
    renamedAndSaid += renamed && !prompts_.Asked().empty() ? 1 : 0;
    if (renamed) {
      EXPECT_FALSE(RenameItem(QStringLiteral("notes.txt"), QStringLiteral("readme.txt")));
    }
    prompts_.ForgetAsked();
    if (faults == 0) {
      break;
    }
  }
  EXPECT_EQ(renamedAndSaid, 1) << "the call that renames";
}

/// Every call of the engine fails once, alone and together with all later calls.
class LabelRenameFaultTest : public LabelRenameTest, public testing::WithParamInterface<FaultSpan> {};

TEST_P(LabelRenameFaultTest, FailingCallsLoseNothingAndTheLogIsTrue) {
  for (const bool folder : {false, true}) {
    const QString from = folder ? QStringLiteral("Programs") : QStringLiteral("readme.txt");
    const QString to = folder ? QStringLiteral("Work") : QStringLiteral("notes.txt");
    int failures = 0;
    for (int call = 1; call < 200; ++call) {
      log_.Clear();
      prompts_.ForgetAsked();
      prompts_.AnswerAllBoxes(PromptAnswer::Ok);
      navigator_.Refresh();
      engine_->Arm(call, GetParam());
      const bool cancelled = RenameItem(from, to);
      const int faults = engine_->FaultCount();
      engine_->Disarm();
      const bool renamed = memory_->Exists(QStringLiteral("C:\\") + to);
      EXPECT_NE(renamed, memory_->Exists(QStringLiteral("C:\\") + from)) << call;
      EXPECT_EQ(renamed, !log_.Lines().isEmpty()) << call;
      EXPECT_EQ(renamed, !cancelled) << call;
      EXPECT_EQ(cancelled, prompts_.Texts() == QStringList{QString::fromUtf16(kFailed)}) << call;
      EXPECT_NE(Item(renamed ? to : from), FileListModel::kNoItem) << call;
      failures += cancelled ? 1 : 0;
      if (renamed) {
        EXPECT_FALSE(RenameItem(to, from));
      }
      EXPECT_EQ(engine_->HeldFiles(), 0) << call;
      if (faults == 0) {
        break;
      }
    }
    EXPECT_GT(failures, 0);
  }
}

INSTANTIATE_TEST_SUITE_P(Spans, LabelRenameFaultTest, testing::Values(FaultSpan::Once, FaultSpan::FromThenOn),
                         [](const auto& info) {
                           return info.param == FaultSpan::Once ? "Once" : "FromThenOn";
                         });

}  // namespace
}  // namespace trevane::test

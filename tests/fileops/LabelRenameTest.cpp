#include "fileops/LabelRename.h"
#include "tests/fileops/FileCommandsFixture.h"

namespace trevane::test {
namespace {

using namespace Qt::StringLiterals;

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

TEST_F(LabelRenameTest, AFileOfTheListGetsItsNewNameAndALineInTheLog) {
  EXPECT_FALSE(RenameItem(u"readme.txt"_s, u"notes.txt"_s));
  EXPECT_EQ(memory_->Content(u"C:\\notes.txt"_s), "12345");
  EXPECT_FALSE(memory_->Exists(u"C:\\readme.txt"_s));
  EXPECT_EQ(ListTexts(), (QStringList{u"Backup"_s, u"Programs"_s, u"data.txt"_s, u"notes.txt"_s}));
  EXPECT_EQ(log_.Lines(), QStringList{u"RENAME|C:\\readme.txt|notes.txt"_s});
}

TEST_F(LabelRenameTest, ANewExtensionIsANewType) {
  EXPECT_FALSE(RenameItem(u"readme.txt"_s, u"readme.xyz"_s));
  const auto item = list_.FindByText(u"readme.xyz"_s);
  ASSERT_NE(item, FileListModel::kNoItem);
  EXPECT_EQ(list_.ColumnText(item, FileColumn::Type), u".XYZ file"_s);
}

TEST_F(LabelRenameTest, AFolderRenamedInTheListRenamesItsNodeAndKeepsTheKeysInLowerCase) {
  FolderNode* node = Node(Local(u"Programs"_s));
  navigator_.Builder().AddFolderNodes(Local(u"Programs"_s), *node);
  EXPECT_FALSE(RenameItem(u"Programs"_s, u"NewPrograms"_s));
  EXPECT_EQ(node->Text(), u"NewPrograms"_s);
  EXPECT_EQ(node->Key(), u"workspace\\my computer\\c:\\newprograms"_s);
  EXPECT_EQ(Node(Local(u"Programs"_s)), nullptr);
  ASSERT_NE(Node(Local(u"NewPrograms\\Cell1"_s)), nullptr);
  EXPECT_EQ(Node(Local(u"NewPrograms\\Cell1"_s))->Key(), u"workspace\\my computer\\c:\\newprograms\\cell1"_s);
}

TEST_F(LabelRenameTest, AFolderRenamedInTheTreeTakesTheCurrentPlaceAlong) {
  Display(Local(u"Programs"_s));
  Display(Local(u"Programs\\Cell1"_s));
  EXPECT_FALSE(RenameNode(Local(u"Programs"_s), u"Work"_s));
  ExpectPlace(Local(u"Work\\Cell1"_s));
  EXPECT_TRUE(memory_->Exists(u"C:\\Work\\Cell1\\Deep"_s));
  EXPECT_EQ(log_.Lines(), QStringList{u"RENAME|C:\\Programs|Work"_s});
  navigator_.Refresh();
  EXPECT_EQ(ListTexts(), QStringList{u"Deep"_s});
}

TEST_F(LabelRenameTest, AFolderRenamedInTheTreeIsRenamedInTheListThatShowsIt) {
  EXPECT_FALSE(RenameNode(Local(u"Backup"_s), u"Archive"_s));
  EXPECT_EQ(ListTexts(), (QStringList{u"Archive"_s, u"Programs"_s, u"data.txt"_s, u"readme.txt"_s}));
  ExpectPlace(Local());
}

TEST_F(LabelRenameTest, OnAControllerTheLogNamesTheController) {
  Display(u"Workspace\\Cell"_s);
  EXPECT_FALSE(RenameItem(u"pos"_s, u"positions"_s));
  EXPECT_TRUE(cell_->Exists(u"positions\\home.csv"_s));
  EXPECT_EQ(log_.Lines(), QStringList{u"RENAME|Cell\\pos|positions"_s});
  EXPECT_NE(Node(u"Workspace\\Cell\\positions"_s), nullptr);
}

TEST_F(LabelRenameTest, PlacesCannotBeRenamed) {
  for (const qint32 tag : {TAG_WORKSPACE, kMyComputerTag, kDriveItemTag, kControllerTag}) {
    EXPECT_FALSE(commands_.Labels().BeforeLabelEdit({std::nullopt, tag, u"x"_s}));
    EXPECT_FALSE(commands_.Labels().BeforeLabelEdit({Local(), tag, u"x"_s}));
  }
}

TEST_F(LabelRenameTest, ARenameRefusedByTheEngineLeavesTheOldLabel) {
  faulty_->SetHook([](const FileSystemCall& call) {
    if (call.operation == FileSystemOperation::Rename)
      throw RunTimeError(error::kAccessDenied, u"denied"_s);
  });
  ExpectFailure();
  EXPECT_TRUE(RenameItem(u"readme.txt"_s, u"notes.txt"_s));
  EXPECT_NE(Item(u"readme.txt"_s), FileListModel::kNoItem);
  EXPECT_EQ(Item(u"notes.txt"_s), FileListModel::kNoItem);
  EXPECT_TRUE(log_.Lines().isEmpty());
  ASSERT_EQ(prompts_.Asked().size(), 1U);
  EXPECT_EQ(prompts_.Asked()[0].icon, PromptIcon::Exclamation);
  EXPECT_EQ(prompts_.Asked()[0].buttons, PromptButtons::Ok);
  EXPECT_EQ(prompts_.Asked()[0].title, QString());
  EXPECT_EQ(prompts_.Asked()[0].informativeText, u"readme.txt\ndenied"_s);
  EXPECT_EQ(host_.reasons, QStringList{u"denied"_s});
}

TEST_F(LabelRenameTest, EveryRefusalTellsWhy) {
  const auto reason = [this](const QString& from, const QString& to) {
    ExpectFailure();
    prompts_.ForgetAsked();
    EXPECT_TRUE(RenameItem(from, to));
    return prompts_.Asked().at(0).informativeText;
  };
  EXPECT_EQ(reason(u"readme.txt"_s, u"a/b"_s), u"readme.txt\nThe name is not valid: 'a/b'"_s);
  EXPECT_EQ(reason(u"readme.txt"_s, u"Backup"_s),
            u"readme.txt\nAn item has that name that cannot be replaced: 'Backup'"_s);
  memory_->Vanish(u"C:\\data.txt"_s);
  EXPECT_EQ(reason(u"data.txt"_s, u"x"_s).section(u'\n', 0, 0), u"data.txt"_s);
  EXPECT_TRUE(prompts_.Asked().at(0).informativeText.contains(u"C:\\data.txt"_s));
  faulty_->SetHook([](const FileSystemCall& call) {
    if (call.operation == FileSystemOperation::Stat && call.path.endsWith(u"notes.txt"_s))
      throw RunTimeError(error::kTimeOut, u"no answer"_s);
  });
  EXPECT_EQ(reason(u"readme.txt"_s, u"notes.txt"_s), u"readme.txt\nno answer"_s);
}

TEST_F(LabelRenameTest, NamesThatAreNoNamesAreRefusedAndChangeNothing) {
  const QStringList before = memory_->Tree();
  for (const QString& name : {u""_s, u"a/b"_s, u"a\\b"_s, u"."_s, u".."_s, u"Backup\\readme.txt"_s}) {
    ExpectFailure();
    EXPECT_TRUE(RenameItem(u"readme.txt"_s, name)) << name.toStdString();
    ExpectFailure();
    EXPECT_TRUE(RenameNode(Local(u"Programs"_s), name)) << name.toStdString();
  }
  EXPECT_EQ(memory_->Tree(), before);
  EXPECT_TRUE(log_.Lines().isEmpty());
}

TEST_F(LabelRenameTest, AnEntryThatHasGoneSinceFails) {
  memory_->Vanish(u"C:\\readme.txt"_s);
  ExpectFailure();
  EXPECT_TRUE(RenameItem(u"readme.txt"_s, u"notes.txt"_s));
  EXPECT_NE(Item(u"readme.txt"_s), FileListModel::kNoItem);
}

TEST_F(LabelRenameTest, AnotherFileOfTheNewNameIsReplacedAfterAQuestionThatClosingCancels) {
  for (const int answer : {0, 1}) {
    memory_->AddFile(u"C:\\readme.txt"_s, "12345");
    memory_->AddFile(u"C:\\data.txt"_s, "data");
    navigator_.Refresh();
    log_.Clear();
    prompts_.ForgetAsked();
    prompts_.ExpectChoice(u"'data.txt' already existed.\r\nOverwrite?"_s, answer);
    EXPECT_FALSE(RenameItem(u"readme.txt"_s, u"data.txt"_s));
    EXPECT_EQ(memory_->Content(u"C:\\data.txt"_s), "12345");
    EXPECT_EQ(ListTexts(), (QStringList{u"Backup"_s, u"Programs"_s, u"data.txt"_s}));
    EXPECT_EQ(log_.Lines(), QStringList{u"RENAME|C:\\readme.txt|data.txt"_s});
    ASSERT_EQ(prompts_.Asked().size(), 1U);
    EXPECT_EQ(prompts_.Asked()[0].title, u"OverWrite"_s);
    EXPECT_EQ(prompts_.Asked()[0].cancelButton, 3);
    EXPECT_EQ(prompts_.Asked()[0].defaultButton, 0);
    EXPECT_EQ(prompts_.Asked()[0].captions,
              (QStringList{u"Yes(&Y)"_s, u"Yes All(&A)"_s, u"No(&N)"_s, u"Cancel"_s}));
  }
}

TEST_F(LabelRenameTest, NoAndCancelKeepBothFilesWithoutAMessage) {
  for (const int answer : {2, 3}) {
    prompts_.ExpectChoice(answer);
    EXPECT_TRUE(RenameItem(u"readme.txt"_s, u"data.txt"_s));
  }
  EXPECT_EQ(memory_->Content(u"C:\\data.txt"_s), "data");
  EXPECT_EQ(memory_->Content(u"C:\\readme.txt"_s), "12345");
  EXPECT_TRUE(log_.Lines().isEmpty());
}

TEST_F(LabelRenameTest, AFolderOfTheNewNameAndAnItemOfAnotherKindAreLeftAlone) {
  memory_->AddDevice(u"C:\\device"_s);
  memory_->AddLink(u"C:\\link"_s, u"C:\\data.txt"_s);
  memory_->AddFolder(u"C:\\Empty"_s);
  navigator_.Refresh();
  const QStringList before = memory_->Tree();
  const std::pair<QString, QString> rows[] = {{u"readme.txt"_s, u"Backup"_s}, {u"Backup"_s, u"readme.txt"_s},
                                              {u"Backup"_s, u"Programs"_s},   {u"Backup"_s, u"Empty"_s},
                                              {u"readme.txt"_s, u"device"_s}, {u"readme.txt"_s, u"link"_s}};
  for (const auto& [from, to] : rows) {
    ExpectFailure();
    EXPECT_TRUE(RenameItem(from, to)) << from.toStdString() << " to " << to.toStdString();
    EXPECT_EQ(memory_->Tree(), before);
  }
}

TEST_F(LabelRenameTest, AClashThatCouldNotBeAskedForIsAFailure) {
  faulty_->SetHook([](const FileSystemCall& call) {
    if (call.path.endsWith(u"notes.txt"))
      throw RunTimeError(error::kTimeOut, u"time-out"_s);
  });
  ExpectFailure();
  EXPECT_TRUE(RenameItem(u"readme.txt"_s, u"notes.txt"_s));
  EXPECT_TRUE(memory_->Exists(u"C:\\readme.txt"_s));
}

TEST_F(LabelRenameTest, WhereCaseCountsTheOtherSpellingIsAnotherFile) {
  memory_->AddFile(u"C:\\README.TXT"_s, "other");
  prompts_.ExpectChoice(u"'README.TXT' already existed.\r\nOverwrite?"_s, 2);
  EXPECT_TRUE(RenameItem(u"readme.txt"_s, u"README.TXT"_s));
  EXPECT_EQ(memory_->Content(u"C:\\README.TXT"_s), "other");
  EXPECT_EQ(memory_->Content(u"C:\\readme.txt"_s), "12345");
}

TEST_F(LabelRenameTest, AFolderThatDiffersInCaseOnlyStaysWhenAnotherIsRenamedBesideIt) {
  ASSERT_NE(Node(Local(u"Backup"_s)), nullptr);
  EXPECT_EQ(Node(Local(u"Backup"_s))->Text(), u"Backup"_s);
  prompts_.ExpectBox(u"Can't display Backup."_s);
  static_cast<void>(RenameItem(u"Programs"_s, u"BACKUP"_s));
  EXPECT_TRUE(memory_->Exists(u"C:\\Backup\\Old"_s));
  EXPECT_TRUE(memory_->Exists(u"C:\\BACKUP"_s));
  ASSERT_NE(Node(Local(u"Backup"_s)), nullptr);
  EXPECT_EQ(Node(Local(u"Backup"_s))->Text(), u"Backup"_s);
  EXPECT_NE(Item(u"Backup"_s), FileListModel::kNoItem);
}

TEST_F(LabelRenameTest, AFolderRenamedBesideOneThatDiffersInCaseLeavesNoNodeOfItsOldName) {
  memory_->AddFolder(u"C:\\CASE"_s);
  Display(Local());
  prompts_.AnswerAllBoxes(PromptAnswer::Ok);
  EXPECT_FALSE(RenameItem(u"Backup"_s, u"case"_s));
  EXPECT_TRUE(memory_->Exists(u"C:\\case\\Old"_s));
  EXPECT_EQ(Node(Local(u"Backup"_s)), nullptr);
  EXPECT_EQ(list_.FindByText(u"Backup"_s), FileListModel::kNoItem);
  ASSERT_EQ(prompts_.Asked().size(), 1U) << "one of the two cannot be displayed";
}

TEST_F(LabelRenameTest, AChangeOfLetterCaseOnlyIsNoClash) {
  EXPECT_FALSE(RenameItem(u"readme.txt"_s, u"README.txt"_s));
  EXPECT_TRUE(memory_->Exists(u"C:\\README.txt"_s));
  EXPECT_FALSE(RenameNode(Local(u"Backup"_s), u"BACKUP"_s));
  EXPECT_TRUE(memory_->Exists(u"C:\\BACKUP\\Old"_s));
  EXPECT_EQ(Node(Local(u"Backup"_s))->Text(), u"BACKUP"_s);
}

TEST_F(LabelRenameIgnoringCaseTest, AChangeOfLetterCaseOnlyIsNoClash) {
  EXPECT_FALSE(RenameItem(u"readme.txt"_s, u"README.txt"_s));
  EXPECT_EQ(ListTexts().filter(u"README.txt"_s).size(), 1);
  EXPECT_FALSE(RenameItem(u"Programs"_s, u"PROGRAMS"_s));
  navigator_.Refresh();
  EXPECT_EQ(ListTexts(), (QStringList{u"Backup"_s, u"PROGRAMS"_s, u"README.txt"_s, u"data.txt"_s}));
}

TEST_F(LabelRenameIgnoringCaseTest, AnotherFileIsAClashHoweverItIsSpelt) {
  prompts_.ExpectChoice(u"'DATA.txt' already existed.\r\nOverwrite?"_s, 3);
  EXPECT_TRUE(RenameItem(u"readme.txt"_s, u"DATA.txt"_s));
  EXPECT_EQ(memory_->Content(u"C:\\data.txt"_s), "data");
}

TEST_F(LabelRenameTest, ANodeOfAFolderThatHasGoneMakesRoomForTheRenamedOne) {
  memory_->Vanish(u"C:\\Backup"_s);
  EXPECT_FALSE(RenameItem(u"Programs"_s, u"Backup"_s));
  ASSERT_NE(Node(Local(u"Backup"_s)), nullptr);
  navigator_.Refresh();
  EXPECT_EQ(ListTexts(), (QStringList{u"Backup"_s, u"data.txt"_s, u"readme.txt"_s}));
  Display(Local(u"Backup"_s));
  EXPECT_EQ(ListTexts(), (QStringList{u"Cell1"_s, u"main.pac"_s}));
}

TEST_F(LabelRenameTest, ARenameThatHappenedInSpiteOfItsErrorIsSaidLoggedAndShownAsItIs) {
  int renamedAndSaid = 0;
  for (int call = 1; call < 50; ++call) {
    SCOPED_TRACE(call);
    log_.Clear();
    prompts_.AnswerAllBoxes(PromptAnswer::Ok);
    faulty_->Arm(call, FaultSpan::Once, error::kTimeOut, Fault::DoAndFail);
    RenameItem(u"readme.txt"_s, u"notes.txt"_s);
    const int faults = faulty_->FaultCount();
    faulty_->Disarm();
    const bool renamed = memory_->Exists(u"C:\\notes.txt"_s);
    EXPECT_NE(renamed, memory_->Exists(u"C:\\readme.txt"_s));
    EXPECT_EQ(renamed, Item(u"notes.txt"_s) != FileListModel::kNoItem);
    EXPECT_NE(renamed, Item(u"readme.txt"_s) != FileListModel::kNoItem);
    EXPECT_EQ(log_.Lines().size(), renamed ? 1 : 0);
    EXPECT_TRUE(renamed || !prompts_.Asked().empty());
    renamedAndSaid += renamed && !prompts_.Asked().empty() ? 1 : 0;
    if (renamed) {
      EXPECT_FALSE(RenameItem(u"notes.txt"_s, u"readme.txt"_s));
    }
    prompts_.ForgetAsked();
    if (faults == 0)
      break;
  }
  EXPECT_EQ(renamedAndSaid, 1) << "the call that renames";
}

/// Every call of the engine goes wrong once, alone and with all that follow.
class LabelRenameFaultTest : public LabelRenameTest, public testing::WithParamInterface<FaultSpan> {};

TEST_P(LabelRenameFaultTest, WhateverFailsNothingIsLostAndTheLogTellsWhatWasDone) {
  for (const bool folder : {false, true}) {
    const QString from = folder ? u"Programs"_s : u"readme.txt"_s;
    const QString to = folder ? u"Work"_s : u"notes.txt"_s;
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
      const bool renamed = memory_->Exists(u"C:\\"_s + to);
      EXPECT_NE(renamed, memory_->Exists(u"C:\\"_s + from)) << call;
      EXPECT_EQ(renamed, !log_.Lines().isEmpty()) << call;
      EXPECT_EQ(renamed, !cancelled) << call;
      EXPECT_EQ(cancelled, prompts_.Texts() == QStringList{QString::fromUtf16(kFailed)}) << call;
      EXPECT_NE(Item(renamed ? to : from), FileListModel::kNoItem) << call;
      failures += cancelled ? 1 : 0;
      if (renamed) {
        EXPECT_FALSE(RenameItem(to, from));
      }
      EXPECT_EQ(engine_->HeldFiles(), 0) << call;
      if (faults == 0)
        break;
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

#include "fileops/NewFolder.h"
#include "tests/fileops/FileCommandsFixture.h"

#include <utility>

namespace trevane::test {
namespace {

using namespace Qt::StringLiterals;

QString NameOf(int number) {
  return number == 0 ? u"New Folder"_s : u"New Folder(%1)"_s.arg(number);
}

class NewFolderTest : public FileCommandsFixture {};

TEST_F(NewFolderTest, TheFirstOneIsCalledNewFolderAndShowsInTreeAndList) {
  active_ = ActiveSide::Tree;
  Execute(CommandId::NewFolder);
  EXPECT_TRUE(memory_->Exists(u"C:\\New Folder"_s));
  EXPECT_TRUE(ListTexts().contains(u"New Folder"_s));
  EXPECT_NE(Node(Local(u"New Folder"_s)), nullptr);
  EXPECT_TRUE(log_.Lines().isEmpty());
  ExpectPlace(Local());
}

TEST_F(NewFolderTest, WithNewFolderAndNewFolder1PresentItIsNewFolder2) {
  memory_->AddFolder(u"C:\\New Folder"_s);
  memory_->AddFile(u"C:\\New Folder(1)"_s, "a file takes the name, too");
  Execute(CommandId::NewFolder);
  EXPECT_TRUE(memory_->Exists(u"C:\\New Folder(2)"_s));
  EXPECT_FALSE(memory_->Exists(u"C:\\New Folder(3)"_s));
}

TEST_F(NewFolderTest, TheTwentiethNameIsTheLastThatIsTried) {
  for (int i = 0; i < 19; ++i)
    memory_->AddFolder(u"C:\\"_s + NameOf(i));
  Execute(CommandId::NewFolder);
  EXPECT_TRUE(memory_->Exists(u"C:\\New Folder(19)"_s));
}

TEST_F(NewFolderTest, WithAllTwentyPresentNothingIsCreatedAndSaid) {
  for (int i = 0; i < 20; ++i)
    memory_->AddFolder(u"C:\\"_s + NameOf(i));
  const QStringList before = memory_->Tree();
  prompts_.ExpectBox(u"Cannot Create New Folder."_s);
  Execute(CommandId::NewFolder);
  EXPECT_EQ(memory_->Tree(), before);
  ASSERT_EQ(prompts_.Asked().size(), 1U);
  EXPECT_EQ(prompts_.Asked()[0].icon, PromptIcon::Exclamation);
  EXPECT_EQ(prompts_.Asked()[0].buttons, PromptButtons::Ok);
  EXPECT_EQ(prompts_.Asked()[0].title, QString());
  EXPECT_EQ(prompts_.Asked()[0].informativeText, u"C:\nThe names up to 'New Folder(19)' are all taken"_s);
}

TEST_F(NewFolderTest, TheFirstRefusalIsTheReason) {
  memory_->AddFolder(u"C:\\New Folder"_s);
  faulty_->SetHook([](const FileSystemCall& call) {
    if (call.operation == FileSystemOperation::CreateFolder)
      throw RunTimeError(error::kAccessDenied, u"denied: "_s + call.path);
  });
  prompts_.ExpectBox(u"Cannot Create New Folder."_s);
  Execute(CommandId::NewFolder);
  EXPECT_EQ(prompts_.Asked().at(0).informativeText, u"New Folder(1)\ndenied: C:\\New Folder(1)"_s);
  EXPECT_EQ(host_.reasons, QStringList{u"denied: C:\\New Folder(1)"_s});
}

TEST_F(NewFolderTest, AFolderThatCannotBeOpenedIsNamed) {
  Select({u"Backup"_s});
  memory_->Vanish(u"C:\\Backup"_s);
  prompts_.ExpectBox();
  Execute(CommandId::NewFolder);
  EXPECT_TRUE(prompts_.Asked().at(0).text.contains(u"Backup"_s));
  EXPECT_EQ(prompts_.Asked().at(0).informativeText, u"Backup"_s);
  EXPECT_EQ(host_.reasons, QStringList{prompts_.Asked().at(0).text});
}

TEST_F(NewFolderTest, WhereAllNamesAreRefusedItCannotBeCreated) {
  memory_->SetWriteProtected(u"C:"_s, true);
  prompts_.ExpectBox(u"Cannot Create New Folder."_s);
  Execute(CommandId::NewFolder);
  EXPECT_TRUE(host_.IsEnabled());
}

TEST_F(NewFolderTest, InAFolderSelectedInTheListItIsMadeThereAndTheListStays) {
  Select({u"Backup"_s});
  Execute(CommandId::NewFolder);
  EXPECT_TRUE(memory_->Exists(u"C:\\Backup\\New Folder"_s));
  EXPECT_NE(Node(Local(u"Backup\\New Folder"_s)), nullptr);
  ExpectPlace(Local());
}

TEST_F(NewFolderTest, ASelectedFileMakesItInTheFolderThatIsShown) {
  Select({u"readme.txt"_s});
  Execute(CommandId::NewFolder);
  EXPECT_TRUE(memory_->Exists(u"C:\\New Folder"_s));
}

TEST_F(NewFolderTest, TheTreeSideTakesNoNoticeOfTheListsSelection) {
  active_ = ActiveSide::Tree;
  Select({u"Backup"_s});
  Execute(CommandId::NewFolder);
  EXPECT_TRUE(memory_->Exists(u"C:\\New Folder"_s));
}

TEST_F(NewFolderTest, OnAControllerItIsMadeThere) {
  Display(u"Workspace\\Cell"_s);
  Execute(CommandId::NewFolder);
  EXPECT_TRUE(cell_->Exists(u"New Folder"_s));
  EXPECT_NE(Node(u"Workspace\\Cell\\New Folder"_s), nullptr);
}

TEST_F(NewFolderTest, AParentThatIsGoneGivesTheErrorsOwnText) {
  Display(Local(u"Programs"_s));
  faulty_->SetHook([](const FileSystemCall& call) {
    if (call.path.endsWith(u"Programs"))
      throw RunTimeError(error::kAccessDenied, u"Access is denied: C:\\Programs"_s);
  });
  prompts_.ExpectBox(u"Access is denied: C:\\Programs"_s);
  Execute(CommandId::NewFolder);
}

TEST_F(NewFolderTest, AFolderThatWasMadeInSpiteOfAnErrorIsNotMadeTwice) {
  faulty_->SetHook([this, first = true](const FileSystemCall& call) mutable {
    if (call.operation == FileSystemOperation::CreateFolder && std::exchange(first, false)) {
      memory_->AddFolder(call.path);
      throw RunTimeError(error::kTimeOut, u"no answer"_s);
    }
  });
  Execute(CommandId::NewFolder);
  EXPECT_TRUE(memory_->Exists(u"C:\\New Folder"_s));
  EXPECT_FALSE(memory_->Exists(u"C:\\New Folder(1)"_s));
  EXPECT_TRUE(ListTexts().contains(u"New Folder"_s));
}

class NewFolderFaultTest : public NewFolderTest, public testing::WithParamInterface<FaultSpan> {};

TEST_P(NewFolderFaultTest, WhateverFailsNothingIsLostAndTheWindowIsUsable) {
  const QStringList before = memory_->Tree();
  for (int call = 1; call < 400; ++call) {
    SCOPED_TRACE(call);
    prompts_.AnswerAllBoxes(PromptAnswer::Ok);
    prompts_.ForgetAsked();
    engine_->Arm(call, GetParam());
    Execute(CommandId::NewFolder);
    const int faults = engine_->FaultCount();
    engine_->Disarm();
    const QStringList after = memory_->Tree();
    for (const QString& line : before)
      EXPECT_TRUE(after.contains(line)) << line.toStdString();
    const bool made = after.size() > before.size();
    EXPECT_TRUE(made || prompts_.Asked().size() == 1U);
    EXPECT_TRUE(log_.Lines().isEmpty());
    EXPECT_TRUE(host_.IsEnabled());
    EXPECT_FALSE(prompts_.RecordedGauge().IsLoaded());
    EXPECT_EQ(engine_->HeldFiles(), 0);
    for (int i = 0; i < 20; ++i)
      if (memory_->Exists(u"C:\\"_s + NameOf(i)))
        memory_->Vanish(u"C:\\"_s + NameOf(i));
    if (faults == 0)
      return;
  }
  FAIL() << "the last call was never reached";
}

INSTANTIATE_TEST_SUITE_P(Spans, NewFolderFaultTest, testing::Values(FaultSpan::Once, FaultSpan::FromThenOn),
                         [](const auto& info) {
                           return info.param == FaultSpan::Once ? "Once" : "FromThenOn";
                         });

}  // namespace
}  // namespace trevane::test

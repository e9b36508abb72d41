#include "fileops/NewFolder.h"
#include "tests/fileops/FileCommandsFixture.h"

#include <utility>

namespace trevane::test {
namespace {

QString NameOf(int number) {
  return number == 0 ? QStringLiteral("New Folder") : QStringLiteral("New Folder(%1)").arg(number);
}

class NewFolderTest : public FileCommandsFixture {};

TEST_F(NewFolderTest, NewFolderShowsInTreeAndList) {
  active_ = ActiveSide::Tree;
  Execute(CommandId::NewFolder);
  EXPECT_TRUE(memory_->Exists(QStringLiteral("C:\\New Folder")));
  EXPECT_TRUE(ListTexts().contains(QStringLiteral("New Folder")));
  EXPECT_NE(Node(Local(QStringLiteral("New Folder"))), nullptr);
  EXPECT_TRUE(log_.Lines().isEmpty());
  ExpectPlace(Local());
}

TEST_F(NewFolderTest, TakenNamesGetTheNextNumber) {
  memory_->AddFolder(QStringLiteral("C:\\New Folder"));
  memory_->AddFile(QStringLiteral("C:\\New Folder(1)"), "a file takes the name, too");
  Execute(CommandId::NewFolder);
  EXPECT_TRUE(memory_->Exists(QStringLiteral("C:\\New Folder(2)")));
  EXPECT_FALSE(memory_->Exists(QStringLiteral("C:\\New Folder(3)")));
}

TEST_F(NewFolderTest, TheTwentiethNameIsTheLastThatIsTried) {
  for (int i = 0; i < 19; ++i) {
    memory_->AddFolder(QStringLiteral("C:\\") + NameOf(i));
  }
  Execute(CommandId::NewFolder);
  EXPECT_TRUE(memory_->Exists(QStringLiteral("C:\\New Folder(19)")));
}

TEST_F(NewFolderTest, TwentyTakenNamesAreAFailure) {
  for (int i = 0; i < 20; ++i) {
    memory_->AddFolder(QStringLiteral("C:\\") + NameOf(i));
  }
  const QStringList before = memory_->Tree();
  prompts_.ExpectBox(QStringLiteral("Cannot Create New Folder."));
  Execute(CommandId::NewFolder);
  EXPECT_EQ(memory_->Tree(), before);
  ASSERT_EQ(prompts_.Asked().size(), 1U);
  EXPECT_EQ(prompts_.Asked()[0].icon, PromptIcon::Exclamation);
  EXPECT_EQ(prompts_.Asked()[0].buttons, PromptButtons::Ok);
  EXPECT_EQ(prompts_.Asked()[0].title, QString());
  EXPECT_EQ(prompts_.Asked()[0].informativeText,
            QStringLiteral("C:\nThe names up to 'New Folder(19)' are all taken"));
}

TEST_F(NewFolderTest, ACancelShowsThePlaceAndTriesNothingMore) {
  int tried = 0;
  faulty_->SetHook([&](const FileSystemCall& call) {
    if (call.operation == FileSystemOperation::CreateFolder) {
      ++tried;
      // The server does it although nobody waits for its answer any more.
      memory_->AddFolder(call.path);
      throw RunTimeError(error::kCancelled, QStringLiteral("interrupted"));
    }
  });
  prompts_.onQuestion = [this](const AskedQuestion&) {
    EXPECT_TRUE(ListTexts().contains(QStringLiteral("New Folder")));
  };
  prompts_.ExpectBox(QStringLiteral("Cannot Create New Folder."));
  Execute(CommandId::NewFolder);
  EXPECT_EQ(tried, 1);
  EXPECT_EQ(prompts_.Asked().at(0).informativeText, QStringLiteral("New Folder\nCancelled."));
}

TEST_F(NewFolderTest, TheFirstRefusalIsTheReason) {
  memory_->AddFolder(QStringLiteral("C:\\New Folder"));
  faulty_->SetHook([](const FileSystemCall& call) {
    if (call.operation == FileSystemOperation::CreateFolder) {
      throw RunTimeError(error::kAccessDenied, QStringLiteral("denied: ") + call.path);
    }
  });
  prompts_.ExpectBox(QStringLiteral("Cannot Create New Folder."));
  Execute(CommandId::NewFolder);
  EXPECT_EQ(prompts_.Asked().at(0).informativeText,
            QStringLiteral("New Folder(1)\ndenied: C:\\New Folder(1)"));
  EXPECT_EQ(host_.reasons, QStringList{QStringLiteral("denied: C:\\New Folder(1)")});
}

TEST_F(NewFolderTest, AFolderThatCannotBeOpenedIsNamed) {
  Select({QStringLiteral("Backup")});
  memory_->Vanish(QStringLiteral("C:\\Backup"));
  prompts_.ExpectBox();
  Execute(CommandId::NewFolder);
  EXPECT_TRUE(prompts_.Asked().at(0).text.contains(QStringLiteral("Backup")));
  EXPECT_EQ(prompts_.Asked().at(0).informativeText, QStringLiteral("Backup"));
  EXPECT_EQ(host_.reasons, QStringList{prompts_.Asked().at(0).text});
}

TEST_F(NewFolderTest, WhereAllNamesAreRefusedItCannotBeCreated) {
  memory_->SetWriteProtected(QStringLiteral("C:"), true);
  prompts_.ExpectBox(QStringLiteral("Cannot Create New Folder."));
  Execute(CommandId::NewFolder);
  EXPECT_TRUE(host_.IsEnabled());
}

TEST_F(NewFolderTest, NewFolderIsMadeInTheSelectedFolder) {
  Select({QStringLiteral("Backup")});
  Execute(CommandId::NewFolder);
  EXPECT_TRUE(memory_->Exists(QStringLiteral("C:\\Backup\\New Folder")));
  EXPECT_NE(Node(Local(QStringLiteral("Backup\\New Folder"))), nullptr);
  ExpectPlace(Local());
}

TEST_F(NewFolderTest, ASelectedFileMakesItInTheFolderThatIsShown) {
  Select({QStringLiteral("readme.txt")});
  Execute(CommandId::NewFolder);
  EXPECT_TRUE(memory_->Exists(QStringLiteral("C:\\New Folder")));
}

TEST_F(NewFolderTest, TheTreeSideIgnoresTheListsSelection) {
  active_ = ActiveSide::Tree;
  Select({QStringLiteral("Backup")});
  Execute(CommandId::NewFolder);
  EXPECT_TRUE(memory_->Exists(QStringLiteral("C:\\New Folder")));
}

TEST_F(NewFolderTest, OnAControllerItIsMadeThere) {
  Display(QStringLiteral("Workspace\\Cell"));
  Execute(CommandId::NewFolder);
  EXPECT_TRUE(cell_->Exists(QStringLiteral("New Folder")));
  EXPECT_NE(Node(QStringLiteral("Workspace\\Cell\\New Folder")), nullptr);
}

TEST_F(NewFolderTest, AParentThatIsGoneGivesTheErrorsOwnText) {
  Display(Local(QStringLiteral("Programs")));
  faulty_->SetHook([](const FileSystemCall& call) {
    if (call.path.endsWith(u"Programs")) {
      throw RunTimeError(error::kAccessDenied, QStringLiteral("Access is denied: C:\\Programs"));
    }
  });
  prompts_.ExpectBox(QStringLiteral("Access is denied: C:\\Programs"));
  Execute(CommandId::NewFolder);
}

TEST_F(NewFolderTest, FoldersMadeInSpiteOfAnErrorAreNotMadeTwice) {
  faulty_->SetHook([this, first = true](const FileSystemCall& call) mutable {
    if (call.operation == FileSystemOperation::CreateFolder && std::exchange(first, false)) {
      memory_->AddFolder(call.path);
      throw RunTimeError(error::kTimeOut, QStringLiteral("no answer"));
    }
  });
  Execute(CommandId::NewFolder);
  EXPECT_TRUE(memory_->Exists(QStringLiteral("C:\\New Folder")));
  EXPECT_FALSE(memory_->Exists(QStringLiteral("C:\\New Folder(1)")));
  EXPECT_TRUE(ListTexts().contains(QStringLiteral("New Folder")));
}

class NewFolderFaultTest : public NewFolderTest, public testing::WithParamInterface<FaultSpan> {};

TEST_P(NewFolderFaultTest, FailingCallsLoseNothing) {
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
    for (const QString& line : before) {
      EXPECT_TRUE(after.contains(line)) << line.toStdString();
    }
    const bool made = after.size() > before.size();
    EXPECT_TRUE(made || prompts_.Asked().size() == 1U);
    EXPECT_TRUE(log_.Lines().isEmpty());
    EXPECT_TRUE(host_.IsEnabled());
    EXPECT_FALSE(prompts_.RecordedGauge().IsLoaded());
    EXPECT_EQ(engine_->HeldFiles(), 0);
    for (int i = 0; i < 20; ++i) {
      if (memory_->Exists(QStringLiteral("C:\\") + NameOf(i))) {
        memory_->Vanish(QStringLiteral("C:\\") + NameOf(i));
      }
    }
    if (faults == 0) {
      return;
    }
  }
  FAIL() << "the last call was never reached";
}

INSTANTIATE_TEST_SUITE_P(Spans, NewFolderFaultTest, testing::Values(FaultSpan::Once, FaultSpan::FromThenOn),
                         [](const auto& info) {
                           return info.param == FaultSpan::Once ? "Once" : "FromThenOn";
                         });

}  // namespace
}  // namespace trevane::test

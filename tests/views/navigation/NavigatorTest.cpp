#include "tests/views/navigation/NavigationFixture.h"

namespace trevane::test {
namespace {

class NavigatorTest : public NavigationFixture {};

TEST_F(NavigatorTest, AClickDuringAListingShowsTheNewNode) {
  memory_->AddFolder(QStringLiteral("C:\\many"));
  AddFiles(QStringLiteral("C:\\many"), 60);
  navigator_.Builder().RebuildTree();
  int depth = 0;
  listener_.onEvents = [&] {
    ASSERT_EQ(++depth, 1) << "a listing inside a listing";
    if (listener_.turns == 5) {
      Display(QStringLiteral("Workspace\\My Computer\\C:\\Programs"));
    }
    --depth;
  };
  Display(QStringLiteral("Workspace\\My Computer\\C:\\many"));
  EXPECT_EQ(listener_.turns, 5);
  ExpectLocation(QStringLiteral("Workspace\\My Computer\\C:\\Programs"));
  EXPECT_EQ(ListTexts(), QStringList{QStringLiteral("Cell1")});
  EXPECT_EQ(listener_.ended, 1);
  EXPECT_FALSE(navigator_.IsDisplaying());
}

TEST_F(NavigatorTest, AClickOnMyComputerDuringAListingIsSafe) {
  memory_->AddFolder(QStringLiteral("C:\\many"));
  AddFiles(QStringLiteral("C:\\many"), 60);
  navigator_.Builder().RebuildTree();
  listener_.onEvents = [&] {
    if (listener_.turns == 5) {
      Display(QStringLiteral("Workspace\\My Computer"));
    }
  };
  Display(QStringLiteral("Workspace\\My Computer\\C:\\many"));
  ExpectLocation(QStringLiteral("Workspace\\My Computer"));
  EXPECT_EQ(list_.Count(), 3);
}

TEST_F(NavigatorTest, CancelDisplayEndsTheListing) {
  memory_->AddFolder(QStringLiteral("C:\\many"));
  AddFiles(QStringLiteral("C:\\many"), 60);
  navigator_.Builder().RebuildTree();
  listener_.onEvents = [&] {
    if (listener_.turns == 7) {
      navigator_.CancelDisplay();
    }
  };
  Display(QStringLiteral("Workspace\\My Computer\\C:\\many"));
  EXPECT_EQ(listener_.turns, 7);
  EXPECT_EQ(listener_.ended, 1);
}

TEST_F(NavigatorTest, AGoneFolderLosesItsNodeForTheNearestOne) {
  navigator_.Builder().RebuildTree();
  memory_->Vanish(QStringLiteral("C:\\Backup"));
  prompts_.ExpectBox();
  Display(QStringLiteral("Workspace\\My Computer\\C:\\Backup"));
  EXPECT_FALSE(prompts_.Asked().front().text.isEmpty());
  EXPECT_FALSE(HasNode(QStringLiteral("Workspace\\My Computer\\C:\\Backup")));
  ExpectLocation(QStringLiteral("Workspace\\My Computer\\C:"));
  EXPECT_EQ(ListTexts(), (QStringList{QStringLiteral("Programs"), QStringLiteral("readme.txt")}));
}

TEST_F(NavigatorTest, AFolderReplacedByAFileGivesAMessage) {
  navigator_.Builder().RebuildTree();
  memory_->Vanish(QStringLiteral("C:\\Backup"));
  memory_->AddFile(QStringLiteral("C:\\Backup"), "a file now");
  prompts_.ExpectBox();
  Display(QStringLiteral("Workspace\\My Computer\\C:\\Backup"));
  EXPECT_FALSE(prompts_.Asked().front().text.isEmpty());
  EXPECT_EQ(list_.rowCount(), 0);
}

TEST_F(NavigatorTest, AFolderThatDoesNotAnswerInTimeKeepsItsNode) {
  navigator_.Builder().RebuildTree();
  faulty_->SetHook([&](const FileSystemCall& call) {
    if (call.path.endsWith(u"Backup")) {
      throw RunTimeError(error::kTimeOut, QStringLiteral("The time limit was exceeded"));
    }
  });
  prompts_.ExpectBox(QStringLiteral("The time limit was exceeded"));
  Display(QStringLiteral("Workspace\\My Computer\\C:\\Backup"));
  EXPECT_TRUE(HasNode(QStringLiteral("Workspace\\My Computer\\C:\\Backup")));
  ExpectLocation(QStringLiteral("Workspace\\My Computer\\C:\\Backup"));
}

TEST_F(NavigatorTest, AClickOnARemovedNodeListsTheCurrentOneAgain) {
  memory_->AddFolder(QStringLiteral("C:\\many"));
  AddFiles(QStringLiteral("C:\\many"), 60);
  navigator_.Builder().RebuildTree();
  listener_.onEvents = [&] {
    if (listener_.turns != 5) {
      return;
    }
    Display(QStringLiteral("Workspace\\My Computer\\C:\\Programs"));
    tree_.RemoveNode(&Node(QStringLiteral("Workspace\\My Computer\\C:\\Programs")));
  };
  Display(QStringLiteral("Workspace\\My Computer\\C:\\many"));
  ExpectLocation(QStringLiteral("Workspace\\My Computer\\C:\\many"));
  EXPECT_EQ(list_.rowCount(), 60);
}

TEST_F(NavigatorTest, AFolderRespelledInCaseIsFollowed) {
  memory_->AddFile(QStringLiteral("C:\\Case\\upper.txt"));
  navigator_.Builder().RebuildTree();
  memory_->Vanish(QStringLiteral("C:\\Case"));
  memory_->AddFile(QStringLiteral("C:\\case\\lower.txt"));
  Display(QStringLiteral("Workspace\\My Computer\\C:\\Case"));
  EXPECT_EQ(navigator_.CurrentAddress(), QStringLiteral("Workspace\\My Computer\\C:\\case"));
  EXPECT_EQ(listener_.address, QStringLiteral("Workspace\\My Computer\\C:\\case"));
  EXPECT_EQ(listener_.status, QStringLiteral("Selected case"));
  EXPECT_EQ(ListTexts(), QStringList{QStringLiteral("lower.txt")});
}

}  // namespace
}  // namespace trevane::test

#include "tests/views/navigation/NavigationFixture.h"

namespace trevane::test {
namespace {

class FolderTreeBuilderTest : public NavigationFixture {};

TEST_F(FolderTreeBuilderTest, TheTreeStartsWithWorkspaceAndMyComputer) {
  navigator_.Builder().RebuildTree();
  EXPECT_EQ(tree_.FindByIndex(1)->Text(), QStringLiteral("Workspace"));
  EXPECT_EQ(tree_.FindByIndex(1)->Tag(), 0x400000);
  EXPECT_EQ(tree_.FindByIndex(2)->Text(), QStringLiteral("My Computer"));
  EXPECT_EQ(tree_.FindByIndex(2)->Tag(), 0x280000);
  EXPECT_EQ(tree_.FindByIndex(2)->Parent(), tree_.FindByIndex(1));
  EXPECT_EQ(ChildTexts(QStringLiteral("Workspace\\My Computer")),
            (QStringList{QStringLiteral("A:"), QStringLiteral("C:"), QStringLiteral("D:")}));
}

TEST_F(FolderTreeBuilderTest, OnlyFixedDisksShowTheirFoldersAtOnce) {
  navigator_.Builder().RebuildTree();
  EXPECT_EQ(ChildTexts(QStringLiteral("Workspace\\My Computer\\C:")),
            (QStringList{QStringLiteral("Backup"), QStringLiteral("Programs")}));
  EXPECT_TRUE(ChildTexts(QStringLiteral("Workspace\\My Computer\\A:")).isEmpty());
  Display(QStringLiteral("Workspace\\My Computer\\A:"));
  EXPECT_EQ(ChildTexts(QStringLiteral("Workspace\\My Computer\\A:")), QStringList{QStringLiteral("Floppy")});
}

TEST_F(FolderTreeBuilderTest, DriveNodesHaveTheirKindBitAndItemsDoNot) {
  navigator_.Builder().RebuildTree();
  EXPECT_EQ(Node(QStringLiteral("Workspace\\My Computer\\C:")).Tag(), 0x44000);
  EXPECT_EQ(Node(QStringLiteral("Workspace\\My Computer\\D:")).Tag(), 0x50000);
  Display(QStringLiteral("Workspace\\My Computer"));
  EXPECT_EQ(list_.Tag(Item(QStringLiteral("D:"))), 0x40000);
  EXPECT_EQ(list_.ImageKey(Item(QStringLiteral("D:"))), QStringLiteral("CDROM"));
}

TEST_F(FolderTreeBuilderTest, ADriveWithoutRootFolderGetsNoNode) {
  volumes_.Set({{QStringLiteral("A:"), QStringLiteral("/a/"), drivetype::kNoRoot},
                {QStringLiteral("C:"), QStringLiteral("/c/"), drivetype::kFixed}});
  navigator_.Builder().RebuildTree();
  EXPECT_EQ(ChildTexts(QStringLiteral("Workspace\\My Computer")), QStringList{QStringLiteral("C:")});
  EXPECT_EQ(drives_.Drives()[0].ImageKey, QString());
  EXPECT_EQ(drives_.Drives()[1].NodeIndex, Node(QStringLiteral("Workspace\\My Computer\\C:")).Index());
}

TEST_F(FolderTreeBuilderTest, ADriveThatCannotBeReadStaysEmpty) {
  volumes_.Set({{QStringLiteral("A:"), QStringLiteral("/a/"), drivetype::kFixed},
                {QStringLiteral("C:"), QStringLiteral("/c/"), drivetype::kFixed}});
  faulty_->SetHook([](const FileSystemCall& call) {
    if (call.operation == FileSystemOperation::List && call.path == QStringLiteral("A:")) {
      throw RunTimeError(error::kAccessDenied, QStringLiteral("Access is denied: A:"));
    }
  });
  navigator_.Builder().RebuildTree();
  EXPECT_TRUE(ChildTexts(QStringLiteral("Workspace\\My Computer\\A:")).isEmpty());
  EXPECT_EQ(ChildTexts(QStringLiteral("Workspace\\My Computer\\C:")).size(), 2);
}

TEST_F(FolderTreeBuilderTest, HiddenFoldersAppearUnlessTheyAreSystemToo) {
  memory_->AddFolder(QStringLiteral("C:\\hidden"));
  memory_->SetAttributes(QStringLiteral("C:\\hidden"), 0x2);
  memory_->AddFolder(QStringLiteral("C:\\secret"));
  memory_->SetAttributes(QStringLiteral("C:\\secret"), 0x6);
  navigator_.Builder().RebuildTree();
  EXPECT_TRUE(HasNode(QStringLiteral("Workspace\\My Computer\\C:\\hidden")));
  EXPECT_FALSE(HasNode(QStringLiteral("Workspace\\My Computer\\C:\\secret")));
  Display(QStringLiteral("Workspace\\My Computer\\C:"));
  EXPECT_FALSE(HasNode(QStringLiteral("Workspace\\My Computer\\C:\\secret")));
  EXPECT_EQ(ListTexts().indexOf(QStringLiteral("hidden")), -1);
  EXPECT_EQ(ListTexts().indexOf(QStringLiteral("secret")), -1);
}

TEST_F(FolderTreeBuilderTest, ADisplayAddsOneLevelWithoutDuplicates) {
  memory_->AddFolder(QStringLiteral("C:\\Programs\\Cell2\\deep"));
  navigator_.Builder().RebuildTree();
  EXPECT_TRUE(ChildTexts(QStringLiteral("Workspace\\My Computer\\C:\\Programs")).isEmpty());
  Display(QStringLiteral("Workspace\\My Computer\\C:\\Programs"));
  EXPECT_EQ(ChildTexts(QStringLiteral("Workspace\\My Computer\\C:\\Programs")),
            (QStringList{QStringLiteral("Cell1"), QStringLiteral("Cell2")}));
  Display(QStringLiteral("Workspace\\My Computer\\C:\\Programs"));
  EXPECT_EQ(ChildTexts(QStringLiteral("Workspace\\My Computer\\C:\\Programs")).size(), 2);
  EXPECT_FALSE(HasNode(QStringLiteral("Workspace\\My Computer\\C:\\Programs\\Cell2\\deep")));
}

TEST_F(FolderTreeBuilderTest, ADisplayOfMyComputerRebuildsItsBranch) {
  navigator_.Builder().RebuildTree();
  Display(QStringLiteral("Workspace\\My Computer\\C:\\Programs"));
  volumes_.SetNext({{QStringLiteral("C:"), QStringLiteral("/c/"), drivetype::kFixed},
                    {QStringLiteral("E:"), QStringLiteral("/e/"), drivetype::kRemote}});
  Display(QStringLiteral("Workspace\\My Computer"));
  EXPECT_EQ(ChildTexts(QStringLiteral("Workspace\\My Computer")),
            (QStringList{QStringLiteral("C:"), QStringLiteral("E:")}));
  EXPECT_EQ(ListTexts(), (QStringList{QStringLiteral("C:"), QStringLiteral("E:")}));
  EXPECT_EQ(ChildTexts(QStringLiteral("Workspace\\My Computer\\C:")).size(), 2);
  EXPECT_FALSE(HasNode(QStringLiteral("Workspace\\My Computer\\C:\\Programs\\Cell1")));
  ExpectLocation(QStringLiteral("Workspace\\My Computer"));
}

TEST_F(FolderTreeBuilderTest, AListingRespellsTheNodesOfItsFolders) {
  memory_->AddFolder(QStringLiteral("C:\\Case"));
  navigator_.Builder().RebuildTree();
  memory_->AddFolder(QStringLiteral("C:\\case"));
  memory_->SetAttributes(QStringLiteral("C:\\case"), 0x2);
  Display(QStringLiteral("Workspace\\My Computer\\C:"));
  EXPECT_EQ(Node(QStringLiteral("Workspace\\My Computer\\C:\\CASE")).Text(), QStringLiteral("Case"))
      << "both are there";
  memory_->Vanish(QStringLiteral("C:\\Case"));
  Display(QStringLiteral("Workspace\\My Computer\\C:"));
  EXPECT_EQ(Node(QStringLiteral("Workspace\\My Computer\\C:\\CASE")).Text(), QStringLiteral("case"));
}

}  // namespace
}  // namespace trevane::test

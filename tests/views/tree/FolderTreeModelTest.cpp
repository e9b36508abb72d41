#include "base/RunTimeError.h"
#include "views/ItemRoles.h"
#include "views/addresses/Addresses.h"
#include "views/addresses/ImageKeys.h"
#include "views/addresses/NodeTags.h"
#include "views/tree/FolderTreeModel.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QTreeView>

#include <gtest/gtest.h>

#include <random>

namespace trevane {
namespace {

class FolderTreeModelTest : public testing::Test {
 protected:
  FolderTreeModelTest() {
    root_ = tree_.AddTreeNode(nullptr, imagekey::kWorkspace, QStringLiteral("Workspace"), TAG_WORKSPACE);
    computer_ = tree_.AddTreeNode(root_, imagekey::kMyCom, QStringLiteral("My Computer"), kMyComputerTag);
    drive_ = tree_.AddTreeNode(computer_, imagekey::kHdd, QStringLiteral("C:"), TAG_DRIVE | TAG_HDD);
  }

  FolderNode* AddFolder(FolderNode* parent, const QString& name) {
    return tree_.AddTreeNode(parent, imagekey::kFolderClosed, name, MakeFolderTag(0, false));
  }

  [[nodiscard]] QStringList RowsOf(FolderNode* node) const {
    QStringList texts;
    const QModelIndex parent = tree_.IndexOf(node);
    for (int row = 0; row < tree_.rowCount(parent); ++row) {
      texts.append(tree_.index(row, 0, parent).data(Qt::EditRole).toString());
    }
    return texts;
  }

  FolderTreeModel tree_{nullptr};
  QAbstractItemModelTester tester_{&tree_, QAbstractItemModelTester::FailureReportingMode::Fatal};
  FolderNode* root_ = nullptr;
  FolderNode* computer_ = nullptr;
  FolderNode* drive_ = nullptr;
};

TEST_F(FolderTreeModelTest, TheFirstNodeHasIndexOneAndTheSecondTwo) {
  EXPECT_EQ(root_->Index(), 1);
  EXPECT_EQ(computer_->Index(), 2);
  EXPECT_EQ(tree_.FindByIndex(2), computer_);
  EXPECT_EQ(tree_.FindByIndex(0), nullptr);
  EXPECT_EQ(tree_.FindByIndex(99), nullptr);
  tree_.Clear();
  EXPECT_EQ(tree_.Count(), 0);
  EXPECT_EQ(AddFolder(nullptr, QStringLiteral("x"))->Index(), 1);
}

TEST_F(FolderTreeModelTest, TheFullPathIsTheAddress) {
  FolderNode* folder = AddFolder(drive_, QStringLiteral("Windows"));
  EXPECT_EQ(root_->FullPath(), QStringLiteral("Workspace"));
  EXPECT_EQ(folder->FullPath(), QStringLiteral("Workspace\\My Computer\\C:\\Windows"));
  EXPECT_EQ(folder->Key(), QStringLiteral("workspace\\my computer\\c:\\windows"));
  EXPECT_EQ(folder->Parent(), drive_);
  EXPECT_EQ(root_->Parent(), nullptr);
}

TEST_F(FolderTreeModelTest, AddressesThatDifferInCaseDenoteOneNode) {
  EXPECT_EQ(tree_.FindByKey(u"workspace\\my computer\\c:"), drive_);
  EXPECT_EQ(tree_.FindByKey(u"Workspace\\My Computer\\C:"), drive_);
  EXPECT_EQ(tree_.FindByKey(u"WORKSPACE"), root_);
}

TEST_F(FolderTreeModelTest, WhatIsNoAddressOfANodeFindsNothing) {
  EXPECT_EQ(tree_.FindByKey(u""), nullptr);
  EXPECT_EQ(tree_.FindByKey(u"\\Workspace"), nullptr);
  EXPECT_EQ(tree_.FindByKey(u"Workspace\\"), nullptr);
  EXPECT_EQ(tree_.FindByKey(u"Workspace\\\\My Computer"), nullptr);
  EXPECT_EQ(tree_.FindByKey(u"My Computer"), nullptr);
}

TEST_F(FolderTreeModelTest, ASecondNodeOfTheSameKeyIsRefused) {
  AddFolder(drive_, QStringLiteral("Dir"));
  try {
    AddFolder(drive_, QStringLiteral("dIR"));
    FAIL();
  } catch (const RunTimeError& failure) {
    EXPECT_EQ(failure.Number(), error::kKeyAlreadyThere);
  }
  EXPECT_EQ(RowsOf(drive_), QStringList{QStringLiteral("Dir")});
  EXPECT_EQ(tree_.Count(), 4);
}

TEST_F(FolderTreeModelTest, TextTagAndImagesAreWhatWasGiven) {
  EXPECT_EQ(drive_->Tag(), 0x44000);
  EXPECT_EQ(tree_.ImageKey(drive_), QStringLiteral("HDD"));
  EXPECT_EQ(tree_.ExpandedImageKey(drive_), QStringLiteral("HDD")) << "no other image while expanded";
  FolderNode* folder = AddFolder(drive_, QStringLiteral("Dir"));
  tree_.SetExpandedImageKey(folder, imagekey::kFolderOpen);
  EXPECT_EQ(tree_.ImageKey(folder), QStringLiteral("F-CLOSE"));
  EXPECT_EQ(tree_.ExpandedImageKey(folder), QStringLiteral("F-OPEN"));
  FolderNode* bare = tree_.AddTreeNode(root_, {}, QStringLiteral("Bare"));
  EXPECT_EQ(bare->Tag(), 0);
  EXPECT_EQ(tree_.ImageKey(bare), QString());
  const QModelIndex index = tree_.IndexOf(folder);
  EXPECT_EQ(index.data(kTagRole).toInt(), 0x10);
  EXPECT_EQ(index.data(kKeyRole).toString(), folder->Key());
  EXPECT_EQ(index.data(kFullPathRole).toString(), folder->FullPath());
}

TEST_F(FolderTreeModelTest, ChangesOfANodeAreReported) {
  QSignalSpy changed(&tree_, &QAbstractItemModel::dataChanged);
  tree_.SetTag(drive_, 5);
  tree_.SetTag(drive_, 5);
  tree_.SetExpandedImageKey(drive_, QStringLiteral("X"));
  EXPECT_EQ(changed.count(), 2);
}

TEST_F(FolderTreeModelTest, ChildrenOfASortedNodeStandInOrderOfText) {
  tree_.SetSorted(drive_, true);
  for (const QString& name : {QStringLiteral("b"), QStringLiteral("C"), QStringLiteral("a"),
                              QStringLiteral("_"), QStringLiteral("B2")}) {
    AddFolder(drive_, name);
  }
  EXPECT_EQ(RowsOf(drive_), (QStringList{QStringLiteral("_"), QStringLiteral("a"), QStringLiteral("b"),
                                         QStringLiteral("B2"), QStringLiteral("C")}));
}

TEST_F(FolderTreeModelTest, ChildrenOfAnUnsortedNodeStandAsTheyCame) {
  AddFolder(drive_, QStringLiteral("b"));
  AddFolder(drive_, QStringLiteral("a"));
  EXPECT_EQ(RowsOf(drive_), (QStringList{QStringLiteral("b"), QStringLiteral("a")}));
}

TEST_F(FolderTreeModelTest, SortingANodeReordersTheSameChildren) {
  FolderNode* b = AddFolder(drive_, QStringLiteral("b"));
  AddFolder(drive_, QStringLiteral("a"));
  const QPersistentModelIndex held(tree_.IndexOf(b));
  tree_.SetSorted(drive_, true);
  EXPECT_EQ(RowsOf(drive_), (QStringList{QStringLiteral("a"), QStringLiteral("b")}));
  EXPECT_EQ(tree_.NodeAt(held), b);
  EXPECT_EQ(held.row(), 1);
}

TEST_F(FolderTreeModelTest, RenamingAFolderTakesAllKeysBelowAlong) {
  FolderNode* folder = AddFolder(drive_, QStringLiteral("Old"));
  FolderNode* below = AddFolder(AddFolder(folder, QStringLiteral("Sub")), QStringLiteral("Deep"));
  tree_.RenameNode(folder, QStringLiteral("NEW"));
  EXPECT_EQ(below->Key(), QStringLiteral("workspace\\my computer\\c:\\new\\sub\\deep"));
  EXPECT_EQ(tree_.FindByKey(u"Workspace\\My Computer\\C:\\New\\Sub\\Deep"), below);
  EXPECT_EQ(tree_.FindByKey(u"Workspace\\My Computer\\C:\\Old"), nullptr);
  EXPECT_EQ(tree_.FindByKey(u"Workspace\\My Computer\\C:\\Old\\Sub\\Deep"), nullptr);
}

TEST_F(FolderTreeModelTest, RenamingMovesTheNodeToItsPlaceAmongSortedSiblings) {
  tree_.SetSorted(drive_, true);
  FolderNode* a = AddFolder(drive_, QStringLiteral("a"));
  FolderNode* b = AddFolder(drive_, QStringLiteral("b"));
  FolderNode* c = AddFolder(drive_, QStringLiteral("c"));
  const QPersistentModelIndex held(tree_.IndexOf(a));
  tree_.RenameNode(a, QStringLiteral("z"));
  EXPECT_EQ(RowsOf(drive_), (QStringList{QStringLiteral("b"), QStringLiteral("c"), QStringLiteral("z")}));
  EXPECT_EQ(tree_.NodeAt(held), a);
  tree_.RenameNode(a, QStringLiteral("A"));
  EXPECT_EQ(RowsOf(drive_), (QStringList{QStringLiteral("A"), QStringLiteral("b"), QStringLiteral("c")}));
  tree_.RenameNode(b, QStringLiteral("bb"));
  tree_.RenameNode(c, QStringLiteral("C"));
  EXPECT_EQ(RowsOf(drive_), (QStringList{QStringLiteral("A"), QStringLiteral("bb"), QStringLiteral("C")}));
}

TEST_F(FolderTreeModelTest, ANodeCannotTakeASiblingsTextButAnotherCase) {
  FolderNode* a = AddFolder(drive_, QStringLiteral("a"));
  AddFolder(drive_, QStringLiteral("b"));
  EXPECT_THROW(tree_.RenameNode(a, QStringLiteral("B")), RunTimeError);
  EXPECT_EQ(a->Text(), QStringLiteral("a"));
  tree_.RenameNode(a, QStringLiteral("A"));
  EXPECT_EQ(a->Text(), QStringLiteral("A"));
}

TEST_F(FolderTreeModelTest, RemovingANodeRemovesWhatIsBelow) {
  FolderNode* folder = AddFolder(drive_, QStringLiteral("Dir"));
  AddFolder(folder, QStringLiteral("Sub"));
  AddFolder(drive_, QStringLiteral("Other"));
  tree_.RemoveNode(folder);
  EXPECT_EQ(RowsOf(drive_), QStringList{QStringLiteral("Other")});
  EXPECT_EQ(tree_.FindByKey(u"Workspace\\My Computer\\C:\\Dir\\Sub"), nullptr);
  EXPECT_EQ(tree_.Count(), 4);
  AddFolder(AddFolder(drive_, QStringLiteral("Dir")), QStringLiteral("Sub"));
  EXPECT_EQ(tree_.Count(), 6);
}

TEST_F(FolderTreeModelTest, RemovingTheChildrenKeepsTheNode) {
  AddFolder(AddFolder(drive_, QStringLiteral("Dir")), QStringLiteral("Sub"));
  FolderNode* controller =
      tree_.AddTreeNode(root_, imagekey::kController, QStringLiteral("Ctrl1"), kControllerTag);
  tree_.RemoveChildren(computer_);
  EXPECT_EQ(RowsOf(computer_), QStringList());
  EXPECT_EQ(tree_.Count(), 3);
  EXPECT_EQ(tree_.FindByKey(u"workspace\\ctrl1"), controller);
  tree_.RemoveChildren(computer_);
  EXPECT_EQ(tree_.AddTreeNode(computer_, {}, QStringLiteral("C:"))->Key(),
            QStringLiteral("workspace\\my computer\\c:"));
}

TEST_F(FolderTreeModelTest, ANodeOfABatchIsFoundAtOnceAndShownAtItsEnd) {
  tree_.SetSorted(drive_, true);
  FolderNode* m = AddFolder(drive_, QStringLiteral("m"));
  const QPersistentModelIndex held(tree_.IndexOf(m));
  QSignalSpy inserted(&tree_, &QAbstractItemModel::rowsInserted);
  tree_.BeginBatch(drive_);
  FolderNode* z = AddFolder(drive_, QStringLiteral("z"));
  FolderNode* a = AddFolder(drive_, QStringLiteral("a"));
  EXPECT_EQ(tree_.FindByKey(u"workspace\\my computer\\c:\\Z"), z);
  EXPECT_THROW(AddFolder(drive_, QStringLiteral("Z")), RunTimeError);
  EXPECT_FALSE(tree_.IndexOf(a).isValid());
  EXPECT_EQ(RowsOf(drive_), QStringList{QStringLiteral("m")});
  EXPECT_EQ(inserted.count(), 0);
  tree_.FlushBatch();
  EXPECT_EQ(RowsOf(drive_), (QStringList{QStringLiteral("a"), QStringLiteral("m"), QStringLiteral("z")}));
  EXPECT_EQ(tree_.NodeAt(held), m);
  AddFolder(drive_, QStringLiteral("b"));
  EXPECT_EQ(RowsOf(drive_).size(), 3);
  tree_.EndBatch();
  EXPECT_EQ(RowsOf(drive_), (QStringList{QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("m"),
                                         QStringLiteral("z")}));
  AddFolder(drive_, QStringLiteral("c"));
  EXPECT_EQ(RowsOf(drive_).size(), 5) << "the batch is over";
}

TEST_F(FolderTreeModelTest, ABatchUnderAnUnsortedNodeKeepsTheOrder) {
  tree_.BeginBatch(drive_);
  AddFolder(drive_, QStringLiteral("z"));
  AddFolder(drive_, QStringLiteral("a"));
  tree_.EndBatch();
  EXPECT_EQ(RowsOf(drive_), (QStringList{QStringLiteral("z"), QStringLiteral("a")}));
}

TEST_F(FolderTreeModelTest, AStagedNodeCanGetChildrenBeRenamedAndRemoved) {
  tree_.SetSorted(drive_, true);
  tree_.BeginBatch(drive_);
  FolderNode* a = AddFolder(drive_, QStringLiteral("a"));
  FolderNode* b = AddFolder(drive_, QStringLiteral("b"));
  AddFolder(a, QStringLiteral("Sub"));
  tree_.RenameNode(a, QStringLiteral("c"));
  tree_.RemoveNode(b);
  EXPECT_FALSE(tree_.IndexOf(tree_.FindChild(a, u"sub")).isValid());
  tree_.EndBatch();
  EXPECT_EQ(RowsOf(drive_), QStringList{QStringLiteral("c")});
  EXPECT_EQ(RowsOf(a), QStringList{QStringLiteral("Sub")});
}

TEST_F(FolderTreeModelTest, RemovingTheParentEndsItsBatch) {
  FolderNode* folder = AddFolder(drive_, QStringLiteral("Dir"));
  tree_.BeginBatch(folder);
  AddFolder(folder, QStringLiteral("Sub"));
  tree_.RemoveNode(folder);
  tree_.EndBatch();
  EXPECT_EQ(tree_.Count(), 3);
  tree_.BeginBatch(drive_);
  AddFolder(drive_, QStringLiteral("x"));
  tree_.RemoveChildren(drive_);
  tree_.EndBatch();
  EXPECT_EQ(tree_.Count(), 3);
  tree_.BeginBatch(drive_);
  AddFolder(drive_, QStringLiteral("x"));
  tree_.Clear();
  tree_.EndBatch();
  EXPECT_EQ(tree_.Count(), 0);
}

TEST_F(FolderTreeModelTest, AnotherBatchEndsTheOneBefore) {
  tree_.BeginBatch(drive_);
  AddFolder(drive_, QStringLiteral("a"));
  tree_.BeginBatch(computer_);
  EXPECT_EQ(RowsOf(drive_), QStringList{QStringLiteral("a")});
  tree_.EndBatch();
}

TEST_F(FolderTreeModelTest, InterleavedNodesAreMergedInOrder) {
  tree_.SetSorted(drive_, true);
  std::mt19937 random(3);
  for (int i = 0; i < 200; ++i) {
    AddFolder(drive_, QString::number(i * 2).rightJustified(5, u'0'));
  }
  std::vector<std::pair<FolderNode*, QPersistentModelIndex>> held;
  for (FolderNode* node : drive_->Children()) {
    held.emplace_back(node, tree_.IndexOf(node));
  }
  std::vector<int> numbers;
  numbers.reserve(200);
  for (int i = 0; i < 200; ++i) {
    numbers.push_back(i * 2 + 1);
  }
  std::shuffle(numbers.begin(), numbers.end(), random);
  tree_.BeginBatch(drive_);
  for (const int number : numbers) {
    AddFolder(drive_, QString::number(number).rightJustified(5, u'0'));
  }
  tree_.EndBatch();
  const QStringList rows = RowsOf(drive_);
  ASSERT_EQ(rows.size(), 400);
  EXPECT_TRUE(std::is_sorted(rows.begin(), rows.end()));
  for (const auto& [node, index] : held) {
    EXPECT_EQ(tree_.NodeAt(index), node);
    EXPECT_EQ(index.row(), tree_.IndexOf(node).row());
  }
}

TEST_F(FolderTreeModelTest, SelectionAndExpansionSurviveABatch) {
  tree_.SetSorted(drive_, true);
  for (int i = 0; i < 100; ++i) {
    AddFolder(drive_, QStringLiteral("dir%1").arg(i * 2, 3, 10, QChar(u'0')));
  }
  FolderNode* open = drive_->Children()[50];
  FolderNode* inside = AddFolder(open, QStringLiteral("inside"));
  QTreeView view;
  view.setUniformRowHeights(true);
  view.setModel(&tree_);
  view.expandToDepth(2);
  view.collapseAll();
  view.expand(tree_.IndexOf(root_));
  view.expand(tree_.IndexOf(computer_));
  view.expand(tree_.IndexOf(drive_));
  view.expand(tree_.IndexOf(open));
  view.setCurrentIndex(tree_.IndexOf(inside));
  view.show();
  tree_.BeginBatch(drive_);
  for (int i = 99; i >= 0; --i) {
    AddFolder(drive_, QStringLiteral("dir%1").arg(i * 2 + 1, 3, 10, QChar(u'0')));
  }
  tree_.EndBatch();
  EXPECT_EQ(tree_.NodeAt(view.currentIndex()), inside);
  EXPECT_EQ(view.selectionModel()->selectedIndexes(), QModelIndexList{tree_.IndexOf(inside)});
  EXPECT_TRUE(view.isExpanded(tree_.IndexOf(open)));
  EXPECT_FALSE(view.isExpanded(tree_.IndexOf(drive_->Children()[51])));
}

TEST_F(FolderTreeModelTest, ANameWithALineEndIsShownOnOneLineAndKeptAsItIs) {
  FolderNode* folder = AddFolder(drive_, QStringLiteral("two\nlines\u2028\x7f"));
  const QModelIndex index = tree_.IndexOf(folder);
  EXPECT_EQ(index.data().toString(), QStringLiteral("two\u240alines\u2424\u2421"));
  EXPECT_EQ(index.data(Qt::EditRole).toString(), QStringLiteral("two\nlines\u2028\x7f"));
  EXPECT_EQ(folder->Text(), QStringLiteral("two\nlines\u2028\x7f"));
}

TEST_F(FolderTreeModelTest, OnlyFoldersCanBeEdited) {
  FolderNode* folder = AddFolder(drive_, QStringLiteral("Dir"));
  EXPECT_TRUE(tree_.IndexOf(folder).flags().testFlag(Qt::ItemIsEditable));
  for (FolderNode* node : {root_, computer_, drive_}) {
    EXPECT_FALSE(tree_.IndexOf(node).flags().testFlag(Qt::ItemIsEditable));
  }
}

TEST_F(FolderTreeModelTest, ContainsIsTrueForTheNodeAndWhatIsBelow) {
  FolderNode* folder = AddFolder(drive_, QStringLiteral("Dir"));
  EXPECT_TRUE(computer_->Contains(folder));
  EXPECT_TRUE(folder->Contains(folder));
  EXPECT_FALSE(folder->Contains(drive_));
  EXPECT_FALSE(folder->Contains(nullptr));
}

}  // namespace
}  // namespace trevane

#include "views/ImageList.h"
#include "views/list/FileListView.h"
#include "views/list/ListSorting.h"
#include "views/list/ListViewState.h"

#include <QAbstractItemModelTester>
#include <QScrollBar>
#include <QTest>

#include <gtest/gtest.h>

namespace trevane {
namespace {

class ListViewStateTest : public testing::Test {
 protected:
  ListViewStateTest() {
    SortByName(files_);
    view_.SetFiles(&files_);
    view_.resize(400, 200);
    view_.show();
    EXPECT_TRUE(QTest::qWaitForWindowExposed(&view_));
    Fill(0, 200);
    QCoreApplication::processEvents();
  }

  void Fill(int first, int last) {
    files_.Clear();
    for (int i = first; i < last; ++i) {
      const auto item = files_.AddListItem({}, 0x20, QStringLiteral("f%1").arg(i, 3, 10, QChar(u'0')), {});
      files_.SetDetails(item, {i, {}, {}, {}, 0});
    }
    files_.FlushStaged();
  }
  [[nodiscard]] QModelIndex IndexOf(const QString& name) const {
    return files_.IndexOf(files_.FindByText(name));
  }
  [[nodiscard]] QStringList Selected() const {
    QStringList texts;
    for (const auto item : view_.SelectedItems()) {
      texts.append(files_.Text(item));
    }
    return texts;
  }
  [[nodiscard]] QString Top() const { return files_.Text(files_.HandleAt(view_.indexAt(QPoint(0, 0)))); }
  void Select(const QStringList& names) {
    for (const QString& name : names) {
      view_.selectionModel()->select(IndexOf(name), QItemSelectionModel::Select | QItemSelectionModel::Rows);
    }
  }

  FileListModel files_{nullptr, nullptr, nullptr};
  QAbstractItemModelTester tester_{&files_, QAbstractItemModelTester::FailureReportingMode::Fatal};
  FileListView view_{nullptr};
};

TEST_F(ListViewStateTest, SelectionFocusAndScrollStayOnEntriesThatStillExist) {
  view_.setCurrentIndex(IndexOf(QStringLiteral("f102")));
  view_.selectionModel()->clearSelection();
  Select({QStringLiteral("f100"), QStringLiteral("f101"), QStringLiteral("f102"), QStringLiteral("f150")});
  view_.scrollTo(IndexOf(QStringLiteral("f100")), QAbstractItemView::PositionAtTop);
  const QString top = Top();
  const ListViewState state = ListViewState::Save(view_);
  Fill(50, 200);
  EXPECT_EQ(Selected(), QStringList());
  state.Restore(view_);
  EXPECT_EQ(Selected(), (QStringList{QStringLiteral("f100"), QStringLiteral("f101"), QStringLiteral("f102"),
                                     QStringLiteral("f150")}));
  EXPECT_EQ(files_.Text(view_.FocusedItem()), QStringLiteral("f102"));
  EXPECT_EQ(Top(), top);
}

TEST_F(ListViewStateTest, WhatIsGoneIsLeftOut) {
  view_.setCurrentIndex(IndexOf(QStringLiteral("f010")));
  Select({QStringLiteral("f009"), QStringLiteral("f010"), QStringLiteral("f100")});
  const ListViewState state = ListViewState::Save(view_);
  Fill(50, 200);
  state.Restore(view_);
  EXPECT_EQ(Selected(), QStringList{QStringLiteral("f100")});
  EXPECT_EQ(view_.currentIndex().row(), 10) << "the focus stays at its place";
}

TEST_F(ListViewStateTest, TheNeighbourOfWhatIsGoneHasTheFocus) {
  view_.setCurrentIndex(IndexOf(QStringLiteral("f011")));
  Select({QStringLiteral("f010"), QStringLiteral("f011"), QStringLiteral("f012")});
  const ListViewState state = ListViewState::Save(view_);
  for (const QString& name : {QStringLiteral("f010"), QStringLiteral("f011"), QStringLiteral("f012")}) {
    files_.RemoveByKey(QStringLiteral("@") + name);
  }
  files_.AddListItem({}, 0x20, QStringLiteral("e"), {});
  state.Restore(view_);
  EXPECT_EQ(Selected(), QStringList());
  EXPECT_EQ(files_.Text(view_.FocusedItem()), QStringLiteral("f013"));
}

TEST_F(ListViewStateTest, AStateWithoutSelectionRestoresTheFocusOnly) {
  view_.setCurrentIndex(IndexOf(QStringLiteral("f011")));
  const ListViewState state = ListViewState::Save(view_, ListViewState::Scope::WithoutSelection);
  Fill(0, 200);
  state.Restore(view_);
  EXPECT_EQ(Selected(), QStringList());
  EXPECT_EQ(files_.Text(view_.FocusedItem()), QStringLiteral("f011"));
}

TEST_F(ListViewStateTest, TheScrollPositionStaysWhenTheTopEntryIsGone) {
  view_.verticalScrollBar()->setValue(20);
  const ListViewState state = ListViewState::Save(view_);
  Fill(40, 200);
  state.Restore(view_);
  EXPECT_EQ(view_.verticalScrollBar()->value(), 20);
}

TEST_F(ListViewStateTest, AnEmptyListTakesAStateWithoutTrouble) {
  view_.setCurrentIndex(IndexOf(QStringLiteral("f010")));
  const ListViewState state = ListViewState::Save(view_);
  files_.Clear();
  state.Restore(view_);
  EXPECT_EQ(Selected(), QStringList());
  const ListViewState empty = ListViewState::Save(view_);
  Fill(0, 10);
  empty.Restore(view_);
  EXPECT_EQ(Selected(), QStringList());
}

TEST_F(ListViewStateTest, ItemsThatAreStillStagedAreRestored) {
  view_.setCurrentIndex(IndexOf(QStringLiteral("f010")));
  const ListViewState state = ListViewState::Save(view_);
  files_.Clear();
  files_.AddListItem({}, 0x20, QStringLiteral("f010"), {});
  state.Restore(view_);
  EXPECT_EQ(Selected(), QStringList{QStringLiteral("f010")});
}

TEST_F(ListViewStateTest, AnItemThatDiffersInCaseIsAnother) {
  view_.setCurrentIndex(IndexOf(QStringLiteral("f010")));
  const ListViewState state = ListViewState::Save(view_);
  files_.Clear();
  files_.AddListItem({}, 0x20, QStringLiteral("F010"), {});
  state.Restore(view_);
  EXPECT_EQ(Selected(), QStringList());
}

}  // namespace
}  // namespace trevane

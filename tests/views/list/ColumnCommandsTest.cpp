#include "views/list/ColumnCommands.h"
#include "views/list/FileListModel.h"
#include "views/list/FileListView.h"
#include "views/list/ListSorting.h"

#include <QAbstractItemModelTester>
#include <QHeaderView>
#include <QTest>

#include <gtest/gtest.h>

#include <random>

namespace trevane {
namespace {

class ColumnCommandsTest : public testing::Test {
 protected:
  ColumnCommandsTest() {
    // By size b, c, a; by date c, a, b.
    Add(QStringLiteral("a"), 30, 2000);
    Add(QStringLiteral("b"), 10, 3000);
    Add(QStringLiteral("c"), 20, 1000);
    list_.FlushStaged();
    SortByName(list_);
  }

  void Add(const QString& name, qint64 size, qint64 modified) {
    const auto item = list_.AddListItem({}, 0x20, name, {});
    list_.SetDetails(item, {.size = size, .modified = Date{modified * 1000}, .accessed = {}, .created = {}});
  }

  [[nodiscard]] QStringList Headers() const {
    QStringList texts;
    for (int section = 0; section < list_.columnCount(); ++section) {
      texts += list_.headerData(section, Qt::Horizontal).toString();
    }
    return texts;
  }
  /// The text of the header with an arrow, and the arrow; nothing when none has one.
  [[nodiscard]] QString Arrow() const {
    QStringList arrows;
    for (int section = 0; section < list_.columnCount(); ++section) {
      if (!list_.HeaderImage(section).isEmpty()) {
        arrows += list_.headerData(section, Qt::Horizontal).toString() + u' ' + list_.HeaderImage(section);
      }
    }
    return arrows.join(QStringLiteral(", "));
  }
  [[nodiscard]] QString Rows() const {
    QString rows;
    for (int row = 0; row < list_.rowCount(); ++row) {
      rows += list_.Text(list_.HandleAt(row));
    }
    return rows;
  }
  void ClickHeader(FileColumn column) {
    const auto& columns = list_.VisibleColumns();
    ColumnClick(list_, static_cast<int>(std::find(columns.begin(), columns.end(), column) - columns.begin()));
  }

  FileListModel list_{nullptr, nullptr, nullptr};
  QAbstractItemModelTester tester_{&list_, QAbstractItemModelTester::FailureReportingMode::Fatal};
};

TEST_F(ColumnCommandsTest, HidingTheSortedColumnSortsByNameAscending) {
  ClickHeader(FileColumn::Modified);
  ClickHeader(FileColumn::Modified);
  ASSERT_EQ(Arrow(), QStringLiteral("Modified DESCEND"));
  EXPECT_FALSE(ToggleColumn(list_, FileColumn::Modified));
  EXPECT_EQ(list_.Sorting(), (SortState{true, 0, false}));
  EXPECT_EQ(Arrow(), QStringLiteral("Name ASCEND"));
  EXPECT_EQ(Rows(), QStringLiteral("abc"));
}

TEST_F(ColumnCommandsTest, HidingAndShowingSizePutsItBackRightAfterName) {
  EXPECT_FALSE(ToggleColumn(list_, FileColumn::Size));
  EXPECT_EQ(Headers().value(1), QStringLiteral("Type"));
  EXPECT_TRUE(ToggleColumn(list_, FileColumn::Size));
  EXPECT_EQ(Headers().value(1), QStringLiteral("Size"));
}

TEST_F(ColumnCommandsTest, ColumnsKeepTheirOrderWhicheverAreHiddenAndShown) {
  const QStringList order = Headers();
  std::mt19937 random(4);
  for (int turn = 0; turn < 500; ++turn) {
    ToggleColumn(list_, static_cast<FileColumn>(1 + random() % 6));
    QStringList expected;
    for (int i = 0; i < kFileColumnCount; ++i) {
      if (list_.IsColumnVisible(static_cast<FileColumn>(i))) {
        expected += order[i];
      }
    }
    ASSERT_EQ(Headers(), expected);
  }
}

TEST_F(ColumnCommandsTest, AColumnShownAfterAHiddenOneIsInFixedOrder) {
  for (const FileColumn column : {FileColumn::Size, FileColumn::Type, FileColumn::Attributes}) {
    ToggleColumn(list_, column);
  }
  ToggleColumn(list_, FileColumn::Attributes);
  ToggleColumn(list_, FileColumn::Type);
  EXPECT_EQ(Headers(), QStringList({QStringLiteral("Name"), QStringLiteral("Type"),
                                    QStringLiteral("Modified"), QStringLiteral("Accessed"),
                                    QStringLiteral("Created"), QStringLiteral("Attributes")}));
}

TEST_F(ColumnCommandsTest, HidingAnEarlierColumnKeepsArrowAndOrder) {
  ClickHeader(FileColumn::Attributes);
  ClickHeader(FileColumn::Attributes);
  ToggleColumn(list_, FileColumn::Type);
  EXPECT_EQ(list_.Sorting(), (SortState{true, 5, true}));
  EXPECT_EQ(Arrow(), QStringLiteral("Attributes DESCEND"));
  ToggleColumn(list_, FileColumn::Type);
  EXPECT_EQ(list_.Sorting(), (SortState{true, 6, true}));
  EXPECT_EQ(Arrow(), QStringLiteral("Attributes DESCEND"));
}

TEST_F(ColumnCommandsTest, HidingAColumnBehindTheSortedOneLeavesTheOrder) {
  ClickHeader(FileColumn::Size);
  EXPECT_EQ(Rows(), QStringLiteral("bca"));
  ToggleColumn(list_, FileColumn::Modified);
  EXPECT_EQ(list_.Sorting(), (SortState{true, 1, false}));
  EXPECT_EQ(Arrow(), QStringLiteral("Size ASCEND"));
  EXPECT_EQ(Rows(), QStringLiteral("bca"));
}

TEST_F(ColumnCommandsTest, TheSortKeyIsComparedWithTheFixedNumberAsItIs) {
  ToggleColumn(list_, FileColumn::Size);
  ClickHeader(FileColumn::Modified);
  ASSERT_EQ(list_.Sorting().key, 2);
  // Number 2 is "Type", which is not what the list is sorted by.
  ToggleColumn(list_, FileColumn::Type);
  EXPECT_EQ(list_.Sorting(), (SortState{true, 0, false}));
  EXPECT_EQ(Arrow(), QStringLiteral("Name ASCEND"));
}

TEST_F(ColumnCommandsTest, ASortedColumnWithoutTheKeysNumberKeepsTheKey) {
  ToggleColumn(list_, FileColumn::Size);
  ClickHeader(FileColumn::Modified);
  ClickHeader(FileColumn::Modified);
  ToggleColumn(list_, FileColumn::Modified);
  EXPECT_EQ(list_.Sorting(), (SortState{true, 2, true}));
  EXPECT_EQ(Arrow(), QStringLiteral("Accessed DESCEND"));
}

TEST_F(ColumnCommandsTest, HidingTheLastColumnSortsByName) {
  ToggleColumn(list_, FileColumn::Size);
  ClickHeader(FileColumn::Attributes);
  ToggleColumn(list_, FileColumn::Attributes);
  EXPECT_EQ(list_.Sorting(), (SortState{true, 0, false}));
  EXPECT_EQ(Arrow(), QStringLiteral("Name ASCEND"));
  EXPECT_EQ(Rows(), QStringLiteral("abc"));
}

TEST_F(ColumnCommandsTest, TheNameColumnCannotBeHidden) {
  EXPECT_TRUE(ToggleColumn(list_, FileColumn::Name));
  EXPECT_EQ(Headers().size(), kFileColumnCount);
}

TEST_F(ColumnCommandsTest, ADoubleClickOnTheDividerFitsTheColumnToItsTexts) {
  const QString longName =
      QStringLiteral("a name that is a good deal longer than the column is wide at the beginning.dat");
  Add(longName, 1, 1);
  list_.FlushStaged();
  FileListView view(nullptr);
  view.SetFiles(&list_);
  view.resize(900, 300);
  view.show();
  const int before = view.ColumnWidth(FileColumn::Name);
  QHeaderView& header = *view.header();
  const QPoint divider(header.sectionPosition(1) - 1, header.height() / 2);
  QTest::mouseDClick(header.viewport(), Qt::LeftButton, {}, divider);
  EXPECT_GT(view.ColumnWidth(FileColumn::Name), before);
  EXPECT_GE(view.ColumnWidth(FileColumn::Name), view.fontMetrics().horizontalAdvance(longName));
  EXPECT_EQ(list_.Sorting(), (SortState{true, 0, false})) << "no click on a header";
}

}  // namespace
}  // namespace trevane

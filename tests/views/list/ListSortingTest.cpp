#include "views/addresses/ImageKeys.h"
#include "views/list/FileListModel.h"
#include "views/list/ListSorting.h"

#include <QAbstractItemModelTester>

#include <gtest/gtest.h>

namespace trevane {
namespace {

class ListSortingTest : public testing::Test {
 protected:
  ListSortingTest() {
    for (const QString& name : {QStringLiteral("b"), QStringLiteral("a"), QStringLiteral("c")}) {
      const auto item = list_.AddListItem({}, 0x20, name, {});
      list_.SetDetails(item, {name == QStringLiteral("a") ? 2 : 1, {}, {}, {}, 0});
    }
    list_.FlushStaged();
    SortByName(list_);
  }

  [[nodiscard]] QString Rows() const {
    QString rows;
    for (int row = 0; row < list_.rowCount(); ++row) {
      rows += list_.Text(list_.HandleAt(row));
    }
    return rows;
  }

  [[nodiscard]] QStringList Images() const {
    QStringList images;
    for (int section = 0; section < list_.columnCount(); ++section) {
      images.append(list_.HeaderImage(section));
    }
    return images;
  }

  static QStringList OnlyImage(int section, const QString& key) {
    QStringList images(kFileColumnCount);
    images[section] = key;
    return images;
  }

  FileListModel list_{nullptr, nullptr, nullptr};
  QAbstractItemModelTester tester_{&list_, QAbstractItemModelTester::FailureReportingMode::Fatal};
};

TEST_F(ListSortingTest, ByNameIsAscendingWithItsHeaderImage) {
  EXPECT_EQ(Rows(), QStringLiteral("abc"));
  EXPECT_EQ(list_.Sorting(), (SortState{true, 0, false}));
  EXPECT_EQ(Images(), OnlyImage(0, QStringLiteral("ASCEND")));
}

TEST_F(ListSortingTest, ThreeClicksOnNameGiveAscendingDescendingAscending) {
  list_.SetHeaderImage(0, {});
  ColumnClick(list_, 0);
  EXPECT_EQ(Rows(), QStringLiteral("abc"));
  EXPECT_EQ(Images(), OnlyImage(0, QStringLiteral("ASCEND")));
  ColumnClick(list_, 0);
  EXPECT_EQ(Rows(), QStringLiteral("cba"));
  EXPECT_EQ(Images(), OnlyImage(0, QStringLiteral("DESCEND")));
  ColumnClick(list_, 0);
  EXPECT_EQ(Rows(), QStringLiteral("abc"));
  EXPECT_EQ(Images(), OnlyImage(0, QStringLiteral("ASCEND")));
}

TEST_F(ListSortingTest, AClickOnAnotherColumnSortsAscendingWithItsImage) {
  ColumnClick(list_, 1);
  EXPECT_EQ(Rows(), QStringLiteral("bca"));
  EXPECT_EQ(Images(), OnlyImage(1, QStringLiteral("ASCEND")));
  ColumnClick(list_, 1);
  EXPECT_EQ(Rows(), QStringLiteral("abc"));
  ColumnClick(list_, 2);
  EXPECT_EQ(Images(), OnlyImage(2, QStringLiteral("ASCEND")));
  EXPECT_EQ(list_.Sorting(), (SortState{true, 2, false}));
}

TEST_F(ListSortingTest, TheHeaderImageIsTheOnlyRecordOfTheDirection) {
  list_.SetSorting({true, 0, true});
  list_.SetHeaderImage(0, QStringLiteral("ascend"));
  ColumnClick(list_, 0);
  EXPECT_EQ(list_.Sorting(), (SortState{true, 0, false}))
      << "another image, also in another case, counts as none";
  EXPECT_EQ(list_.HeaderImage(0), QStringLiteral("ASCEND"));
}

TEST_F(ListSortingTest, AClickSwitchesSortingOn) {
  list_.SetSorting({false, 3, true});
  ColumnClick(list_, 1);
  EXPECT_EQ(list_.Sorting(), (SortState{true, 1, false}));
}

TEST_F(ListSortingTest, TheKeyCountsVisibleColumnsOnly) {
  list_.SetColumnVisible(FileColumn::Size, false);
  ColumnClick(list_, 1);
  EXPECT_EQ(list_.Sorting().key, 1);
  EXPECT_EQ(list_.headerData(1, Qt::Horizontal).toString(), QStringLiteral("Type"));
}

}  // namespace
}  // namespace trevane

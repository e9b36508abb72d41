#include "base/DateFormatter.h"
#include "base/LowerCase.h"
#include "base/RunTimeError.h"
#include "platform/ShellIcons.h"
#include "views/ImageList.h"
#include "views/ItemRoles.h"
#include "views/addresses/ImageKeys.h"
#include "views/addresses/NodeTags.h"
#include "views/list/FileListModel.h"
#include "views/list/FileTypes.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace trevane {
namespace {

/// A system that knows names of types but has no icons.
class TypeNames final : public ShellIcons {
 public:
  std::optional<ShellFileInfo> ForExtension(const QString& probe) override {
    return ShellFileInfo{Unpainted(),
                         probe == QStringLiteral(".TXT") ? QStringLiteral("text document") : QString()};
  }
  std::optional<ShellFileInfo> ForFolder(bool /*open*/) override {
    return ShellFileInfo{Unpainted(), QStringLiteral("Folder")};
  }

 private:
  /// An icon that no theme has: only the name of the type is of interest.
  static ShellIcon Unpainted() {
    ShellIcon icon;
    icon.themeNames = {QStringLiteral("no-such-icon-anywhere")};
    return icon;
  }
};

class FileListModelTest : public testing::Test {
 protected:
  FileListModel::Handle Add(const QString& name, qint64 size = 0, qint32 attributes = 0x20, qint64 time = 0) {
    const bool isFolder = (attributes & kFolderBit) != 0;
    const FileTypeRecord& type = isFolder ? types_.GetFolderImages() : types_.GetFileType(name);
    const auto item = list_.AddListItem({}, MakeFileTag(attributes, false), name, type.imageKey);
    list_.SetDetails(item, {isFolder ? -1 : size, Date{time}, Date{time + 1000}, Date{time + 2000}, type.id});
    return item;
  }

  [[nodiscard]] QStringList Rows(int column = 0) const {
    QStringList texts;
    for (int row = 0; row < list_.rowCount(); ++row) {
      texts.append(list_.index(row, column).data(column == 0 ? Qt::EditRole : Qt::DisplayRole).toString());
    }
    return texts;
  }

  ImageList images_{QStringLiteral(":/none/")};
  TypeNames names_;
  FileTypes types_{names_, images_};
  DateFormatter dates_{QLocale::c(), QTimeZone::utc()};
  FileListModel list_{&images_, &types_, &dates_};
  QAbstractItemModelTester tester_{&list_, QAbstractItemModelTester::FailureReportingMode::Fatal};
};

TEST_F(FileListModelTest, AKeyIsAnAtSignAndTheLowerCasedText) {
  const auto item = list_.AddListItem({}, 0, QStringLiteral("123"), {});
  EXPECT_EQ(list_.Key(item), QStringLiteral("@123"));
  EXPECT_EQ(list_.FindByKey(u"@123"), item);
  EXPECT_EQ(list_.FindByKey(u"123"), FileListModel::kNoItem);
  const auto readme = list_.AddListItem({}, 0, QStringLiteral("ReadMe.TXT"), {});
  EXPECT_EQ(list_.FindByKey(u"@readme.txt"), readme);
  EXPECT_EQ(list_.FindByText(u"README.txt"), readme);
}

TEST_F(FileListModelTest, TextsThatDifferInCaseOnlyCannotBothBeShown) {
  Add(QStringLiteral("a.txt"));
  try {
    Add(QStringLiteral("A.TXT"));
    FAIL();
  } catch (const RunTimeError& failure) {
    EXPECT_EQ(failure.Number(), error::kKeyAlreadyThere);
  }
  EXPECT_EQ(list_.Count(), 1);
  list_.FlushStaged();
  EXPECT_EQ(Rows(), QStringList{QStringLiteral("a.txt")});
}

TEST_F(FileListModelTest, NewItemsAreCountedAtOnceAndEnterTheRowsWhenFlushed) {
  QSignalSpy inserted(&list_, &QAbstractItemModel::rowsInserted);
  Add(QStringLiteral("b"));
  const auto a = Add(QStringLiteral("a"));
  EXPECT_EQ(list_.Count(), 2);
  EXPECT_EQ(list_.rowCount(), 0);
  EXPECT_FALSE(list_.IndexOf(a).isValid());
  list_.FlushStaged();
  EXPECT_EQ(inserted.count(), 1);
  EXPECT_EQ(Rows(), (QStringList{QStringLiteral("b"), QStringLiteral("a")})) << "not sorted: as they came";
}

TEST_F(FileListModelTest, APositionIsTakenWhileTheListIsNotSorted) {
  Add(QStringLiteral("x"));
  Add(QStringLiteral("y"));
  list_.AddListItem(1, 0, QStringLiteral("between"), {});
  EXPECT_EQ(Rows(), (QStringList{QStringLiteral("x"), QStringLiteral("between"), QStringLiteral("y")}));
  list_.AddListItem(99, 0, QStringLiteral("last"), {});
  EXPECT_EQ(Rows().last(), QStringLiteral("last"));
}

TEST_F(FileListModelTest, AFileOfFiveBytesShowsNineBlanksAndFive) {
  const auto item = Add(QStringLiteral("a"), 5);
  EXPECT_EQ(list_.ColumnText(item, FileColumn::Size), QStringLiteral("         5"));
}

TEST_F(FileListModelTest, AFolderShowsNoSize) {
  const auto item = Add(QStringLiteral("dir"), 5, 0x10);
  EXPECT_EQ(list_.ColumnText(item, FileColumn::Size), QString());
  EXPECT_EQ(list_.ColumnText(item, FileColumn::Type), QStringLiteral("Folder"));
}

TEST_F(FileListModelTest, ALongSizeShowsTenDigitsAndAllInTheTooltip) {
  const auto item = Add(QStringLiteral("a"), 123456789012345);
  list_.FlushStaged();
  EXPECT_EQ(list_.ColumnText(item, FileColumn::Size), QStringLiteral("6789012345"));
  EXPECT_EQ(list_.IndexOf(item, 1).data(Qt::ToolTipRole).toString(), QStringLiteral("123456789012345"));
  EXPECT_EQ(SizeText(10000000005), QStringLiteral("0000000005"));
  EXPECT_EQ(SizeText(9999999999), QStringLiteral("9999999999"));
  EXPECT_EQ(SizeText(0), QStringLiteral("         0"));
  EXPECT_EQ(SizeText(-1), QString());
}

TEST_F(FileListModelTest, AttributesAreShownAsLetters) {
  EXPECT_EQ(list_.ColumnText(Add(QStringLiteral("ra"), 0, 1 | 32), FileColumn::Attributes),
            QStringLiteral("RA"));
  EXPECT_EQ(list_.ColumnText(Add(QStringLiteral("hs"), 0, 2 | 4), FileColumn::Attributes),
            QStringLiteral("HS"));
}

TEST_F(FileListModelTest, AnUnknownExtensionShowsItselfAndTheWordFile) {
  EXPECT_EQ(list_.ColumnText(Add(QStringLiteral("a.xyz")), FileColumn::Type), QStringLiteral(".XYZ file"));
  EXPECT_EQ(list_.ColumnText(Add(QStringLiteral("a.txt")), FileColumn::Type),
            QStringLiteral("text document"));
}

TEST_F(FileListModelTest, AnAbsentDateShowsNothing) {
  const auto item = list_.AddListItem({}, 0, QStringLiteral("x"), {});
  list_.SetDetails(item, {1, Date{0}, Date{}, Date{}, 0});
  EXPECT_EQ(list_.ColumnText(item, FileColumn::Modified), dates_.Format(Date{0}));
  EXPECT_EQ(list_.ColumnText(item, FileColumn::Accessed), QString());
  EXPECT_EQ(list_.ColumnText(item, FileColumn::Created), QString());
}

TEST_F(FileListModelTest, PlacesHaveNoSubItems) {
  const auto drive = list_.AddListItem({}, kDriveItemTag, QStringLiteral("C:"), imagekey::kHdd);
  list_.FlushStaged();
  for (int column = 1; column < list_.columnCount(); ++column) {
    EXPECT_EQ(list_.IndexOf(drive, column).data().toString(), QString());
  }
  EXPECT_EQ(list_.ImageKey(drive), QStringLiteral("HDD"));
  EXPECT_FALSE(list_.IndexOf(drive).flags().testFlag(Qt::ItemIsEditable));
}

TEST_F(FileListModelTest, OnlyFilesAndFoldersCanBeEdited) {
  const auto file = Add(QStringLiteral("a"), 0, 0x20 | 0x4000);
  const auto controller = list_.AddListItem({}, kControllerTag, QStringLiteral("Ctrl1"), {});
  const auto computer = list_.AddListItem({}, kMyComputerTag, QStringLiteral("My Computer"), {});
  list_.FlushStaged();
  EXPECT_TRUE(list_.IndexOf(file).flags().testFlag(Qt::ItemIsEditable));
  EXPECT_FALSE(list_.IndexOf(file, 1).flags().testFlag(Qt::ItemIsEditable));
  EXPECT_FALSE(list_.IndexOf(controller).flags().testFlag(Qt::ItemIsEditable));
  EXPECT_FALSE(list_.IndexOf(computer).flags().testFlag(Qt::ItemIsEditable));
}

TEST_F(FileListModelTest, HidingTypeMovesModifiedIntoTheSecondSubItem) {
  const auto item = Add(QStringLiteral("a.txt"), 5);
  list_.FlushStaged();
  EXPECT_EQ(list_.IndexOf(item, 3).data().toString(), dates_.Format(Date{0}));
  list_.SetColumnVisible(FileColumn::Type, false);
  EXPECT_EQ(list_.IndexOf(item, 2).data().toString(), dates_.Format(Date{0}));
  EXPECT_EQ(list_.columnCount(), 6);
  EXPECT_EQ(list_.headerData(2, Qt::Horizontal).toString(), QStringLiteral("Modified"));
}

TEST_F(FileListModelTest, AColumnComesBackAtItsPlaceInTheFixedOrder) {
  list_.SetHeaderImage(1, imagekey::kAscend);
  list_.SetColumnVisible(FileColumn::Size, false);
  EXPECT_EQ(list_.headerData(1, Qt::Horizontal).toString(), QStringLiteral("Type"));
  list_.SetColumnVisible(FileColumn::Size, true);
  EXPECT_EQ(list_.headerData(1, Qt::Horizontal).toString(), QStringLiteral("Size"));
  EXPECT_EQ(list_.HeaderImage(1), QString());
}

TEST_F(FileListModelTest, TheNameColumnIsAlwaysShown) {
  list_.SetColumnVisible(FileColumn::Name, false);
  EXPECT_EQ(list_.columnCount(), 7);
}

TEST_F(FileListModelTest, HidingAnEarlierColumnSortsByTheNewColumnOfTheKey) {
  Add(QStringLiteral("a"), 1, 32);
  Add(QStringLiteral("b"), 2, 1);
  list_.FlushStaged();
  list_.SetSorting({true, 1, true});
  EXPECT_EQ(Rows(), (QStringList{QStringLiteral("b"), QStringLiteral("a")}));
  for (const FileColumn column : {FileColumn::Size, FileColumn::Type, FileColumn::Modified,
                                  FileColumn::Accessed, FileColumn::Created}) {
    list_.SetColumnVisible(column, false);
  }
  EXPECT_EQ(Rows(1), (QStringList{QStringLiteral("R"), QStringLiteral("A")}))
      << "key 1 is the attributes now";
}

TEST_F(FileListModelTest, FoldersAndFilesAreInterleavedInTextOrder) {
  list_.SetSorting({true, 0, false});
  Add(QStringLiteral("b.txt"));
  Add(QStringLiteral("C"), 0, 0x10);
  Add(QStringLiteral("a"), 0, 0x10);
  Add(QStringLiteral("_z"));
  list_.FlushStaged();
  EXPECT_EQ(Rows(), (QStringList{QStringLiteral("_z"), QStringLiteral("a"), QStringLiteral("b.txt"),
                                 QStringLiteral("C")}));
}

TEST_F(FileListModelTest, SizesSortAsNumbersAndFoldersComeFirst) {
  Add(QStringLiteral("big"), 1000);
  Add(QStringLiteral("small"), 9);
  Add(QStringLiteral("dir"), 0, 0x10);
  Add(QStringLiteral("cut"), 10000000005);
  Add(QStringLiteral("empty"), 0);
  list_.FlushStaged();
  list_.SetSorting({true, 1, false});
  EXPECT_EQ(Rows(), (QStringList{QStringLiteral("dir"), QStringLiteral("empty"), QStringLiteral("small"),
                                 QStringLiteral("big"), QStringLiteral("cut")}));
}

TEST_F(FileListModelTest, NewItemsArePlacedByTheCurrentSortState) {
  list_.SetSorting({true, 0, true});
  Add(QStringLiteral("b"));
  Add(QStringLiteral("d"));
  list_.FlushStaged();
  Add(QStringLiteral("c"));
  Add(QStringLiteral("a"));
  Add(QStringLiteral("e"));
  list_.FlushStaged();
  EXPECT_EQ(Rows(), (QStringList{QStringLiteral("e"), QStringLiteral("d"), QStringLiteral("c"),
                                 QStringLiteral("b"), QStringLiteral("a")}));
}

TEST_F(FileListModelTest, EqualTextsFollowTheName) {
  for (const QString& name : {QStringLiteral("c.txt"), QStringLiteral("a.txt"), QStringLiteral("b.txt")}) {
    Add(name);
  }
  list_.FlushStaged();
  list_.SetSorting({true, 2, false});
  EXPECT_EQ(Rows(), (QStringList{QStringLiteral("a.txt"), QStringLiteral("b.txt"), QStringLiteral("c.txt")}));
  list_.SetSorting({true, 2, true});
  EXPECT_EQ(Rows(), (QStringList{QStringLiteral("a.txt"), QStringLiteral("b.txt"), QStringLiteral("c.txt")}));
  Add(QStringLiteral("Bb.txt"));
  list_.FlushStaged();
  EXPECT_EQ(Rows(), (QStringList{QStringLiteral("a.txt"), QStringLiteral("b.txt"), QStringLiteral("Bb.txt"),
                                 QStringLiteral("c.txt")}));
  for (const FileColumn column : {FileColumn::Size, FileColumn::Modified, FileColumn::Attributes}) {
    list_.SetSorting({true, 0, true});
    list_.SetSorting({true, static_cast<int>(column), true});
    EXPECT_EQ(Rows(), (QStringList{QStringLiteral("a.txt"), QStringLiteral("b.txt"), QStringLiteral("Bb.txt"),
                                   QStringLiteral("c.txt")}));
  }
  list_.RenameItem(list_.FindByText(QStringLiteral("a.txt")), QStringLiteral("bc.txt"));
  EXPECT_EQ(Rows(), (QStringList{QStringLiteral("b.txt"), QStringLiteral("Bb.txt"), QStringLiteral("bc.txt"),
                                 QStringLiteral("c.txt")}));
}

/// Whatever keys the model sorts by inside, the result is the order of the texts that the column shows.
TEST_F(FileListModelTest, EveryColumnSortsByTheTextThatItShows) {
  std::mt19937_64 random(17);
  const qint64 sizes[] = {0,          9,           10,          999999999,   1000000000,
                          9999999999, 10000000000, 10999999999, 20000000005, 19999999999};
  for (int i = 0; i < 400; ++i) {
    const bool isFolder = random() % 5 == 0;
    const auto attributes = static_cast<qint32>((random() % 8) | (random() % 2 * 32) | (isFolder ? 16 : 0));
    const qint64 size = random() % 2 == 0 ? sizes[random() % std::size(sizes)]
                                          : static_cast<qint64>(random() % 30000000000ULL);
    const QString name =
        QStringLiteral("%1%2.%3")
            .arg(QChar(static_cast<char16_t>(u'A' + random() % 60)))
            .arg(i)
            .arg(QStringList{QStringLiteral("txt"), QStringLiteral("b"), QStringLiteral("TXT"),
                             QStringLiteral("c")}[static_cast<int>(random() % 4)]);
    Add(name, size, attributes, static_cast<qint64>(random() % 4000000000000ULL) - 1000000000000);
    if (i % 50 == 0) {
      list_.FlushStaged();
    }
  }
  list_.AddListItem({}, kDriveItemTag, QStringLiteral("C:"), {});
  list_.FlushStaged();
  for (int column = 0; column < list_.columnCount(); ++column) {
    for (const bool descending : {false, true}) {
      list_.SetSorting({true, column, descending});
      QStringList rows = Rows(column);
      ASSERT_EQ(rows.size(), 401);
      if (descending) {
        std::reverse(rows.begin(), rows.end());
      }
      EXPECT_TRUE(
          std::is_sorted(rows.begin(), rows.end(),
                         [](const QString& a, const QString& b) { return LowerCase(a) < LowerCase(b); }))
          << "column " << column;
    }
  }
}

TEST_F(FileListModelTest, MergedItemsStandWhereASortWouldPutThem) {
  for (int column = 0; column < list_.columnCount(); ++column) {
    for (const bool descending : {false, true}) {
      std::mt19937 random(static_cast<unsigned>(column));
      list_.Clear();
      list_.SetSorting({true, column, descending});
      for (int i = 0; i < 300; ++i) {
        Add(QStringLiteral("f%1.%2").arg(random() % 1000000).arg(i % 7), static_cast<qint64>(random() % 50),
            static_cast<qint32>(random() % 64), static_cast<qint64>(random() % 100) * 86400000);
        if (i == 150 || i == 155 || i == 290) {
          list_.FlushStaged();
        }
      }
      list_.FlushStaged();
      const QStringList merged = Rows(column);
      list_.SetSorting({});
      list_.SetSorting({true, column, descending});
      EXPECT_EQ(Rows(column), merged) << column;
    }
  }
}

TEST_F(FileListModelTest, PersistentIndexesFollowSortingAndMerging) {
  std::vector<std::pair<FileListModel::Handle, QPersistentModelIndex>> held;
  list_.SetSorting({true, 0, false});
  for (int i = 0; i < 100; ++i) {
    Add(QStringLiteral("f%1").arg(i * 2, 4), 100 - i);
  }
  list_.FlushStaged();
  for (int row = 0; row < list_.rowCount(); ++row) {
    held.emplace_back(list_.HandleAt(row), list_.index(row, row % 7));
  }
  const auto check = [&] {
    for (const auto& [item, index] : held) {
      ASSERT_EQ(list_.HandleAt(index), item);
    }
  };
  list_.SetSorting({true, 1, false});
  check();
  for (int i = 0; i < 100; ++i) {
    Add(QStringLiteral("f%1").arg(i * 2 + 1, 4), i);
  }
  list_.FlushStaged();
  check();
  list_.RenameItem(held.front().first, QStringLiteral("zzz"));
  list_.SetSorting({true, 0, true});
  check();
  EXPECT_EQ(Rows().first(), QStringLiteral("zzz"));
}

TEST_F(FileListModelTest, RenamingGivesANewKeyAndItsPlace) {
  list_.SetSorting({true, 0, false});
  const auto a = Add(QStringLiteral("a"));
  Add(QStringLiteral("b"));
  Add(QStringLiteral("c"));
  list_.FlushStaged();
  list_.RenameItem(a, QStringLiteral("bb"));
  EXPECT_EQ(Rows(), (QStringList{QStringLiteral("b"), QStringLiteral("bb"), QStringLiteral("c")}));
  EXPECT_EQ(list_.FindByKey(u"@bb"), a);
  EXPECT_EQ(list_.FindByKey(u"@a"), FileListModel::kNoItem);
  EXPECT_THROW(list_.RenameItem(a, QStringLiteral("C")), RunTimeError);
  list_.RenameItem(a, QStringLiteral("BB"));
  EXPECT_EQ(list_.Text(a), QStringLiteral("BB"));
  list_.RenameItem(a, QStringLiteral("0"));
  EXPECT_EQ(Rows(), (QStringList{QStringLiteral("0"), QStringLiteral("b"), QStringLiteral("c")}));
}

TEST_F(FileListModelTest, DetailsThatComeLaterMoveTheItemToItsPlace) {
  list_.SetSorting({true, 1, false});
  const auto a = Add(QStringLiteral("a"), 1);
  Add(QStringLiteral("b"), 2);
  list_.FlushStaged();
  list_.SetDetails(a, {3, {}, {}, {}, 0});
  EXPECT_EQ(Rows(), (QStringList{QStringLiteral("b"), QStringLiteral("a")}));
}

TEST_F(FileListModelTest, AnItemIsRemovedByItsKeyWithOrWithoutARow) {
  Add(QStringLiteral("a"));
  Add(QStringLiteral("b"));
  list_.FlushStaged();
  Add(QStringLiteral("c"));
  EXPECT_TRUE(list_.RemoveByKey(u"@A"));
  EXPECT_TRUE(list_.RemoveByKey(u"@c"));
  EXPECT_FALSE(list_.RemoveByKey(u"@c"));
  list_.FlushStaged();
  EXPECT_EQ(Rows(), QStringList{QStringLiteral("b")});
  EXPECT_EQ(list_.Count(), 1);
  Add(QStringLiteral("a"));
  list_.FlushStaged();
  EXPECT_EQ(list_.Count(), 2);
}

TEST_F(FileListModelTest, ClearForgetsItemsAndKeepsSortingAndColumns) {
  list_.SetColumnVisible(FileColumn::Created, false);
  list_.SetSorting({true, 0, true});
  Add(QStringLiteral("a"));
  list_.FlushStaged();
  Add(QStringLiteral("b"));
  list_.Clear();
  EXPECT_EQ(list_.Count(), 0);
  EXPECT_EQ(list_.rowCount(), 0);
  EXPECT_EQ(list_.FindByKey(u"@b"), FileListModel::kNoItem);
  EXPECT_EQ(list_.columnCount(), 6);
  EXPECT_EQ(list_.Sorting(), (SortState{true, 0, true}));
}

TEST_F(FileListModelTest, GhostedIsReportedForTheItemAlone) {
  const auto item = Add(QStringLiteral("a"));
  list_.FlushStaged();
  QSignalSpy changed(&list_, &QAbstractItemModel::dataChanged);
  list_.SetGhosted(item, true);
  list_.SetGhosted(item, true);
  EXPECT_EQ(changed.count(), 1);
  EXPECT_TRUE(list_.IndexOf(item).data(kGhostedRole).toBool());
}

TEST_F(FileListModelTest, NothingIsReportedForAnItemThatHasNoRowYet) {
  QSignalSpy changed(&list_, &QAbstractItemModel::dataChanged);
  QSignalSpy layout(&list_, &QAbstractItemModel::layoutChanged);
  QSignalSpy inserted(&list_, &QAbstractItemModel::rowsInserted);
  for (int i = 0; i < 1000; ++i) {
    list_.SetGhosted(Add(QString::number(i)), true);
  }
  EXPECT_EQ(changed.count() + layout.count() + inserted.count(), 0);
  list_.FlushStaged();
  EXPECT_EQ(changed.count() + layout.count() + inserted.count(), 1);
}

TEST_F(FileListModelTest, ANameWithALineEndIsShownOnOneLineAndKeptAsItIs) {
  const auto item = Add(QStringLiteral("a\r\nb\tc"));
  list_.FlushStaged();
  EXPECT_EQ(list_.IndexOf(item).data().toString(), QStringLiteral("a\u240d\u240ab\u2409c"));
  EXPECT_EQ(list_.Text(item), QStringLiteral("a\r\nb\tc"));
  EXPECT_EQ(list_.FindByText(u"A\r\nB\tC"), item);
}

TEST_F(FileListModelTest, ANameThatIsNoValidTextIsKeptAndFound) {
  const QString name = QStringLiteral("bad") + QChar(0xDCFF);
  const auto item = Add(name);
  list_.FlushStaged();
  EXPECT_EQ(list_.FindByText(QStringLiteral("BAD") + QChar(0xDCFF)), item);
  EXPECT_EQ(list_.Text(item), name);
}

TEST_F(FileListModelTest, HeadersCarryTextAlignmentAndImage) {
  list_.SetHeaderImage(0, imagekey::kAscend);
  EXPECT_FALSE(list_.headerData(0, Qt::Horizontal, Qt::DecorationRole).isNull());
  EXPECT_TRUE(list_.headerData(1, Qt::Horizontal, Qt::DecorationRole).isNull());
  EXPECT_TRUE(list_.headerData(1, Qt::Horizontal, Qt::TextAlignmentRole).toInt() & Qt::AlignRight);
  const QStringList wanted = {QStringLiteral("Name"),      QStringLiteral("Size"),
                              QStringLiteral("Type"),      QStringLiteral("Modified"),
                              QStringLiteral("Accessed"),  QStringLiteral("Created"),
                              QStringLiteral("Attributes")};
  for (int section = 0; section < list_.columnCount(); ++section) {
    EXPECT_EQ(list_.headerData(section, Qt::Horizontal).toString(), wanted[section]);
  }
}

}  // namespace
}  // namespace trevane

#include "base/DateFormatter.h"
#include "views/ImageList.h"
#include "views/LabelDelegate.h"
#include "views/LabelEditHandler.h"
#include "views/addresses/ImageKeys.h"
#include "views/addresses/NodeTags.h"
#include "views/list/FileListView.h"
#include "views/list/ListSorting.h"

#include <QAbstractItemModelTester>
#include <QApplication>
#include <QContextMenuEvent>
#include <QDateTime>
#include <QDialog>
#include <QHeaderView>
#include <QLineEdit>
#include <QLocale>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

namespace trevane {
namespace {

class RenameHandler final : public LabelEditHandler {
 public:
  bool BeforeLabelEdit(const LabelEdit& edit) override {
    asked.append(edit.oldText);
    return true;
  }
  void AfterLabelEdit(const LabelEdit& edit, const QString& text, bool* cancel) override {
    renames.append(edit.oldText + QStringLiteral(">") + text);
    *cancel = refuse;
  }

  bool refuse = false;
  QStringList asked;
  QStringList renames;
};

class FileListViewTest : public testing::Test {
 protected:
  FileListViewTest() {
    for (const QString& name : {QStringLiteral("c.txt"), QStringLiteral("a.txt"), QStringLiteral("b.txt")}) {
      const auto item = files_.AddListItem({}, 0x20, name, {});
      files_.SetDetails(item, {name == QStringLiteral("a.txt") ? 20 : 3, {}, {}, {}, 0});
    }
    files_.AddListItem({}, kDriveItemTag, QStringLiteral("D:"), {});
    files_.FlushStaged();
    SortByName(files_);
    view_.SetFiles(&files_);
    view_.resize(700, 300);
    view_.SetColumnWidth(FileColumn::Name, 200);
    view_.show();
    EXPECT_TRUE(QTest::qWaitForWindowExposed(&view_));
    view_.activateWindow();
    view_.setFocus();
    QObject::connect(&view_, &FileListView::EmptySpaceReleased, &view_,
                     [this](Qt::MouseButton button) { emptyReleases_.append(button); });
    QObject::connect(&view_, &FileListView::ContextMenuRequested, &view_,
                     [this](FileListModel::Handle item) { menus_.append(files_.Text(item)); });
    QObject::connect(&view_, &FileListView::ItemActivated, &view_,
                     [this](FileListModel::Handle item) { activated_.append(files_.Text(item)); });
  }

  [[nodiscard]] QPoint PositionOf(const QString& name) const {
    return view_.visualRect(files_.IndexOf(files_.FindByText(name))).center();
  }
  [[nodiscard]] QStringList Selected() const {
    QStringList texts;
    for (const auto item : view_.SelectedItems()) {
      texts.append(files_.Text(item));
    }
    return texts;
  }
  static QPoint EmptySpace() { return {100, 250}; }
  /// A click right after the window came in front is the one that brought it.
  static void LetTheFocusSettle() { QTest::qWait(300); }
  [[nodiscard]] bool OpensAnEditor() {
    return QTest::qWaitFor([this] { return view_.viewport()->findChild<QLineEdit*>() != nullptr; },
                           QApplication::doubleClickInterval() + 200);
  }
  void ClickHeader(int section) {
    QHeaderView* header = view_.header();
    const QPoint position(header->sectionViewportPosition(section) + 20, header->height() / 2);
    QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, position);
  }

  ImageList images_{QStringLiteral(":/none/")};
  FileListModel files_{&images_, nullptr, nullptr};
  QAbstractItemModelTester tester_{&files_, QAbstractItemModelTester::FailureReportingMode::Fatal};
  FileListView view_{&images_};
  QList<Qt::MouseButton> emptyReleases_;
  QStringList menus_;
  QStringList activated_;
};

TEST_F(FileListViewTest, HasItsNames) {
  EXPECT_EQ(view_.objectName(), QStringLiteral("lstFile"));
  EXPECT_EQ(view_.accessibleName(), QStringLiteral("Files"));
}

TEST_F(FileListViewTest, ARightClickSelectsAnItemThatIsNotSelected) {
  QTest::mouseClick(view_.viewport(), Qt::LeftButton, {}, PositionOf(QStringLiteral("a.txt")));
  QTest::mouseClick(view_.viewport(), Qt::RightButton, {}, PositionOf(QStringLiteral("c.txt")));
  EXPECT_EQ(Selected(), QStringList{QStringLiteral("c.txt")});
  EXPECT_EQ(menus_, QStringList{QStringLiteral("c.txt")});
}

TEST_F(FileListViewTest, ARightClickOnASelectedItemKeepsTheWholeSelection) {
  QTest::mouseClick(view_.viewport(), Qt::LeftButton, {}, PositionOf(QStringLiteral("a.txt")));
  QTest::mouseClick(view_.viewport(), Qt::LeftButton, Qt::ShiftModifier, PositionOf(QStringLiteral("c.txt")));
  QTest::mouseClick(view_.viewport(), Qt::RightButton, {}, PositionOf(QStringLiteral("b.txt")));
  EXPECT_EQ(Selected(),
            (QStringList{QStringLiteral("a.txt"), QStringLiteral("b.txt"), QStringLiteral("c.txt")}));
  EXPECT_EQ(files_.Text(view_.FocusedItem()), QStringLiteral("b.txt"));
}

TEST_F(FileListViewTest, AReleaseWhereNoItemIsIsReportedWithItsButton) {
  QTest::mouseClick(view_.viewport(), Qt::LeftButton, {}, PositionOf(QStringLiteral("a.txt")));
  EXPECT_TRUE(emptyReleases_.isEmpty());
  QTest::mouseClick(view_.viewport(), Qt::LeftButton, {}, EmptySpace());
  QTest::mouseClick(view_.viewport(), Qt::RightButton, {}, EmptySpace());
  EXPECT_EQ(emptyReleases_, (QList<Qt::MouseButton>{Qt::LeftButton, Qt::RightButton}));
  EXPECT_EQ(Selected(), QStringList());
  EXPECT_EQ(menus_, QStringList());
}

TEST_F(FileListViewTest, EnterRunsNoFileThatIsNotSelected) {
  const auto focus = [this](const QString& name) {
    view_.selectionModel()->clearSelection();
    view_.selectionModel()->setCurrentIndex(files_.IndexOf(files_.FindByText(name)),
                                            QItemSelectionModel::NoUpdate);
  };
  focus(QStringLiteral("a.txt"));
  QTest::keyClick(&view_, Qt::Key_Return);
  EXPECT_EQ(activated_, QStringList());
  focus(QStringLiteral("D:"));
  QTest::keyClick(&view_, Qt::Key_Return);
  EXPECT_EQ(activated_, QStringList{QStringLiteral("D:")});
}

TEST_F(FileListViewTest, DoubleClickAndEnterActivateAnItem) {
  QTest::mouseDClick(view_.viewport(), Qt::LeftButton, {}, PositionOf(QStringLiteral("b.txt")));
  EXPECT_EQ(activated_, QStringList{QStringLiteral("b.txt")});
  QTest::mouseClick(view_.viewport(), Qt::LeftButton, {}, PositionOf(QStringLiteral("a.txt")));
  QTest::keyClick(&view_, Qt::Key_Return);
  EXPECT_EQ(activated_, (QStringList{QStringLiteral("b.txt"), QStringLiteral("a.txt")}));
  QTest::mouseDClick(view_.viewport(), Qt::LeftButton, {}, EmptySpace());
  QTest::mouseDClick(view_.viewport(), Qt::RightButton, {}, PositionOf(QStringLiteral("b.txt")));
  EXPECT_EQ(activated_.size(), 2);
}

TEST_F(FileListViewTest, TheMenuKeyReportsTheFocusedItem) {
  QTest::mouseClick(view_.viewport(), Qt::LeftButton, {}, PositionOf(QStringLiteral("b.txt")));
  QContextMenuEvent event(QContextMenuEvent::Keyboard, QPoint(0, 0), QPoint(0, 0));
  QCoreApplication::sendEvent(view_.viewport(), &event);
  EXPECT_EQ(menus_, QStringList{QStringLiteral("b.txt")});
}

TEST_F(FileListViewTest, RemovedItemsAreNoChangeOfTheSelection) {
  QSignalSpy changed(&view_, &FileListView::SelectionChanged);
  QTest::mouseClick(view_.viewport(), Qt::LeftButton, {}, PositionOf(QStringLiteral("b.txt")));
  EXPECT_EQ(changed.count(), 1);
  view_.selectAll();
  EXPECT_EQ(changed.count(), 2);
  files_.Clear();
  EXPECT_EQ(changed.count(), 2);
}

TEST_F(FileListViewTest, SelectedItemsStandInTheOrderOfTheRows) {
  QTest::mouseClick(view_.viewport(), Qt::LeftButton, {}, PositionOf(QStringLiteral("c.txt")));
  QTest::mouseClick(view_.viewport(), Qt::LeftButton, Qt::ControlModifier,
                    PositionOf(QStringLiteral("a.txt")));
  EXPECT_EQ(Selected(), (QStringList{QStringLiteral("a.txt"), QStringLiteral("c.txt")}));
}

TEST_F(FileListViewTest, HeaderClicksSortAndMoveTheArrow) {
  ClickHeader(0);
  EXPECT_EQ(files_.Text(files_.HandleAt(0)), QStringLiteral("D:"));
  EXPECT_EQ(files_.HeaderImage(0), QStringLiteral("DESCEND"));
  ClickHeader(1);
  EXPECT_EQ(files_.HeaderImage(0), QString());
  EXPECT_EQ(files_.HeaderImage(1), QStringLiteral("ASCEND"));
  EXPECT_EQ(files_.Text(files_.HandleAt(3)), QStringLiteral("a.txt"));
}

TEST_F(FileListViewTest, SelectionAndFocusStayOnTheirItemsWhenSorted) {
  QTest::mouseClick(view_.viewport(), Qt::LeftButton, {}, PositionOf(QStringLiteral("a.txt")));
  ClickHeader(0);
  EXPECT_EQ(Selected(), QStringList{QStringLiteral("a.txt")});
  EXPECT_EQ(files_.Text(view_.FocusedItem()), QStringLiteral("a.txt"));
}

TEST_F(FileListViewTest, AColumnComesBackWithItsWidth) {
  view_.SetColumnWidth(FileColumn::Type, 77);
  view_.header()->resizeSection(1, 55);
  EXPECT_EQ(view_.ColumnWidth(FileColumn::Size), 55);
  files_.SetColumnVisible(FileColumn::Size, false);
  EXPECT_EQ(view_.header()->sectionSize(1), 77);
  files_.SetColumnVisible(FileColumn::Size, true);
  EXPECT_EQ(view_.header()->sectionSize(1), 55);
  EXPECT_EQ(view_.header()->sectionSize(2), 77);
  files_.Clear();
  EXPECT_EQ(view_.header()->sectionSize(1), 55);
}

TEST_F(FileListViewTest, ALabelEditIsRefusedWithoutAHandlerAndOnPlaces) {
  view_.setCurrentIndex(files_.IndexOf(files_.FindByText(u"a.txt")));
  EXPECT_FALSE(view_.StartLabelEdit());
  RenameHandler handler;
  view_.SetLabelEditHandler(&handler);
  view_.setCurrentIndex(files_.IndexOf(files_.FindByText(u"D:")));
  EXPECT_FALSE(view_.StartLabelEdit());
  EXPECT_EQ(handler.asked, QStringList());
  view_.setCurrentIndex(QModelIndex());
  EXPECT_FALSE(view_.StartLabelEdit());
}

TEST_F(FileListViewTest, ARenamedItemShowsItsNewTextAtItsPlace) {
  RenameHandler handler;
  view_.SetLabelEditHandler(&handler);
  view_.setCurrentIndex(files_.IndexOf(files_.FindByText(u"a.txt"), 2));
  QTest::keyClick(&view_, Qt::Key_F2);
  auto* editor = view_.viewport()->findChild<QLineEdit*>();
  ASSERT_NE(editor, nullptr);
  QCoreApplication::processEvents();
  EXPECT_EQ(editor->selectedText(), QStringLiteral("a")) << "the extension stays";
  editor->setText(QStringLiteral("cc.txt"));
  QTest::keyClick(editor, Qt::Key_Return);
  EXPECT_TRUE(QTest::qWaitFor([&] { return !handler.renames.isEmpty(); }, 30'000));
  EXPECT_EQ(handler.renames, QStringList{QStringLiteral("a.txt>cc.txt")});
  EXPECT_EQ(files_.Text(files_.HandleAt(2)), QStringLiteral("cc.txt"));
}

TEST_F(FileListViewTest, AClickOnALabelDoesNotEditBehindAQuestion) {
  RenameHandler handler;
  view_.SetLabelEditHandler(&handler);
  view_.show();
  const QModelIndex index = files_.IndexOf(files_.FindByText(u"a.txt"));
  view_.setCurrentIndex(index);
  const QPoint label = view_.visualRect(index).center();
  LetTheFocusSettle();
  QTest::mouseClick(view_.viewport(), Qt::LeftButton, {}, label);
  QTest::qWait(QApplication::doubleClickInterval() + 50);
  QDialog question;
  question.setModal(true);
  if (auto* editor = view_.viewport()->findChild<QLineEdit*>()) {
    QTest::keyClick(editor, Qt::Key_Escape);
  }
  QCoreApplication::processEvents();
  const qsizetype asked = handler.asked.size();
  EXPECT_EQ(asked, 1) << "the click is one that edits";
  QTest::mouseClick(view_.viewport(), Qt::LeftButton, {}, label);
  question.show();
  QTest::qWait(QApplication::doubleClickInterval() + 50);
  EXPECT_EQ(view_.viewport()->findChild<QLineEdit*>(), nullptr);
  EXPECT_EQ(handler.asked.size(), asked);
}

TEST_F(FileListViewTest, TheClickThatBringsTheFocusEditsNoLabel) {
  RenameHandler handler;
  view_.SetLabelEditHandler(&handler);
  view_.setCurrentIndex(files_.IndexOf(files_.FindByText(u"a.txt")));
  LetTheFocusSettle();
  QWidget other(&view_);
  other.setFocusPolicy(Qt::StrongFocus);
  other.show();
  other.setFocus();
  ASSERT_FALSE(view_.hasFocus());
  QTest::mouseClick(view_.viewport(), Qt::LeftButton, {}, PositionOf(QStringLiteral("a.txt")));
  EXPECT_TRUE(view_.hasFocus());
  EXPECT_FALSE(OpensAnEditor());
  QTest::mouseClick(view_.viewport(), Qt::LeftButton, {}, PositionOf(QStringLiteral("a.txt")));
  EXPECT_TRUE(OpensAnEditor()) << "the next one does";
  QTest::keyClick(view_.viewport()->findChild<QLineEdit*>(), Qt::Key_Escape);
}

TEST_F(FileListViewTest, TheClickThatBringsTheWindowEditsNoLabel) {
  RenameHandler handler;
  view_.SetLabelEditHandler(&handler);
  view_.setCurrentIndex(files_.IndexOf(files_.FindByText(u"a.txt")));
  LetTheFocusSettle();
  QFocusEvent out(QEvent::FocusOut, Qt::ActiveWindowFocusReason);
  QCoreApplication::sendEvent(&view_, &out);
  QFocusEvent in(QEvent::FocusIn, Qt::ActiveWindowFocusReason);
  QCoreApplication::sendEvent(&view_, &in);
  QTest::mouseClick(view_.viewport(), Qt::LeftButton, {}, PositionOf(QStringLiteral("a.txt")));
  EXPECT_FALSE(OpensAnEditor());
}

TEST_F(FileListViewTest, AClickAfterSelectAllSelectsThatItemAlone) {
  RenameHandler handler;
  view_.SetLabelEditHandler(&handler);
  LetTheFocusSettle();
  view_.selectAll();
  ASSERT_EQ(Selected().size(), 4);
  QTest::mouseClick(view_.viewport(), Qt::LeftButton, {}, PositionOf(QStringLiteral("b.txt")));
  EXPECT_EQ(Selected(), QStringList{QStringLiteral("b.txt")});
  EXPECT_FALSE(OpensAnEditor());
  QTest::mouseClick(view_.viewport(), Qt::LeftButton, {}, PositionOf(QStringLiteral("b.txt")));
  EXPECT_TRUE(OpensAnEditor());
  QTest::keyClick(view_.viewport()->findChild<QLineEdit*>(), Qt::Key_Escape);
}

TEST_F(FileListViewTest, AnEditorReachesOverTheNextColumns) {
  const QString longName = QString(60, u'w') + QStringLiteral(".txt");
  files_.AddListItem({}, 0x20, longName, {});
  files_.FlushStaged();
  RenameHandler handler;
  view_.SetLabelEditHandler(&handler);
  view_.setCurrentIndex(files_.IndexOf(files_.FindByText(longName)));
  ASSERT_TRUE(view_.StartLabelEdit());
  const auto* editor = view_.viewport()->findChild<QLineEdit*>();
  EXPECT_GT(editor->geometry().right(), 400);
  EXPECT_LE(editor->geometry().right(), view_.viewport()->width());
}

TEST_F(FileListViewTest, ARefusedRenameLeavesTheOldLabel) {
  RenameHandler handler;
  handler.refuse = true;
  view_.SetLabelEditHandler(&handler);
  view_.setCurrentIndex(files_.IndexOf(files_.FindByText(u"a.txt")));
  ASSERT_TRUE(view_.StartLabelEdit());
  auto* editor = view_.viewport()->findChild<QLineEdit*>();
  editor->setText(QStringLiteral("x"));
  QTest::keyClick(editor, Qt::Key_Return);
  EXPECT_TRUE(QTest::qWaitFor([&] { return !handler.renames.isEmpty(); }, 30'000));
  EXPECT_EQ(files_.Text(files_.HandleAt(0)), QStringLiteral("a.txt"));
}

TEST_F(FileListViewTest, ABackslashInANameSurvivesEditing) {
  const QString name = QStringLiteral("a") + QChar(0xF05C) + QStringLiteral("b.txt");
  files_.AddListItem({}, 0x20, name, {});
  files_.FlushStaged();
  const QModelIndex index = files_.IndexOf(files_.FindByText(name));
  EXPECT_EQ(index.data().toString(), QStringLiteral("a\\b.txt"));
  RenameHandler handler;
  view_.SetLabelEditHandler(&handler);
  view_.setCurrentIndex(index);
  ASSERT_TRUE(view_.StartLabelEdit());
  auto* editor = view_.viewport()->findChild<QLineEdit*>();
  EXPECT_EQ(editor->text(), QStringLiteral("a\\b.txt"));
  editor->setText(QStringLiteral("a\\c.txt"));
  QTest::keyClick(editor, Qt::Key_Return);
  EXPECT_TRUE(QTest::qWaitFor([&] { return !handler.renames.isEmpty(); }, 30'000));
  EXPECT_EQ(handler.renames,
            QStringList{name + QStringLiteral(">a") + QChar(0xF05C) + QStringLiteral("c.txt")});
}

TEST_F(FileListViewTest, WhatIsTypedIntoALabelCanBeTakenAtOnce) {
  RenameHandler handler;
  view_.SetLabelEditHandler(&handler);
  view_.CommitLabel();
  view_.setCurrentIndex(files_.IndexOf(files_.FindByText(u"a.txt"), 2));
  ASSERT_TRUE(view_.StartLabelEdit());
  view_.viewport()->findChild<QLineEdit*>()->setText(QStringLiteral("x.txt"));
  view_.CommitLabel();
  EXPECT_EQ(handler.renames, QStringList{QStringLiteral("a.txt>x.txt")});
  QCoreApplication::processEvents();
  EXPECT_EQ(handler.renames.size(), 1);
}

TEST(FileListWidths, DatesAndSizesAreWholeInAnyFont) {
  for (const QLocale::Language language :
       {QLocale::C, QLocale::English, QLocale::German, QLocale::Japanese}) {
    const DateFormatter dates{QLocale(language)};
    FileListModel files(nullptr, nullptr, &dates);
    const auto item = files.AddListItem({}, 0x27, QStringLiteral("a"), {});
    const Date date{QDateTime(QDate(2028, 9, 30), QTime(22, 48, 58)).toMSecsSinceEpoch()};
    files.SetDetails(item, {8888888888, date, date, date, 0});
    files.FlushStaged();
    FileListView view(nullptr);
    view.SetFiles(&files);
    view.show();
    for (const int points : {6, 9, 12, 20, 40}) {
      QFont font = view.font();
      font.setPointSize(points);
      view.setFont(font);
      QApplication::processEvents();
      auto* delegate = qobject_cast<LabelDelegate*>(view.itemDelegate());
      for (const FileColumn column : {FileColumn::Size, FileColumn::Modified, FileColumn::Accessed,
                                      FileColumn::Created, FileColumn::Attributes}) {
        const QModelIndex index = files.IndexOf(item, static_cast<int>(column));
        QStyleOptionViewItem option;
        option.widget = &view;
        option.font = font;
        option.fontMetrics = QFontMetrics(font);
        option.rect = QRect(0, 0, view.columnWidth(index.column()), 100);
        EXPECT_LE(delegate->sizeHint(option, index).width(), option.rect.width())
            << points << " points, " << HeaderText(column).toStdString();
        EXPECT_LE(view.header()->fontMetrics().horizontalAdvance(HeaderText(column)), option.rect.width());
      }
      EXPECT_GE(view.iconSize().height(), std::min(16, view.fontMetrics().height() - 1));
      EXPECT_LE(view.iconSize().height(), std::max(16, view.fontMetrics().height()));
    }
    EXPECT_GT(view.iconSize().height(), 30);
  }
}

TEST(FileListWidths, AWidthThatTheUserChoseStays) {
  FileListModel files(nullptr, nullptr, nullptr);
  FileListView view(nullptr);
  view.SetFiles(&files);
  view.SetColumnWidth(FileColumn::Size, 30);
  view.SetColumnWidth(FileColumn::Type, 600);
  QFont font = view.font();
  font.setPointSize(20);
  view.setFont(font);
  EXPECT_EQ(view.ColumnWidth(FileColumn::Size), 30);
  EXPECT_EQ(view.ColumnWidth(FileColumn::Type), 600);
}

TEST_F(FileListViewTest, ACutSizeHasItsFullFigureAsTooltip) {
  const auto item = files_.AddListItem({}, 0x20, QStringLiteral("huge"), {});
  files_.SetDetails(item, {123456789012, {}, {}, {}, 0});
  files_.FlushStaged();
  auto* delegate = qobject_cast<LabelDelegate*>(view_.itemDelegate());
  QStyleOptionViewItem option;
  option.widget = &view_;
  option.fontMetrics = view_.fontMetrics();
  option.rect = QRect(0, 0, 300, 20);
  EXPECT_EQ(delegate->ToolTipFor(option, files_.IndexOf(item, 1)), QStringLiteral("123456789012"));
  EXPECT_EQ(delegate->ToolTipFor(option, files_.IndexOf(files_.FindByText(u"a.txt"), 1)), QString());
}

TEST_F(FileListViewTest, AGhostedItemIsDrawnDimmed) {
  const auto item = files_.FindByText(u"a.txt");
  const auto darkness = [&] {
    const QRect rect = view_.visualRect(files_.IndexOf(item));
    const QImage image = view_.viewport()->grab(rect).toImage();
    int darkest = 255;
    for (int y = 0; y < image.height(); ++y) {
      for (int x = 0; x < image.width(); ++x) {
        darkest = qMin(darkest, qGray(image.pixel(x, y)));
      }
    }
    return darkest;
  };
  const int before = darkness();
  files_.SetGhosted(item, true);
  EXPECT_GT(darkness(), before + 40);
}

TEST_F(FileListViewTest, NothingIsLaidOutForAnItemUntilItIsFlushed) {
  QSignalSpy layout(&files_, &QAbstractItemModel::layoutChanged);
  QSignalSpy inserted(&files_, &QAbstractItemModel::rowsInserted);
  const int height = view_.visualRect(files_.index(0, 0)).height();
  for (int i = 0; i < 500; ++i) {
    files_.AddListItem({}, 0x20, QString::number(i), {});
    QCoreApplication::processEvents();
  }
  EXPECT_EQ(files_.rowCount(), 4);
  EXPECT_TRUE(layout.isEmpty());
  EXPECT_TRUE(inserted.isEmpty());
  files_.FlushStaged();
  QCoreApplication::processEvents();
  EXPECT_FALSE(layout.isEmpty() && inserted.isEmpty());
  EXPECT_EQ(files_.rowCount(), 504);
  EXPECT_EQ(view_.visualRect(files_.index(0, 0)).height(), height);
}

}  // namespace
}  // namespace trevane

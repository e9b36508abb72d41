#include "dialogs/Prompts.h"
#include "dialogs/SelectableText.h"
#include "dialogs/frmProperty.h"

#include <QApplication>
#include <QClipboard>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QTableWidget>
#include <QTest>

#include <gtest/gtest.h>

namespace trevane {
namespace {

const PropertyTable kFile = {
    QStringLiteral("Name,Size,Type,Modified,Accessed,Created,Attributes").split(u','),
    {QStringLiteral("main.pac"), QStringLiteral("1,234,567 bytes (1.18 MiB)"), QStringLiteral("PAC file"),
     QStringLiteral("11/21/26 10:15:00 AM"), QStringLiteral("11/21/26 10:16:00 AM"),
     QStringLiteral("11/20/26 9:00:00 AM"), QStringLiteral("RHA")}};
const PropertyTable kController = {
    QStringLiteral("Controller Name,Provider Name,Machine Name,Option,Root").split(u','),
    {QStringLiteral("Cell1"), QStringLiteral("IxoProv.Cell"), QStringLiteral("192.168.0.5"),
     QStringLiteral(""), QStringLiteral("/")}};

struct PropertyWindowTest : testing::Test {
  PropertyWindowTest() {
    window.SetTable(kFile);
    window.show();
  }

  frmProperty window;
  QTableWidget& grid = *window.findChild<QTableWidget*>(QStringLiteral("flxgrdProp"));
  QPushButton& cmdProOK = *window.findChild<QPushButton*>(QStringLiteral("cmdProOK"));
};

TEST_F(PropertyWindowTest, ShowsARowForEachLabelWithItsValue) {
  EXPECT_EQ(window.windowTitle(), QStringLiteral("Properties"));
  ASSERT_EQ(grid.columnCount(), 2);
  ASSERT_EQ(grid.rowCount(), 7);
  for (int row = 0; row < 7; ++row) {
    EXPECT_EQ(grid.item(row, 0)->text(), kFile.labels[row]);
    EXPECT_EQ(grid.item(row, 1)->text(), kFile.values[row]);
  }
}

TEST_F(PropertyWindowTest, TheLabelsAre1300TwipsWideAndNotCutOff) {
  // A font that is wide from the start takes more.
  const bool isWide = grid.fontMetrics().horizontalAdvance(QStringLiteral("Attributes")) > 75;
  EXPECT_GE(grid.columnWidth(0), 87);
  EXPECT_EQ(grid.columnWidth(0) == 87, !isWide);
  QFont large = window.font();
  large.setPointSizeF(large.pointSizeF() * 2);
  window.setFont(large);
  EXPECT_GT(grid.columnWidth(0), grid.fontMetrics().horizontalAdvance(QStringLiteral("Attributes")));
}

TEST_F(PropertyWindowTest, AnotherTableReplacesTheOneBefore) {
  window.SetTable(kController);
  ASSERT_EQ(grid.rowCount(), 5);
  EXPECT_EQ(grid.item(0, 0)->text(), QStringLiteral("Controller Name"));
  EXPECT_EQ(grid.item(4, 1)->text(), QStringLiteral("/"));
}

TEST_F(PropertyWindowTest, WhatElseIsKnownStandsBelowAndTheWindowGrowsForIt) {
  auto& text = *window.findChild<SelectableText*>(QStringLiteral("txtDetails"));
  EXPECT_FALSE(text.isVisible());
  const QSize before = window.size();
  const int gridBefore = grid.height();
  PropertyTable table = kFile;
  table.details = {QStringLiteral("Owner: <b>joe</b>\nand more\x1B[2J"),
                   QStringLiteral("Permissions: rwxr-x---")};
  window.SetTable(table);
  QTest::qWait(0);
  EXPECT_TRUE(text.isVisible());
  EXPECT_EQ(text.toPlainText(),
            QStringLiteral("Owner: <b>joe</b> and more\u241B[2J\nPermissions: rwxr-x---"));
  EXPECT_GE(text.height(), 2 * text.fontMetrics().height());
  EXPECT_GT(window.height(), before.height());
  EXPECT_EQ(window.width(), before.width());
  EXPECT_NEAR(grid.height(), gridBefore, 1);
  text.setFocus();
  QTest::keySequence(&text, QKeySequence::SelectAll);
  QTest::keySequence(&text, QKeySequence::Copy);
  EXPECT_EQ(QApplication::clipboard()->text(), text.toPlainText());

  table.details = {
      QStringLiteral("Host key: ssh-ed25519 SHA256:7dZ3Lv5gfi0H1kCzjgg4yb2TQm6u+UHqUfoL4Sj3wZ4 and more")};
  window.SetTable(table);
  QTest::qWait(0);
  EXPECT_GT(window.width(), before.width());
  EXPECT_LT(text.height(), 2 * text.fontMetrics().height()) << "a fingerprint is not broken";

  table.details = QStringList(1000, QStringLiteral("line"));
  window.SetTable(table);
  EXPECT_LE(text.height(), SelectableText::kMostLines * text.fontMetrics().lineSpacing() + 1);

  window.SetTable(kController);
  QTest::qWait(0);
  EXPECT_FALSE(text.isVisible());
  EXPECT_EQ(window.size(), before);
  EXPECT_EQ(grid.rowCount(), 5);
}

TEST_F(PropertyWindowTest, EnterInTheTextBelowCloses) {
  PropertyTable table = kFile;
  table.details = {QStringLiteral("Owner: joe")};
  window.SetTable(table);
  for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Escape}) {
    window.show();
    QTest::keyClick(window.findChild<SelectableText*>(), key);
    EXPECT_FALSE(window.isVisible());
  }
}

TEST_F(PropertyWindowTest, ALabelOfTwoWordsTakesTwoLines) {
  window.SetTable(kController);
  QTest::qWait(0);
  EXPECT_GE(grid.rowHeight(0), 2 * grid.fontMetrics().height());
}

TEST_F(PropertyWindowTest, TheButtonEnterAndEscClose) {
  cmdProOK.click();
  EXPECT_FALSE(window.isVisible());
  for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Escape}) {
    window.show();
    QTest::keyClick(&window, key);
    EXPECT_FALSE(window.isVisible());
    window.show();
    QTest::keyClick(&grid, key);
    EXPECT_FALSE(window.isVisible());
  }
}

TEST_F(PropertyWindowTest, SelectedCellsAreCopiedAsTheyStand) {
  grid.setCurrentCell(1, 1);
  QTest::keySequence(&grid, QKeySequence::Copy);
  EXPECT_EQ(QApplication::clipboard()->text(), QStringLiteral("1,234,567 bytes (1.18 MiB)"));
  grid.selectAll();
  QTest::keySequence(&grid, QKeySequence::Copy);
  EXPECT_TRUE(
      QApplication::clipboard()->text().startsWith(QStringLiteral("Name\tmain.pac\nSize\t1,234,567")));
  EXPECT_EQ(QApplication::clipboard()->text().count(u'\n'), 6);
}

TEST_F(PropertyWindowTest, APieceOfAValueCanBeSelectedAndNothingCanBeChanged) {
  grid.setCurrentCell(0, 1);
  grid.editItem(grid.item(0, 1));
  auto* editor = grid.viewport()->findChild<QLineEdit*>();
  ASSERT_NE(editor, nullptr);
  EXPECT_TRUE(editor->isReadOnly());
  EXPECT_EQ(editor->text(), QStringLiteral("main.pac"));
  EXPECT_EQ(editor->accessibleName(), QStringLiteral("Name"));
  QTest::keyClicks(editor, QStringLiteral("x"));
  EXPECT_EQ(editor->text(), QStringLiteral("main.pac"));
  EXPECT_FALSE(grid.item(0, 0)->flags().testFlag(Qt::ItemIsEditable));
}

TEST_F(PropertyWindowTest, ATooltipShowsTheWholeValueUnchanged) {
  PropertyTable table = kFile;
  table.values[0] = QStringLiteral("<b>name</b>");
  window.SetTable(table);
  EXPECT_TRUE(grid.item(0, 1)->toolTip().contains(QStringLiteral("&lt;b&gt;name")));
}

TEST_F(PropertyWindowTest, TabLeadsFromTheTableToTheButtonAndBack) {
  window.activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
  EXPECT_TRUE(cmdProOK.hasFocus());
  QTest::keyClick(&cmdProOK, Qt::Key_Tab);
  EXPECT_TRUE(grid.hasFocus());
  QTest::keyClick(&grid, Qt::Key_Tab);
  EXPECT_TRUE(cmdProOK.hasFocus());
}

struct SecondaryWindowsTest : testing::Test {
  SecondaryWindowsTest() { main.show(); }

  QWidget main;
  Prompts prompts{[](qint32) {}, [](qint32) {}};
};

TEST_F(SecondaryWindowsTest, ThereIsOnePropertiesWindowAndItLetsTheUserGoOn) {
  prompts.SetMainWindow(&main);
  prompts.ShowProperties(kFile);
  const QPointer<frmProperty> first = main.findChild<frmProperty*>();
  ASSERT_FALSE(first.isNull());
  EXPECT_TRUE(first->isVisible());
  EXPECT_FALSE(first->isModal());
  prompts.ShowProperties(kController);
  EXPECT_EQ(main.findChildren<frmProperty*>().size(), 1);
  EXPECT_EQ(first->findChild<QTableWidget*>()->rowCount(), 5);
}

TEST_F(SecondaryWindowsTest, ClosingThePropertiesUnloadsThemAndTheNextAreNew) {
  prompts.SetMainWindow(&main);
  prompts.ShowProperties(kFile);
  const QPointer<frmProperty> first = main.findChild<frmProperty*>();
  first->findChild<QPushButton*>(QStringLiteral("cmdProOK"))->click();
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  EXPECT_TRUE(first.isNull());
  prompts.ShowProperties(kController);
  EXPECT_NE(main.findChild<frmProperty*>(), nullptr);
}

TEST_F(SecondaryWindowsTest, UnloadingTakesThePropertiesAwayAndNoneIsNoError) {
  prompts.SetMainWindow(&main);
  prompts.UnloadWindows();
  prompts.ShowProperties(kFile);
  prompts.UnloadWindows();
  EXPECT_EQ(main.findChild<frmProperty*>(), nullptr);
}

TEST_F(SecondaryWindowsTest, PropertiesWithoutAMainWindowGoWithWhoShowedThem) {
  QPointer<QWidget> shown;
  {
    Prompts own([](qint32) {}, [](qint32) {});
    own.ShowProperties(kFile);
    for (QWidget* top : QApplication::topLevelWidgets()) {
      if (qobject_cast<frmProperty*>(top)) {
        shown = top;
      }
    }
    ASSERT_FALSE(shown.isNull());
  }
  EXPECT_TRUE(shown.isNull());
}

}  // namespace
}  // namespace trevane

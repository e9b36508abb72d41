#include "app/window/CommandBars.h"
#include "app/window/ToolBar.h"
#include "tests/app/window/MainWindowFixture.h"
#include "views/bars/HistoryBox.h"

#include <QAction>
#include <QLineEdit>
#include <QWheelEvent>

namespace trevane::test {
namespace {

/// Focus, current item, selection and status text after each way to a folder.
class ViewsWindowTest : public MainWindowFixture {
 protected:
  ViewsWindowTest() {
    for (const QString& name : {QStringLiteral("a.txt"), QStringLiteral("b.txt"), QStringLiteral("c.txt")}) {
      memory_->AddFile(QStringLiteral("C:\\Programs\\") + name, "x");
    }
  }

  void StartIn(const QString& address) {
    Start();
    Tree().expand(Window()->TreeModel().IndexOf(Node(kDrive)));
    ClickNode(address);
  }
  void Key(QWidget& widget, Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
    QTest::keyClick(&widget, key, modifiers);
    QCoreApplication::processEvents();
  }
  void TypeInto(QLineEdit& editor, const QString& text) {
    QCoreApplication::processEvents();
    editor.selectAll();
    QTest::keyClicks(&editor, text);
    QTest::keyClick(&editor, Qt::Key_Return);
    QTest::qWait(0);
    QCoreApplication::processEvents();
  }
  void Enter(const QString& address) {
    Address().setFocus();
    Address().setEditText(address);
    Key(Address(), Qt::Key_Return);
  }
  [[nodiscard]] HistoryBox& Address() { return Find<HistoryBox>("cmbAddress"); }
  [[nodiscard]] QString Status() { return Find<QLabel>("sbarMainText").text(); }
  [[nodiscard]] QStringList Selected() {
    QStringList texts;
    for (const auto item : List().SelectedItems()) {
      texts += Window()->ListModel().Text(item);
    }
    return texts;
  }
  [[nodiscard]] QString CurrentItem() {
    const auto item = List().FocusedItem();
    return item == FileListModel::kNoItem ? QString() : Window()->ListModel().Text(item);
  }
  void ExpectLanded(const QString& address, const QString& current) {
    EXPECT_EQ(Nav().CurrentAddress().toStdString(), address.toStdString());
    EXPECT_TRUE(Selected().isEmpty()) << Selected().front().toStdString();
    EXPECT_EQ(CurrentItem().toStdString(), current.toStdString());
    EXPECT_TRUE(List().viewport()->rect().intersects(List().visualRect(List().currentIndex())));
  }

  const QString kDrive = QStringLiteral("Workspace\\My Computer\\C:");
};

TEST_F(ViewsWindowTest, EnterInTheAddressBoxFocusesTheList) {
  Start();
  Enter(kDrive + QStringLiteral("\\Programs"));
  EXPECT_EQ(Window()->focusWidget(), &List());
  ExpectLanded(kDrive + QStringLiteral("\\Programs"), QStringLiteral("a.txt"));
  prompts_.ExpectBox(QStringLiteral("Failed Move to a specified address."));
  Enter(QStringLiteral("nowhere"));
  EXPECT_EQ(Window()->focusWidget(), &Address()) << "to be mended";
}

TEST_F(ViewsWindowTest, EscBringsTheAddressBack) {
  StartIn(kDrive + QStringLiteral("\\Programs"));
  Address().setFocus();
  Address().lineEdit()->selectAll();
  QTest::keyClicks(&Address(), QStringLiteral("else"));
  Key(Address(), Qt::Key_Escape);
  EXPECT_EQ(Address().currentText(), kDrive + QStringLiteral("\\Programs"));
  EXPECT_EQ(Address().lineEdit()->selectedText(), Address().currentText());
}

TEST_F(ViewsWindowTest, TheWheelChangesNoBox) {
  StartIn(kDrive);
  Enter(kDrive + QStringLiteral("\\Programs"));
  Enter(kDrive + QStringLiteral("\\Backup"));
  for (const int step : {120, -120}) {
    Address().setFocus();
    QWheelEvent wheel(QPointF(5, 5), Address().mapToGlobal(QPointF(5, 5)), {}, {0, step}, Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(&Address(), &wheel);
    EXPECT_EQ(Address().currentText(), kDrive + QStringLiteral("\\Backup"));
  }
}

TEST_F(ViewsWindowTest, F5AndAltUpWorkFromBothBoxes) {
  for (const char* const name : {"cmbAddress", "cmbFilter"}) {
    StartIn(kDrive + QStringLiteral("\\Programs"));
    memory_->AddFile(QStringLiteral("C:\\Programs\\new.txt"));
    auto& box = Find<HistoryBox>(name);
    box.setFocus();
    Key(box, Qt::Key_F5);
    EXPECT_TRUE(ListTexts().contains(QStringLiteral("new.txt")));
    EXPECT_EQ(Window()->focusWidget(), &box);
    Key(box, Qt::Key_Up, Qt::AltModifier);
    EXPECT_EQ(Nav().CurrentAddress(), kDrive);
    memory_->Vanish(QStringLiteral("C:\\Programs\\new.txt"));
    Stop();
  }
}

TEST_F(ViewsWindowTest, OpeningSelectsTheFirstItemAndOtherWaysNone) {
  StartIn(kDrive);
  ExpectLanded(kDrive, QStringLiteral("Backup"));
  DoubleClickItem(QStringLiteral("Programs"));
  EXPECT_EQ(Selected(), QStringList{QStringLiteral("a.txt")});
  Key(List(), Qt::Key_Backspace);
  ExpectLanded(kDrive, QStringLiteral("Programs"));
  Key(List(), Qt::Key_Return);
  EXPECT_EQ(Selected(), QStringList{QStringLiteral("a.txt")});
  ClickNode(kDrive);
  ExpectLanded(kDrive, QStringLiteral("Programs"));
  ClickNode(kDrive + QStringLiteral("\\Programs\\Cell1"));
  Enter(kDrive);
  ExpectLanded(kDrive, QStringLiteral("Programs"));
  Enter(QStringLiteral("Workspace"));
  ExpectLanded(QStringLiteral("Workspace"), QStringLiteral("My Computer"));
}

TEST_F(ViewsWindowTest, OpeningDuringAListingSelectsTheFirstItem) {
  for (int i = 0; i < FolderDisplay::kGaugeFrom; ++i) {
    memory_->AddFile(QStringLiteral("C:\\file%1").arg(i));
  }
  StartIn(kDrive + QStringLiteral("\\Backup"));
  bool opened = false;
  prompts_.RecordedGauge().onIncrement = [&] {
    const auto item = Window()->ListModel().FindByText(QStringLiteral("Programs"));
    if (item != FileListModel::kNoItem && !std::exchange(opened, true)) {
      Q_EMIT List().ItemActivated(item);
    }
  };
  Enter(kDrive);
  ASSERT_TRUE(opened);
  EXPECT_EQ(Nav().CurrentAddress(), kDrive + QStringLiteral("\\Programs"));
  EXPECT_EQ(Selected(), QStringList{QStringLiteral("a.txt")});
}

TEST_F(ViewsWindowTest, RefreshKeepsTheCurrentItem) {
  StartIn(kDrive + QStringLiteral("\\Programs"));
  List().selectionModel()->setCurrentIndex(
      Window()->ListModel().IndexOf(Window()->ListModel().FindByText(QStringLiteral("b.txt"))),
      QItemSelectionModel::NoUpdate);
  Key(*Window(), Qt::Key_F5);
  ExpectLanded(kDrive + QStringLiteral("\\Programs"), QStringLiteral("b.txt"));
}

TEST_F(ViewsWindowTest, AfterADeleteTheNeighbourIsCurrent) {
  StartIn(kDrive + QStringLiteral("\\Programs"));
  List().setFocus();
  ClickItem(QStringLiteral("a.txt"));
  ClickItem(QStringLiteral("b.txt"), Qt::LeftButton, Qt::ControlModifier);
  prompts_.AnswerAllChoices(0);
  prompts_.AnswerAllBoxes(PromptAnswer::Yes);
  Key(List(), Qt::Key_Delete);
  ExpectLanded(kDrive + QStringLiteral("\\Programs"), QStringLiteral("c.txt"));
  ClickItem(QStringLiteral("main.pac"));
  Key(List(), Qt::Key_Delete);
  ExpectLanded(kDrive + QStringLiteral("\\Programs"), QStringLiteral("Cell1"));

  ClickNode(kDrive + QStringLiteral("\\Backup"));
  Tree().setFocus();
  Key(Tree(), Qt::Key_Delete);
  ExpectLanded(kDrive, QStringLiteral("Programs"));
}

TEST_F(ViewsWindowTest, ANewFolderIsSelectedAndBeingNamed) {
  StartIn(kDrive + QStringLiteral("\\Programs"));
  Trigger(CommandPlace::NewMenu, CommandId::NewFolder);
  EXPECT_EQ(Selected(), QStringList{QStringLiteral("New Folder")});
  auto* editor = List().findChild<QLineEdit*>(QStringLiteral("txtLabel"));
  ASSERT_NE(editor, nullptr);
  EXPECT_EQ(editor->text(), QStringLiteral("New Folder"));
  TypeInto(*editor, QStringLiteral("Cell7"));
  EXPECT_TRUE(memory_->Exists(QStringLiteral("C:\\Programs\\Cell7")));
  EXPECT_EQ(Status(), QStringLiteral("Selected Cell7"));
}

TEST_F(ViewsWindowTest, ANewFolderInASelectedOneStartsNoEditor) {
  StartIn(kDrive);
  List().setFocus();
  ClickItem(QStringLiteral("Backup"));
  Trigger(CommandPlace::NewMenu, CommandId::NewFolder);
  EXPECT_TRUE(memory_->Exists(QStringLiteral("C:\\Backup\\New Folder")));
  EXPECT_EQ(List().findChild<QLineEdit*>(QStringLiteral("txtLabel")), nullptr);
}

TEST_F(ViewsWindowTest, TheStatusBarSaysWhereAPasteLanded) {
  StartIn(kDrive + QStringLiteral("\\Programs"));
  List().setFocus();
  ClickItem(QStringLiteral("a.txt"));
  ClickItem(QStringLiteral("b.txt"), Qt::LeftButton, Qt::ControlModifier);
  Key(List(), Qt::Key_C, Qt::ControlModifier);
  ClickItem(QStringLiteral("Cell1"));
  Key(List(), Qt::Key_V, Qt::ControlModifier);
  EXPECT_TRUE(memory_->Exists(QStringLiteral("C:\\Programs\\Cell1\\b.txt")));
  EXPECT_EQ(Status(), QStringLiteral("2 objects copied to ") + kDrive + QStringLiteral("\\Programs\\Cell1"));

  prompts_.AnswerAllChoices(2);
  ClickItem(QStringLiteral("Cell1"));
  Key(List(), Qt::Key_V, Qt::ControlModifier);
  EXPECT_EQ(Status(), QStringLiteral("Selected Programs")) << "all were skipped";

  ClickItem(QStringLiteral("c.txt"));
  Key(List(), Qt::Key_X, Qt::ControlModifier);
  ClickNode(kDrive + QStringLiteral("\\Backup"));
  Key(Tree(), Qt::Key_V, Qt::ControlModifier);
  EXPECT_TRUE(memory_->Exists(QStringLiteral("C:\\Backup\\c.txt")));
  EXPECT_EQ(Status(), QStringLiteral("1 object moved to ") + kDrive + QStringLiteral("\\Backup"));
}

TEST_F(ViewsWindowTest, TheStatusBarFollowsSelectionFocusAndRenames) {
  StartIn(kDrive + QStringLiteral("\\Programs"));
  List().setFocus();
  ClickItem(QStringLiteral("a.txt"));
  EXPECT_EQ(Status(), QStringLiteral("Selected a.txt"));
  ClickItem(QStringLiteral("c.txt"), Qt::LeftButton, Qt::ShiftModifier);
  EXPECT_EQ(Status(), QStringLiteral("3 objects selected"));
  Tree().setFocus();
  EXPECT_EQ(Status(), QStringLiteral("Selected Programs"));
  List().setFocus();
  EXPECT_EQ(Status(), QStringLiteral("3 objects selected"));
  List().clearSelection();
  EXPECT_EQ(Status(), QStringLiteral("%1 Objects.").arg(Window()->ListModel().Count()));
  ClickItem(QStringLiteral("b.txt"));
  Key(List(), Qt::Key_F2);
  auto* editor = List().findChild<QLineEdit*>(QStringLiteral("txtLabel"));
  ASSERT_NE(editor, nullptr);
  TypeInto(*editor, QStringLiteral("renamed.txt"));
  EXPECT_TRUE(memory_->Exists(QStringLiteral("C:\\Programs\\renamed.txt")));
  EXPECT_EQ(Status(), QStringLiteral("Selected renamed.txt"));
}

TEST_F(ViewsWindowTest, PropertiesShowTheCurrentItem) {
  shellIcons_.Know(QStringLiteral(".TXT"), QStringLiteral("Text Document"));
  StartIn(kDrive + QStringLiteral("\\Programs"));
  List().setFocus();
  ClickItem(QStringLiteral("a.txt"));
  ClickItem(QStringLiteral("c.txt"), Qt::LeftButton, Qt::ControlModifier);
  Key(List(), Qt::Key_Return, Qt::AltModifier);
  ASSERT_EQ(prompts_.ShownProperties().size(), 1U);
  EXPECT_EQ(prompts_.ShownProperties()[0].values[0], QStringLiteral("c.txt"));
  EXPECT_EQ(prompts_.ShownProperties()[0].values[2], QStringLiteral("Text Document"));
  ClickItem(QStringLiteral("c.txt"), Qt::LeftButton, Qt::ControlModifier);
  Key(List(), Qt::Key_Return, Qt::AltModifier);
  EXPECT_EQ(prompts_.ShownProperties().back().values[0], QStringLiteral("a.txt"))
      << "the current one is not selected";
}

}  // namespace
}  // namespace trevane::test

#include "app/window/CommandBars.h"
#include "app/window/ToolBar.h"
#include "tests/app/window/MainWindowFixture.h"
#include "views/bars/HistoryBox.h"

#include <QAction>
#include <QLineEdit>
#include <QWheelEvent>

namespace trevane::test {
namespace {

using namespace Qt::StringLiterals;

/// Where focus, current item and selection are after each way to a folder, and the status bar's text.
class ViewsWindowTest : public MainWindowFixture {
 protected:
  ViewsWindowTest() {
    for (const QString& name : {u"a.txt"_s, u"b.txt"_s, u"c.txt"_s})
      memory_->AddFile(u"C:\\Programs\\"_s + name, "x");
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
    for (const auto item : List().SelectedItems())
      texts += Window()->ListModel().Text(item);
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

  const QString kDrive = u"Workspace\\My Computer\\C:"_s;
};

TEST_F(ViewsWindowTest, AfterEnterInTheAddressBoxTheListHasTheFocus) {
  Start();
  Enter(kDrive + u"\\Programs"_s);
  EXPECT_EQ(Window()->focusWidget(), &List());
  ExpectLanded(kDrive + u"\\Programs"_s, u"a.txt"_s);
  prompts_.ExpectBox(u"Failed Move to a specified address."_s);
  Enter(u"nowhere"_s);
  EXPECT_EQ(Window()->focusWidget(), &Address()) << "to be mended";
}

TEST_F(ViewsWindowTest, EscBringsTheAddressBack) {
  StartIn(kDrive + u"\\Programs"_s);
  Address().setFocus();
  Address().lineEdit()->selectAll();
  QTest::keyClicks(&Address(), u"else"_s);
  Key(Address(), Qt::Key_Escape);
  EXPECT_EQ(Address().currentText(), kDrive + u"\\Programs"_s);
  EXPECT_EQ(Address().lineEdit()->selectedText(), Address().currentText());
}

TEST_F(ViewsWindowTest, TheWheelChangesNoBox) {
  StartIn(kDrive);
  Enter(kDrive + u"\\Programs"_s);
  Enter(kDrive + u"\\Backup"_s);
  for (const int step : {120, -120}) {
    Address().setFocus();
    QWheelEvent wheel(QPointF(5, 5), Address().mapToGlobal(QPointF(5, 5)), {}, {0, step}, Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(&Address(), &wheel);
    EXPECT_EQ(Address().currentText(), kDrive + u"\\Backup"_s);
  }
}

TEST_F(ViewsWindowTest, F5AndAltUpWorkFromBothBoxes) {
  for (const char* const name : {"cmbAddress", "cmbFilter"}) {
    StartIn(kDrive + u"\\Programs"_s);
    memory_->AddFile(u"C:\\Programs\\new.txt"_s);
    auto& box = Find<HistoryBox>(name);
    box.setFocus();
    Key(box, Qt::Key_F5);
    EXPECT_TRUE(ListTexts().contains(u"new.txt"_s));
    EXPECT_EQ(Window()->focusWidget(), &box);
    Key(box, Qt::Key_Up, Qt::AltModifier);
    EXPECT_EQ(Nav().CurrentAddress(), kDrive);
    memory_->Vanish(u"C:\\Programs\\new.txt"_s);
    Stop();
  }
}

TEST_F(ViewsWindowTest, OpeningSelectsTheFirstItemAndOtherWaysNone) {
  StartIn(kDrive);
  ExpectLanded(kDrive, u"Backup"_s);
  DoubleClickItem(u"Programs"_s);
  EXPECT_EQ(Selected(), QStringList{u"a.txt"_s});
  Key(List(), Qt::Key_Backspace);
  ExpectLanded(kDrive, u"Programs"_s);
  Key(List(), Qt::Key_Return);
  EXPECT_EQ(Selected(), QStringList{u"a.txt"_s});
  ClickNode(kDrive);
  ExpectLanded(kDrive, u"Programs"_s);
  ClickNode(kDrive + u"\\Programs\\Cell1"_s);
  Enter(kDrive);
  ExpectLanded(kDrive, u"Programs"_s);
  Enter(u"Workspace"_s);
  ExpectLanded(u"Workspace"_s, u"My Computer"_s);
}

TEST_F(ViewsWindowTest, AnItemOpenedDuringAListingHasItsFirstItemSelected) {
  for (int i = 0; i < FolderDisplay::kGaugeFrom; ++i)
    memory_->AddFile(u"C:\\file%1"_s.arg(i));
  StartIn(kDrive + u"\\Backup"_s);
  bool opened = false;
  prompts_.RecordedGauge().onIncrement = [&] {
    const auto item = Window()->ListModel().FindByText(u"Programs"_s);
    if (item != FileListModel::kNoItem && !std::exchange(opened, true))
      Q_EMIT List().ItemActivated(item);
  };
  Enter(kDrive);
  ASSERT_TRUE(opened);
  EXPECT_EQ(Nav().CurrentAddress(), kDrive + u"\\Programs"_s);
  EXPECT_EQ(Selected(), QStringList{u"a.txt"_s});
}

TEST_F(ViewsWindowTest, ARefreshWithoutASelectionKeepsTheCurrentItem) {
  StartIn(kDrive + u"\\Programs"_s);
  List().selectionModel()->setCurrentIndex(
      Window()->ListModel().IndexOf(Window()->ListModel().FindByText(u"b.txt"_s)),
      QItemSelectionModel::NoUpdate);
  Key(*Window(), Qt::Key_F5);
  ExpectLanded(kDrive + u"\\Programs"_s, u"b.txt"_s);
}

TEST_F(ViewsWindowTest, AfterADeleteTheNeighbourIsCurrent) {
  StartIn(kDrive + u"\\Programs"_s);
  List().setFocus();
  ClickItem(u"a.txt"_s);
  ClickItem(u"b.txt"_s, Qt::LeftButton, Qt::ControlModifier);
  prompts_.AnswerAllChoices(0);
  prompts_.AnswerAllBoxes(PromptAnswer::Yes);
  Key(List(), Qt::Key_Delete);
  ExpectLanded(kDrive + u"\\Programs"_s, u"c.txt"_s);
  ClickItem(u"main.pac"_s);
  Key(List(), Qt::Key_Delete);
  ExpectLanded(kDrive + u"\\Programs"_s, u"Cell1"_s);

  ClickNode(kDrive + u"\\Backup"_s);
  Tree().setFocus();
  Key(Tree(), Qt::Key_Delete);
  ExpectLanded(kDrive, u"Programs"_s);
}

TEST_F(ViewsWindowTest, ANewFolderIsSelectedAndBeingNamed) {
  StartIn(kDrive + u"\\Programs"_s);
  Trigger(CommandPlace::NewMenu, CommandId::NewFolder);
  EXPECT_EQ(Selected(), QStringList{u"New Folder"_s});
  auto* editor = List().findChild<QLineEdit*>(u"txtLabel"_s);
  ASSERT_NE(editor, nullptr);
  EXPECT_EQ(editor->text(), u"New Folder"_s);
  TypeInto(*editor, u"Cell7"_s);
  EXPECT_TRUE(memory_->Exists(u"C:\\Programs\\Cell7"_s));
  EXPECT_EQ(Status(), u"Selected Cell7"_s);
}

TEST_F(ViewsWindowTest, ANewFolderInASelectedOneStartsNoEditor) {
  StartIn(kDrive);
  List().setFocus();
  ClickItem(u"Backup"_s);
  Trigger(CommandPlace::NewMenu, CommandId::NewFolder);
  EXPECT_TRUE(memory_->Exists(u"C:\\Backup\\New Folder"_s));
  EXPECT_EQ(List().findChild<QLineEdit*>(u"txtLabel"_s), nullptr);
}

TEST_F(ViewsWindowTest, TheStatusBarSaysWhereAPasteLanded) {
  StartIn(kDrive + u"\\Programs"_s);
  List().setFocus();
  ClickItem(u"a.txt"_s);
  ClickItem(u"b.txt"_s, Qt::LeftButton, Qt::ControlModifier);
  Key(List(), Qt::Key_C, Qt::ControlModifier);
  ClickItem(u"Cell1"_s);
  Key(List(), Qt::Key_V, Qt::ControlModifier);
  EXPECT_TRUE(memory_->Exists(u"C:\\Programs\\Cell1\\b.txt"_s));
  EXPECT_EQ(Status(), u"2 objects copied to "_s + kDrive + u"\\Programs\\Cell1"_s);

  prompts_.AnswerAllChoices(2);
  ClickItem(u"Cell1"_s);
  Key(List(), Qt::Key_V, Qt::ControlModifier);
  EXPECT_EQ(Status(), u"Selected Programs"_s) << "all were skipped";

  ClickItem(u"c.txt"_s);
  Key(List(), Qt::Key_X, Qt::ControlModifier);
  ClickNode(kDrive + u"\\Backup"_s);
  Key(Tree(), Qt::Key_V, Qt::ControlModifier);
  EXPECT_TRUE(memory_->Exists(u"C:\\Backup\\c.txt"_s));
  EXPECT_EQ(Status(), u"1 object moved to "_s + kDrive + u"\\Backup"_s);
}

TEST_F(ViewsWindowTest, TheStatusBarFollowsSelectionFocusAndRenames) {
  StartIn(kDrive + u"\\Programs"_s);
  List().setFocus();
  ClickItem(u"a.txt"_s);
  EXPECT_EQ(Status(), u"Selected a.txt"_s);
  ClickItem(u"c.txt"_s, Qt::LeftButton, Qt::ShiftModifier);
  EXPECT_EQ(Status(), u"3 objects selected"_s);
  Tree().setFocus();
  EXPECT_EQ(Status(), u"Selected Programs"_s);
  List().setFocus();
  EXPECT_EQ(Status(), u"3 objects selected"_s);
  List().clearSelection();
  EXPECT_EQ(Status(), u"%1 Objects."_s.arg(Window()->ListModel().Count()));
  ClickItem(u"b.txt"_s);
  Key(List(), Qt::Key_F2);
  auto* editor = List().findChild<QLineEdit*>(u"txtLabel"_s);
  ASSERT_NE(editor, nullptr);
  TypeInto(*editor, u"renamed.txt"_s);
  EXPECT_TRUE(memory_->Exists(u"C:\\Programs\\renamed.txt"_s));
  EXPECT_EQ(Status(), u"Selected renamed.txt"_s);
}

TEST_F(ViewsWindowTest, PropertiesAreOfTheCurrentItemWithTheListsType) {
  shellIcons_.Know(u".TXT"_s, u"Text Document"_s);
  StartIn(kDrive + u"\\Programs"_s);
  List().setFocus();
  ClickItem(u"a.txt"_s);
  ClickItem(u"c.txt"_s, Qt::LeftButton, Qt::ControlModifier);
  Key(List(), Qt::Key_Return, Qt::AltModifier);
  ASSERT_EQ(prompts_.ShownProperties().size(), 1U);
  EXPECT_EQ(prompts_.ShownProperties()[0].values[0], u"c.txt"_s);
  EXPECT_EQ(prompts_.ShownProperties()[0].values[2], u"Text Document"_s);
  ClickItem(u"c.txt"_s, Qt::LeftButton, Qt::ControlModifier);
  Key(List(), Qt::Key_Return, Qt::AltModifier);
  EXPECT_EQ(prompts_.ShownProperties().back().values[0], u"a.txt"_s) << "the current one is not selected";
}

}  // namespace
}  // namespace trevane::test

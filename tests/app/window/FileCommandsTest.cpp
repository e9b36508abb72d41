#include "app/window/CommandBars.h"
#include "app/window/ToolBar.h"
#include "base/RunTimeError.h"
#include "tests/app/window/MainWindowFixture.h"

#include <QAction>
#include <QComboBox>
#include <QLineEdit>
#include <QMenu>
#include <QToolButton>

namespace trevane::test {
namespace {

using namespace Qt::StringLiterals;

/// The commands on files, with mouse and keys in the real window.
class FileCommandsWindowTest : public MainWindowFixture {
 protected:
  FileCommandsWindowTest() { memory_->AddFile(u"C:\\data.txt"_s, "data"); }

  void StartInDrive() {
    Start();
    Tree().expand(Window()->TreeModel().IndexOf(Node(kDrive)));
    ClickNode(kDrive);
    List().setFocus();
  }

  void Key(QWidget& widget, Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
    QTest::keyClick(&widget, key, modifiers);
    QCoreApplication::processEvents();
  }
  [[nodiscard]] QLineEdit* Editor(QWidget& view) { return view.findChild<QLineEdit*>(u"txtLabel"_s); }
  void TypeLabel(QWidget& view, const QString& text) {
    QLineEdit* editor = Editor(view);
    ASSERT_NE(editor, nullptr);
    QCoreApplication::processEvents();
    editor->selectAll();
    QTest::keyClicks(editor, text);
    QTest::keyClick(editor, Qt::Key_Return);
    QTest::qWait(0);
    QCoreApplication::processEvents();
  }
  [[nodiscard]] QStringList Log() const {
    QStringList lines;
    for (const QByteArray& line : Content("Trevane.log").split('\n')) {
      const QString text = QString::fromUtf8(line).trimmed();
      if (!text.isEmpty())
        lines += text.mid(text.indexOf(u"] "_s) + 2);
    }
    return lines;
  }
  [[nodiscard]] QString ClosePopup() {
    auto* popup = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    if (!popup)
      return {};
    const QString name = popup->objectName();
    popup->close();
    QCoreApplication::processEvents();
    return name;
  }
  [[nodiscard]] QString Status() { return Find<QLabel>("sbarMainText").text(); }
  [[nodiscard]] QString Address() { return Find<QComboBox>("cmbAddress").currentText(); }
  [[nodiscard]] int ClipboardCount() { return Window()->Operations().clipboard.Count(); }

  /// With the right button from one point to another, which may be in the other view.
  void RightDragTo(QWidget* from, const QPoint& start, QWidget* to, const QPoint& end) {
    const QPointF global = to->mapToGlobal(QPointF(end));
    const QPointF local = from->mapFromGlobal(global);
    QTest::mousePress(from, Qt::RightButton, {}, start);
    for (const QPointF& point : {QPointF(start) + QPointF(30, 3), local}) {
      QMouseEvent move(QEvent::MouseMove, point, from->mapToGlobal(point), Qt::NoButton, Qt::RightButton, {});
      QApplication::sendEvent(from, &move);
    }
    QMouseEvent release(QEvent::MouseButtonRelease, local, global, Qt::RightButton, Qt::NoButton, {});
    QApplication::sendEvent(from, &release);
    QCoreApplication::processEvents();
  }

  const QString kDrive = u"Workspace\\My Computer\\C:"_s;
};

TEST_F(FileCommandsWindowTest, CopyAndPasteByToolbar) {
  StartInDrive();
  EXPECT_FALSE(Button(CommandId::Paste)->isEnabled());
  ClickItem(u"readme.txt"_s);
  Trigger(CommandPlace::MainToolbar, CommandId::Copy);
  EXPECT_TRUE(Button(CommandId::Paste)->isEnabled());
  ClickNode(kDrive + u"\\Backup"_s);
  Trigger(CommandPlace::MainToolbar, CommandId::Paste);
  EXPECT_EQ(memory_->Content(u"C:\\Backup\\readme.txt"_s), "12345");
  EXPECT_EQ(ListTexts(), QStringList{u"readme.txt"_s});
  EXPECT_EQ(Log(), QStringList{u"COPY \"C:\\readme.txt\" TO \"C:\\Backup\\readme.txt\""_s});
  EXPECT_TRUE(Window()->isEnabled());
  EXPECT_NE(Window()->cursor().shape(), Qt::WaitCursor);
}

TEST_F(FileCommandsWindowTest, TheToolbarsButtonsActOnTheSameViewWhenTheyArePressedByKey) {
  Start();
  ClickNode(u"Workspace\\My Computer\\C:"_s);
  ClickItem(u"readme.txt"_s);
  Window()->activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(Window()));
  const auto press = [this](CommandId id) {
    Button(id)->setFocus(Qt::TabFocusReason);
    ASSERT_TRUE(Button(id)->hasFocus()) << static_cast<int>(id);
    QTest::keyClick(Button(id), Qt::Key_Space);
    QCoreApplication::processEvents();
  };
  press(CommandId::Copy);
  ClickNode(u"Workspace\\My Computer\\C:\\Programs"_s);
  press(CommandId::Paste);
  EXPECT_TRUE(memory_->Exists(u"C:\\Programs\\readme.txt"_s));
  EXPECT_EQ(Window()->cursor().shape(), Qt::ArrowCursor);
  ClickItem(u"readme.txt"_s);
  prompts_.ExpectChoice(u"'readme.txt' Do you want to Remove it?"_s, 0);
  press(CommandId::Delete);
  EXPECT_FALSE(memory_->Exists(u"C:\\Programs\\readme.txt"_s));
}

TEST_F(FileCommandsWindowTest, CutThenPasteTwiceIsImpossibleByToolbarAndRunsEmptyFromTheMenu) {
  StartInDrive();
  ClickItem(u"readme.txt"_s);
  Key(List(), Qt::Key_X, Qt::ControlModifier);
  EXPECT_EQ(ClipboardCount(), 1);
  ClickNode(kDrive + u"\\Backup"_s);
  Trigger(CommandPlace::EditMenu, CommandId::Paste);
  EXPECT_TRUE(memory_->Exists(u"C:\\Backup\\readme.txt"_s));
  EXPECT_FALSE(Button(CommandId::Paste)->isEnabled());
  EXPECT_EQ(ClipboardCount(), 0);
  const QStringList before = memory_->Tree();
  Trigger(CommandPlace::EditMenu, CommandId::Paste);
  EXPECT_EQ(memory_->Tree(), before);
  EXPECT_EQ(Log().size(), 1);
}

TEST_F(FileCommandsWindowTest, AfterAPasteTheListHasTheFocusAgain) {
  StartInDrive();
  ClickItem(u"readme.txt"_s);
  Trigger(CommandPlace::MainToolbar, CommandId::Copy);
  ClickItem(u"Backup"_s);
  Trigger(CommandPlace::MainToolbar, CommandId::Paste);
  EXPECT_EQ(Window()->focusWidget(), &List());
  EXPECT_TRUE(memory_->Exists(u"C:\\Backup\\readme.txt"_s));
}

TEST_F(FileCommandsWindowTest, WithoutASelectionCtrlVIsTheMenusPasteAndCtrlCAndXDoNothing) {
  StartInDrive();
  ClickItem(u"readme.txt"_s);
  Key(List(), Qt::Key_C, Qt::ControlModifier);
  ASSERT_EQ(ClipboardCount(), 1);
  ClickNode(kDrive + u"\\Backup"_s);
  List().setFocus();
  List().clearSelection();
  ASSERT_TRUE(IsEnabled(CommandPlace::EditMenu, CommandId::Paste));
  Key(List(), Qt::Key_C, Qt::ControlModifier);
  Key(List(), Qt::Key_X, Qt::ControlModifier);
  EXPECT_EQ(ClipboardCount(), 1);
  EXPECT_EQ(Window()->Operations().nFileOpMode, OperationState::kCopy);
  for (const Qt::KeyboardModifier held : {Qt::ShiftModifier, Qt::AltModifier})
    Key(List(), Qt::Key_V, Qt::ControlModifier | held);
  EXPECT_FALSE(memory_->Exists(u"C:\\Backup\\readme.txt"_s));
  Key(List(), Qt::Key_V, Qt::ControlModifier);
  EXPECT_TRUE(memory_->Exists(u"C:\\Backup\\readme.txt"_s));

  ClickNode(u"Workspace\\My Computer"_s);
  List().setFocus();
  List().clearSelection();
  ASSERT_FALSE(IsEnabled(CommandPlace::EditMenu, CommandId::Paste));
  Key(List(), Qt::Key_V, Qt::ControlModifier);
  EXPECT_TRUE(prompts_.Asked().empty()) << "nothing is pasted where the menu could not";
}

TEST_F(FileCommandsWindowTest, CtrlVDoesNothingWithSeveralItemsSelected) {
  StartInDrive();
  ClickItem(u"readme.txt"_s);
  Key(List(), Qt::Key_C, Qt::ControlModifier);
  ClickItem(u"Backup"_s);
  ClickItem(u"Programs"_s, Qt::LeftButton, Qt::ControlModifier);
  Key(List(), Qt::Key_V, Qt::ControlModifier);
  EXPECT_FALSE(memory_->Exists(u"C:\\Backup\\readme.txt"_s));
  EXPECT_FALSE(memory_->Exists(u"C:\\Programs\\readme.txt"_s));
}

TEST_F(FileCommandsWindowTest, TheListsKeysDoNothingOnPlacesAndWithShiftOrAlt) {
  Start();
  List().setFocus();
  ClickItem(u"My Computer"_s);
  Key(List(), Qt::Key_X, Qt::ControlModifier);
  DoubleClickItem(u"My Computer"_s);
  ClickItem(u"C:"_s);
  Key(List(), Qt::Key_C, Qt::ControlModifier);
  EXPECT_EQ(Window()->Operations().nFileOpMode, 0);
  DoubleClickItem(u"C:"_s);
  ClickItem(u"readme.txt"_s);
  Key(List(), Qt::Key_C, Qt::ControlModifier | Qt::ShiftModifier);
  Key(List(), Qt::Key_X, Qt::ControlModifier | Qt::AltModifier);
  EXPECT_EQ(Window()->Operations().nFileOpMode, 0);
  Key(List(), Qt::Key_C, Qt::ControlModifier);
  EXPECT_EQ(Window()->Operations().nFileOpMode, OperationState::kCopy);
}

TEST_F(FileCommandsWindowTest, TheTreeCopiesItsCurrentFolderByKey) {
  StartInDrive();
  ClickNode(kDrive + u"\\Programs"_s);
  Tree().setFocus();
  Key(Tree(), Qt::Key_C, Qt::ControlModifier);
  EXPECT_EQ(ClipboardCount(), 1);
  ClickNode(kDrive + u"\\Backup"_s);
  Key(Tree(), Qt::Key_V, Qt::ControlModifier);
  EXPECT_TRUE(memory_->Exists(u"C:\\Backup\\Programs\\main.pac"_s));
  EXPECT_NE(Window()->TreeModel().FindByKey(kDrive + u"\\Backup\\Programs"_s), nullptr);
}

TEST_F(FileCommandsWindowTest, DelAsksAndDeletes) {
  StartInDrive();
  ClickItem(u"readme.txt"_s);
  prompts_.ExpectChoice(u"'readme.txt' Do you want to Remove it?"_s, 0);
  Key(List(), Qt::Key_Delete);
  EXPECT_FALSE(memory_->Exists(u"C:\\readme.txt"_s));
  EXPECT_FALSE(ListTexts().contains(u"readme.txt"_s));
  EXPECT_EQ(Log(), QStringList{u"DELETE \"C:\\readme.txt\""_s});
}

TEST_F(FileCommandsWindowTest, DelInTheTreeTakesTheFolderAwayAndShowsTheParent) {
  StartInDrive();
  ClickNode(kDrive + u"\\Programs"_s);
  Tree().setFocus();
  prompts_.ExpectBox(u"'C:\\Programs'\r\nRemove this file?"_s, PromptAnswer::Yes);
  Key(Tree(), Qt::Key_Delete);
  EXPECT_FALSE(memory_->Exists(u"C:\\Programs"_s));
  EXPECT_EQ(Nav().CurrentAddress(), kDrive);
  EXPECT_EQ(Window()->TreeModel().FindByKey(kDrive + u"\\Programs"_s), nullptr);
  EXPECT_EQ(Tree().SelectedNode(), Node(kDrive));
}

TEST_F(FileCommandsWindowTest, F2RenamesInTheList) {
  StartInDrive();
  ClickItem(u"Programs"_s);
  Key(List(), Qt::Key_F2);
  TypeLabel(List(), u"Work"_s);
  EXPECT_TRUE(memory_->Exists(u"C:\\Work\\main.pac"_s));
  EXPECT_TRUE(ListTexts().contains(u"Work"_s));
  EXPECT_NE(Window()->TreeModel().FindByKey(kDrive + u"\\work"_s), nullptr);
  EXPECT_EQ(Log(), QStringList{u"RENAME \"C:\\Programs\" TO \"Work\""_s});
}

TEST_F(FileCommandsWindowTest, F2RenamesInTheTreeAndTheAddressFollows) {
  StartInDrive();
  ClickNode(kDrive + u"\\Programs"_s);
  Tree().setFocus();
  Key(Tree(), Qt::Key_F2);
  TypeLabel(Tree(), u"Work"_s);
  EXPECT_TRUE(memory_->Exists(u"C:\\Work\\main.pac"_s));
  EXPECT_EQ(Address(), kDrive + u"\\Work"_s);
  EXPECT_EQ(Nav().CurrentAddress(), kDrive + u"\\Work"_s);
  EXPECT_EQ(Tree().SelectedNode()->Key(), (kDrive + u"\\work"_s).toLower());
}

TEST_F(FileCommandsWindowTest, AFailedRenameKeepsTheOldLabel) {
  StartInDrive();
  ClickItem(u"readme.txt"_s);
  Trigger(CommandPlace::EntryPopup, CommandId::Rename);
  prompts_.ExpectBox(u"Failed to rename the file."_s);
  TypeLabel(List(), u"a\\b"_s);
  EXPECT_TRUE(ListTexts().contains(u"readme.txt"_s));
  EXPECT_TRUE(memory_->Exists(u"C:\\readme.txt"_s));
}

TEST_F(FileCommandsWindowTest, TheStatusBarTellsWhyARenameFailed) {
  StartInDrive();
  ClickItem(u"readme.txt"_s);
  Trigger(CommandPlace::EntryPopup, CommandId::Rename);
  prompts_.ExpectBox(u"Failed to rename the file."_s);
  TypeLabel(List(), u"a\\b"_s);
  EXPECT_EQ(Status(), u"The name is not valid: 'a\\b'"_s);
  ClickItem(u"data.txt"_s);
  EXPECT_EQ(Status(), u"Selected data.txt"_s);
}

TEST_F(FileCommandsWindowTest, TheReasonOfAFailedPasteStaysWhenTheFolderIsShownAgain) {
  StartInDrive();
  ClickItem(u"readme.txt"_s);
  Trigger(CommandPlace::MainToolbar, CommandId::Copy);
  faulty_->SetHook([](const FileSystemCall& call) {
    if (call.operation == FileSystemOperation::Copy)
      throw RunTimeError(error::kDiskFull, u"The disk is full\nor nearly so"_s);
  });
  ClickNode(kDrive + u"\\Backup"_s);
  prompts_.ExpectChoice(0);
  prompts_.ExpectBox(u"Failed in copy operation."_s);
  Trigger(CommandPlace::MainToolbar, CommandId::Paste);
  EXPECT_EQ(prompts_.Asked().back().informativeText, u"readme.txt\nThe disk is full\nor nearly so"_s);
  EXPECT_EQ(Status(), u"The disk is full"_s);
  // The next operation begins with its own text.
  faulty_->SetHook({});
  Trigger(CommandPlace::MainToolbar, CommandId::Paste);
  EXPECT_EQ(Status(), u"1 object copied to "_s + kDrive + u"\\Backup"_s);
}

TEST_F(FileCommandsWindowTest, TheReasonOfAFailedWorkspaceStaysAtTheStart) {
  Put("a.fmg", "[Cell]\r\nCtrlName=Cell\r\nProvider=IxoProv.None\r\n");
  prompts_.ExpectBox(u"Failed in connecting to the controller( Cell )."_s);
  Start(u'"' + InFolder("a.fmg") + u'"');
  EXPECT_EQ(prompts_.Asked().back().informativeText,
            u"Cell\nThere is no provider with the name 'IxoProv.None'"_s);
  EXPECT_EQ(Status(), u"There is no provider with the name 'IxoProv.None'"_s);
  ClickNode(kDrive);
  EXPECT_EQ(Status(), u"Selected C:"_s);
}

TEST_F(FileCommandsWindowTest, RenameOfADriveIsRefusedAtOnce) {
  Start();
  ClickNode(kDrive);
  Tree().setFocus();
  Key(Tree(), Qt::Key_F2);
  EXPECT_EQ(Editor(Tree()), nullptr);
  EXPECT_FALSE(Tree().StartLabelEdit());
}

TEST_F(FileCommandsWindowTest, ATypedLabelIsKeptWhenAToolButtonIsClicked) {
  StartInDrive();
  ClickItem(u"readme.txt"_s);
  ASSERT_TRUE(List().StartLabelEdit());
  Editor(List())->setText(u"first.txt"_s);
  Trigger(CommandPlace::MainToolbar, CommandId::Parent);
  EXPECT_TRUE(memory_->Exists(u"C:\\first.txt"_s));
  EXPECT_FALSE(memory_->Exists(u"C:\\readme.txt"_s));
  EXPECT_EQ(Nav().CurrentAddress(), u"Workspace\\My Computer"_s);

  ClickNode(kDrive + u"\\Backup"_s);
  ASSERT_TRUE(Tree().StartLabelEdit());
  Editor(Tree())->setText(u"Kept"_s);
  Trigger(CommandPlace::MainToolbar, CommandId::Copy);
  EXPECT_TRUE(memory_->Exists(u"C:\\Kept"_s));
  ASSERT_EQ(ClipboardCount(), 1);
  EXPECT_EQ(Window()->Operations().clipboard.Item(qint32{1}).PastePath(), kDrive + u"\\Kept"_s);
}

TEST_F(FileCommandsWindowTest, WhileALabelIsEditedNoKeyOfTheWindowFires) {
  StartInDrive();
  ClickItem(u"readme.txt"_s);
  Key(List(), Qt::Key_F2);
  QLineEdit* editor = Editor(List());
  ASSERT_NE(editor, nullptr);
  QCoreApplication::processEvents();
  const auto calls = memory_->CallCount();
  for (const Qt::Key key : {Qt::Key_C, Qt::Key_X, Qt::Key_V, Qt::Key_A})
    QTest::keyClick(editor, key, Qt::ControlModifier);
  QTest::keyClick(editor, Qt::Key_F5);
  QTest::keyClick(editor, Qt::Key_Up, Qt::AltModifier);
  QTest::keyClick(editor, Qt::Key_F10, Qt::ShiftModifier);
  QTest::keyClick(editor, Qt::Key_Backspace);
  QTest::keyClick(editor, Qt::Key_Delete);
  QCoreApplication::processEvents();
  EXPECT_EQ(ClosePopup(), QString());
  EXPECT_EQ(memory_->CallCount(), calls);
  EXPECT_EQ(ClipboardCount(), 0);
  EXPECT_EQ(Window()->Operations().nFileOpMode, 0);
  EXPECT_EQ(Nav().CurrentAddress(), kDrive);
  EXPECT_EQ(List().SelectedItems().size(), 1U);
  QTest::keyClick(Editor(List()) ? Editor(List()) : editor, Qt::Key_Escape);
}

TEST_F(FileCommandsWindowTest, WhileTheAddressBoxHasTheFocusNoMenusShortcutFires) {
  StartInDrive();
  ClickItem(u"readme.txt"_s);
  auto& box = Find<QComboBox>("cmbAddress");
  box.setFocus();
  for (const Qt::Key key : {Qt::Key_C, Qt::Key_X, Qt::Key_V, Qt::Key_A})
    Key(*box.lineEdit(), key, Qt::ControlModifier);
  Key(*box.lineEdit(), Qt::Key_Delete);
  EXPECT_EQ(ClipboardCount(), 0);
  EXPECT_EQ(Window()->Operations().nFileOpMode, 0);
  EXPECT_TRUE(memory_->Exists(u"C:\\readme.txt"_s));
}

TEST_F(FileCommandsWindowTest, PasteFromTheAddressBoxLeavesTheHourglassOnUntilTheNextCommand) {
  StartInDrive();
  ClickItem(u"readme.txt"_s);
  Trigger(CommandPlace::MainToolbar, CommandId::Copy);
  ClickItem(u"Backup"_s);
  Find<QComboBox>("cmbAddress").setFocus();
  Trigger(CommandPlace::MainToolbar, CommandId::Paste);
  EXPECT_EQ(Window()->cursor().shape(), Qt::WaitCursor);
  EXPECT_FALSE(memory_->Exists(u"C:\\Backup\\readme.txt"_s));
  List().setFocus();
  Trigger(CommandPlace::MainToolbar, CommandId::Paste);
  EXPECT_NE(Window()->cursor().shape(), Qt::WaitCursor);
  EXPECT_TRUE(memory_->Exists(u"C:\\Backup\\readme.txt"_s));
}

TEST_F(FileCommandsWindowTest, BackspaceAndAltUpGoToTheParent) {
  StartInDrive();
  ClickNode(kDrive + u"\\Programs"_s);
  List().setFocus();
  Key(List(), Qt::Key_Backspace);
  EXPECT_EQ(Nav().CurrentAddress(), kDrive);
  EXPECT_EQ(Window()->focusWidget(), &List());
  Tree().setFocus();
  Key(Tree(), Qt::Key_Up, Qt::AltModifier);
  EXPECT_EQ(Nav().CurrentAddress(), u"Workspace\\My Computer"_s);
}

TEST_F(FileCommandsWindowTest, TheMenuKeyAndShiftF10OpenThePopUp) {
  StartInDrive();
  ClickItem(u"readme.txt"_s);
  Key(List(), Qt::Key_F10, Qt::ShiftModifier);
  EXPECT_EQ(ClosePopup(), u"mnuPopup"_s);
  Key(List(), Qt::Key_Menu);
  EXPECT_EQ(ClosePopup(), u"mnuPopup"_s);
  Tree().setFocus();
  Key(Tree(), Qt::Key_F10, Qt::ShiftModifier);
  EXPECT_EQ(ClosePopup(), u"mnuPopup"_s);
}

TEST_F(FileCommandsWindowTest, TypingSelectsByName) {
  StartInDrive();
  QTest::keyClicks(&List(), u"re"_s);
  ASSERT_EQ(List().SelectedItems().size(), 1U);
  EXPECT_EQ(Window()->ListModel().Text(List().SelectedItems().front()), u"readme.txt"_s);
  List().selectionModel()->setCurrentIndex(List().currentIndex().siblingAtColumn(2),
                                           QItemSelectionModel::NoUpdate);
  QTest::qWait(QApplication::keyboardInputInterval() + 50);  // Until typing starts anew.
  QTest::keyClicks(&List(), u"pr"_s);
  ASSERT_EQ(List().SelectedItems().size(), 1U);
  EXPECT_EQ(Window()->ListModel().Text(List().SelectedItems().front()), u"Programs"_s);
}

TEST_F(FileCommandsWindowTest, ADoubleClickOnAFileRunsIt) {
  StartInDrive();
  DoubleClickItem(u"readme.txt"_s);
  EXPECT_EQ(memory_->CallCount(FileSystemOperation::Execute), 1);
  EXPECT_EQ(Nav().CurrentAddress(), kDrive);
}

TEST_F(FileCommandsWindowTest, RunAndNewFolderFromThePopUp) {
  StartInDrive();
  ClickItem(u"readme.txt"_s, Qt::RightButton);
  EXPECT_EQ(ClosePopup(), u"mnuPopup"_s);
  Trigger(CommandPlace::EntryPopup, CommandId::Run);
  EXPECT_EQ(memory_->CallCount(FileSystemOperation::Execute), 1);
  Trigger(CommandPlace::NewMenu, CommandId::NewFolder);
  EXPECT_TRUE(memory_->Exists(u"C:\\New Folder"_s));
  EXPECT_TRUE(ListTexts().contains(u"New Folder"_s));
}

TEST_F(FileCommandsWindowTest, ARightDragOntoATreeNodeMovesThere) {
  StartInDrive();
  ClickItem(u"data.txt"_s);
  ClickItem(u"readme.txt"_s, Qt::LeftButton, Qt::ControlModifier);
  RightDragTo(List().viewport(), PointOfItem(u"readme.txt"_s), Tree().viewport(),
              PointOf(kDrive + u"\\Backup"_s));
  ASSERT_NE(QApplication::activePopupWidget(), nullptr);
  EXPECT_EQ(List().SelectedItems().size(), 2U);
  EXPECT_EQ(ClosePopup(), u"mnuRPopup"_s);
  Trigger(CommandPlace::DragPopup, CommandId::MoveHere);
  EXPECT_TRUE(memory_->Exists(u"C:\\Backup\\readme.txt"_s));
  EXPECT_TRUE(memory_->Exists(u"C:\\Backup\\data.txt"_s));
  EXPECT_FALSE(memory_->Exists(u"C:\\readme.txt"_s));
  EXPECT_EQ(Nav().CurrentAddress(), kDrive);
}

TEST_F(FileCommandsWindowTest, CopyHereFillsTheSetAndTransfersNothing) {
  StartInDrive();
  RightDragTo(List().viewport(), PointOfItem(u"readme.txt"_s), List().viewport(), PointOfItem(u"Backup"_s));
  EXPECT_EQ(ClosePopup(), u"mnuRPopup"_s);
  const QStringList before = memory_->Tree();
  Trigger(CommandPlace::DragPopup, CommandId::CopyHere);
  EXPECT_EQ(memory_->Tree(), before);
  EXPECT_EQ(ClipboardCount(), 1);
  EXPECT_TRUE(Button(CommandId::Paste)->isEnabled());
}

TEST_F(FileCommandsWindowTest, ADropThatNothingCanTakeAndADragTakenBackShowNoMenu) {
  StartInDrive();
  RightDragTo(List().viewport(), PointOfItem(u"readme.txt"_s), Tree().viewport(),
              PointOf(u"Workspace\\My Computer"_s));
  EXPECT_EQ(ClosePopup(), QString());
  RightDragTo(List().viewport(), PointOfItem(u"readme.txt"_s), Tree().viewport(),
              QPoint(20, Tree().viewport()->height() - 4));
  EXPECT_EQ(ClosePopup(), QString());

  const QPoint start = PointOfItem(u"readme.txt"_s);
  QTest::mousePress(List().viewport(), Qt::RightButton, {}, start);
  const QPointF point = PointOfItem(u"Backup"_s);
  QMouseEvent move(QEvent::MouseMove, point, List().viewport()->mapToGlobal(point), Qt::NoButton,
                   Qt::RightButton, {});
  QApplication::sendEvent(List().viewport(), &move);
  QTest::keyClick(&List(), Qt::Key_Escape);
  QTest::mouseRelease(List().viewport(), Qt::RightButton, {}, point.toPoint());
  EXPECT_EQ(ClosePopup(), QString());
}

TEST_F(FileCommandsWindowTest, ARightDragThatIsGivenUpKeepsWhatWasCut) {
  StartInDrive();
  ClickItem(u"data.txt"_s);
  Trigger(CommandPlace::MainToolbar, CommandId::Cut);
  RightDragTo(List().viewport(), PointOfItem(u"readme.txt"_s), List().viewport(), PointOfItem(u"Backup"_s));
  EXPECT_EQ(ClosePopup(), u"mnuRPopup"_s);
  RightDragTo(List().viewport(), PointOfItem(u"readme.txt"_s), Tree().viewport(),
              PointOf(u"Workspace\\My Computer"_s));
  EXPECT_EQ(ClosePopup(), QString());
  ASSERT_EQ(ClipboardCount(), 1);
  EXPECT_EQ(Window()->Operations().clipboard.Item(qint32{1}).PasteName(), u"data.txt"_s);
  ClickNode(kDrive + u"\\Backup"_s);
  Trigger(CommandPlace::MainToolbar, CommandId::Paste);
  EXPECT_TRUE(memory_->Exists(u"C:\\Backup\\data.txt"_s));
  EXPECT_FALSE(memory_->Exists(u"C:\\data.txt"_s));
  EXPECT_TRUE(memory_->Exists(u"C:\\readme.txt"_s));
}

TEST_F(FileCommandsWindowTest, ARightClickThatDoesNotMoveStillOpensThePopUp) {
  StartInDrive();
  ClickItem(u"readme.txt"_s, Qt::RightButton);
  EXPECT_EQ(ClosePopup(), u"mnuPopup"_s);
  EXPECT_EQ(ClipboardCount(), 0);
}

TEST_F(FileCommandsWindowTest, AFolderOfTheTreeIsDraggedIntoTheListsFolder) {
  StartInDrive();
  ClickNode(kDrive + u"\\Backup"_s);
  RightDragTo(Tree().viewport(), PointOf(kDrive + u"\\Programs"_s), List().viewport(),
              QPoint(40, List().viewport()->height() - 5));
  EXPECT_EQ(ClosePopup(), u"mnuRPopup"_s);
  Trigger(CommandPlace::DragPopup, CommandId::MoveHere);
  EXPECT_TRUE(memory_->Exists(u"C:\\Backup\\Programs\\main.pac"_s));
  EXPECT_FALSE(memory_->Exists(u"C:\\Programs"_s));
  EXPECT_EQ(Window()->TreeModel().FindByKey(kDrive + u"\\Programs"_s), nullptr);
  EXPECT_EQ(ListTexts(), QStringList{u"Programs"_s});
}

TEST_F(FileCommandsWindowTest, CopyAndCutFollowTheViewWithTheFocus) {
  StartInDrive();
  ClickNode(kDrive + u"\\Programs"_s);
  ClickItem(u"main.pac"_s);
  Trigger(CommandPlace::EditMenu, CommandId::Cut);
  ASSERT_EQ(ClipboardCount(), 1);
  EXPECT_EQ(Window()->Operations().clipboard.Item(qint32{1}).PasteName(), u"main.pac"_s);
  Tree().setFocus();
  Trigger(CommandPlace::EditMenu, CommandId::Copy);
  EXPECT_EQ(Window()->Operations().clipboard.Item(qint32{1}).PastePath(), kDrive + u"\\Programs"_s);
}

TEST_F(FileCommandsWindowTest, NoOtherOperationBeginsDuringAPaste) {
  StartInDrive();
  ClickItem(u"readme.txt"_s);
  Trigger(CommandPlace::MainToolbar, CommandId::Copy);
  ClickNode(kDrive + u"\\Backup"_s);
  int turns = 0;
  prompts_.RecordedGauge().onIncrement = [&] {
    ++turns;
    for (const CommandId id : {CommandId::SaveWorkspace, CommandId::OpenWorkspace, CommandId::Connect,
                               CommandId::DisconnectAll, CommandId::Delete, CommandId::NewFolder}) {
      Window()->Dispatch(id);
    }
  };
  Trigger(CommandPlace::MainToolbar, CommandId::Paste);
  prompts_.RecordedGauge().onIncrement = {};
  EXPECT_GT(turns, 0);
  EXPECT_TRUE(prompts_.Asked().empty());
  EXPECT_TRUE(memory_->Exists(u"C:\\Backup\\readme.txt"_s));
  EXPECT_FALSE(memory_->Exists(u"C:\\Backup\\New Folder"_s));
}

TEST_F(FileCommandsWindowTest, ClosingTheWindowDuringAPasteWaitsForItsEnd) {
  StartInDrive();
  ClickItem(u"readme.txt"_s);
  Trigger(CommandPlace::MainToolbar, CommandId::Copy);
  ClickNode(kDrive + u"\\Backup"_s);
  bool closed = true;
  prompts_.RecordedGauge().onIncrement = [&] { closed = Window()->close(); };
  Trigger(CommandPlace::MainToolbar, CommandId::Paste);
  EXPECT_FALSE(closed);
  prompts_.RecordedGauge().onIncrement = {};
  QCoreApplication::processEvents();
  EXPECT_FALSE(Window()->isVisible());
  EXPECT_TRUE(memory_->Exists(u"C:\\Backup\\readme.txt"_s));
}

}  // namespace
}  // namespace trevane::test

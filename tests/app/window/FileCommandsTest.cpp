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

/// The commands on files, with mouse and keys in the real window.
class FileCommandsWindowTest : public MainWindowFixture {
 protected:
  FileCommandsWindowTest() { memory_->AddFile(QStringLiteral("C:\\data.txt"), "data"); }

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
  [[nodiscard]] QLineEdit* Editor(QWidget& view) {
    return view.findChild<QLineEdit*>(QStringLiteral("txtLabel"));
  }
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
      if (!text.isEmpty()) {
        lines += text.mid(text.indexOf(QStringLiteral("] ")) + 2);
      }
    }
    return lines;
  }
  [[nodiscard]] QString ClosePopup() {
    auto* popup = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    if (!popup) {
      return {};
    }
    const QString name = popup->objectName();
    popup->close();
    QCoreApplication::processEvents();
    return name;
  }
  [[nodiscard]] QString Status() { return Find<QLabel>("sbarMainText").text(); }
  [[nodiscard]] QString Address() { return Find<QComboBox>("cmbAddress").currentText(); }
  [[nodiscard]] int ClipboardCount() { return Window()->Operations().clipboard.Count(); }

  /// Drags with the right button from one point to another, which may be in the other view.
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

  const QString kDrive = QStringLiteral("Workspace\\My Computer\\C:");
};

TEST_F(FileCommandsWindowTest, CopyAndPasteByToolbar) {
  StartInDrive();
  EXPECT_FALSE(Button(CommandId::Paste)->isEnabled());
  ClickItem(QStringLiteral("readme.txt"));
  Trigger(CommandPlace::MainToolbar, CommandId::Copy);
  EXPECT_TRUE(Button(CommandId::Paste)->isEnabled());
  ClickNode(kDrive + QStringLiteral("\\Backup"));
  Trigger(CommandPlace::MainToolbar, CommandId::Paste);
  EXPECT_EQ(memory_->Content(QStringLiteral("C:\\Backup\\readme.txt")), "12345");
  EXPECT_EQ(ListTexts(), QStringList{QStringLiteral("readme.txt")});
  EXPECT_EQ(Log(), QStringList{QStringLiteral("COPY \"C:\\readme.txt\" TO \"C:\\Backup\\readme.txt\"")});
  EXPECT_TRUE(Window()->isEnabled());
  EXPECT_NE(Window()->cursor().shape(), Qt::WaitCursor);
}

TEST_F(FileCommandsWindowTest, ToolButtonsPressedByKeyActOnTheLastView) {
  Start();
  ClickNode(QStringLiteral("Workspace\\My Computer\\C:"));
  ClickItem(QStringLiteral("readme.txt"));
  Window()->activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(Window()));
  const auto press = [this](CommandId id) {
    Button(id)->setFocus(Qt::TabFocusReason);
    ASSERT_TRUE(Button(id)->hasFocus()) << static_cast<int>(id);
    QTest::keyClick(Button(id), Qt::Key_Space);
    QCoreApplication::processEvents();
  };
  press(CommandId::Copy);
  ClickNode(QStringLiteral("Workspace\\My Computer\\C:\\Programs"));
  press(CommandId::Paste);
  EXPECT_TRUE(memory_->Exists(QStringLiteral("C:\\Programs\\readme.txt")));
  EXPECT_EQ(Window()->cursor().shape(), Qt::ArrowCursor);
  ClickItem(QStringLiteral("readme.txt"));
  prompts_.ExpectChoice(QStringLiteral("'readme.txt' Do you want to Remove it?"), 0);
  press(CommandId::Delete);
  EXPECT_FALSE(memory_->Exists(QStringLiteral("C:\\Programs\\readme.txt")));
}

TEST_F(FileCommandsWindowTest, TheSecondPasteOfACutIsEmpty) {
  StartInDrive();
  ClickItem(QStringLiteral("readme.txt"));
  Key(List(), Qt::Key_X, Qt::ControlModifier);
  EXPECT_EQ(ClipboardCount(), 1);
  ClickNode(kDrive + QStringLiteral("\\Backup"));
  Trigger(CommandPlace::EditMenu, CommandId::Paste);
  EXPECT_TRUE(memory_->Exists(QStringLiteral("C:\\Backup\\readme.txt")));
  EXPECT_FALSE(Button(CommandId::Paste)->isEnabled());
  EXPECT_EQ(ClipboardCount(), 0);
  const QStringList before = memory_->Tree();
  Trigger(CommandPlace::EditMenu, CommandId::Paste);
  EXPECT_EQ(memory_->Tree(), before);
  EXPECT_EQ(Log().size(), 1);
}

TEST_F(FileCommandsWindowTest, AfterAPasteTheListHasTheFocusAgain) {
  StartInDrive();
  ClickItem(QStringLiteral("readme.txt"));
  Trigger(CommandPlace::MainToolbar, CommandId::Copy);
  ClickItem(QStringLiteral("Backup"));
  Trigger(CommandPlace::MainToolbar, CommandId::Paste);
  EXPECT_EQ(Window()->focusWidget(), &List());
  EXPECT_TRUE(memory_->Exists(QStringLiteral("C:\\Backup\\readme.txt")));
}

TEST_F(FileCommandsWindowTest, WithoutASelectionOnlyCtrlVWorks) {
  StartInDrive();
  ClickItem(QStringLiteral("readme.txt"));
  Key(List(), Qt::Key_C, Qt::ControlModifier);
  ASSERT_EQ(ClipboardCount(), 1);
  ClickNode(kDrive + QStringLiteral("\\Backup"));
  List().setFocus();
  List().clearSelection();
  ASSERT_TRUE(IsEnabled(CommandPlace::EditMenu, CommandId::Paste));
  Key(List(), Qt::Key_C, Qt::ControlModifier);
  Key(List(), Qt::Key_X, Qt::ControlModifier);
  EXPECT_EQ(ClipboardCount(), 1);
  EXPECT_EQ(Window()->Operations().nFileOpMode, OperationState::kCopy);
  for (const Qt::KeyboardModifier held : {Qt::ShiftModifier, Qt::AltModifier}) {
    Key(List(), Qt::Key_V, Qt::ControlModifier | held);
  }
  EXPECT_FALSE(memory_->Exists(QStringLiteral("C:\\Backup\\readme.txt")));
  Key(List(), Qt::Key_V, Qt::ControlModifier);
  EXPECT_TRUE(memory_->Exists(QStringLiteral("C:\\Backup\\readme.txt")));

  ClickNode(QStringLiteral("Workspace\\My Computer"));
  List().setFocus();
  List().clearSelection();
  ASSERT_FALSE(IsEnabled(CommandPlace::EditMenu, CommandId::Paste));
  Key(List(), Qt::Key_V, Qt::ControlModifier);
  EXPECT_TRUE(prompts_.Asked().empty()) << "nothing is pasted where the menu could not";
}

TEST_F(FileCommandsWindowTest, CtrlVDoesNothingWithSeveralItemsSelected) {
  StartInDrive();
  ClickItem(QStringLiteral("readme.txt"));
  Key(List(), Qt::Key_C, Qt::ControlModifier);
  ClickItem(QStringLiteral("Backup"));
  ClickItem(QStringLiteral("Programs"), Qt::LeftButton, Qt::ControlModifier);
  Key(List(), Qt::Key_V, Qt::ControlModifier);
  EXPECT_FALSE(memory_->Exists(QStringLiteral("C:\\Backup\\readme.txt")));
  EXPECT_FALSE(memory_->Exists(QStringLiteral("C:\\Programs\\readme.txt")));
}

TEST_F(FileCommandsWindowTest, ListKeysIgnoreDrivesAndModifiers) {
  Start();
  List().setFocus();
  ClickItem(QStringLiteral("My Computer"));
  Key(List(), Qt::Key_X, Qt::ControlModifier);
  DoubleClickItem(QStringLiteral("My Computer"));
  ClickItem(QStringLiteral("C:"));
  Key(List(), Qt::Key_C, Qt::ControlModifier);
  EXPECT_EQ(Window()->Operations().nFileOpMode, 0);
  DoubleClickItem(QStringLiteral("C:"));
  ClickItem(QStringLiteral("readme.txt"));
  Key(List(), Qt::Key_C, Qt::ControlModifier | Qt::ShiftModifier);
  Key(List(), Qt::Key_X, Qt::ControlModifier | Qt::AltModifier);
  EXPECT_EQ(Window()->Operations().nFileOpMode, 0);
  Key(List(), Qt::Key_C, Qt::ControlModifier);
  EXPECT_EQ(Window()->Operations().nFileOpMode, OperationState::kCopy);
}

TEST_F(FileCommandsWindowTest, TheTreeCopiesItsCurrentFolderByKey) {
  StartInDrive();
  ClickNode(kDrive + QStringLiteral("\\Programs"));
  Tree().setFocus();
  Key(Tree(), Qt::Key_C, Qt::ControlModifier);
  EXPECT_EQ(ClipboardCount(), 1);
  ClickNode(kDrive + QStringLiteral("\\Backup"));
  Key(Tree(), Qt::Key_V, Qt::ControlModifier);
  EXPECT_TRUE(memory_->Exists(QStringLiteral("C:\\Backup\\Programs\\main.pac")));
  EXPECT_NE(Window()->TreeModel().FindByKey(kDrive + QStringLiteral("\\Backup\\Programs")), nullptr);
}

TEST_F(FileCommandsWindowTest, DelAsksAndDeletes) {
  StartInDrive();
  ClickItem(QStringLiteral("readme.txt"));
  prompts_.ExpectChoice(QStringLiteral("'readme.txt' Do you want to Remove it?"), 0);
  Key(List(), Qt::Key_Delete);
  EXPECT_FALSE(memory_->Exists(QStringLiteral("C:\\readme.txt")));
  EXPECT_FALSE(ListTexts().contains(QStringLiteral("readme.txt")));
  EXPECT_EQ(Log(), QStringList{QStringLiteral("DELETE \"C:\\readme.txt\"")});
}

TEST_F(FileCommandsWindowTest, DelInTheTreeDeletesAndShowsTheParent) {
  StartInDrive();
  ClickNode(kDrive + QStringLiteral("\\Programs"));
  Tree().setFocus();
  prompts_.ExpectBox(QStringLiteral("'C:\\Programs'\r\nRemove this file?"), PromptAnswer::Yes);
  Key(Tree(), Qt::Key_Delete);
  EXPECT_FALSE(memory_->Exists(QStringLiteral("C:\\Programs")));
  EXPECT_EQ(Nav().CurrentAddress(), kDrive);
  EXPECT_EQ(Window()->TreeModel().FindByKey(kDrive + QStringLiteral("\\Programs")), nullptr);
  EXPECT_EQ(Tree().SelectedNode(), Node(kDrive));
}

TEST_F(FileCommandsWindowTest, F2RenamesInTheList) {
  StartInDrive();
  ClickItem(QStringLiteral("Programs"));
  Key(List(), Qt::Key_F2);
  TypeLabel(List(), QStringLiteral("Work"));
  EXPECT_TRUE(memory_->Exists(QStringLiteral("C:\\Work\\main.pac")));
  EXPECT_TRUE(ListTexts().contains(QStringLiteral("Work")));
  EXPECT_NE(Window()->TreeModel().FindByKey(kDrive + QStringLiteral("\\work")), nullptr);
  EXPECT_EQ(Log(), QStringList{QStringLiteral("RENAME \"C:\\Programs\" TO \"Work\"")});
}

TEST_F(FileCommandsWindowTest, F2RenamesInTheTreeAndTheAddressFollows) {
  StartInDrive();
  ClickNode(kDrive + QStringLiteral("\\Programs"));
  Tree().setFocus();
  Key(Tree(), Qt::Key_F2);
  TypeLabel(Tree(), QStringLiteral("Work"));
  EXPECT_TRUE(memory_->Exists(QStringLiteral("C:\\Work\\main.pac")));
  EXPECT_EQ(Address(), kDrive + QStringLiteral("\\Work"));
  EXPECT_EQ(Nav().CurrentAddress(), kDrive + QStringLiteral("\\Work"));
  EXPECT_EQ(Tree().SelectedNode()->Key(), (kDrive + QStringLiteral("\\work")).toLower());
}

TEST_F(FileCommandsWindowTest, AFailedRenameKeepsTheOldLabel) {
  StartInDrive();
  ClickItem(QStringLiteral("readme.txt"));
  Trigger(CommandPlace::EntryPopup, CommandId::Rename);
  prompts_.ExpectBox(QStringLiteral("Failed to rename the file."));
  TypeLabel(List(), QStringLiteral("a\\b"));
  EXPECT_TRUE(ListTexts().contains(QStringLiteral("readme.txt")));
  EXPECT_TRUE(memory_->Exists(QStringLiteral("C:\\readme.txt")));
}

TEST_F(FileCommandsWindowTest, TheStatusBarShowsWhyARenameFailed) {
  StartInDrive();
  ClickItem(QStringLiteral("readme.txt"));
  Trigger(CommandPlace::EntryPopup, CommandId::Rename);
  prompts_.ExpectBox(QStringLiteral("Failed to rename the file."));
  TypeLabel(List(), QStringLiteral("a\\b"));
  EXPECT_EQ(Status(), QStringLiteral("The name is not valid: 'a\\b'"));
  ClickItem(QStringLiteral("data.txt"));
  EXPECT_EQ(Status(), QStringLiteral("Selected data.txt"));
}

TEST_F(FileCommandsWindowTest, TheReasonOfAFailedPasteStays) {
  StartInDrive();
  ClickItem(QStringLiteral("readme.txt"));
  Trigger(CommandPlace::MainToolbar, CommandId::Copy);
  faulty_->SetHook([](const FileSystemCall& call) {
    if (call.operation == FileSystemOperation::Copy) {
      throw RunTimeError(error::kDiskFull, QStringLiteral("The disk is full\nor nearly so"));
    }
  });
  ClickNode(kDrive + QStringLiteral("\\Backup"));
  prompts_.ExpectChoice(0);
  prompts_.ExpectBox(QStringLiteral("Failed in copy operation."));
  Trigger(CommandPlace::MainToolbar, CommandId::Paste);
  EXPECT_EQ(prompts_.Asked().back().informativeText,
            QStringLiteral("readme.txt\nThe disk is full\nor nearly so"));
  EXPECT_EQ(Status(), QStringLiteral("The disk is full"));
  // The next operation begins with its own text.
  faulty_->SetHook({});
  Trigger(CommandPlace::MainToolbar, CommandId::Paste);
  EXPECT_EQ(Status(), QStringLiteral("1 object copied to ") + kDrive + QStringLiteral("\\Backup"));
}

TEST_F(FileCommandsWindowTest, TheReasonOfAFailedWorkspaceStays) {
  Put("a.fmg", "[Cell]\r\nCtrlName=Cell\r\nProvider=IxoProv.None\r\n");
  prompts_.ExpectBox(QStringLiteral("Failed in connecting to the controller( Cell )."));
  Start(u'"' + InFolder("a.fmg") + u'"');
  EXPECT_EQ(prompts_.Asked().back().informativeText,
            QStringLiteral("Cell\nThere is no provider with the name 'IxoProv.None'"));
  EXPECT_EQ(Status(), QStringLiteral("There is no provider with the name 'IxoProv.None'"));
  ClickNode(kDrive);
  EXPECT_EQ(Status(), QStringLiteral("Selected C:"));
}

TEST_F(FileCommandsWindowTest, RenameOfADriveIsRefusedAtOnce) {
  Start();
  ClickNode(kDrive);
  Tree().setFocus();
  Key(Tree(), Qt::Key_F2);
  EXPECT_EQ(Editor(Tree()), nullptr);
  EXPECT_FALSE(Tree().StartLabelEdit());
}

TEST_F(FileCommandsWindowTest, ToolButtonsKeepATypedLabel) {
  StartInDrive();
  ClickItem(QStringLiteral("readme.txt"));
  ASSERT_TRUE(List().StartLabelEdit());
  Editor(List())->setText(QStringLiteral("first.txt"));
  Trigger(CommandPlace::MainToolbar, CommandId::Parent);
  EXPECT_TRUE(memory_->Exists(QStringLiteral("C:\\first.txt")));
  EXPECT_FALSE(memory_->Exists(QStringLiteral("C:\\readme.txt")));
  EXPECT_EQ(Nav().CurrentAddress(), QStringLiteral("Workspace\\My Computer"));

  ClickNode(kDrive + QStringLiteral("\\Backup"));
  ASSERT_TRUE(Tree().StartLabelEdit());
  Editor(Tree())->setText(QStringLiteral("Kept"));
  Trigger(CommandPlace::MainToolbar, CommandId::Copy);
  EXPECT_TRUE(memory_->Exists(QStringLiteral("C:\\Kept")));
  ASSERT_EQ(ClipboardCount(), 1);
  EXPECT_EQ(Window()->Operations().clipboard.Item(qint32{1}).PastePath(), kDrive + QStringLiteral("\\Kept"));
}

TEST_F(FileCommandsWindowTest, LabelEditorsKeepTheWindowsKeys) {
  StartInDrive();
  ClickItem(QStringLiteral("readme.txt"));
  Key(List(), Qt::Key_F2);
  QLineEdit* editor = Editor(List());
  ASSERT_NE(editor, nullptr);
  QCoreApplication::processEvents();
  const auto calls = memory_->CallCount();
  for (const Qt::Key key : {Qt::Key_C, Qt::Key_X, Qt::Key_V, Qt::Key_A}) {
    QTest::keyClick(editor, key, Qt::ControlModifier);
  }
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

TEST_F(FileCommandsWindowTest, TheAddressBoxKeepsTheMenusKeys) {
  StartInDrive();
  ClickItem(QStringLiteral("readme.txt"));
  auto& box = Find<QComboBox>("cmbAddress");
  box.setFocus();
  for (const Qt::Key key : {Qt::Key_C, Qt::Key_X, Qt::Key_V, Qt::Key_A}) {
    Key(*box.lineEdit(), key, Qt::ControlModifier);
  }
  Key(*box.lineEdit(), Qt::Key_Delete);
  EXPECT_EQ(ClipboardCount(), 0);
  EXPECT_EQ(Window()->Operations().nFileOpMode, 0);
  EXPECT_TRUE(memory_->Exists(QStringLiteral("C:\\readme.txt")));
}

TEST_F(FileCommandsWindowTest, PasteFromTheAddressBoxLeavesTheHourglass) {
  StartInDrive();
  ClickItem(QStringLiteral("readme.txt"));
  Trigger(CommandPlace::MainToolbar, CommandId::Copy);
  ClickItem(QStringLiteral("Backup"));
  Find<QComboBox>("cmbAddress").setFocus();
  Trigger(CommandPlace::MainToolbar, CommandId::Paste);
  EXPECT_EQ(Window()->cursor().shape(), Qt::WaitCursor);
  EXPECT_FALSE(memory_->Exists(QStringLiteral("C:\\Backup\\readme.txt")));
  List().setFocus();
  Trigger(CommandPlace::MainToolbar, CommandId::Paste);
  EXPECT_NE(Window()->cursor().shape(), Qt::WaitCursor);
  EXPECT_TRUE(memory_->Exists(QStringLiteral("C:\\Backup\\readme.txt")));
}

TEST_F(FileCommandsWindowTest, BackspaceAndAltUpGoToTheParent) {
  StartInDrive();
  ClickNode(kDrive + QStringLiteral("\\Programs"));
  List().setFocus();
  Key(List(), Qt::Key_Backspace);
  EXPECT_EQ(Nav().CurrentAddress(), kDrive);
  EXPECT_EQ(Window()->focusWidget(), &List());
  Tree().setFocus();
  Key(Tree(), Qt::Key_Up, Qt::AltModifier);
  EXPECT_EQ(Nav().CurrentAddress(), QStringLiteral("Workspace\\My Computer"));
}

TEST_F(FileCommandsWindowTest, TheMenuKeyAndShiftF10OpenThePopUp) {
  StartInDrive();
  ClickItem(QStringLiteral("readme.txt"));
  Key(List(), Qt::Key_F10, Qt::ShiftModifier);
  EXPECT_EQ(ClosePopup(), QStringLiteral("mnuPopup"));
  Key(List(), Qt::Key_Menu);
  EXPECT_EQ(ClosePopup(), QStringLiteral("mnuPopup"));
  Tree().setFocus();
  Key(Tree(), Qt::Key_F10, Qt::ShiftModifier);
  EXPECT_EQ(ClosePopup(), QStringLiteral("mnuPopup"));
}

TEST_F(FileCommandsWindowTest, TypingSelectsByName) {
  StartInDrive();
  QTest::keyClicks(&List(), QStringLiteral("re"));
  ASSERT_EQ(List().SelectedItems().size(), 1U);
  EXPECT_EQ(Window()->ListModel().Text(List().SelectedItems().front()), QStringLiteral("readme.txt"));
  List().selectionModel()->setCurrentIndex(List().currentIndex().siblingAtColumn(2),
                                           QItemSelectionModel::NoUpdate);
  QTest::qWait(QApplication::keyboardInputInterval() + 50);  // Typing starts anew after this time.
  QTest::keyClicks(&List(), QStringLiteral("pr"));
  ASSERT_EQ(List().SelectedItems().size(), 1U);
  EXPECT_EQ(Window()->ListModel().Text(List().SelectedItems().front()), QStringLiteral("Programs"));
}

TEST_F(FileCommandsWindowTest, ADoubleClickOnAFileRunsIt) {
  StartInDrive();
  DoubleClickItem(QStringLiteral("readme.txt"));
  EXPECT_EQ(memory_->CallCount(FileSystemOperation::Execute), 1);
  EXPECT_EQ(Nav().CurrentAddress(), kDrive);
}

TEST_F(FileCommandsWindowTest, RunAndNewFolderFromThePopUp) {
  StartInDrive();
  ClickItem(QStringLiteral("readme.txt"), Qt::RightButton);
  EXPECT_EQ(ClosePopup(), QStringLiteral("mnuPopup"));
  Trigger(CommandPlace::EntryPopup, CommandId::Run);
  EXPECT_EQ(memory_->CallCount(FileSystemOperation::Execute), 1);
  Trigger(CommandPlace::NewMenu, CommandId::NewFolder);
  EXPECT_TRUE(memory_->Exists(QStringLiteral("C:\\New Folder")));
  EXPECT_TRUE(ListTexts().contains(QStringLiteral("New Folder")));
}

TEST_F(FileCommandsWindowTest, ARightDragOntoATreeNodeMovesThere) {
  StartInDrive();
  ClickItem(QStringLiteral("data.txt"));
  ClickItem(QStringLiteral("readme.txt"), Qt::LeftButton, Qt::ControlModifier);
  RightDragTo(List().viewport(), PointOfItem(QStringLiteral("readme.txt")), Tree().viewport(),
              PointOf(kDrive + QStringLiteral("\\Backup")));
  ASSERT_NE(QApplication::activePopupWidget(), nullptr);
  EXPECT_EQ(List().SelectedItems().size(), 2U);
  EXPECT_EQ(ClosePopup(), QStringLiteral("mnuRPopup"));
  Trigger(CommandPlace::DragPopup, CommandId::MoveHere);
  EXPECT_TRUE(memory_->Exists(QStringLiteral("C:\\Backup\\readme.txt")));
  EXPECT_TRUE(memory_->Exists(QStringLiteral("C:\\Backup\\data.txt")));
  EXPECT_FALSE(memory_->Exists(QStringLiteral("C:\\readme.txt")));
  EXPECT_EQ(Nav().CurrentAddress(), kDrive);
}

TEST_F(FileCommandsWindowTest, CopyHereFillsTheSetAndTransfersNothing) {
  StartInDrive();
  RightDragTo(List().viewport(), PointOfItem(QStringLiteral("readme.txt")), List().viewport(),
              PointOfItem(QStringLiteral("Backup")));
  EXPECT_EQ(ClosePopup(), QStringLiteral("mnuRPopup"));
  const QStringList before = memory_->Tree();
  Trigger(CommandPlace::DragPopup, CommandId::CopyHere);
  EXPECT_EQ(memory_->Tree(), before);
  EXPECT_EQ(ClipboardCount(), 1);
  EXPECT_TRUE(Button(CommandId::Paste)->isEnabled());
}

TEST_F(FileCommandsWindowTest, RefusedAndCancelledDragsShowNoMenu) {
  StartInDrive();
  RightDragTo(List().viewport(), PointOfItem(QStringLiteral("readme.txt")), Tree().viewport(),
              PointOf(QStringLiteral("Workspace\\My Computer")));
  EXPECT_EQ(ClosePopup(), QString());
  RightDragTo(List().viewport(), PointOfItem(QStringLiteral("readme.txt")), Tree().viewport(),
              QPoint(20, Tree().viewport()->height() - 4));
  EXPECT_EQ(ClosePopup(), QString());

  const QPoint start = PointOfItem(QStringLiteral("readme.txt"));
  QTest::mousePress(List().viewport(), Qt::RightButton, {}, start);
  const QPointF point = PointOfItem(QStringLiteral("Backup"));
  QMouseEvent move(QEvent::MouseMove, point, List().viewport()->mapToGlobal(point), Qt::NoButton,
                   Qt::RightButton, {});
  QApplication::sendEvent(List().viewport(), &move);
  QTest::keyClick(&List(), Qt::Key_Escape);
  QTest::mouseRelease(List().viewport(), Qt::RightButton, {}, point.toPoint());
  EXPECT_EQ(ClosePopup(), QString());
}

TEST_F(FileCommandsWindowTest, CancelledRightDragsKeepTheClipboardSet) {
  StartInDrive();
  ClickItem(QStringLiteral("data.txt"));
  Trigger(CommandPlace::MainToolbar, CommandId::Cut);
  RightDragTo(List().viewport(), PointOfItem(QStringLiteral("readme.txt")), List().viewport(),
              PointOfItem(QStringLiteral("Backup")));
  EXPECT_EQ(ClosePopup(), QStringLiteral("mnuRPopup"));
  RightDragTo(List().viewport(), PointOfItem(QStringLiteral("readme.txt")), Tree().viewport(),
              PointOf(QStringLiteral("Workspace\\My Computer")));
  EXPECT_EQ(ClosePopup(), QString());
  ASSERT_EQ(ClipboardCount(), 1);
  EXPECT_EQ(Window()->Operations().clipboard.Item(qint32{1}).PasteName(), QStringLiteral("data.txt"));
  ClickNode(kDrive + QStringLiteral("\\Backup"));
  Trigger(CommandPlace::MainToolbar, CommandId::Paste);
  EXPECT_TRUE(memory_->Exists(QStringLiteral("C:\\Backup\\data.txt")));
  EXPECT_FALSE(memory_->Exists(QStringLiteral("C:\\data.txt")));
  EXPECT_TRUE(memory_->Exists(QStringLiteral("C:\\readme.txt")));
}

TEST_F(FileCommandsWindowTest, RightClicksOpenThePopUp) {
  StartInDrive();
  ClickItem(QStringLiteral("readme.txt"), Qt::RightButton);
  EXPECT_EQ(ClosePopup(), QStringLiteral("mnuPopup"));
  EXPECT_EQ(ClipboardCount(), 0);
}

TEST_F(FileCommandsWindowTest, TreeFoldersAreDraggedIntoTheList) {
  StartInDrive();
  ClickNode(kDrive + QStringLiteral("\\Backup"));
  RightDragTo(Tree().viewport(), PointOf(kDrive + QStringLiteral("\\Programs")), List().viewport(),
              QPoint(40, List().viewport()->height() - 5));
  EXPECT_EQ(ClosePopup(), QStringLiteral("mnuRPopup"));
  Trigger(CommandPlace::DragPopup, CommandId::MoveHere);
  EXPECT_TRUE(memory_->Exists(QStringLiteral("C:\\Backup\\Programs\\main.pac")));
  EXPECT_FALSE(memory_->Exists(QStringLiteral("C:\\Programs")));
  EXPECT_EQ(Window()->TreeModel().FindByKey(kDrive + QStringLiteral("\\Programs")), nullptr);
  EXPECT_EQ(ListTexts(), QStringList{QStringLiteral("Programs")});
}

TEST_F(FileCommandsWindowTest, CopyAndCutFollowTheViewWithTheFocus) {
  StartInDrive();
  ClickNode(kDrive + QStringLiteral("\\Programs"));
  ClickItem(QStringLiteral("main.pac"));
  Trigger(CommandPlace::EditMenu, CommandId::Cut);
  ASSERT_EQ(ClipboardCount(), 1);
  EXPECT_EQ(Window()->Operations().clipboard.Item(qint32{1}).PasteName(), QStringLiteral("main.pac"));
  Tree().setFocus();
  Trigger(CommandPlace::EditMenu, CommandId::Copy);
  EXPECT_EQ(Window()->Operations().clipboard.Item(qint32{1}).PastePath(),
            kDrive + QStringLiteral("\\Programs"));
}

TEST_F(FileCommandsWindowTest, NoOtherOperationBeginsDuringAPaste) {
  StartInDrive();
  ClickItem(QStringLiteral("readme.txt"));
  Trigger(CommandPlace::MainToolbar, CommandId::Copy);
  ClickNode(kDrive + QStringLiteral("\\Backup"));
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
  EXPECT_TRUE(memory_->Exists(QStringLiteral("C:\\Backup\\readme.txt")));
  EXPECT_FALSE(memory_->Exists(QStringLiteral("C:\\Backup\\New Folder")));
}

TEST_F(FileCommandsWindowTest, ClosingTheWindowDuringAPasteWaitsForItsEnd) {
  StartInDrive();
  ClickItem(QStringLiteral("readme.txt"));
  Trigger(CommandPlace::MainToolbar, CommandId::Copy);
  ClickNode(kDrive + QStringLiteral("\\Backup"));
  bool closed = true;
  prompts_.RecordedGauge().onIncrement = [&] { closed = Window()->close(); };
  Trigger(CommandPlace::MainToolbar, CommandId::Paste);
  EXPECT_FALSE(closed);
  prompts_.RecordedGauge().onIncrement = {};
  QCoreApplication::processEvents();
  EXPECT_FALSE(Window()->isVisible());
  EXPECT_TRUE(memory_->Exists(QStringLiteral("C:\\Backup\\readme.txt")));
}

}  // namespace
}  // namespace trevane::test

#include "views/ImageList.h"
#include "views/LabelDelegate.h"
#include "views/LabelEditHandler.h"
#include "views/addresses/ImageKeys.h"
#include "views/addresses/NodeTags.h"
#include "views/tree/FolderTreeModel.h"
#include "views/tree/FolderTreeView.h"

#include <QAbstractItemModelTester>
#include <QContextMenuEvent>
#include <QLineEdit>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

namespace trevane {
namespace {

class RecordingEditHandler final : public LabelEditHandler {
 public:
  bool BeforeLabelEdit(const LabelEdit& edit) override {
    asked.append(edit.oldText);
    return allow;
  }
  void AfterLabelEdit(const LabelEdit& edit, const QString& text, bool* cancel) override {
    renames.append(edit.oldText + QStringLiteral(">") + text);
    *cancel = refuse;
  }

  bool allow = true;
  bool refuse = false;
  QStringList asked;
  QStringList renames;
};

class FolderTreeViewTest : public testing::Test {
 protected:
  FolderTreeViewTest() {
    root_ = tree_.AddTreeNode(nullptr, imagekey::kWorkspace, QStringLiteral("Workspace"), TAG_WORKSPACE);
    computer_ = tree_.AddTreeNode(root_, imagekey::kMyCom, QStringLiteral("My Computer"), kMyComputerTag);
    drive_ = tree_.AddTreeNode(computer_, imagekey::kHdd, QStringLiteral("C:"), TAG_DRIVE | TAG_HDD);
    folder_ = tree_.AddTreeNode(drive_, imagekey::kFolderClosed, QStringLiteral("Dir"), 0x10);
    tree_.SetExpandedImageKey(folder_, imagekey::kFolderOpen);
    tree_.AddTreeNode(folder_, imagekey::kFolderClosed, QStringLiteral("Sub"), 0x10);
    view_.SetFolders(&tree_);
    view_.resize(300, 400);
    view_.expandToDepth(2);
    view_.show();
    EXPECT_TRUE(QTest::qWaitForWindowExposed(&view_));
    view_.activateWindow();
    view_.setFocus();
    QObject::connect(&view_, &FolderTreeView::NodeClicked, &view_,
                     [this](FolderNode* node) { clicked_.append(node->Text()); });
    QObject::connect(&view_, &FolderTreeView::ContextMenuRequested, &view_,
                     [this](FolderNode* node) { menus_.append(node->Text()); });
  }

  [[nodiscard]] QPoint PositionOf(FolderNode* node) const {
    const QRect rect = view_.visualRect(tree_.IndexOf(node));
    return {rect.left() + 20, rect.center().y()};
  }
  void Click(FolderNode* node, Qt::MouseButton button = Qt::LeftButton) {
    QTest::mouseClick(view_.viewport(), button, {}, PositionOf(node));
  }
  static QPoint EmptySpace() { return {150, 390}; }

  ImageList images_{QStringLiteral(":/none/")};
  FolderTreeModel tree_{&images_};
  QAbstractItemModelTester tester_{&tree_, QAbstractItemModelTester::FailureReportingMode::Fatal};
  FolderTreeView view_{&images_};
  FolderNode* root_ = nullptr;
  FolderNode* computer_ = nullptr;
  FolderNode* drive_ = nullptr;
  FolderNode* folder_ = nullptr;
  QStringList clicked_;
  QStringList menus_;
};

TEST_F(FolderTreeViewTest, HasItsNames) {
  EXPECT_EQ(view_.objectName(), QStringLiteral("treFile"));
  EXPECT_EQ(view_.accessibleName(), QStringLiteral("Folders"));
}

TEST_F(FolderTreeViewTest, ALeftClickReportsTheNodeAlsoWhenItIsCurrentAlready) {
  Click(drive_);
  EXPECT_EQ(clicked_, QStringList{QStringLiteral("C:")});
  EXPECT_EQ(view_.SelectedNode(), drive_);
  Click(drive_);
  EXPECT_EQ(clicked_, (QStringList{QStringLiteral("C:"), QStringLiteral("C:")}));
  QCoreApplication::processEvents();
  EXPECT_EQ(clicked_.size(), 2);
}

TEST_F(FolderTreeViewTest, AClickThatHitsNoNodeDoesNothing) {
  view_.SelectNode(drive_);
  QTest::mouseClick(view_.viewport(), Qt::LeftButton, {}, EmptySpace());
  QCoreApplication::processEvents();
  EXPECT_EQ(clicked_, QStringList());
  EXPECT_EQ(view_.SelectedNode(), drive_);
}

TEST_F(FolderTreeViewTest, AClickOnTheMarkOfABranchReportsNoNode) {
  view_.SelectNode(drive_);
  const QRect rect = view_.visualRect(tree_.IndexOf(folder_));
  const bool expanded = view_.isExpanded(tree_.IndexOf(folder_));
  QTest::mouseClick(view_.viewport(), Qt::LeftButton, {},
                    QPoint(rect.left() - view_.indentation() / 2, rect.center().y()));
  EXPECT_NE(view_.isExpanded(tree_.IndexOf(folder_)), expanded);
  EXPECT_EQ(clicked_, QStringList());
  EXPECT_EQ(view_.SelectedNode(), drive_);
}

TEST_F(FolderTreeViewTest, WhatAClickSelectsIsAlwaysReported) {
  const QRect rect = view_.visualRect(tree_.IndexOf(folder_));
  for (int x = 1; x < rect.right(); x += 3) {
    view_.SelectNode(root_);
    view_.expandAll();
    clicked_.clear();
    QTest::mouseClick(view_.viewport(), Qt::LeftButton, {}, QPoint(x, rect.center().y()));
    EXPECT_EQ(clicked_.isEmpty(), view_.SelectedNode() == root_) << x;
  }
}

TEST_F(FolderTreeViewTest, AClickWithCtrlKeepsTheNodeSelected) {
  view_.SelectNode(drive_);
  QTest::mouseClick(view_.viewport(), Qt::LeftButton, Qt::ControlModifier, PositionOf(drive_));
  EXPECT_EQ(view_.SelectedNode(), drive_);
  EXPECT_EQ(clicked_, QStringList{QStringLiteral("C:")});
}

TEST_F(FolderTreeViewTest, KeysReportTheNodeThatTheyMoveTo) {
  view_.SelectNode(computer_);
  QTest::keyClick(&view_, Qt::Key_Down);
  EXPECT_EQ(clicked_, QStringList{QStringLiteral("C:")});
  QTest::keyClick(&view_, Qt::Key_Home);
  EXPECT_EQ(clicked_, (QStringList{QStringLiteral("C:"), QStringLiteral("Workspace")}));
  QTest::keyClick(&view_, Qt::Key_Up);
  QCoreApplication::processEvents();
  EXPECT_EQ(clicked_.size(), 2) << "there is nothing above";
}

TEST_F(FolderTreeViewTest, SelectingByCallReportsNothing) {
  view_.SelectNode(folder_);
  view_.SelectNode(nullptr);
  QCoreApplication::processEvents();
  EXPECT_EQ(clicked_, QStringList());
  EXPECT_EQ(view_.SelectedNode(), nullptr);
}

TEST_F(FolderTreeViewTest, ASelectionThatAnAssistiveToolMakesIsReported) {
  view_.selectionModel()->select(tree_.IndexOf(drive_), QItemSelectionModel::ClearAndSelect);
  QCoreApplication::processEvents();
  EXPECT_EQ(clicked_, QStringList{QStringLiteral("C:")});
}

TEST_F(FolderTreeViewTest, RemovingTheSelectedNodeReportsNothing) {
  view_.SelectNode(folder_);
  tree_.RemoveChildren(computer_);
  QCoreApplication::processEvents();
  EXPECT_EQ(clicked_, QStringList());
  tree_.Clear();
  QCoreApplication::processEvents();
  EXPECT_EQ(clicked_, QStringList());
}

TEST_F(FolderTreeViewTest, TheRightButtonReportsTheNodeWithoutSelectingIt) {
  view_.SelectNode(root_);
  QTest::mousePress(view_.viewport(), Qt::RightButton, {}, PositionOf(folder_));
  EXPECT_EQ(menus_, QStringList());
  QTest::mouseRelease(view_.viewport(), Qt::RightButton, {}, PositionOf(folder_));
  EXPECT_EQ(menus_, QStringList{QStringLiteral("Dir")});
  EXPECT_EQ(view_.SelectedNode(), root_);
  EXPECT_EQ(tree_.NodeAt(view_.currentIndex()), root_);
  QCoreApplication::processEvents();
  EXPECT_EQ(clicked_, QStringList());
}

TEST_F(FolderTreeViewTest, TheRightButtonOnEmptySpaceOpensNothing) {
  view_.SelectNode(root_);
  QTest::mouseClick(view_.viewport(), Qt::RightButton, {}, EmptySpace());
  EXPECT_EQ(menus_, QStringList());
  EXPECT_EQ(view_.SelectedNode(), root_);
}

TEST_F(FolderTreeViewTest, AMiddleClickSelectsNothing) {
  view_.SelectNode(root_);
  Click(folder_, Qt::MiddleButton);
  EXPECT_EQ(view_.SelectedNode(), root_);
}

TEST_F(FolderTreeViewTest, TheMenuKeyReportsTheSelectedNode) {
  view_.SelectNode(drive_);
  QContextMenuEvent event(QContextMenuEvent::Keyboard, QPoint(0, 0), QPoint(0, 0));
  QCoreApplication::sendEvent(view_.viewport(), &event);
  EXPECT_EQ(menus_, QStringList{QStringLiteral("C:")});
}

TEST_F(FolderTreeViewTest, GettingTheFocusIsReported) {
  QSignalSpy focus(&view_, &FolderTreeView::GotFocus);
  QFocusEvent event(QEvent::FocusIn);
  QCoreApplication::sendEvent(&view_, &event);
  EXPECT_EQ(focus.count(), 1);
}

TEST_F(FolderTreeViewTest, WithoutAHandlerEveryLabelEditIsRefused) {
  view_.SelectNode(folder_);
  EXPECT_FALSE(view_.StartLabelEdit());
}

TEST_F(FolderTreeViewTest, ALabelEditOnADriveIsRefusedAtOnce) {
  RecordingEditHandler handler;
  view_.SetLabelEditHandler(&handler);
  for (FolderNode* node : {root_, computer_, drive_}) {
    view_.SelectNode(node);
    EXPECT_FALSE(view_.StartLabelEdit());
    QTest::keyClick(&view_, Qt::Key_F2);
    EXPECT_EQ(view_.findChild<QLineEdit*>(), nullptr);
  }
  FolderNode* controller =
      tree_.AddTreeNode(root_, imagekey::kController, QStringLiteral("Ctrl1"), kControllerTag);
  view_.SelectNode(controller);
  EXPECT_FALSE(view_.StartLabelEdit());
  EXPECT_EQ(handler.asked, QStringList());
}

TEST_F(FolderTreeViewTest, ARenamedLabelShowsTheNewText) {
  RecordingEditHandler handler;
  view_.SetLabelEditHandler(&handler);
  view_.SelectNode(folder_);
  QTest::keyClick(&view_, Qt::Key_F2);
  auto* editor = view_.findChild<QLineEdit*>();
  ASSERT_NE(editor, nullptr);
  EXPECT_EQ(editor->text(), QStringLiteral("Dir"));
  editor->setText(QStringLiteral("New"));
  QTest::keyClick(editor, Qt::Key_Return);
  EXPECT_TRUE(QTest::qWaitFor([&] { return !handler.renames.isEmpty(); }, 30'000));
  EXPECT_EQ(handler.asked, QStringList{QStringLiteral("Dir")});
  EXPECT_EQ(handler.renames, QStringList{QStringLiteral("Dir>New")});
  EXPECT_EQ(folder_->Text(), QStringLiteral("New"));
}

TEST_F(FolderTreeViewTest, ARefusedRenameLeavesTheOldLabel) {
  RecordingEditHandler handler;
  handler.refuse = true;
  view_.SetLabelEditHandler(&handler);
  view_.SelectNode(folder_);
  ASSERT_TRUE(view_.StartLabelEdit());
  auto* editor = view_.findChild<QLineEdit*>();
  editor->setText(QStringLiteral("New"));
  QTest::keyClick(editor, Qt::Key_Return);
  EXPECT_TRUE(QTest::qWaitFor([&] { return !handler.renames.isEmpty(); }, 30'000));
  EXPECT_EQ(folder_->Text(), QStringLiteral("Dir"));
}

TEST_F(FolderTreeViewTest, EscapeAndAnUnchangedLabelRenameNothing) {
  RecordingEditHandler handler;
  view_.SetLabelEditHandler(&handler);
  view_.SelectNode(folder_);
  ASSERT_TRUE(view_.StartLabelEdit());
  view_.findChild<QLineEdit*>()->setText(QStringLiteral("New"));
  QTest::keyClick(view_.findChild<QLineEdit*>(), Qt::Key_Escape);
  EXPECT_TRUE(QTest::qWaitFor([&] { return view_.findChild<QLineEdit*>() == nullptr; }, 30'000));
  ASSERT_TRUE(view_.StartLabelEdit());
  QTest::keyClick(view_.findChild<QLineEdit*>(), Qt::Key_Return);
  QCoreApplication::processEvents();
  EXPECT_EQ(handler.renames, QStringList());
}

TEST_F(FolderTreeViewTest, TheHandlerCanRefuseAnEdit) {
  RecordingEditHandler handler;
  handler.allow = false;
  view_.SetLabelEditHandler(&handler);
  view_.SelectNode(folder_);
  EXPECT_FALSE(view_.StartLabelEdit());
  EXPECT_EQ(view_.findChild<QLineEdit*>(), nullptr);
}

TEST_F(FolderTreeViewTest, TheClickThatBringsTheFocusEditsNoLabel) {
  RecordingEditHandler handler;
  view_.SetLabelEditHandler(&handler);
  view_.SelectNode(folder_);
  QTest::qWait(300);  // A click right after the window came in front is the one that brought it.
  QWidget other(&view_);
  other.setFocusPolicy(Qt::StrongFocus);
  other.show();
  other.setFocus();
  const auto opensAnEditor = [this] {
    return QTest::qWaitFor([this] { return view_.findChild<QLineEdit*>() != nullptr; },
                           QApplication::doubleClickInterval() + 200);
  };
  Click(folder_);
  EXPECT_EQ(clicked_, QStringList{QStringLiteral("Dir")});
  EXPECT_FALSE(opensAnEditor());
  Click(folder_);
  EXPECT_TRUE(opensAnEditor()) << "the next one does";
  QTest::keyClick(view_.findChild<QLineEdit*>(), Qt::Key_Escape);
}

TEST_F(FolderTreeViewTest, ANodeDeepInTheTreeIsScrolledToInBothDirections) {
  view_.resize(240, 120);
  FolderNode* deep = folder_;
  for (int i = 0; i < 30; ++i) {
    deep = tree_.AddTreeNode(deep, imagekey::kFolderClosed, QStringLiteral("level %1").arg(i), 0x10);
  }
  view_.SelectNode(deep);
  QApplication::processEvents();  // The scroll bars come.
  QRect rect = view_.visualRect(tree_.IndexOf(deep));
  const int width = view_.viewport()->width();
  const int label = view_.fontMetrics().horizontalAdvance(deep->Text());
  EXPECT_GE(rect.left(), 0);
  EXPECT_LE(rect.left() + view_.iconSize().width() + label, width);
  EXPECT_GT(view_.horizontalScrollBar()->value(), 0);
  EXPECT_GE(view_.visualRect(tree_.IndexOf(deep)).top(), 0);
  EXPECT_LE(rect.bottom(), view_.viewport()->height());
  // Nothing of it is left out.
  EXPECT_GE(rect.width(), view_.iconSize().width() + label);

  view_.SelectNode(root_);
  rect = view_.visualRect(tree_.IndexOf(root_));
  EXPECT_EQ(rect.left(), view_.indentation()) << "with the mark of its branch";
}

TEST_F(FolderTreeViewTest, ALabelWiderThanTheViewIsShownFromItsBeginning) {
  FolderNode* wide = tree_.AddTreeNode(folder_, imagekey::kFolderClosed, QString(200, u'w'), 0x10);
  view_.SelectNode(wide);
  EXPECT_EQ(view_.visualRect(tree_.IndexOf(wide)).left(), view_.indentation());
  QApplication::processEvents();
  EXPECT_GT(view_.columnWidth(0), view_.fontMetrics().horizontalAdvance(wide->Text()));
  tree_.RemoveNode(wide);
  QApplication::processEvents();
  EXPECT_EQ(view_.columnWidth(0), view_.viewport()->width()) << "a click right of a label is one on its node";
}

TEST_F(FolderTreeViewTest, AnEditorDeepInTheTreeHasRoom) {
  RecordingEditHandler handler;
  view_.SetLabelEditHandler(&handler);
  view_.resize(240, 300);
  FolderNode* deep = folder_;
  for (int i = 0; i < 20; ++i) {
    deep = tree_.AddTreeNode(deep, imagekey::kFolderClosed, QString::number(i), 0x10);
  }
  view_.SelectNode(deep);
  ASSERT_TRUE(view_.StartLabelEdit());
  const auto* editor = view_.findChild<QLineEdit*>();
  ASSERT_NE(editor, nullptr);
  EXPECT_GE(editor->width(), view_.fontMetrics().averageCharWidth() * 15);
  EXPECT_GE(editor->geometry().left(), 0);
  EXPECT_LE(editor->geometry().right(), view_.viewport()->width());
}

TEST_F(FolderTreeViewTest, AnExpandedFolderShowsItsOpenPicture) {
  images_.Add(imagekey::kFolderClosed, QImage(16, 16, QImage::Format_RGB32));
  QImage open(16, 16, QImage::Format_RGB32);
  open.fill(qRgb(200, 10, 10));
  images_.Add(imagekey::kFolderOpen, open);
  const auto pictureColor = [&] {
    const QRect rect = view_.visualRect(tree_.IndexOf(folder_));
    return view_.viewport()->grab().toImage().pixel(rect.left() + 10, rect.center().y());
  };
  view_.collapse(tree_.IndexOf(folder_));
  EXPECT_NE(pictureColor(), qRgb(200, 10, 10));
  view_.expand(tree_.IndexOf(folder_));
  EXPECT_EQ(pictureColor(), qRgb(200, 10, 10));
}

TEST_F(FolderTreeViewTest, OnlyALabelThatIsCutHasATooltip) {
  auto* delegate = qobject_cast<LabelDelegate*>(view_.itemDelegate());
  FolderNode* longNode = tree_.AddTreeNode(drive_, {}, QString(200, u'w'), 0x10);
  QStyleOptionViewItem option;
  option.widget = &view_;
  option.font = view_.font();
  option.fontMetrics = view_.fontMetrics();
  option.rect = view_.visualRect(tree_.IndexOf(longNode));
  EXPECT_EQ(delegate->ToolTipFor(option, tree_.IndexOf(longNode)), QString(200, u'w'));
  option.rect = view_.visualRect(tree_.IndexOf(folder_));
  EXPECT_EQ(delegate->ToolTipFor(option, tree_.IndexOf(folder_)), QString());
}

}  // namespace
}  // namespace trevane

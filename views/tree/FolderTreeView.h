#pragma once

#include "views/FocusBeforePress.h"

#include <QTreeView>

namespace trevane {

class FolderNode;
class FolderTreeModel;
class ImageList;
class LabelEditHandler;

/// The tree `treFile`. It shows and reports; what is current is kept by whoever listens.
class FolderTreeView final : public QTreeView {
  Q_OBJECT

 public:
  /// `images` outlives the view and may be null.
  explicit FolderTreeView(const ImageList* images, QWidget* parent = nullptr);

  /// The model stays the caller's and outlives the view.
  void SetFolders(FolderTreeModel* folders);
  [[nodiscard]] FolderTreeModel* Folders() const noexcept { return folders_; }
  /// Without a handler (null) labels cannot be edited. It outlives the view.
  void SetLabelEditHandler(LabelEditHandler* handler);

  /// Makes the node the selected one and scrolls to it, without NodeClicked. Null selects nothing.
  void SelectNode(FolderNode* node);
  /// Null when nothing is selected.
  [[nodiscard]] FolderNode* SelectedNode() const;
  /// Starts to edit the label of the selected node; false when that is refused.
  bool StartLabelEdit();
  /// Takes what has been typed into an open editor, as Enter does, and returns when the handler has had it.
  void CommitLabel();
  /// Closes the editor, if one is open, without a rename.
  void CancelLabelEdit();

  /// Scrolls in both directions: of a node deep in the tree the label is shown, not the column's beginning.
  void scrollTo(const QModelIndex& index, ScrollHint hint = EnsureVisible) override;
  void setModel(QAbstractItemModel* model) override;

 Q_SIGNALS:
  /// The user chose a node: by the left button (also one that was chosen already), by a key, or through the
  /// accessibility interface.
  void NodeClicked(trevane::FolderNode* node);
  /// The right button was released over a node, which it does not select, or the menu key was pressed.
  void ContextMenuRequested(trevane::FolderNode* node, const QPoint& globalPosition);
  void GotFocus();
  /// Backspace or Alt+Up.
  void ParentKeyPressed();
  /// Alt+Enter.
  void PropertiesKeyPressed();

 protected:
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void changeEvent(QEvent* event) override;
  void scrollContentsBy(int dx, int dy) override;
  void closeEditor(QWidget* editor, QAbstractItemDelegate::EndEditHint hint) override;
  void selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) override;
  /// One node is always selected once one was: neither empty space nor Ctrl takes that back.
  [[nodiscard]] QItemSelectionModel::SelectionFlags selectionCommand(const QModelIndex& index,
                                                                     const QEvent* event) const override;
  bool edit(const QModelIndex& index, EditTrigger trigger, QEvent* event) override;
  void initViewItemOption(QStyleOptionViewItem* option) const override;
  void drawBranches(QPainter* painter, const QRect& rect, const QModelIndex& index) const override;

 private:
  [[nodiscard]] FolderNode* NodeAtPosition(const QPoint& position) const;
  void OnLabelEdited(const QPersistentModelIndex& index, const QString& text);
  void ReportSelected();
  void RequestMenu();
  /// The column is as wide as the labels that can be scrolled to from here, and at least as wide as the view.
  void FitColumn();
  void FitColumnLater();
  void FitIcons();
  /// Of the picture and the text, or of the editor in its place.
  [[nodiscard]] int LabelWidth(const QModelIndex& index) const;

  FolderTreeModel* folders_ = nullptr;
  LabelEditHandler* labelEditHandler_ = nullptr;
  /// The node under the left button while it is down.
  QPersistentModelIndex pressed_;
  FocusBeforePress focusBefore_;
  /// The press that a click began with may be the first half of one that edits the label.
  bool pressMayEdit_ = false;
  /// Changes of the selection are reported by who made them.
  int ownChanges_ = 0;
  bool reportPending_ = false;
  bool fitPending_ = false;
  /// The mark of a selected branch is being drawn.
  mutable bool onSelection_ = false;
};

}  // namespace trevane

#pragma once

#include "views/EntryView.h"

namespace trevane {

class FolderNode;
class FolderTreeModel;
class ImageList;

/// The tree `treFile`. It shows and reports; its listener keeps the current node.
class FolderTreeView final : public EntryView {
  Q_OBJECT

 public:
  /// `images` outlives the view and may be null.
  explicit FolderTreeView(const ImageList* images, QWidget* parent = nullptr);

  /// The model stays the caller's and outlives the view.
  void SetFolders(FolderTreeModel* folders);
  [[nodiscard]] FolderTreeModel* Folders() const noexcept { return folders_; }

  /// Makes the node the selected one and scrolls to it, without NodeClicked. Null selects nothing.
  void SelectNode(FolderNode* node);
  /// Null when nothing is selected.
  [[nodiscard]] FolderNode* SelectedNode() const;

  /// Scrolls in both directions: of a node deep in the tree the label is shown, not the column's beginning.
  void scrollTo(const QModelIndex& index, ScrollHint hint = EnsureVisible) override;
  void setModel(QAbstractItemModel* model) override;

 Q_SIGNALS:
  /// The user chose a node: by the left button (also one that was chosen already), by a key, or through the
  /// accessibility interface.
  void NodeClicked(trevane::FolderNode* node);
  /// The right button was released over a node, which it does not select, or the menu key was pressed.
  void ContextMenuRequested(trevane::FolderNode* node, const QPoint& globalPosition);

 protected:
  [[nodiscard]] std::optional<LabelEdit> EditOf(const QModelIndex& label) const override;
  void ChangeLabel(const QModelIndex& label, const QString& text) override;
  void EditorOpened(const QModelIndex& label) override;
  void OpenByKey() override;
  void RequestMenu() override;
  void HandleOtherKey(QKeyEvent* event) override;
  void HandleFocusIn(QFocusEvent* event) override;
  void LookChanged() override;

  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void scrollContentsBy(int dx, int dy) override;
  void closeEditor(QWidget* editor, QAbstractItemDelegate::EndEditHint hint) override;
  void selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) override;
  /// Once a node has been selected there always is one: neither a click on empty space nor Ctrl deselects it.
  [[nodiscard]] QItemSelectionModel::SelectionFlags selectionCommand(const QModelIndex& index,
                                                                     const QEvent* event) const override;
  void initViewItemOption(QStyleOptionViewItem* option) const override;
  void drawBranches(QPainter* painter, const QRect& rect, const QModelIndex& index) const override;

 private:
  [[nodiscard]] FolderNode* NodeAtPosition(const QPoint& position) const;
  void ReportSelected();
  /// The column is as wide as the labels that can be scrolled to from here, and at least as wide as the view.
  void FitColumn();
  void FitColumnLater();
  /// Of the picture and the text, or of the editor in its place.
  [[nodiscard]] int LabelWidth(const QModelIndex& index) const;

  FolderTreeModel* folders_ = nullptr;
  /// The node under the left button while it is down.
  QPersistentModelIndex pressed_;
  /// While it is not 0, the caller of a change of the selection reports it.
  int ownChanges_ = 0;
  bool reportPending_ = false;
  bool fitPending_ = false;
  /// The mark of a selected branch is being drawn.
  mutable bool onSelection_ = false;
};

}  // namespace trevane

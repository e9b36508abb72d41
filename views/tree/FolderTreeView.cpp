#include "views/tree/FolderTreeView.h"

#include "views/addresses/NodeTags.h"
#include "views/tree/FolderTreeModel.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QScopedValueRollback>
#include <QScrollBar>

#include <algorithm>
#include <utility>

namespace trevane {
namespace {

/// Rows whose widths are looked at for the width of the column: those in the view and so many around them.
constexpr int kMeasuredRows = 250;

}  // namespace

FolderTreeView::FolderTreeView(const ImageList* images, QWidget* parent) : EntryView(images, parent) {
  setObjectName(QStringLiteral("treFile"));
  setAccessibleName(tr("Folders"));
  setHeaderHidden(true);
  setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
  header()->setStretchLastSection(false);
  header()->setMinimumSectionSize(0);
  header()->setResizeContentsPrecision(kMeasuredRows);
  setSelectionMode(QAbstractItemView::SingleSelection);
  connect(this, &QTreeView::expanded, this, &FolderTreeView::FitColumnLater);
  connect(this, &QTreeView::collapsed, this, &FolderTreeView::FitColumnLater);
}

void FolderTreeView::SetFolders(FolderTreeModel* folders) {
  folders_ = folders;
  const QScopedValueRollback<int> own(ownChanges_, ownChanges_ + 1);
  setModel(folders);
}

void FolderTreeView::setModel(QAbstractItemModel* model) {
  if (this->model() != nullptr) {
    disconnect(this->model(), nullptr, this, nullptr);
  }
  QTreeView::setModel(model);
  if (model != nullptr) {
    connect(model, &QAbstractItemModel::rowsInserted, this, &FolderTreeView::FitColumnLater);
    connect(model, &QAbstractItemModel::rowsRemoved, this, &FolderTreeView::FitColumnLater);
    connect(model, &QAbstractItemModel::dataChanged, this, &FolderTreeView::FitColumnLater);
    connect(model, &QAbstractItemModel::modelReset, this, &FolderTreeView::FitColumnLater);
  }
  FitColumnLater();
}

void FolderTreeView::FitColumnLater() {
  // The nodes of a large folder are added in many pieces.
  if (!std::exchange(fitPending_, true)) {
    QMetaObject::invokeMethod(
        this,
        [this] {
          if (fitPending_) {
            FitColumn();
          }
        },
        Qt::QueuedConnection);
  }
}

int FolderTreeView::LabelWidth(const QModelIndex& index) const {
  const int label = sizeHintForIndex(index).width();
  const QWidget* editor = indexWidget(index);
  return editor != nullptr ? std::max(label, iconSize().width() * 2 + editor->sizeHint().width()) : label;
}

void FolderTreeView::FitColumn() {
  fitPending_ = false;
  if (header()->count() == 0) {
    return;
  }
  executeDelayedItemsLayout();
  int needed = sizeHintForColumn(0);
  if (state() == EditingState) {
    needed =
        std::max(needed, visualRect(currentIndex()).left() + horizontalOffset() + LabelWidth(currentIndex()));
  }
  header()->resizeSection(0, std::max(viewport()->width(), needed));
}

void FolderTreeView::scrollTo(const QModelIndex& index, ScrollHint hint) {
  if (fitPending_) {
    FitColumn();
  }
  QScrollBar& bar = *horizontalScrollBar();
  const int before = bar.value();
  QTreeView::scrollTo(index, hint);
  bar.setValue(before);
  const QRect row = visualRect(index);
  if (!row.isValid()) {
    return;
  }
  // Of a label that is wider than the view its beginning is shown, with the mark that opens the branch.
  const int left = row.left() - indentation();
  const int room = viewport()->width();
  const int right = std::min(row.left() + LabelWidth(index), left + room);
  if (left < 0) {
    bar.setValue(bar.value() + left);
  } else if (right > room) {
    bar.setValue(bar.value() + right - room);
  }
}

void FolderTreeView::resizeEvent(QResizeEvent* event) {
  // A scroll bar that appears may cover the node that was just scrolled to.
  QRect label = visualRect(currentIndex());
  label.setWidth(LabelWidth(currentIndex()));
  const bool wasSeen = label.isValid() && QRect(QPoint(), event->oldSize()).intersects(label);
  QTreeView::resizeEvent(event);
  FitColumn();
  if (wasSeen) {
    scrollTo(currentIndex());
  }
}

void FolderTreeView::LookChanged() {
  FitColumnLater();
}

void FolderTreeView::scrollContentsBy(int dx, int dy) {
  QTreeView::scrollContentsBy(dx, dy);
  // Only so many rows are measured at a time.
  if (dy != 0) {
    FitColumnLater();
  }
}

void FolderTreeView::closeEditor(QWidget* editor, QAbstractItemDelegate::EndEditHint hint) {
  QTreeView::closeEditor(editor, hint);
  FitColumnLater();
}

void FolderTreeView::SelectNode(FolderNode* node) {
  const QScopedValueRollback<int> own(ownChanges_, ownChanges_ + 1);
  const QModelIndex index = folders_->IndexOf(node);
  selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect);
  if (index.isValid()) {
    scrollTo(index);
  }
}

FolderNode* FolderTreeView::SelectedNode() const {
  const QModelIndexList selected =
      selectionModel() != nullptr ? selectionModel()->selectedIndexes() : QModelIndexList();
  return selected.isEmpty() ? nullptr : folders_->NodeAt(selected.front());
}

FolderNode* FolderTreeView::NodeAtPosition(const QPoint& position) const {
  return folders_ != nullptr ? folders_->NodeAt(indexAt(position)) : nullptr;
}

void FolderTreeView::mousePressEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) {
    event->accept();  // Other buttons select nothing.
    return;
  }
  NotePress();
  const QPoint position = event->position().toPoint();
  const QPersistentModelIndex index = indexAt(position);
  // A click on the mark left of the label opens or closes the branch: it is no click on the node.
  const bool onLabel = index.isValid() && visualRect(index).left() <= position.x();
  const FolderNode* before = SelectedNode();
  const QScopedValueRollback<int> own(ownChanges_, ownChanges_ + 1);
  QTreeView::mousePressEvent(event);
  const FolderNode* after = SelectedNode();
  pressed_ = onLabel || after != before ? folders_->IndexOf(after) : QModelIndex();
}

QItemSelectionModel::SelectionFlags FolderTreeView::selectionCommand(const QModelIndex& index,
                                                                     const QEvent* /*event*/) const {
  return index.isValid() ? QItemSelectionModel::ClearAndSelect : QItemSelectionModel::NoUpdate;
}

void FolderTreeView::mouseMoveEvent(QMouseEvent* event) {
  // Moving the mouse with the button down would select every node on its way: only the press selects.
  if (event->buttons() == Qt::NoButton) {
    QTreeView::mouseMoveEvent(event);
  }
}

void FolderTreeView::mouseReleaseEvent(QMouseEvent* event) {
  if (event->button() == Qt::RightButton) {
    FolderNode* node = NodeAtPosition(event->position().toPoint());
    if (node != nullptr) {
      Q_EMIT ContextMenuRequested(node, event->globalPosition().toPoint());
    }
    return;
  }
  if (event->button() != Qt::LeftButton) {
    return;
  }
  {
    const QScopedValueRollback<int> own(ownChanges_, ownChanges_ + 1);
    QTreeView::mouseReleaseEvent(event);
  }
  const QModelIndex clicked = pressed_;
  pressed_ = QModelIndex();
  if (clicked.isValid()) {
    Q_EMIT NodeClicked(folders_->NodeAt(clicked));
  }
}

void FolderTreeView::mouseDoubleClickEvent(QMouseEvent* event) {
  if (event->button() == Qt::LeftButton) {
    const QScopedValueRollback<int> own(ownChanges_, ownChanges_ + 1);
    QTreeView::mouseDoubleClickEvent(event);
  }
}

void FolderTreeView::OpenByKey() {
  if (FolderNode* node = SelectedNode(); node != nullptr) {
    Q_EMIT NodeClicked(node);
  }
}

void FolderTreeView::HandleOtherKey(QKeyEvent* event) {
  const FolderNode* before = SelectedNode();
  {
    const QScopedValueRollback<int> own(ownChanges_, ownChanges_ + 1);
    EntryView::HandleOtherKey(event);
  }
  FolderNode* after = SelectedNode();
  if (after != nullptr && after != before) {
    Q_EMIT NodeClicked(after);
  }
}

void FolderTreeView::RequestMenu() {
  FolderNode* node = SelectedNode();
  if (node != nullptr) {
    const QRect rect = visualRect(folders_->IndexOf(node));
    Q_EMIT ContextMenuRequested(node, viewport()->mapToGlobal(rect.center()));
  }
}

void FolderTreeView::HandleFocusIn(QFocusEvent* event) {
  // A view without a current row takes the first one when it gets the focus; that is no choice of the user's.
  const QScopedValueRollback<int> own(ownChanges_, ownChanges_ + 1);
  EntryView::HandleFocusIn(event);
}

void FolderTreeView::selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) {
  QTreeView::selectionChanged(selected, deselected);
  const bool byUser = ownChanges_ == 0 && folders_ != nullptr && !folders_->IsRemoving();
  if (byUser && !selected.isEmpty() && !reportPending_) {
    // Listeners let window events run, which must not happen inside the selection model.
    reportPending_ = true;
    QMetaObject::invokeMethod(this, &FolderTreeView::ReportSelected, Qt::QueuedConnection);
  }
}

void FolderTreeView::ReportSelected() {
  reportPending_ = false;
  FolderNode* node = SelectedNode();
  if (node != nullptr) {
    Q_EMIT NodeClicked(node);
  }
}

std::optional<LabelEdit> FolderTreeView::EditOf(const QModelIndex& label) const {
  const FolderNode* node = folders_ != nullptr ? folders_->NodeAt(label) : nullptr;
  if (node == nullptr || !IsFolderTag(node->Tag())) {
    return std::nullopt;
  }
  const FolderNode* parent = node->Parent();
  return LabelEdit{parent != nullptr ? parent->FullPath() : QString(), node->Tag(), node->Text()};
}

void FolderTreeView::ChangeLabel(const QModelIndex& label, const QString& text) {
  FolderNode* node = folders_->NodeAt(label);
  const FolderNode* other = folders_->FindChild(node->Parent(), text);
  if (node->Text() != text && (other == nullptr || other == node)) {
    folders_->RenameNode(node, text);
  }
}

void FolderTreeView::EditorOpened(const QModelIndex& label) {
  // The column becomes as wide as the editor, which is scrolled to then.
  FitColumn();
  scrollTo(label);
  updateEditorGeometries();
}

void FolderTreeView::initViewItemOption(QStyleOptionViewItem* option) const {
  EntryView::initViewItemOption(option);
  if (onSelection_) {
    const auto group = (option->state & QStyle::State_Active) != 0 ? QPalette::Active : QPalette::Inactive;
    const QColor text = option->palette.color(group, QPalette::HighlightedText);
    for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::ButtonText, QPalette::Text}) {
      option->palette.setColor(role, text);
    }
  }
}

void FolderTreeView::drawBranches(QPainter* painter, const QRect& rect, const QModelIndex& index) const {
  const QScopedValueRollback<bool> onSelection(onSelection_, selectionModel()->isSelected(index));
  QTreeView::drawBranches(painter, rect, index);
}

}  // namespace trevane

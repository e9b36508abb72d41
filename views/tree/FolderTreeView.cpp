#include "views/tree/FolderTreeView.h"

#include "views/ImageList.h"
#include "views/LabelDelegate.h"
#include "views/LabelEditHandler.h"
#include "views/SelectionColors.h"
#include "views/ViewKeys.h"
#include "views/addresses/NodeTags.h"
#include "views/tree/FolderTreeModel.h"

#include <QContextMenuEvent>
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

FolderTreeView::FolderTreeView(const ImageList* images, QWidget* parent) : QTreeView(parent) {
  setObjectName(QStringLiteral("treFile"));
  setAccessibleName(tr("Folders"));
  setHeaderHidden(true);
  setUniformRowHeights(true);
  FitIcons();
  setTextElideMode(Qt::ElideMiddle);
  setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
  header()->setStretchLastSection(false);
  header()->setMinimumSectionSize(0);
  header()->setResizeContentsPrecision(kMeasuredRows);
  setSelectionMode(QAbstractItemView::SingleSelection);
  setEditTriggers(QAbstractItemView::EditKeyPressed | QAbstractItemView::SelectedClicked);
  auto* delegate = new LabelDelegate(images, this);
  setItemDelegate(delegate);
  connect(delegate, &LabelDelegate::LabelEdited, this, &FolderTreeView::OnLabelEdited);
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

void FolderTreeView::CommitLabel() {
  QWidget* editor = state() == EditingState ? indexWidget(currentIndex()) : nullptr;
  if (editor != nullptr) {
    commitData(editor);
    closeEditor(editor, QAbstractItemDelegate::NoHint);
    qobject_cast<LabelDelegate*>(itemDelegate())->SendEdits();
  }
}

void FolderTreeView::FitIcons() {
  const int size = ImageList::SizeFor(fontMetrics());
  setIconSize(QSize(size, size));
}

void FolderTreeView::FitColumnLater() {
  // A folder of many entries comes in many pieces.
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
  // A scroll bar that comes takes its room from the node that was just scrolled to.
  QRect label = visualRect(currentIndex());
  label.setWidth(LabelWidth(currentIndex()));
  const bool wasSeen = label.isValid() && QRect(QPoint(), event->oldSize()).intersects(label);
  QTreeView::resizeEvent(event);
  FitColumn();
  if (wasSeen) {
    scrollTo(currentIndex());
  }
}

void FolderTreeView::changeEvent(QEvent* event) {
  QTreeView::changeEvent(event);
  if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) {
    FitIcons();
    FitColumnLater();
  }
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

void FolderTreeView::SetLabelEditHandler(LabelEditHandler* handler) {
  labelEditHandler_ = handler;
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

bool FolderTreeView::StartLabelEdit() {
  return edit(currentIndex(), AllEditTriggers, nullptr);
}

void FolderTreeView::CancelLabelEdit() {
  if (auto* delegate = qobject_cast<LabelDelegate*>(itemDelegate())) {
    delegate->CancelEdit(*this);
  }
}

FolderNode* FolderTreeView::NodeAtPosition(const QPoint& position) const {
  return folders_ != nullptr ? folders_->NodeAt(indexAt(position)) : nullptr;
}

void FolderTreeView::mousePressEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) {
    event->accept();  // Other buttons select nothing.
    return;
  }
  pressMayEdit_ = focusBefore_.AtPress(*this);
  const QPoint position = event->position().toPoint();
  const QPersistentModelIndex index = indexAt(position);
  // Left of the label stands the mark that opens and closes the branch: it is no click on the node.
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
  // Moving with the button down selects whatever is passed: here a press decides.
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

void FolderTreeView::keyPressEvent(QKeyEvent* event) {
  // What an editor does not understand comes here.
  if (state() == EditingState) {
    event->accept();
    return;
  }
  // Copying the label is not what the key means here: the commands of the window act on entries.
  if (event->matches(QKeySequence::Copy)) {
    event->ignore();
    return;
  }
  switch (ViewKeyOf(*event)) {
    case ViewKey::Open:
      event->accept();
      if (FolderNode* node = SelectedNode(); node != nullptr) {
        Q_EMIT NodeClicked(node);
      }
      return;
    case ViewKey::Parent:
      event->accept();
      Q_EMIT ParentKeyPressed();
      return;
    case ViewKey::Properties:
      event->accept();
      Q_EMIT PropertiesKeyPressed();
      return;
    case ViewKey::Menu:
      event->accept();
      RequestMenu();
      return;
    case ViewKey::None:
      break;
  }
  const FolderNode* before = SelectedNode();
  {
    const QScopedValueRollback<int> own(ownChanges_, ownChanges_ + 1);
    QTreeView::keyPressEvent(event);
  }
  FolderNode* after = SelectedNode();
  if (after != nullptr && after != before) {
    Q_EMIT NodeClicked(after);
  }
}

void FolderTreeView::contextMenuEvent(QContextMenuEvent* event) {
  event->accept();
  if (event->reason() == QContextMenuEvent::Mouse) {
    return;  // The release of the button reports it.
  }
  RequestMenu();
}

void FolderTreeView::RequestMenu() {
  FolderNode* node = SelectedNode();
  if (node != nullptr) {
    const QRect rect = visualRect(folders_->IndexOf(node));
    Q_EMIT ContextMenuRequested(node, viewport()->mapToGlobal(rect.center()));
  }
}

void FolderTreeView::focusInEvent(QFocusEvent* event) {
  focusBefore_.FocusCame(event->reason());
  {
    // A view without a current row takes the first one when it gets the focus; that is no choice of the
    // user's.
    const QScopedValueRollback<int> own(ownChanges_, ownChanges_ + 1);
    QTreeView::focusInEvent(event);
  }
  Q_EMIT GotFocus();
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

bool FolderTreeView::edit(const QModelIndex& index, EditTrigger trigger, QEvent* event) {
  const bool wouldEdit = trigger == AllEditTriggers || (trigger & editTriggers()) != 0;
  if (wouldEdit) {
    FolderNode* node = folders_ != nullptr ? folders_->NodeAt(index) : nullptr;
    if (node == nullptr || labelEditHandler_ == nullptr || !IsFolderTag(node->Tag())) {
      return false;
    }
    if (trigger == SelectedClicked && !pressMayEdit_) {
      return false;
    }
    // A click on the selected label starts a delay only; the handler is asked when the editor would open.
    if (trigger != SelectedClicked &&
        (IsBehindAQuestion(*this) ||
         !labelEditHandler_->BeforeLabelEdit({node, KeyIndex::kNone, node->Tag(), node->Text()}))) {
      return false;
    }
  }
  const bool taken = QTreeView::edit(index, trigger, event);
  if (wouldEdit && state() == EditingState) {
    // The column becomes as wide as the editor, which is scrolled to then.
    FitColumn();
    scrollTo(index);
    updateEditorGeometries();
  }
  return taken;
}

void FolderTreeView::initViewItemOption(QStyleOptionViewItem* option) const {
  QTreeView::initViewItemOption(option);
  ApplySelectionColors(*this, *option);
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

void FolderTreeView::OnLabelEdited(const QPersistentModelIndex& index, const QString& text) {
  FolderNode* node = folders_->NodeAt(index);
  if (node == nullptr || labelEditHandler_ == nullptr) {
    return;
  }
  bool cancel = false;
  labelEditHandler_->AfterLabelEdit({node, KeyIndex::kNone, node->Tag(), node->Text()}, text, &cancel);
  node = folders_->NodeAt(index);  // The handler may have shown the tree anew.
  if (cancel || node == nullptr || node->Text() == text) {
    return;
  }
  FolderNode* other = folders_->FindChild(node->Parent(), text);
  if (other == nullptr || other == node) {
    folders_->RenameNode(node, text);
  }
}

}  // namespace trevane

#include "views/FolderTreeView.h"

#include "views/FolderTreeModel.h"
#include "views/ImageList.h"
#include "views/LabelDelegate.h"
#include "views/LabelEditHandler.h"
#include "views/ViewKeys.h"
#include "views/addresses/NodeTags.h"

#include <QContextMenuEvent>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QScopedValueRollback>

namespace trevane {

FolderTreeView::FolderTreeView(const ImageList* images, QWidget* parent) : QTreeView(parent) {
  setObjectName(QStringLiteral("treFile"));
  setAccessibleName(tr("Folders"));
  setHeaderHidden(true);
  setUniformRowHeights(true);
  setIconSize(QSize(ImageList::kSize, ImageList::kSize));
  setTextElideMode(Qt::ElideMiddle);
  setSelectionMode(QAbstractItemView::SingleSelection);
  setEditTriggers(QAbstractItemView::EditKeyPressed | QAbstractItemView::SelectedClicked);
  auto* delegate = new LabelDelegate(images, this);
  setItemDelegate(delegate);
  connect(delegate, &LabelDelegate::LabelEdited, this, &FolderTreeView::OnLabelEdited);
}

void FolderTreeView::SetFolders(FolderTreeModel* folders) {
  folders_ = folders;
  const QScopedValueRollback<int> own(ownChanges_, ownChanges_ + 1);
  setModel(folders);
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

FolderNode* FolderTreeView::NodeAtPosition(const QPoint& position) const {
  return folders_ != nullptr ? folders_->NodeAt(indexAt(position)) : nullptr;
}

void FolderTreeView::mousePressEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) {
    event->accept();  // Other buttons select nothing.
    return;
  }
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
    // A click on the selected label starts a delay only; the handler is asked when the editor would open.
    if (trigger != SelectedClicked &&
        (IsBehindAQuestion(*this) ||
         !labelEditHandler_->BeforeLabelEdit({node, FileListModel::kNoItem, node->Tag(), node->Text()}))) {
      return false;
    }
  }
  return QTreeView::edit(index, trigger, event);
}

void FolderTreeView::OnLabelEdited(const QPersistentModelIndex& index, const QString& text) {
  FolderNode* node = folders_->NodeAt(index);
  if (node == nullptr || labelEditHandler_ == nullptr) {
    return;
  }
  bool cancel = false;
  labelEditHandler_->AfterLabelEdit({node, FileListModel::kNoItem, node->Tag(), node->Text()}, text, &cancel);
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

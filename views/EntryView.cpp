#include "views/EntryView.h"

#include "views/ImageList.h"
#include "views/LabelDelegate.h"
#include "views/SelectionColors.h"
#include "views/ViewKeys.h"

#include <QContextMenuEvent>
#include <QKeyEvent>

namespace trevane {

EntryView::EntryView(const ImageList* images, QWidget* parent)
    : QTreeView(parent), labels_(new LabelDelegate(images, this)) {
  setUniformRowHeights(true);
  FitIcons();
  setTextElideMode(Qt::ElideMiddle);
  setEditTriggers(QAbstractItemView::EditKeyPressed | QAbstractItemView::SelectedClicked);
  setItemDelegate(labels_);
  connect(labels_, &LabelDelegate::LabelEdited, this, &EntryView::OnLabelEdited);
}

bool EntryView::StartLabelEdit() {
  return edit(currentIndex().siblingAtColumn(0), AllEditTriggers, nullptr);
}

void EntryView::CommitLabel() {
  QWidget* editor = state() == EditingState ? indexWidget(currentIndex().siblingAtColumn(0)) : nullptr;
  if (editor != nullptr) {
    commitData(editor);
    closeEditor(editor, QAbstractItemDelegate::NoHint);
    labels_->SendEdits();
  }
}

void EntryView::CancelLabelEdit() {
  labels_->CancelEdit(*this);
}

void EntryView::EndGestures() {
  CancelLabelEdit();
  EndDelayBeforeEdit();
  if (state() == DragSelectingState || state() == DraggingState) {
    setState(NoState);
  }
}

void EntryView::EndDelayBeforeEdit() {
  // A trigger that opens no editor does.
  QTreeView::edit(currentIndex(), CurrentChanged, nullptr);
}

void EntryView::NotePress() {
  pressMayEdit_ = focusBefore_.AtPress(*this) && selectionModel()->selectedRows().size() == 1;
}

bool EntryView::MayEdit(const QModelIndex& label, EditTrigger trigger) {
  const std::optional<LabelEdit> edit = EditOf(label);
  if (!edit || labelEditHandler_ == nullptr) {
    return false;
  }
  // A click on the selected label starts a delay only; the handler is asked when the editor would open.
  if (trigger == SelectedClicked) {
    return pressMayEdit_;
  }
  return selectionModel()->isSelected(label) && !IsBehindAQuestion(*this) &&
         labelEditHandler_->BeforeLabelEdit(*edit);
}

bool EntryView::edit(const QModelIndex& index, EditTrigger trigger, QEvent* event) {
  const bool wouldEdit = trigger == AllEditTriggers || (trigger & editTriggers()) != 0;
  if (!wouldEdit) {
    return QTreeView::edit(index, trigger, event);
  }
  // The key and the delayed click report the current cell, which may be of any column: the name is meant.
  const QModelIndex label = trigger == SelectedClicked ? index : index.siblingAtColumn(0);
  if (!MayEdit(label, trigger)) {
    return false;
  }
  const bool taken = QTreeView::edit(label, trigger, event);
  if (state() == EditingState) {
    EditorOpened(label);
  }
  return taken;
}

void EntryView::OnLabelEdited(const QPersistentModelIndex& label, const QString& text) {
  const std::optional<LabelEdit> edit = EditOf(label);
  if (!edit || labelEditHandler_ == nullptr) {
    return;
  }
  bool cancel = false;
  labelEditHandler_->AfterLabelEdit(*edit, text, &cancel);
  // The handler may have filled the view anew.
  if (!cancel && label.isValid()) {
    ChangeLabel(label, text);
  }
}

void EntryView::keyPressEvent(QKeyEvent* event) {
  // Keys that an open editor ignores arrive here.
  if (state() == EditingState) {
    event->accept();
    return;
  }
  // The key must not copy the text of a cell: the commands of the window act on entries.
  if (event->matches(QKeySequence::Copy)) {
    event->ignore();
    return;
  }
  switch (ViewKeyOf(*event)) {
    case ViewKey::Open:
      event->accept();
      OpenByKey();
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
  HandleOtherKey(event);
}

void EntryView::contextMenuEvent(QContextMenuEvent* event) {
  event->accept();
  // A mouse click is reported when the button is released.
  if (event->reason() != QContextMenuEvent::Mouse) {
    RequestMenu();
  }
}

void EntryView::focusInEvent(QFocusEvent* event) {
  focusBefore_.FocusCame(event->reason());
  HandleFocusIn(event);
  Q_EMIT GotFocus();
}

void EntryView::changeEvent(QEvent* event) {
  QTreeView::changeEvent(event);
  if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) {
    FitIcons();
    LookChanged();
  }
}

void EntryView::FitIcons() {
  const int size = ImageList::SizeFor(fontMetrics());
  setIconSize(QSize(size, size));
}

void EntryView::initViewItemOption(QStyleOptionViewItem* option) const {
  QTreeView::initViewItemOption(option);
  ApplySelectionColors(*this, *option);
}

}  // namespace trevane

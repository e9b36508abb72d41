#include "views/drag/RightDrag.h"

#include "views/list/FileListView.h"
#include "views/tree/FolderTreeModel.h"
#include "views/tree/FolderTreeView.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>

#include <utility>

namespace trevane {

RightDrag::RightDrag(FolderTreeView& tree, FileListView& list, RightDragHandler& handler, QObject* parent)
    : QObject(parent), tree_(tree), list_(list), handler_(handler) {
  for (QAbstractItemView* view :
       {static_cast<QAbstractItemView*>(&tree_), static_cast<QAbstractItemView*>(&list_)}) {
    view->viewport()->installEventFilter(this);
    view->installEventFilter(this);
  }
}

void RightDrag::Cancel() {
  if (state_ == State::Idle || !source_) {
    return;
  }
  End(*source_);
  state_ = State::Refused;
}

bool RightDrag::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::KeyPress && IsDragging()) {
    // Nothing is typed into a view that is dragged from.
    if (static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape && source_) {
      End(*source_);
      state_ = State::Refused;
    }
    return true;
  }
  QAbstractItemView* view = watched == tree_.viewport()   ? static_cast<QAbstractItemView*>(&tree_)
                            : watched == list_.viewport() ? static_cast<QAbstractItemView*>(&list_)
                                                          : nullptr;
  if (!view) {
    return false;
  }
  switch (event->type()) {
    case QEvent::MouseButtonPress:
      return OnPress(*view, *static_cast<QMouseEvent*>(event));
    case QEvent::MouseMove:
      return OnMove(*view, *static_cast<QMouseEvent*>(event));
    case QEvent::MouseButtonRelease:
      return OnRelease(*view, *static_cast<QMouseEvent*>(event));
    default:
      return false;
  }
}

bool RightDrag::OnPress(QAbstractItemView& view, const QMouseEvent& event) {
  if (event.button() != Qt::RightButton) {
    // Another button in the middle of a drag takes it back.
    const bool dragging = IsDragging();
    if (dragging) {
      End(*source_);
      state_ = State::Refused;
    }
    return dragging;
  }
  state_ = view.indexAt(event.position().toPoint()).isValid() ? State::Pressed : State::Idle;
  source_ = &view;
  pressedAt_ = event.position().toPoint();
  return false;
}

bool RightDrag::OnMove(QAbstractItemView& view, const QMouseEvent& event) {
  if (state_ == State::Idle || !event.buttons().testFlag(Qt::RightButton) || source_ != &view) {
    return false;
  }
  const QPoint position = event.position().toPoint();
  if (state_ == State::Pressed &&
      (position - pressedAt_).manhattanLength() >= QApplication::startDragDistance()) {
    FolderNode* node = &view == &tree_ ? tree_.Folders()->NodeAt(tree_.indexAt(pressedAt_)) : nullptr;
    const bool canDrag = (&view != &tree_ || node) && handler_.BeginDrag(node);
    state_ = canDrag ? State::Dragging : State::Idle;
  }
  if (state_ == State::Idle) {
    return false;
  }
  if (IsDragging()) {
    const auto target = TargetAt(event.globalPosition().toPoint());
    const bool takes = target && handler_.CanDrop(*target);
    view.viewport()->setCursor(takes ? Qt::DragMoveCursor : Qt::ForbiddenCursor);
  }
  return true;
}

bool RightDrag::OnRelease(QAbstractItemView& view, const QMouseEvent& event) {
  if (event.button() != Qt::RightButton || source_ != &view) {
    return false;
  }
  const State state = std::exchange(state_, State::Idle);
  if (state == State::Idle || state == State::Pressed) {
    return false;
  }
  End(view);
  const QPoint position = event.globalPosition().toPoint();
  const auto target = state == State::Dragging ? TargetAt(position) : std::nullopt;
  if (target && handler_.CanDrop(*target)) {
    handler_.Drop(*target);
    Q_EMIT Dropped(position);
  }
  return true;
}

void RightDrag::End(QAbstractItemView& view) {
  state_ = State::Idle;
  view.viewport()->unsetCursor();
}

std::optional<DropTarget> RightDrag::TargetAt(const QPoint& globalPosition) const {
  const QPoint inTree = tree_.viewport()->mapFromGlobal(globalPosition);
  if (tree_.viewport()->rect().contains(inTree)) {
    FolderNode* node = tree_.Folders()->NodeAt(tree_.indexAt(inTree));
    return node != nullptr ? std::optional(DropTarget{.node = node}) : std::nullopt;
  }
  const QPoint inList = list_.viewport()->mapFromGlobal(globalPosition);
  if (!list_.viewport()->rect().contains(inList)) {
    return std::nullopt;
  }
  return DropTarget{.item = list_.Files()->HandleAt(list_.indexAt(inList))};
}

}  // namespace trevane

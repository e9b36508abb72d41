#pragma once

#include "views/list/FileListModel.h"

#include <QObject>
#include <QPoint>
#include <QPointer>

#include <optional>

class QAbstractItemView;
class QMouseEvent;

namespace trevane {

class FileListView;
class FolderNode;
class FolderTreeView;

/// The place where dragged entries are dropped: a node, an item, or, with neither, the folder that the list
/// shows.
struct DropTarget {
  FolderNode* node = nullptr;
  FileListModel::Handle item = FileListModel::kNoItem;
};

/// Decides what can be dragged and dropped.
class RightDragHandler {
 public:
  virtual ~RightDragHandler() = default;

  /// A drag of the node, or with null of the items that are selected in the list, begins. False when they
  /// cannot be dragged.
  [[nodiscard]] virtual bool BeginDrag(FolderNode* node) = 0;
  [[nodiscard]] virtual bool CanDrop(const DropTarget& target) const = 0;
  /// Only called with a target that can take something.
  virtual void Drop(const DropTarget& target) = 0;
};

/// Dragging with the right button, within and between tree and list. A press that becomes a drag gives no
/// context menu; Esc ends it without a drop.
class RightDrag final : public QObject {
  Q_OBJECT

 public:
  /// All of them outlive this.
  RightDrag(FolderTreeView& tree, FileListView& list, RightDragHandler& handler, QObject* parent = nullptr);

  /// A drag ends without a drop, and a press that might become one gives no menu.
  void Cancel();
  [[nodiscard]] bool IsDragging() const noexcept { return state_ == State::Dragging; }

 Q_SIGNALS:
  /// Sent after Drop, with the position for the menu.
  void Dropped(const QPoint& globalPosition);

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  enum class State { Idle, Pressed, Dragging, Refused };

  bool OnPress(QAbstractItemView& view, const QMouseEvent& event);
  bool OnMove(QAbstractItemView& view, const QMouseEvent& event);
  bool OnRelease(QAbstractItemView& view, const QMouseEvent& event);
  void End(QAbstractItemView& view);
  /// Nothing where no node and no list is.
  [[nodiscard]] std::optional<DropTarget> TargetAt(const QPoint& globalPosition) const;

  FolderTreeView& tree_;
  FileListView& list_;
  RightDragHandler& handler_;
  State state_ = State::Idle;
  /// The view that the button was pressed on.
  QPointer<QAbstractItemView> source_;
  QPoint pressedAt_;
};

}  // namespace trevane

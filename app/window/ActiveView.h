#pragma once

#include "fileops/ActiveSide.h"

class QWidget;

namespace trevane {

class CommandBars;
class FileListView;
class FolderTreeView;

/// Follows which of the two views is used.
class ActiveView final {
 public:
  /// All of them outlive this object.
  ActiveView(const QWidget& window, FolderTreeView& tree, FileListView& list, const CommandBars& bars)
      : window_(window), tree_(tree), list_(list), bars_(bars) {}

  /// The view that a command acts on.
  [[nodiscard]] ActiveSide Active() const;
  /// The view that had the focus last.
  [[nodiscard]] ActiveSide Last() const noexcept { return last_; }
  /// Call it when a view got the focus. True when the other one had it before.
  bool GotFocus(ActiveSide side);
  /// Gives the focus back to the view that had it last, at the start to the tree.
  void Focus();

 private:
  const QWidget& window_;
  FolderTreeView& tree_;
  FileListView& list_;
  const CommandBars& bars_;
  ActiveSide last_ = ActiveSide::Neither;
};

}  // namespace trevane

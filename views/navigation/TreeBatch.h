#pragma once

#include "views/tree/FolderTreeModel.h"

namespace trevane {

/// Keeps a batch of the tree open for its own life.
class TreeBatch final {
 public:
  TreeBatch(FolderTreeModel& tree, FolderNode& under) : tree_(tree) { tree_.BeginBatch(&under); }
  ~TreeBatch() { tree_.EndBatch(); }
  TreeBatch(const TreeBatch&) = delete;
  TreeBatch& operator=(const TreeBatch&) = delete;

 private:
  FolderTreeModel& tree_;
};

}  // namespace trevane

#pragma once

#include "engine/controllers/ControllerDisplay.h"

namespace trevane {

class FileListModel;
class FolderNode;
class FolderTreeModel;
class Navigator;
class NavigatorListener;

/// Shows controllers as children of the workspace's node, and as items of its list. The image of an entry
/// shows that its controller failed to connect.
class ControllerEntries final : public ControllerDisplay {
 public:
  /// All of them outlive this object.
  ControllerEntries(FolderTreeModel& tree, FileListModel& list, Navigator& navigator,
                    NavigatorListener& listener)
      : tree_(tree), list_(list), navigator_(navigator), listener_(listener) {}

  [[nodiscard]] bool AddControllerNode(const clsIxoCtrl& ctrl, bool failed) override;
  [[nodiscard]] bool AddControllerItem(const clsIxoCtrl& ctrl, bool failed) override;
  /// When the current location was the node or below it, the node's parent is current afterwards; the caller
  /// displays it.
  void RemoveControllerNode(const QString& nodePath) override;
  void RemoveControllerItem(const QString& ctrlName) override;
  [[nodiscard]] bool IsErrorNode(const QString& nodePath) const override;
  void RemoveErrorNodes() override;
  void ClearProgressText() override;

 private:
  /// Null when there is none.
  [[nodiscard]] FolderNode* Find(const QString& nodePath) const;
  [[nodiscard]] bool IsError(const FolderNode& node) const;
  void Remove(FolderNode& node);

  FolderTreeModel& tree_;
  FileListModel& list_;
  Navigator& navigator_;
  NavigatorListener& listener_;
};

}  // namespace trevane

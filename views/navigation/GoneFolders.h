#pragma once

#include "engine/items/FileAccess.h"

#include <QStringList>

namespace trevane {

class CurrentLocation;
class FolderNode;
class FolderTreeModel;

/// Takes the nodes of folders that do not exist any more out of the tree. The current location moves to the
/// node above them.
class GoneFolders final {
 public:
  /// All of them outlive this object.
  GoneFolders(const FileAccess& files, FolderTreeModel& tree, CurrentLocation& location)
      : files_(files), tree_(tree), location_(location) {}

  /// Removes the nodes at the addresses, with all below them; addresses without a node are passed over. True
  /// when the current location was in one of them.
  [[nodiscard]] bool RemoveNodes(const QStringList& addresses);

  /// The node itself or the nearest one above it whose folder is not known to be gone; the others are
  /// removed.
  [[nodiscard]] FolderNode& NearestExisting(FolderNode& node);

 private:
  [[nodiscard]] bool IsGone(const FolderNode& node) const;

  FileAccess files_;
  FolderTreeModel& tree_;
  CurrentLocation& location_;
};

}  // namespace trevane

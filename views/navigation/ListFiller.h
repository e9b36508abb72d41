#pragma once

#include "engine/items/FileAccess.h"
#include "engine/model/FileEntry.h"
#include "prompts/UserPrompts.h"

#include <optional>

namespace trevane {

class FileListModel;
class FileTypes;
class FolderTreeModel;

/// Fills the list with the items of the workspace, the drives, or the contents of a folder.
class ListFiller final {
 public:
  /// All of them outlive this object.
  ListFiller(const FileAccess& files, FileTypes& fileTypes, const FolderTreeModel& tree, FileListModel& list)
      : files_(files), fileTypes_(fileTypes), tree_(tree), list_(list) {}

  /// The local machine and the controllers, those that failed to connect last.
  void Clear();
  void ShowWorkspace();
  /// Adds the drives as the drive table has them to an empty list.
  void ShowDrives();
  /// Adds the item of a file or folder. The message is for an item whose name the list has already; it is not
  /// shown here, because a listing may be on its way.
  [[nodiscard]] std::optional<Message> AddFileItem(const FileEntry& entry, bool onController);

 private:
  FileAccess files_;
  FileTypes& fileTypes_;
  const FolderTreeModel& tree_;
  FileListModel& list_;
};

}  // namespace trevane

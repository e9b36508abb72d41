#pragma once

#include "engine/items/FileAccess.h"

namespace trevane {

class ContentsReader;
class DisplayRequests;
class FileListModel;
class FolderNode;
class FolderTreeBuilder;
class FolderTreeModel;
class ListFiller;
class NavigatorListener;

/// Shows the contents of a drive, a folder or a controller in the list, and adds its subfolders to the tree.
class FolderDisplay final {
 public:
  /// A folder of this many entries or more shows the gauge.
  static constexpr int kGaugeFrom = 40;

  /// All of them outlive this object.
  struct Parts {
    FileAccess files;
    ContentsReader& reader;
    FolderTreeBuilder& builder;
    ListFiller& filler;
    FolderTreeModel& tree;
    FileListModel& list;
    const DisplayRequests& requests;
    NavigatorListener& listener;
  };

  explicit FolderDisplay(const Parts& parts) : parts_(parts) {}

  /// The node is the current one. Its entries are shown as they are read. While the gauge is shown, window
  /// events run after each entry. An engine error is raised to the caller; the list keeps what was added
  /// before it.
  void Show(FolderNode& node);
  /// Puts the entries added so far into the rows of tree and list.
  void FlushViews();

 private:
  Parts parts_;
};

}  // namespace trevane

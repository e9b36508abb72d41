#pragma once

#include "engine/items/FileAccess.h"
#include "views/navigation/ContentsReader.h"
#include "views/navigation/CurrentLocation.h"
#include "views/navigation/DisplayRequests.h"
#include "views/navigation/FolderDisplay.h"
#include "views/navigation/FolderTreeBuilder.h"
#include "views/navigation/GoneFolders.h"
#include "views/navigation/ListFiller.h"

#include <QString>
#include <QStringList>

namespace trevane {

class FileListModel;
class FileTypes;
class FolderNode;
class FolderTreeModel;
class NavigatorListener;

/// Displays nodes of the tree. Tree, list, the current address and the address box name the same location
/// whenever no display is running.
///
/// A display lets window events run, so a click on another node can reach DisplayNode while one is running:
/// that one ends early then and the node clicked last is displayed; there is never a listing inside a
/// listing.
class Navigator final {
 public:
  /// All of them outlive this object.
  struct Parts {
    FileAccess files;
    FileTypes& fileTypes;
    FolderTreeModel& tree;
    FileListModel& list;
    NavigatorListener& listener;
  };

  explicit Navigator(const Parts& parts);
  Navigator(const Navigator&) = delete;
  Navigator& operator=(const Navigator&) = delete;

  /// Makes the node current and shows its contents in the list.
  void DisplayNode(FolderNode& node);
  /// Displays the current node again.
  void Refresh();
  /// Ends the display that is running, if any: it returns to its caller soon after.
  void CancelDisplay();
  [[nodiscard]] bool IsDisplaying() const noexcept { return displaying_; }
  /// The contents of the last node displayed could be read; otherwise a message gave the reason.
  [[nodiscard]] bool IsShown() const noexcept { return shown_; }

  /// The nodes that the tree is made of.
  [[nodiscard]] FolderTreeBuilder& Builder() noexcept { return builder_; }

  /// Folders do not exist any more: takes their nodes out of the tree, with all below them. When the current
  /// location was in one of them, the nearest folder above that still exists is displayed, and the answer is
  /// true. Addresses without a node are passed over. Not while a display is running.
  bool RemoveFolders(const QStringList& addresses);
  /// A node has another text: the current address and the address box follow when the current location is in
  /// there.
  void NodeRenamed() { location_.UpdateAddress(); }
  /// Must be called before a node is removed, with all below it. True when the current location was in there:
  /// it is the node's parent then, which is to be displayed after the removal. A running display ends.
  [[nodiscard]] bool NodeAboutToBeRemoved(const FolderNode& node);

  /// The node whose contents the list shows; null before the first display.
  [[nodiscard]] FolderNode* CurrentNode() const noexcept { return location_.Node(); }
  /// The address of the folder that the list shows, which is the list's Tag.
  [[nodiscard]] const QString& CurrentAddress() const noexcept { return location_.Address(); }

 private:
  void DisplayNow(FolderNode& node);
  void ShowContents(FolderNode& node, qint32 tag);
  /// True when another node is to be displayed, because the node's folder is gone.
  [[nodiscard]] bool LeaveGoneFolder(FolderNode& node);
  [[nodiscard]] FolderNode* NextNode();

  Parts parts_;
  CurrentLocation location_;
  DisplayRequests requests_;
  FolderTreeBuilder builder_;
  GoneFolders goneFolders_;
  ContentsReader reader_;
  ListFiller filler_;
  FolderDisplay folderDisplay_;
  bool shown_ = false;
  bool displaying_ = false;
};

}  // namespace trevane

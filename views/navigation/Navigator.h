#pragma once

#include "base/RunTimeError.h"
#include "engine/items/FileAccess.h"

#include <QString>
#include <QStringList>

#include <memory>
#include <optional>

namespace trevane {

class FileListModel;
class FileTypes;
class FolderNode;
class FolderTreeModel;
class IxoFile;
class NavigatorListener;

/// Fills the tree and the list. Tree, list, the list's Tag and the address box name the same place whenever
/// none of its routines is running.
///
/// A display lets window events run, so a click on another node can reach DisplayNode while one is running:
/// that one ends early then and the node clicked last is displayed; there is never a listing inside a
/// listing.
class Navigator final {
 public:
  struct Parts {
    FileAccess files;
    FileTypes& fileTypes;
    FolderTreeModel& tree;
    FileListModel& list;
    NavigatorListener& listener;
  };

  /// A folder of this many names or more shows the gauge.
  static constexpr int kGaugeFrom = 40;

  explicit Navigator(const Parts& parts);
  ~Navigator();
  Navigator(const Navigator&) = delete;
  Navigator& operator=(const Navigator&) = delete;

  /// Builds the tree anew: the workspace, the local machine, its drives, and the first level of folders of
  /// the fixed ones. A drive that cannot be read stays without children.
  void RebuildTree();

  /// Adds a child node for each subfolder of the place at `address`. An engine error is raised to the caller.
  void AddFolderNodes(const QString& address, FolderNode& under);

  /// Adds the node of one folder, which must not be there yet.
  FolderNode& AddFolderNode(FolderNode& under, const QString& name, qint32 tag);

  /// The node for the folder `name` of the place of `under`, which is there; added when the tree has none.
  /// The tree has room for one of two folders whose names differ in case only: the other one's node becomes
  /// this one's, and is to be displayed when the current place was in there.
  [[nodiscard]] FolderNode& NodeOfFolder(FolderNode& under, const QString& name, qint32 tag);
  /// An item of exactly that name is in the folder at `address`, or that could not be asked.
  [[nodiscard]] bool MayHold(const QString& address, const QString& name) const;

  /// Makes the node current and shows its contents in the list.
  void DisplayNode(FolderNode& node);

  /// Displays the current node again.
  void Refresh();

  /// Folders are not there any more: takes their nodes out of the tree, with all below them. When what is
  /// displayed was in one of them, the nearest folder above that still exists is displayed, and the answer is
  /// true. Addresses without a node are passed over. Not while a display is running.
  bool RemoveFolders(const QStringList& addresses);
  /// A node has another text: the list's Tag and the address box follow when the current place is in there.
  void NodeRenamed();

  /// Must be told before a node goes, with all below it. True when the current place was in there: it is the
  /// node's parent then, which is to be displayed once the node has gone. A display that is running ends.
  [[nodiscard]] bool NodeGoes(const FolderNode& node);

  /// Ends the display that is running, if any: it returns to its caller soon after.
  void CancelDisplay();
  [[nodiscard]] bool IsDisplaying() const noexcept { return displaying_; }
  /// Whether what the list is to show could be read; when not, the user was told why.
  [[nodiscard]] bool IsShown() const { return shown_; }

  /// The node whose contents the list shows; null before the first display.
  [[nodiscard]] FolderNode* CurrentNode() const noexcept { return current_; }
  /// The list's Tag: the address of what it shows.
  [[nodiscard]] const QString& ListTag() const noexcept { return listTag_; }

 private:
  void DisplayNow(FolderNode& node);
  void ShowWorkspace();
  void ShowDrives();
  void ShowFolder(FolderNode& node);
  [[nodiscard]] std::optional<QStringList> ReadNames(clsIxoFile& folder, FolderNode& node);
  void ListEntries(clsIxoFile& folder, FolderNode& node, const QStringList& names);
  void ListEntry(clsIxoFile& folder, FolderNode& node, const QString& name, bool onController,
                 const QStringList& names);
  /// A listing of the place of `under`, which holds `names`, has a folder of that name.
  void MeetFolder(FolderNode& under, const QString& name, qint32 tag, const QStringList& names);
  /// The node and those above it get the names that the file system gave for them.
  void SpellAsFound(FolderNode& node, QStringList found);
  void AddFileItem(IxoFile& entry, const QString& name, qint32 tag);
  void AddDriveNodes();
  FolderNode* AddDriveNode(int index);
  void FlushViews();
  void ReportFailure(const RunTimeError& failure);
  [[nodiscard]] bool IsGone(const FolderNode& node) const;
  /// The node itself or the nearest one above it whose folder is not known to be gone; takes the others out.
  [[nodiscard]] FolderNode& DropGoneFolders(FolderNode& node);

  Parts parts_;
  FolderNode* current_ = nullptr;
  QString listTag_;
  /// Of the last display: its place could be read.
  bool shown_ = false;
  bool displaying_ = false;
  bool cancelled_ = false;
  /// The address that a click during a display asked for.
  std::optional<QString> wanted_;
};

}  // namespace trevane

#pragma once

#include "engine/items/FileAccess.h"
#include "engine/model/FileEntry.h"

#include <QHash>
#include <QString>
#include <QStringList>

#include <span>

namespace trevane {

class CurrentLocation;
class DisplayRequests;
class FileTypes;
class FolderNode;
class FolderTreeModel;

/// Adds the nodes of drives and folders to the tree and keeps their names as the file systems have them.
class FolderTreeBuilder final {
 public:
  /// All of them outlive this object.
  struct Parts {
    FileAccess files;
    FileTypes& fileTypes;
    FolderTreeModel& tree;
    CurrentLocation& location;
    DisplayRequests& requests;
  };

  explicit FolderTreeBuilder(const Parts& parts) : parts_(parts) {}
  FolderTreeBuilder(const FolderTreeBuilder&) = delete;
  FolderTreeBuilder& operator=(const FolderTreeBuilder&) = delete;

  /// Builds the tree anew: the workspace, the local machine, its drives, and the first level of folders of
  /// the fixed ones. A drive that cannot be read stays without children.
  void RebuildTree();
  /// Asks the system for its drives and builds the nodes below the local machine anew.
  void RebuildDrives();

  /// Adds a child node for each subfolder of the folder at `address`. An engine error is raised to the
  /// caller.
  void AddFolderNodes(const QString& address, FolderNode& under);
  /// Adds the node of one folder, which must not be there yet.
  FolderNode& AddFolderNode(FolderNode& under, const QString& name, qint32 tag);
  /// Folders whose nodes are spelt in another case: the names that were found, by the texts of the nodes.
  using Respellings = QHash<QString, QString>;
  /// Adds the node of a folder, or notes in `found` that its node is spelt otherwise. A folder that is both
  /// hidden and system gets no node.
  void UpdateFolderNode(FolderNode& under, const FileEntry& folder, bool onController, Respellings& found);
  /// When all entries of the folder of `under` are known: gives the nodes the names that were found. A node
  /// keeps its text where both spellings are there.
  void Respell(FolderNode& under, Respellings found, std::span<const Listing> entries);
  /// The node for the existing folder `name` below `under`; added when the tree has none. The tree has room
  /// for one of two folders whose names differ in case only: the other one's node becomes this one's, and
  /// must be displayed when the current location was in there.
  [[nodiscard]] FolderNode& FindOrAddFolderNode(FolderNode& under, const QString& name, qint32 tag);

  /// Gives the node and those above it the names under which the file system found them.
  void RespellNodes(FolderNode& node, QStringList found);

 private:
  void AddDriveNodes();
  FolderNode* AddDriveNode(int index);

  Parts parts_;
};

}  // namespace trevane

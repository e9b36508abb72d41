#pragma once

#include "engine/items/FileAccess.h"
#include "engine/model/FileEntry.h"

#include <QString>

#include <optional>

namespace trevane {

class CurrentLocation;
class DisplayRequests;
class FolderNode;
class FolderTreeBuilder;

/// The contents of a drive, a folder or a controller.
struct FolderContents {
  /// The name that the file system has for it, or the text of its node.
  QString name;
  bool onController = false;
  Listing entries;
};

/// Reads the contents of the current location. While its drive is not ready the user is asked for a disk.
class ContentsReader final {
 public:
  /// All of them outlive this object.
  ContentsReader(const FileAccess& files, FolderTreeBuilder& builder, CurrentLocation& location,
                 const DisplayRequests& requests)
      : files_(files), builder_(builder), location_(location), requests_(requests) {}

  /// The node and those above it take the names under which the file system found them. Nothing when the user
  /// gave up waiting for the drive; any other engine error is raised to the caller.
  [[nodiscard]] std::optional<FolderContents> Read(FolderNode& node);

 private:
  [[nodiscard]] bool AsksForDiskAgain(const QString& name, const QString& reason);

  FileAccess files_;
  FolderTreeBuilder& builder_;
  CurrentLocation& location_;
  const DisplayRequests& requests_;
};

}  // namespace trevane

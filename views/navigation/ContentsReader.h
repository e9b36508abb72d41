#pragma once

#include "engine/items/FileAccess.h"

#include <QString>
#include <QStringList>

namespace trevane {

class ContentsReceiver;
class CurrentLocation;
class DisplayRequests;
class FolderNode;
class FolderTreeBuilder;

/// Reads the contents of the current location. While its drive is not ready the user is asked for a disk.
class ContentsReader final {
 public:
  /// All of them outlive this object.
  ContentsReader(const FileAccess& files, FolderTreeBuilder& builder, CurrentLocation& location,
                 const DisplayRequests& requests)
      : files_(files), builder_(builder), location_(location), requests_(requests) {}

  /// The node and those above it take the names under which the file system found them. False when the user
  /// gave up waiting; any other engine error is raised to the caller.
  [[nodiscard]] bool Read(FolderNode& node, ContentsReceiver& receiver);

 private:
  void Respell(FolderNode& node, const QStringList& found);
  [[nodiscard]] bool AsksForDiskAgain(const QString& name, const QString& reason);

  FileAccess files_;
  FolderTreeBuilder& builder_;
  CurrentLocation& location_;
  const DisplayRequests& requests_;
};

}  // namespace trevane

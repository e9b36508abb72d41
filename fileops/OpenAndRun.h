#pragma once

#include "fileops/OperationParts.h"
#include "views/list/FileListModel.h"

#include <QString>
#include <QStringList>

namespace trevane {

class FolderNode;
class clsIxoFile;

/// Opens an entry of the list, and runs files.
class OpenAndRun final {
 public:
  explicit OpenAndRun(const OperationParts& parts) : parts_(parts) {}

  /// Displays a container and selects its first item; runs anything else.
  void OpenItem(FileListModel::Handle item);
  /// While a folder is being displayed: the item is a place that can be displayed instead.
  [[nodiscard]] bool IsAnotherPlace(FileListModel::Handle item) const { return NodeOf(item) != nullptr; }
  /// Call it when a display has ended: an item that was opened during it is displayed now.
  void DisplayEnded();

  /// Runs the files at these addresses in order. Stops silently at the first that cannot be found, and with a
  /// message at the first that cannot be started.
  void RunAll(const QStringList& addresses);
  /// Runs the item at the address of a tree node.
  void RunNode(const QString& address);

 private:
  /// The node that is there already; null when there is none.
  [[nodiscard]] FolderNode* NodeOf(FileListModel::Handle item) const;
  void Enter(FolderNode& node);
  /// Opens a file with its program, here or on its controller. False after a failure, which it shows.
  bool RunFile(clsIxoFile& file);
  void ReportRunFailure(const clsIxoFile& file);
  void ReportRunFailure(const QString& address, qint32 number, const QString& text);

  OperationParts parts_;
  /// The address of a container that was opened and is not displayed yet.
  QString opened_;
};

}  // namespace trevane

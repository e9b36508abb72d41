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
  /// To be told when no display is running any more: an item that was opened during one is displayed now.
  void DisplayEnded();

  /// Runs the files at these addresses in order, up to the first that cannot be found, which is passed over
  /// in silence, or cannot be started.
  void RunAll(const QStringList& addresses);
  /// Runs what stands at the address of a tree node.
  void RunNode(const QString& address);

 private:
  void Enter(FolderNode& node);
  void ReportRunFailure(const clsIxoFile& file);

  OperationParts parts_;
  /// The address of the container that was opened and is not displayed yet.
  QString opened_;
};

}  // namespace trevane

#pragma once

#include "fileops/OperationParts.h"

#include <QString>

namespace trevane {

class FolderNode;

/// Makes "New Folder", or the first of "New Folder(1)" to "New Folder(19)" that is free.
class NewFolder final {
 public:
  static constexpr int kNames = 20;

  explicit NewFolder(const OperationParts& parts) : parts_(parts) {}

  /// Makes the folder in the folder at `parent` and shows it in tree and list. Returns its name, or nothing
  /// after a failure, which has been shown then.
  QString MakeIn(const QString& parent);

 private:
  void Show(const QString& parent);

  OperationParts parts_;
};

}  // namespace trevane

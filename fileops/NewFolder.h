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

  /// Makes it in the folder at `parent` and shows it in tree and list. The answer is its name; a failure is
  /// told with its own text, and the answer is empty then.
  QString MakeIn(const QString& parent);

 private:
  void Show(const QString& parent);

  OperationParts parts_;
};

}  // namespace trevane

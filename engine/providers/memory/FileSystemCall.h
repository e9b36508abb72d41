#pragma once

#include "base/Variant.h"

#include <QString>

namespace trevane {

enum class FileSystemOperation {
  List,
  Stat,
  Read,
  Write,
  CreateFile,
  CreateFolder,
  Copy,
  Rename,
  Remove,
  Execute,
  Identity,
  Flush
};

/// One call of a file system, as the fakes record it.
struct FileSystemCall {
  FileSystemOperation operation = FileSystemOperation::List;
  QString path;
  /// Of Copy and Rename; the command of Execute.
  QString destination;
  /// Of Execute.
  Variant parameter = Missing{};
  friend bool operator==(const FileSystemCall&, const FileSystemCall&) = default;
};

}  // namespace trevane

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
  Flush,
  OpenSource,
  OpenSink,
  Commit,
  ReadLink,
  CreateLink
};

/// One call of a file system, as MemoryFileSystem and the tests' wrappers record it.
struct FileSystemCall {
  FileSystemOperation operation = FileSystemOperation::List;
  QString path;
  /// For Copy and Rename; for Execute the command.
  QString destination;
  /// For Execute.
  Variant parameter = Missing{};
  friend bool operator==(const FileSystemCall&, const FileSystemCall&) = default;
};

}  // namespace trevane

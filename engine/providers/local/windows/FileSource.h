#pragma once

#include "engine/model/Content.h"
#include "engine/providers/local/windows/ItemStatus.h"
#include "engine/providers/local/windows/WindowsPath.h"

#include <memory>
#include <utility>

namespace trevane::local {

/// The content of an open file. It gives all that the file holds when it is read: more than its size when it
/// grows meanwhile, less when it becomes shorter.
class FileSource final : public ContentSource {
 public:
  /// Follows a link.
  [[nodiscard]] static std::unique_ptr<FileSource> Open(const WindowsPath& path, qint64 offset);

  [[nodiscard]] QByteArray Read(qint64 most) override;

 private:
  FileSource(FileHandle file, qint64 left, WindowsPath path)
      : file_(std::move(file)), left_(left), path_(std::move(path)) {}

  FileHandle file_;
  /// By its size when it was opened. Only for the size of the buffers.
  qint64 left_;
  WindowsPath path_;
};

}  // namespace trevane::local

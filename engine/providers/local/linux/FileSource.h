#pragma once

#include "engine/model/Content.h"
#include "engine/providers/local/linux/FileContent.h"
#include "platform/linux/FileDescriptor.h"

#include <QByteArray>

#include <memory>
#include <optional>

namespace trevane::local {

/// The content of an open file. It gives all that the file holds when it is read: more than its size when it
/// grows meanwhile, less when it becomes shorter.
class FileSource final : public ContentSource {
 public:
  /// Opens the file `name` of an open folder and follows a link. `text` must stay valid.
  [[nodiscard]] static std::unique_ptr<FileSource> Open(int folder, const QByteArray& name, qint64 offset,
                                                        TextOf text);

  [[nodiscard]] QByteArray Read(qint64 most) override;
  [[nodiscard]] std::optional<FileTraits> Traits() override;

 private:
  FileSource(FileDescriptor file, const struct statx& status, qint64 left, TextOf text)
      : file_(std::move(file)), status_(status), left_(left), text_(std::move(text)) {}

  FileDescriptor file_;
  /// When it was opened.
  struct statx status_;
  /// By its size when it was opened. Only for the size of the buffers.
  qint64 left_;
  TextOf text_;
};

}  // namespace trevane::local

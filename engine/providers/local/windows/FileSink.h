#pragma once

#include "engine/model/Content.h"
#include "engine/providers/local/windows/ItemStatus.h"
#include "engine/providers/local/windows/WindowsPath.h"

#include <QByteArray>
#include <QString>

#include <functional>
#include <optional>

namespace trevane::local {

/// Builds the content of a file under a temporary name beside it. Only the item that was seen before is
/// replaced, not one that appeared meanwhile.
class FileSink final : public ContentSink {
 public:
  /// `path` is for failures, `target` the path after all links were followed, `old` the file that stands
  /// there.
  FileSink(WindowsPath path, QString target, const std::optional<ItemStatus>& old,
           const SinkRequest& request);
  ~FileSink() override;

  [[nodiscard]] std::optional<QString> TemporaryName() const override;
  void Write(const QByteArray& piece) override;
  [[nodiscard]] SeenItem Commit() override;

 private:
  void MakeTemporary();
  /// Before it has any content: whoever could not read the old content must not read the new one.
  void CopyPermissions();
  /// The creation time and the attributes of the old file.
  void CopyMarks();
  void RequireOld();
  [[nodiscard]] SeenItem RequirePlaced(const ItemStatus& made, const std::optional<FileIdentity>& identity);

  WindowsPath path_;
  QString target_;
  std::optional<ItemStatus> old_;
  std::optional<FileIdentity> oldIdentity_;
  SinkRequest request_;
  FileHandle file_;
  /// Empty when nothing is left to be removed.
  QString temporary_;
};

}  // namespace trevane::local

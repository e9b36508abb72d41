#pragma once

#include "base/RunTimeError.h"
#include "engine/model/IxoFile.h"
#include "engine/transfer/ArrivalCheck.h"

#include <QString>
#include <QStringList>

#include <memory>
#include <optional>
#include <vector>

namespace trevane {

/// Files of one source folder that are copied together into a folder of another controller, where nothing has
/// their names.
class FolderBatch final {
 public:
  struct Result {
    /// For each file in the order in which they were added: it was copied and verified.
    std::vector<bool> arrived;
    /// The first failure, and the file that it belongs to. Nothing is left of a file that failed.
    std::optional<RunTimeError> failure;
    QString failedName;
    /// Those that arrived.
    std::vector<ArrivedFile> files;
  };

  FolderBatch(std::shared_ptr<IxoFile> source, std::shared_ptr<IxoFile> target)
      : source_(std::move(source)), target_(std::move(target)) {}

  /// Files that are larger, or whose size is not known, are copied alone.
  [[nodiscard]] static bool CanHold(const FileEntry& file) noexcept;
  /// Whether there is room for it still.
  [[nodiscard]] bool HasRoomFor(const FileEntry& file) const noexcept;
  void Add(const FileEntry& file, const QString& newName);
  [[nodiscard]] bool IsEmpty() const noexcept { return files_.empty(); }
  [[nodiscard]] qsizetype Count() const noexcept { return static_cast<qsizetype>(files_.size()); }

  /// Copies what was added, and is empty then. Files that stand before one that failed, and others of the
  /// batch that were done with it, have arrived.
  [[nodiscard]] Result Finish();

 private:
  struct File {
    FileEntry entry;
    QString newName;
  };

  void Copy(const std::vector<File>& files, Result& result);
  /// Asked after the content was read.
  [[nodiscard]] FileTraits TraitsAfter(const FileEntry& file);

  std::shared_ptr<IxoFile> source_;
  std::shared_ptr<IxoFile> target_;
  std::vector<File> files_;
  qint64 bytes_ = 0;
};

}  // namespace trevane

#pragma once

#include "engine/items/FileSetCopy.h"
#include "fileops/ProgressLabel.h"

#include <QElapsedTimer>
#include <QString>

#include <optional>
#include <vector>

namespace trevane {

/// How far selected files are that follow each other, for the gauge's label: "gripper.pac: 131 of 2,000
/// files, 96 kB/s, 40 s left". Entries are known by their positions in the transfer.
class SetProgress final {
 public:
  /// The entries from `first` on, each with its size in bytes where that is known.
  SetProgress(qint32 first, const std::vector<std::optional<qint64>>& sizes);

  [[nodiscard]] bool Covers(qint32 at) const noexcept { return at >= first_ && at < first_ + Count(); }

  /// The label when all before `at` are done, and `name` is the last of them or the next one.
  [[nodiscard]] QString Label(const QString& name, qint32 at);
  /// The label while a batch that begins at `at` is under way; nothing when the one that is shown is to stay.
  [[nodiscard]] std::optional<QString> DuringBatch(const FileSetCopy::Progress& batch, qint32 at);

 private:
  [[nodiscard]] qint32 Count() const noexcept { return static_cast<qint32>(bytesBefore_.size()) - 1; }
  /// A batch is told of as a whole first, and then file by file: nothing that was shown is taken back.
  [[nodiscard]] ItemProgress At(const QString& name, qint64 files, qint64 bytes);
  [[nodiscard]] qint32 DoneBefore(qint32 at) const;

  qint32 first_;
  /// Of all entries before each one, and of all.
  std::vector<qint64> bytesBefore_;
  bool knowsSizes_ = true;
  qint64 files_ = 0;
  qint64 bytes_ = 0;
  ProgressLabel label_;
  QElapsedTimer since_;
};

}  // namespace trevane

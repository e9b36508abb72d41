#pragma once

#include "engine/model/Content.h"

#include <QString>
#include <QTemporaryFile>

#include <memory>

namespace trevane {

/// A temporary file of this computer that only this user can read. The destructor removes it, unless it is
/// kept. Every failure is a RunTimeError.
class StagedPrivateFile {
 public:
  /// `folder` as in StagedPlace. Fails with error::kDiskFull where less than `expected` bytes are free; -1
  /// where the size is not known.
  explicit StagedPrivateFile(const QString& folder, qint64 expected = -1);

  void Append(const QByteArray& piece);
  [[nodiscard]] qint64 Size() const { return size_; }
  /// From the beginning. Nothing is appended until it was read.
  [[nodiscard]] std::unique_ptr<ContentSource> OpenSource();
  /// Reads `other` to its end or to the first difference.
  [[nodiscard]] bool IsEqual(ContentSource& other);

  /// The file stays. Returns its path in the form of the operating system.
  [[nodiscard]] QString Keep();
  /// The destructor removes it again.
  void Release() { file_.setAutoRemove(true); }

 private:
  QTemporaryFile file_;
  qint64 size_ = 0;
};

}  // namespace trevane

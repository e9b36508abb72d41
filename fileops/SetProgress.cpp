#include "fileops/SetProgress.h"

#include <algorithm>

namespace trevane {

SetProgress::SetProgress(qint32 first, const std::vector<std::optional<qint64>>& sizes) : first_(first) {
  bytesBefore_.reserve(sizes.size() + 1);
  bytesBefore_.push_back(0);
  for (const std::optional<qint64>& size : sizes) {
    knowsSizes_ = knowsSizes_ && size.has_value();
    bytesBefore_.push_back(bytesBefore_.back() + size.value_or(0));
  }
  since_.start();
}

qint32 SetProgress::DoneBefore(qint32 at) const {
  return std::clamp(at - first_, 0, Count());
}

ItemProgress SetProgress::At(const QString& name, qint64 files, qint64 bytes) {
  // A file may have grown since its size was told.
  files_ = std::max(files_, std::min<qint64>(files, Count()));
  bytes_ = std::max(bytes_, std::min(bytes, bytesBefore_.back()));
  ItemProgress item{.name = name, .files = files_, .filesKnown = Count()};
  if (knowsSizes_) {
    item.allBytes = bytes_;
    item.allSize = bytesBefore_.back();
  }
  return item;
}

QString SetProgress::Label(const QString& name, qint32 at) {
  const qint32 done = DoneBefore(at);
  return label_.Now(At(name, done, bytesBefore_[static_cast<size_t>(done)]), since_.elapsed());
}

std::optional<QString> SetProgress::DuringBatch(const FileSetCopy::Progress& batch, qint32 at) {
  const qint32 done = DoneBefore(at);
  // Each byte is read and written.
  const qint64 bytes = bytesBefore_[static_cast<size_t>(done)] + (batch.bytesRead + batch.bytesWritten) / 2;
  return label_.Next(At(batch.name, done + batch.filesWritten, bytes), since_.elapsed());
}

}  // namespace trevane

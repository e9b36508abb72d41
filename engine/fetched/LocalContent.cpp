#include "engine/fetched/LocalContent.h"

#include <QDateTime>
#include <QFileInfo>

namespace trevane {

LocalStamp StampOf(const QString& path) {
  const QFileInfo info(path);
  if (!info.exists()) {
    return {};
  }
  const QDateTime changed = info.metadataChangeTime();
  return {.exists = true,
          .size = info.size(),
          .modified = info.lastModified().toMSecsSinceEpoch(),
          .changed = changed.isValid() ? changed.toMSecsSinceEpoch() : 0};
}

LocalHash::LocalHash(const QString& path) : file_(path) {
  static_cast<void>(file_.open(QIODevice::ReadOnly | QIODevice::Unbuffered));
}

LocalHash::Progress LocalHash::Step() {
  if (!file_.isOpen()) {
    return Progress::Failed;
  }
  const QByteArray piece = file_.read(kPiece);
  if (piece.isEmpty()) {
    return file_.error() == QFileDevice::NoError ? Progress::Done : Progress::Failed;
  }
  hash_.addData(piece);
  return Progress::More;
}

std::optional<QByteArray> LocalHashOf(const QString& path) {
  LocalHash hash(path);
  LocalHash::Progress progress = hash.Step();
  while (progress == LocalHash::Progress::More) {
    progress = hash.Step();
  }
  return progress == LocalHash::Progress::Done ? std::optional(hash.Result()) : std::nullopt;
}

}  // namespace trevane

#include "engine/files/StagedPrivateFile.h"

#include "engine/files/ProviderError.h"

#include <QDir>
#include <QStorageInfo>

namespace trevane {
namespace {

class PrivateSource final : public ContentSource {
 public:
  explicit PrivateSource(QFile& file) : file_(file) {}

  QByteArray Read(qint64 most) override {
    QByteArray piece = file_.read(most);
    if (piece.isEmpty() && file_.error() != QFileDevice::NoError) {
      Fail(providererror::kDeviceIo, QDir::toNativeSeparators(file_.fileName()));
    }
    return piece;
  }

 private:
  QFile& file_;
};

}  // namespace

StagedPrivateFile::StagedPrivateFile(const QString& folder, qint64 expected)
    : file_((folder.isEmpty() ? QDir::tempPath() : folder) + QStringLiteral("/trevane-XXXXXX")) {
  const QString place = QDir::toNativeSeparators(folder.isEmpty() ? QDir::tempPath() : folder);
  const QStorageInfo storage(place);
  if (expected > 0 && storage.isValid() && storage.bytesAvailable() < expected) {
    Fail(error::kDiskFull, QStringLiteral("A private copy does not fit on this computer"), place);
  }
  // Made with the rights of its owner only. Asking for the name gives it one at once on systems that make it
  // without: it outlasts a program that is killed.
  if (!file_.open() || file_.fileName().isEmpty()) {
    Fail(error::kAccessDenied, QStringLiteral("A private copy cannot be made on this computer"), place);
  }
}

void StagedPrivateFile::Append(const QByteArray& piece) {
  if (!file_.seek(size_) || file_.write(piece) != piece.size() || !file_.flush()) {
    Fail(error::kDiskFull, QStringLiteral("A private copy does not fit on this computer"),
         QDir::toNativeSeparators(file_.fileName()));
  }
  size_ += piece.size();
}

std::unique_ptr<ContentSource> StagedPrivateFile::OpenSource() {
  if (!file_.seek(0)) {
    Fail(providererror::kDeviceIo, QDir::toNativeSeparators(file_.fileName()));
  }
  return std::make_unique<PrivateSource>(file_);
}

bool StagedPrivateFile::IsEqual(ContentSource& other) {
  const std::unique_ptr<ContentSource> own = OpenSource();
  qint64 compared = 0;
  for (;;) {
    const QByteArray piece = other.Read(content::kSmallestPiece);
    if (piece.isEmpty()) {
      return compared == size_;
    }
    if (compared + piece.size() > size_) {
      return false;
    }
    for (qsizetype done = 0; done < piece.size();) {
      const QByteArray mine = own->Read(piece.size() - done);
      if (mine.isEmpty() || QByteArrayView(piece).sliced(done, mine.size()) != mine) {
        return false;
      }
      done += mine.size();
    }
    compared += piece.size();
  }
}

QString StagedPrivateFile::Keep() {
  file_.setAutoRemove(false);
  return QDir::toNativeSeparators(file_.fileName());
}

}  // namespace trevane

#include "engine/fetched/FetchSteps.h"

#include "base/RunTimeError.h"
#include "engine/items/FileAccess.h"
#include "engine/items/clsIxoFile.h"
#include "engine/model/IxoFile.h"
#include "engine/transfer/TransferSteps.h"

#include <QCryptographicHash>
#include <QFile>
#include <QStringList>

#include <algorithm>
#include <limits>
#include <memory>
#include <optional>

namespace trevane::fetchsteps {

namespace {

constexpr qint32 kWriteFault = error::kWin32Error + 29;
constexpr qint32 kReadFault = error::kWin32Error + 30;
/// The item changed under the operation.
constexpr qint32 kChanged = error::kWin32Error + 1006;
constexpr qint64 kPiece = 2 * content::kSmallestPiece;
/// Dates in larger steps, in milliseconds, may hide a change.
constexpr qint64 kTrustedStep = 2000;
/// Below this many bytes the content itself is no more work than to trust a date that is rounded.
constexpr qint64 kSmall = 1024 * 1024;

void RequireDone(const clsIxoFile& file) {
  if (file.Result() != 0) {
    throw RunTimeError(file.Result(), file.ResultText());
  }
}

Shown ShownOf(IxoFile& item) {
  return {.size = item.Size64(), .modified = DateIn(item.DateLastModified())};
}

/// The top of its file system: whatever tells tops apart tells their machines apart.
QString ServerOf(IxoFile& item) {
  const QStringList identities = item.FolderIdentities();
  return identities.isEmpty() ? QString() : identities.last();
}

void RequirePlainFile(IxoFile& item) {
  const qint32 attributes = item.Attribute();
  if ((attributes & (attribute::kFolder | attribute::kDevice)) != 0) {
    throw RunTimeError(error::kExists, QStringLiteral("It is no file any more: ") + item.Name());
  }
  if ((attributes & attribute::kLink) != 0) {
    throw RunTimeError(error::kExists,
                       QStringLiteral("It is a link, and nothing is written through it: ") + item.Name());
  }
}

/// Calls `work` with the item at the address, which is looked for anew.
template <class Work>
auto WithItem(const FileAccess& files, const QString& address, const Work& work) {
  {
    clsIxoFile known = files.FileAt(address);
    RequireDone(known);
    known.ForgetLearnt();
  }
  clsIxoFile file = files.FileAt(address);
  RequireDone(file);
  RequirePlainFile(*file.IxoFile());
  return work(*file.IxoFile());
}

RunTimeError LocalFailure(const QFile& file, qint32 number) {
  const bool isFull = file.error() == QFileDevice::ResourceError;
  return {isFull ? error::kDiskFull : number, file.errorString() + QStringLiteral(": ") + file.fileName()};
}

/// A new file that is removed again unless it is kept.
class PartFile final {
 public:
  explicit PartFile(const QString& path) : file_(path) {
    if (!file_.open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered)) {
      throw LocalFailure(file_, kWriteFault);
    }
    // A program that was fetched does not run by being opened.
    file_.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner);
  }
  ~PartFile() {
    if (!isKept_) {
      file_.close();
      QFile::remove(file_.fileName());
    }
  }
  PartFile(const PartFile&) = delete;
  PartFile& operator=(const PartFile&) = delete;

  void Write(const QByteArray& piece) {
    for (qsizetype done = 0; done < piece.size();) {
      const qint64 written = file_.write(piece.constData() + done, piece.size() - done);
      if (written <= 0) {
        throw LocalFailure(file_, kWriteFault);
      }
      done += written;
    }
  }
  void Keep() {
    file_.close();
    if (file_.error() != QFileDevice::NoError) {
      throw LocalFailure(file_, kWriteFault);
    }
    isKept_ = true;
  }

 private:
  QFile file_;
  bool isKept_ = false;
};

/// Size and date are known and the same, and a date says enough.
bool IsSameShown(const Shown& now, const FetchedRecord& record, qint64 dateStep, qint64 trustedSize) {
  return now.size >= 0 && now.size == record.size && now.modified.IsPresent() &&
         now.modified == record.modified &&
         (dateStep == 0 || (dateStep <= kTrustedStep && now.size >= trustedSize));
}

QByteArray HashOf(IxoFile& item) {
  QCryptographicHash hash(QCryptographicHash::Sha256);
  const std::unique_ptr<ContentSource> source = item.OpenSource();
  for (QByteArray piece = source->Read(kPiece); !piece.isEmpty(); piece = source->Read(kPiece)) {
    hash.addData(piece);
  }
  return hash.result();
}

}  // namespace

QString ServerOf(clsIxoFile& file) {
  RequireDone(file);
  return ServerOf(*file.IxoFile());
}

Shown LookAt(const FileAccess& files, const QString& address) {
  return WithItem(files, address, [](IxoFile& item) {
    Shown shown = ShownOf(item);
    shown.server = ServerOf(item);
    return shown;
  });
}

void Fetch(clsIxoFile& file, const QString& path, FetchedRecord& record) {
  RequireDone(file);
  IxoFile& item = *file.IxoFile();
  const Shown shown = ShownOf(item);
  const QString server = ServerOf(item);
  QCryptographicHash hash(QCryptographicHash::Sha256);
  qint64 bytes = 0;
  PartFile part(path);
  const std::unique_ptr<ContentSource> source = item.OpenSource();
  for (QByteArray piece = source->Read(kPiece); !piece.isEmpty(); piece = source->Read(kPiece)) {
    part.Write(piece);
    hash.addData(piece);
    bytes += piece.size();
  }
  if ((item.Attribute() & attribute::kLink) == 0 && !source->HadWrongSize()) {
    RequireRead(bytes, shown.size, item.Name());
  }
  part.Keep();
  record.size = bytes;
  record.modified = shown.modified;
  record.hash = hash.result();
  record.server = server;
}

bool IsShownUnchanged(clsIxoFile& file, const FetchedRecord& record) {
  RequireDone(file);
  return IsSameShown(ShownOf(*file.IxoFile()), record, file.IxoFile()->DateStep(), 0);
}

Compared Compare(const FileAccess& files, const QString& address, const FetchedRecord& record,
                 const QByteArray& local, qint64 localSize) {
  return WithItem(files, address, [&](IxoFile& item) {
    const Shown now = ShownOf(item);
    if (IsSameShown(now, record, item.DateStep(), kSmall)) {
      return Compared::Unchanged;
    }
    if (now.size >= 0 && now.size != record.size && now.size != localSize) {
      return Compared::Changed;
    }
    const QByteArray there = HashOf(item);
    if (there == local) {
      return Compared::IsThere;
    }
    return there == record.hash ? Compared::Unchanged : Compared::Changed;
  });
}

bool PutBack(const FileAccess& files, const QString& address, const QString& path, const QByteArray& local,
             const Shown& shown, FetchedRecord& record) {
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
    throw LocalFailure(file, kReadFault);
  }
  return WithItem(files, address, [&](IxoFile& item) {
    QCryptographicHash hash(QCryptographicHash::Sha256);
    qint64 bytes = 0;
    const std::unique_ptr<ContentSink> sink =
        item.OpenSink({.mode = SinkRequest::Mode::Replace, .expectedSize = file.size(), .traits = {}});
    for (QByteArray piece = file.read(kPiece); !piece.isEmpty(); piece = file.read(kPiece)) {
      hash.addData(piece);
      sink->Write(piece);
      bytes += piece.size();
    }
    if (file.error() != QFileDevice::NoError) {
      throw LocalFailure(file, kReadFault);
    }
    if (hash.result() != local) {
      return false;
    }
    // Writing can take long. Without a name beside it the file itself may be what was written.
    if (item.HasTemporaryNames() && LookAt(files, address) != shown) {
      throw RunTimeError(kChanged, QStringLiteral("It was changed there meanwhile: ") + item.Name());
    }
    const SeenItem placed = sink->Commit();
    if (placed.entry.size >= 0 && placed.entry.size != bytes) {
      throw NotArrived(item.Name(), placed.entry.size, bytes);
    }
    item.Flush();
    record.size = bytes;
    record.modified = placed.entry.modified;
    record.hash = local;
    return true;
  });
}

}  // namespace trevane::fetchsteps

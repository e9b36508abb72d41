#include "engine/fetched/FetchedFile.h"

#include "base/RunTimeError.h"
#include "engine/fetched/FetchedFolder.h"
#include "platform/OwnFile.h"

#include <utility>

namespace trevane {

namespace {
constexpr qint32 kWriteFault = error::kWin32Error + 29;
}  // namespace

FetchedFile::FetchedFile(std::shared_ptr<FetchedFolder> folder, QString item, FetchedRecord record)
    : folder_(std::move(folder)), item_(std::move(item)), record_(std::move(record)) {}

QString FetchedFile::Path() const {
  return FolderPath() + u'/' + record_.name;
}

QString FetchedFile::FolderPath() const {
  return folder_->FolderOf(item_);
}

QStringList FetchedFile::Beside() const {
  return folder_->Beside(item_, record_.name);
}

void FetchedFile::Renew(const FetchedRecord& record) {
  const ownfile::Outcome written =
      ownfile::Replace(folder_->RecordOf(item_), WriteFetchedRecord(record), {.isPrivate = true});
  if (!written) {
    throw RunTimeError(kWriteFault, written.reason + QStringLiteral(": ") + folder_->RecordOf(item_));
  }
  record_ = record;
}

void FetchedFile::WasPutBack(const FetchedRecord& record) {
  record_ = record;
  asked_.clear();
  static_cast<void>(
      ownfile::Replace(folder_->RecordOf(item_), WriteFetchedRecord(record), {.isPrivate = true}));
}

void FetchedFile::WasFetched() {
  seen_ = StampOf(Path());
  looking_.reset();
  lastWrite_ = -1;
  current_ = record_.hash;
  asked_.clear();
  isOffered_ = false;
  waits_ = false;
}

void FetchedFile::NoteWrite(qint64 now) {
  seen_ = StampOf(Path());
  lastWrite_ = now;
  looking_.reset();
}

void FetchedFile::NoteWriteBeside(qint64 now) {
  if (lastWrite_ >= 0 || StampOf(Path()) != seen_) {
    NoteWrite(now);
  }
}

bool FetchedFile::Advance(qint64 now) {
  const LocalStamp stamp = StampOf(Path());
  if (stamp != seen_) {
    seen_ = stamp;
    lastWrite_ = now;
    looking_.reset();
    return false;
  }
  if (lastWrite_ < 0 || now - lastWrite_ < kQuiet) {
    return false;
  }
  if (!stamp.exists) {
    // A program may be about to put a new one there.
    current_.clear();
    lastWrite_ = -1;
    return false;
  }
  if (!looking_) {
    looking_ = std::make_unique<LocalHash>(Path());
  }
  const LocalHash::Progress progress = looking_->Step();
  if (progress == LocalHash::Progress::More) {
    return true;
  }
  if (progress == LocalHash::Progress::Done && StampOf(Path()) == seen_) {
    current_ = looking_->Result();
    lastWrite_ = -1;
  } else {
    // Its program may keep it for itself while it writes.
    lastWrite_ = now;
  }
  looking_.reset();
  return false;
}

bool FetchedFile::IsUntouched() const {
  return lastWrite_ < 0 && current_ == record_.hash && StampOf(Path()) == seen_;
}

void FetchedFile::LookNow() {
  const LocalStamp stamp = StampOf(Path());
  if (IsUntouched() || !stamp.exists || stamp.size > kMostAtOnce) {
    return;
  }
  const QByteArray content = LocalHashOf(Path()).value_or(QByteArray());
  if (content == record_.hash && StampOf(Path()) == stamp) {
    current_ = content;
    seen_ = stamp;
    lastWrite_ = -1;
    looking_.reset();
  }
}

void FetchedFile::Recovered(qint64 now) {
  isRecovered_ = true;
  waits_ = true;
  seen_ = StampOf(Path());
  // What an earlier run has written needs no rest.
  lastWrite_ = now - kQuiet;
}

void FetchedFile::Offer() {
  waits_ = false;
  isOffered_ = isRecovered_ || IsChanged();
  asked_.clear();
}

bool FetchedFile::IsCertainlyUnchanged() const {
  if (IsUntouched()) {
    return true;
  }
  const LocalStamp stamp = StampOf(Path());
  return !stamp.exists || (stamp.size <= kMostAtOnce && LocalHashOf(Path()) == record_.hash);
}

bool FetchedFile::RemoveUnlessChanged() {
  looking_.reset();
  return IsCertainlyUnchanged() && folder_->RemoveItem(item_, record_.name);
}

}  // namespace trevane

#include "engine/providers/ftp/FtpSource.h"

#include "engine/providers/ftp/FtpErrors.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace trevane::ftp {
namespace {

/// More than that of a rest is kept in a file.
constexpr qint64 kMostInMemory = content::kLargestPiece;

}  // namespace

Source::Source(std::shared_ptr<Server> server, const Place& place, qint64 offset,
               const std::optional<ListedItem>& seen)
    : server_(std::move(server)), place_(place), offset_(offset), item_(seen) {
  if (place_.IsTop()) {
    Fail(error::kAccessDenied, place_.text);
  }
  Server::RequireTransferable(place_.path, place_.text);
  if (!item_ && server_->Can().mlst == Seen::Refused) {
    // Of a file only.
    if (const std::optional<qint64> size = server_->SizeOf(place_)) {
      size_ = *size;
      shownSize_ = server_->ListedSize(place_);
    }
  }
  if (!item_ && size_ < 0) {
    item_ = server_->Look(place_);
    if (!item_) {
      Fail(error::kNotFound, place_.text);
    }
  }
  if (item_) {
    bool isFile = item_->kind == ListedItem::Kind::File;
    if (item_->kind == ListedItem::Kind::Link) {
      // Its own size is that of its text.
      isFile = !server_->EntryAt(place_, *item_).IsFolder();
      const std::optional<qint64> size = isFile ? server_->SizeOf(place_) : std::nullopt;
      item_->size = size.value_or(-1);
    }
    if (!isFile) {
      Fail(error::kAccessDenied, place_.text);
    }
    size_ = shownSize_ = item_->size;
  }
  Begin();
}

Source::~Source() {
  download_.reset();
  server_->Vacate(*this);
}

void Source::Begin() {
  FtpDialogue& line = server_->Line();
  Reply refusal;
  const bool canSkip = offset_ == 0 || server_->Can().rest != Seen::Refused;
  download_ = line.Retrieve(place_.path, canSkip ? offset_ : 0, refusal);
  toSkip_ = canSkip ? 0 : offset_;
  if (!download_ && canSkip && offset_ > 0) {
    // A server without REST, or a place behind the end: the bytes in front are read as well.
    if (size_ >= 0 && offset_ >= size_) {
      isAtEnd_ = true;
      return;
    }
    download_ = line.Retrieve(place_.path, 0, refusal);
    toSkip_ = offset_;
    if (download_) {
      server_->Can().rest = Seen::Refused;
    }
  }
  if (!download_) {
    server_->FailLooking(refusal, place_);
  }
  server_->Occupy(*this);
}

std::optional<FileTraits> Source::Traits() {
  if (!item_) {
    return std::nullopt;
  }
  FileTraits traits;
  if (item_->kind == ListedItem::Kind::File) {
    traits.permissions = item_->mode;
  }
  traits.modified = item_->modified;
  return traits;
}

QByteArray Source::ReadLine(qint64 most) {
  for (;;) {
    QByteArray piece = download_->Read(most);
    if (piece.isEmpty()) {
      CheckEnd();
      return piece;
    }
    if (toSkip_ > 0) {
      const qint64 skipped = std::min<qint64>(toSkip_, piece.size());
      toSkip_ -= skipped;
      piece.remove(0, skipped);
      if (piece.isEmpty()) {
        continue;
      }
    }
    received_ += piece.size();
    hash_.addData(piece);
    return piece;
  }
}

void Source::CheckEnd() {
  const Reply reply = download_->Finish();
  download_.reset();
  server_->Vacate(*this);
  isAtEnd_ = true;
  if (!reply.IsDone()) {
    throw ReplyError(reply, place_.text);
  }
  const qint64 all = offset_ + received_;
  const bool fits = size_ < 0 || all == size_ || (received_ == 0 && offset_ >= size_);
  if (fits || server_->SizeOf(place_) == all) {
    // It would look cut off.
    hadWrongSize_ = all < shownSize_;
    return;
  }
  ReadOnceMore();
}

void Source::ReadOnceMore() {
  Reply refusal;
  const std::unique_ptr<FtpDownload> again = server_->Line().Retrieve(place_.path, 0, refusal);
  if (!again) {
    throw ReplyError(refusal, place_.text);
  }
  QCryptographicHash hash(QCryptographicHash::Sha256);
  qint64 toSkip = offset_;
  qint64 received = 0;
  for (;;) {
    QByteArray piece = again->Read(content::kSmallestPiece);
    if (piece.isEmpty()) {
      break;
    }
    const qint64 skipped = std::min<qint64>(toSkip, piece.size());
    toSkip -= skipped;
    piece.remove(0, skipped);
    received += piece.size();
    hash.addData(piece);
    if (received > received_) {
      break;
    }
  }
  const Reply reply = received > received_ ? Reply{226} : again->Finish();
  if (!reply.IsDone()) {
    throw ReplyError(reply, place_.text);
  }
  if (received != received_ || hash.result() != hash_.result()) {
    Fail(providererror::kChanged,
         QStringLiteral("The server tells %1 bytes and sent %2, and other ones when asked again")
             .arg(size_)
             .arg(offset_ + received_),
         place_.text);
  }
  hadWrongSize_ = true;
}

QByteArray Source::Read(qint64 most) {
  if (failure_) {
    throw *failure_;
  }
  if (!rest_.isEmpty()) {
    QByteArray piece = rest_.first(std::min<qint64>(most, rest_.size()));
    rest_.remove(0, piece.size());
    return piece;
  }
  if (keptSource_) {
    return keptSource_->Read(most);
  }
  if (isAtEnd_) {
    return {};
  }
  return ReadLine(most);
}

void Source::MakeWay() noexcept {
  try {
    while (!isAtEnd_) {
      const QByteArray piece = ReadLine(content::kSmallestPiece);
      if (!kept_ && rest_.size() + piece.size() > kMostInMemory) {
        kept_ = std::make_unique<StagedPrivateFile>(QString());
      }
      if (kept_) {
        kept_->Append(piece);
      } else {
        rest_ += piece;
      }
    }
    if (kept_) {
      keptSource_ = kept_->OpenSource();
    }
  } catch (const RunTimeError& failure) {
    failure_ = failure;
    download_.reset();
  } catch (const std::exception&) {
    failure_ = ProviderError(error::kWin32Error + 8, place_.text);
    download_.reset();
  }
}

void Source::Lose() noexcept {
  download_.reset();
  if (!isAtEnd_) {
    failure_ = ProviderError(kConnectionLost, place_.text);
  }
}

}  // namespace trevane::ftp

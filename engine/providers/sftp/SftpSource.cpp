#include "engine/providers/sftp/SftpSource.h"

#include "engine/files/ProviderError.h"
#include "engine/providers/sftp/SftpErrors.h"
#include "engine/providers/sftp/SftpItem.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace trevane::sftp {
namespace {

constexpr std::size_t kBlocks = 96;

}  // namespace

void RequireContent(const Attributes& item, const QString& text) {
  if (!item.IsFile()) {
    Fail(error::kAccessDenied, text);
  }
}

void BlockReader::Ask() {
  // The block that begins at the end shows that it is the end; behind it only one is asked for at a time.
  while (!isAtEnd_ && blocks_.size() < atOnce_ && (blocks_.empty() || next_ <= size_)) {
    const quint64 left = next_ < size_ ? size_ - next_ : std::numeric_limits<quint64>::max();
    const auto length = static_cast<quint32>(std::min<quint64>(left, line_.Bounds().readBlock));
    blocks_.push_back({next_, length, line_.Read(handle_, next_, length)});
    next_ += length;
  }
}

QByteArray BlockReader::Take(const QString& text) {
  Ask();
  if (isAtEnd_) {
    return {};
  }
  Outcome<DataAnswer> data = blocks_.front().request.Data();
  const quint64 offset = blocks_.front().offset;
  const quint32 asked = blocks_.front().length;
  blocks_.pop_front();
  if (!data) {
    if (data.status.code != status::kEnd) {
      throw StatusError(data.status, text);
    }
    isAtEnd_ = true;
    blocks_.clear();
    return {};
  }
  const auto length = static_cast<quint64>(data->bytes.size());
  if (length == 0 || length > asked) {
    Fail(providererror::kDeviceIo, text);
  }
  if (length < asked) {
    // A server may send less than it was asked for, also inside a file.
    const auto missing = static_cast<quint32>(asked - length);
    blocks_.push_front({offset + length, missing, line_.Read(handle_, offset + length, missing)});
  }
  return (*std::move(data)).bytes;
}

Source::Source(Server& server, const Place& place, qint64 offset)
    : line_(server.Line(place.text)), text_(place.text) {
  const std::optional<Attributes> item = server.Follow(place);
  if (!item) {
    Fail(error::kNotFound, text_);
  }
  item_ = *item;
  RequireContent(item_, text_);
  Outcome<HandleAnswer> opened = line_->Open(place.path, openflag::kRead).Handle();
  if (!opened) {
    throw StatusError(opened.status, text_);
  }
  handle_ = OpenHandle(line_, opened->handle);
  blocks_.emplace(*line_, opened->handle, static_cast<quint64>(offset), item_.size.value_or(0), kBlocks);
  blocks_->Ask();
}

std::optional<FileTraits> Source::Traits() {
  return TraitsOf(item_);
}

QByteArray Source::Read(qint64 most) {
  line_->SetSubject(text_);
  QByteArray piece = std::exchange(rest_, {});
  while (piece.size() < most) {
    if (piece.size() >= content::kSmallestPiece && !blocks_->IsAnswered()) {
      break;
    }
    const QByteArray block = blocks_->Take(text_);
    if (block.isEmpty()) {
      break;
    }
    if (piece.isEmpty()) {
      piece = block;
    } else {
      piece.reserve(std::min<qint64>(most, content::kLargestPiece) + Limits::kBlock);
      piece += block;
    }
  }
  if (piece.size() > most) {
    rest_ = piece.sliced(most);
    piece.truncate(most);
  }
  if (blocks_->IsAtEnd() && rest_.isEmpty()) {
    handle_.Reset();
  }
  return piece;
}

}  // namespace trevane::sftp

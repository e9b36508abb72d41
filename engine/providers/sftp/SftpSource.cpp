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

Source::Source(Server& server, const Place& place, qint64 offset)
    : line_(server.Line(place.text)), text_(place.text), next_(static_cast<quint64>(offset)) {
  std::optional<Attributes> item = server.Follow(place);
  if (!item) {
    Fail(error::kNotFound, text_);
  }
  item_ = *std::move(item);
  RequireContent(item_, text_);
  Outcome<HandleAnswer> opened = line_->Open(place.path, openflag::kRead).Handle();
  if (!opened) {
    throw StatusError(opened.status, text_);
  }
  handle_ = OpenHandle(line_, opened->handle);
  Ask();
}

std::optional<FileTraits> Source::Traits() {
  return TraitsOf(item_);
}

void Source::Ask() {
  const quint64 size = item_.size.value_or(0);
  // The block that begins at the end shows that it is the end; behind it only one is asked for at a time.
  while (!isAtEnd_ && blocks_.size() < kBlocks && (blocks_.empty() || next_ <= size)) {
    const quint64 left = next_ < size ? size - next_ : std::numeric_limits<quint64>::max();
    const auto length = static_cast<quint32>(std::min<quint64>(left, line_->Bounds().readBlock));
    blocks_.push_back({next_, length, line_->Read(handle_.Get(), next_, length)});
    next_ += length;
  }
}

QByteArray Source::TakeBlock() {
  Ask();
  if (isAtEnd_) {
    return {};
  }
  Outcome<DataAnswer> data = blocks_.front().request.Data();
  Block block = std::move(blocks_.front());
  blocks_.pop_front();
  if (!data) {
    if (data.status.code != status::kEnd) {
      throw StatusError(data.status, text_);
    }
    isAtEnd_ = true;
    blocks_.clear();
    return {};
  }
  const auto length = static_cast<quint64>(data->bytes.size());
  if (length == 0 || length > block.length) {
    Fail(providererror::kDeviceIo, text_);
  }
  if (length < block.length) {
    // A server may send less than it was asked for, also inside a file.
    const auto missing = static_cast<quint32>(block.length - length);
    blocks_.push_front(
        {block.offset + length, missing, line_->Read(handle_.Get(), block.offset + length, missing)});
  }
  return (*std::move(data)).bytes;
}

QByteArray Source::Read(qint64 most) {
  line_->SetSubject(text_);
  QByteArray piece = std::exchange(rest_, {});
  while (piece.size() < most) {
    const bool isEnough =
        piece.size() >= content::kSmallestPiece && !blocks_.empty() && !blocks_.front().request.IsAnswered();
    if (isEnough) {
      break;
    }
    const QByteArray block = TakeBlock();
    if (block.isEmpty()) {
      break;
    }
    if (piece.isEmpty()) {
      piece = block;
    } else {
      piece.reserve(std::min<qint64>(most + Limits::kBlock, content::kLargestPiece + Limits::kBlock));
      piece += block;
    }
  }
  if (piece.size() > most) {
    rest_ = piece.sliced(most);
    piece.truncate(most);
  }
  if (isAtEnd_ && rest_.isEmpty()) {
    handle_.Reset();
  }
  return piece;
}

}  // namespace trevane::sftp

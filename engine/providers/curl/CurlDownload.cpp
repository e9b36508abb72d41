#include "engine/providers/curl/CurlDownload.h"

#include <utility>

namespace trevane::curl {
namespace {

constexpr qint64 kMostHeld = qint64(2) * 1024 * 1024;

}  // namespace

CurlDownload::CurlDownload(std::shared_ptr<CurlLine> line) : line_(std::move(line)) {}

CurlDownload::~CurlDownload() {
  if (hasBegun_ && line_->IsUnderWay()) {
    pieces_.clear();
    held_ = 0;
    line_->BreakOff();
  }
}

void CurlDownload::BeginText(const QByteArray& command) {
  line_->BeginText(command, this);
  hasBegun_ = true;
}

void CurlDownload::BeginFile(const QByteArray& path, qint64 offset) {
  line_->BeginRetrieve(path, offset, this);
  hasBegun_ = true;
}

bool CurlDownload::Await() {
  line_->DriveUntil([this] { return !pieces_.empty(); });
  return !pieces_.empty() || line_->IsUnderWay() || !line_->WasRefused();
}

QByteArray CurlDownload::Read(qint64 most) {
  if (pieces_.empty() && line_->IsUnderWay()) {
    if (std::exchange(isPaused_, false)) {
      line_->Resume();
    }
    if (pieces_.empty() && line_->IsUnderWay()) {
      line_->DriveUntil([this] { return !pieces_.empty(); });
    }
  }
  if (pieces_.empty()) {
    // Fails where the line was lost before the end.
    static_cast<void>(line_->Outcome());
    return {};
  }
  QByteArray piece = std::move(pieces_.front());
  pieces_.pop_front();
  if (piece.size() > most) {
    pieces_.push_front(piece.sliced(most));
    piece.truncate(most);
  }
  held_ -= piece.size();
  return piece;
}

ftp::Reply CurlDownload::Finish() {
  while (line_->IsUnderWay()) {
    pieces_.clear();
    held_ = 0;
    static_cast<void>(Read(kMostHeld));
  }
  return line_->Outcome();
}

bool CurlDownload::Put(QByteArrayView bytes) {
  if (held_ >= kMostHeld) {
    isPaused_ = true;
    return false;
  }
  pieces_.push_back(bytes.toByteArray());
  held_ += bytes.size();
  return true;
}

qsizetype CurlDownload::Get(char* /*bytes*/, qsizetype /*most*/) {
  return 0;
}

}  // namespace trevane::curl

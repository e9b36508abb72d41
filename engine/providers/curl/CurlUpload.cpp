#include "engine/providers/curl/CurlUpload.h"

#include <algorithm>
#include <utility>

namespace trevane::curl {
namespace {

constexpr qint64 kMostHeld = qint64(1) * 1024 * 1024;

}  // namespace

CurlUpload::CurlUpload(std::shared_ptr<CurlLine> line, const QByteArray& path) : line_(std::move(line)) {
  line_->BeginStore(path, this);
  hasBegun_ = true;
  // A pause before the first piece must not count as one of the server's.
  line_->DriveUntil([this] { return wasAsked_; });
}

CurlUpload::~CurlUpload() {
  if (hasBegun_ && line_->IsUnderWay()) {
    pieces_.clear();
    held_ = 0;
    taken_ = 0;
    isComplete_ = true;
    line_->BreakOff();
  }
}

bool CurlUpload::WasRefused() const {
  return !line_->IsUnderWay() && line_->WasRefused();
}

void CurlUpload::Write(const QByteArray& piece) {
  if (!line_->IsUnderWay()) {
    // Finish must not call a file complete that this piece is missing from.
    held_ += piece.size();
    line_->RequireOutcome();
    return;
  }
  if (!piece.isEmpty()) {
    pieces_.push_back(piece);
    held_ += piece.size();
  }
  if (std::exchange(isPaused_, false)) {
    line_->Resume();
  }
  if (held_ > kMostHeld) {
    line_->DriveUntil([this] { return held_ <= kMostHeld; });
  } else {
    line_->DriveNow();
  }
  if (!line_->IsUnderWay()) {
    line_->RequireOutcome();
  }
}

ftp::Reply CurlUpload::Finish() {
  isComplete_ = true;
  if (line_->IsUnderWay()) {
    if (std::exchange(isPaused_, false)) {
      line_->Resume();
    }
    line_->DriveUntil([] { return false; });
  }
  const ftp::Reply reply = line_->Outcome();
  if (reply.IsDone() && held_ > 0) {
    line_->FailShort();
  }
  return reply;
}

bool CurlUpload::Put(QByteArrayView /*bytes*/) {
  return true;
}

qsizetype CurlUpload::Get(char* bytes, qsizetype most) {
  wasAsked_ = true;
  qsizetype filled = 0;
  while (filled < most && !pieces_.empty()) {
    const QByteArray& piece = pieces_.front();
    const qsizetype count = std::min<qsizetype>(most - filled, piece.size() - taken_);
    std::copy_n(piece.constData() + taken_, count, bytes + filled);
    filled += count;
    taken_ += count;
    held_ -= count;
    if (taken_ == piece.size()) {
      pieces_.pop_front();
      taken_ = 0;
    }
  }
  if (filled == 0 && !isComplete_) {
    isPaused_ = true;
    return kLater;
  }
  return filled;
}

}  // namespace trevane::curl

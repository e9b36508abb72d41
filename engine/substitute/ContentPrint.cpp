#include "engine/substitute/ContentPrint.h"

#include <algorithm>
#include <cstring>

namespace trevane {

void ContentPrint::AddBlock(const char* block) noexcept {
  constexpr quint64 kFactor = 0x9E3779B97F4A7C15U;
  for (quint64& lane : lanes_) {
    quint64 word = 0;
    std::memcpy(&word, block, sizeof word);
    block += sizeof word;
    lane = (lane ^ word) * kFactor;
    lane ^= lane >> 29;
  }
}

void ContentPrint::Add(const QByteArray& piece) {
  if (head_.size() < kHead) {
    head_ += piece.left(kHead - head_.size());
  }
  const char* at = piece.constData();
  qsizetype left = piece.size();
  const auto filled = static_cast<qsizetype>(size_ % kBlock);
  size_ += left;
  if (filled > 0) {
    const qsizetype more = std::min(left, kBlock - filled);
    std::memcpy(rest_.data() + filled, at, static_cast<size_t>(more));
    at += more;
    left -= more;
    if (filled + more < kBlock) {
      return;
    }
    AddBlock(rest_.data());
  }
  for (; left >= kBlock; left -= kBlock) {
    AddBlock(at);
    at += kBlock;
  }
  std::memcpy(rest_.data(), at, static_cast<size_t>(left));
}

bool ContentPrint::IsSame(const ContentPrint& other) const noexcept {
  return size_ == other.size_ && lanes_ == other.lanes_ &&
         std::memcmp(rest_.data(), other.rest_.data(), static_cast<size_t>(size_ % kBlock)) == 0;
}

bool ContentPrint::IsStartOf(const ContentPrint& other) const noexcept {
  return size_ < other.size_ ? other.head_.startsWith(head_) : IsSame(other);
}

}  // namespace trevane

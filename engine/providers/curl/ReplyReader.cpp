#include "engine/providers/curl/ReplyReader.h"

#include <algorithm>
#include <utility>

namespace trevane::curl {
namespace {

constexpr int kDigits = 3;
/// A server that never ends a reply must not fill the memory.
constexpr qsizetype kMostBytes = qsizetype(256) * 1024;

/// The code at the beginning of a line, or 0.
int CodeOf(QByteArrayView line) {
  if (line.size() < kDigits) {
    return 0;
  }
  int code = 0;
  for (const char each : line.first(kDigits)) {
    if (each < '0' || each > '9') {
      return 0;
    }
    code = code * 10 + (each - '0');
  }
  return code;
}

bool IsLast(QByteArrayView line) {
  return CodeOf(line) != 0 && line.size() > kDigits && line[kDigits] == ' ';
}

QByteArrayView WithoutEnd(QByteArrayView line) {
  while (!line.isEmpty() && (line.back() == '\r' || line.back() == '\n')) {
    line.chop(1);
  }
  return line;
}

}  // namespace

void ReplyReader::Add(QByteArrayView line) {
  line = WithoutEnd(line);
  const bool isLast = IsLast(line);
  const bool hasCode = isLast || (CodeOf(line) != 0 && line.size() > kDigits && line[kDigits] == '-');
  const QByteArrayView text = hasCode ? line.sliced(kDigits + 1) : line;
  if (open_.size() + text.size() < kMostBytes) {
    if (isOpen_) {
      open_ += '\n';
    }
    open_ += text;
  }
  isOpen_ = !isLast;
  if (isLast) {
    replies_.push_back({CodeOf(line), std::exchange(open_, {})});
  }
}

void ReplyReader::Clear() {
  replies_.clear();
  open_.clear();
  isOpen_ = false;
}

ftp::Reply ReplyReader::Last() const {
  return replies_.empty() ? ftp::Reply{} : replies_.back();
}

const ftp::Reply* ReplyReader::Find(int code) const noexcept {
  const auto found = std::find_if(replies_.begin(), replies_.end(),
                                  [code](const ftp::Reply& reply) { return reply.code == code; });
  return found == replies_.end() ? nullptr : &*found;
}

bool ReplyReader::TellsOfBegin() const noexcept {
  return std::any_of(replies_.begin(), replies_.end(),
                     [](const ftp::Reply& reply) { return reply.code >= 100 && reply.code < 200; });
}

bool ReplyReader::EndsWithReply(QByteArrayView bytes) {
  if (!bytes.endsWith('\n')) {
    return false;
  }
  bytes.chop(1);
  return IsLast(bytes.sliced(bytes.lastIndexOf('\n') + 1));
}

}  // namespace trevane::curl

#include "engine/providers/curl/ControlWords.h"

#include <array>

namespace trevane::curl {
namespace {

/// Of all answers together: STAT tells of all items of a folder. Little of it is kept.
constexpr qsizetype kMostBytes = qsizetype(16) * 1024 * 1024;

}  // namespace

void ControlWords::Say(const QByteArrayList& commands) {
  for (const QByteArray& command : commands) {
    unsent_ += command + "\r\n";
  }
}

ControlWords::State ControlWords::Exchange() {
  State state = State::Still;
  while (!unsent_.isEmpty()) {
    const qsizetype sent = SendSome(socket_, unsent_);
    if (sent < 0) {
      // What the other end has said before is read all the same.
      unsent_.clear();
      break;
    }
    if (sent == 0) {
      break;
    }
    unsent_.remove(0, sent);
    state = State::Moved;
  }
  std::array<char, 4096> bytes{};
  for (;;) {
    const qsizetype got = ReceiveSome(socket_, bytes.data(), qsizetype(bytes.size()));
    if (got == 0) {
      return state;
    }
    received_ += got;
    if (got < 0 || received_ > kMostBytes) {
      return State::Ended;
    }
    state = State::Moved;
    line_.append(bytes.data(), got);
    qsizetype begin = 0;
    for (qsizetype end = line_.indexOf('\n'); end >= 0; end = line_.indexOf('\n', begin)) {
      replies_.Add(QByteArrayView(line_).sliced(begin, end + 1 - begin));
      begin = end + 1;
    }
    line_.remove(0, begin);
  }
}

}  // namespace trevane::curl

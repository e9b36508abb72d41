#pragma once

#include "engine/providers/curl/ReplyReader.h"
#include "engine/providers/curl/SocketCalls.h"

#include <QByteArray>
#include <QByteArrayList>

namespace trevane::curl {

/// Speaks on a control connection that the library does not use at the moment. It never waits.
class ControlWords final {
 public:
  enum class State { Moved, Still, Ended };

  /// Replies are added to `replies`, which outlives it.
  ControlWords(Socket socket, ReplyReader& replies) noexcept : socket_(socket), replies_(replies) {}

  /// To be sent in one segment, as far as the system does.
  void Say(const QByteArrayList& commands);
  /// Sends and takes what can be. Ended: by the other end, or since its answers have no end.
  [[nodiscard]] State Exchange();
  [[nodiscard]] bool HasToSend() const noexcept { return !unsent_.isEmpty(); }
  /// Part of another answer has come.
  [[nodiscard]] bool HasPart() const noexcept { return !line_.isEmpty() || replies_.HasPart(); }

 private:
  const Socket socket_;
  ReplyReader& replies_;
  QByteArray unsent_;
  /// The beginning of a line.
  QByteArray line_;
  qsizetype received_ = 0;
};

}  // namespace trevane::curl

#pragma once

#include "engine/providers/curl/ControlWords.h"
#include "engine/providers/curl/SocketCalls.h"
#include "engine/providers/ftp/FtpReply.h"
#include "engine/providers/ftp/FtpSettings.h"

#include <QByteArrayList>

#include <chrono>
#include <cstddef>
#include <optional>
#include <vector>

#include <curl/curl.h>

namespace trevane::curl {

class LineWatch;
class ReplyReader;

/// One exchange of commands and replies past the library, on a control connection without TLS: several
/// commands go in one segment, and each reply that comes is seen. It waits, and fails with error::kCancelled,
/// error::kTimeOut, and kLineLost where the server ends the line or does not answer each command once. After
/// a failure the line is of no use. One thread's alone.
class ControlExchange final {
 public:
  enum class Answer {
    EachCommand,
    FirstOnly,
    /// The server is one answer behind: the line is of no use.
    Late,
  };

  /// The library does nothing on `socket` as long as this lives, and nothing unread is on it. `multi` is
  /// waited with, so that curl_multi_wakeup ends a wait. `replies` is empty, and gets what the server says.
  /// All of them outlive it.
  ControlExchange(CURLM* multi, Socket socket, const FtpSettings& settings, ReplyReader& replies,
                  LineWatch& watch) noexcept;
  ControlExchange(const ControlExchange&) = delete;
  ControlExchange& operator=(const ControlExchange&) = delete;

  /// Finds out whether the server answers each of several commands that come at once, with commands that
  /// change nothing. The server is known to answer PWD.
  [[nodiscard]] Answer Probe();
  /// A reply for each command, in their order. Whether it is one of that command is not judged.
  [[nodiscard]] std::vector<ftp::Reply> Ask(const QByteArrayList& commands);

 private:
  using Milliseconds = std::chrono::milliseconds;

  /// Until so many replies have come; false where they have not within `most` from now.
  [[nodiscard]] bool Await(std::size_t count, std::optional<Milliseconds> most = {});

  CURLM* const multi_;
  const Socket socket_;
  const FtpSettings& settings_;
  ReplyReader& replies_;
  LineWatch& watch_;
  ControlWords words_;
};

}  // namespace trevane::curl

#pragma once

#include <QByteArray>

namespace trevane::ftp {

/// The last reply of a server to one command.
struct Reply {
  /// Three digits; 0 where there was none.
  int code = 0;
  /// All its lines without the code, separated by "\n", as the server sent them.
  QByteArray text = {};

  /// The command was carried out.
  [[nodiscard]] bool IsDone() const noexcept { return code >= 200 && code < 300; }
  /// The server waits for the command that belongs to this one.
  [[nodiscard]] bool IsMore() const noexcept { return code >= 300 && code < 400; }
  /// Refused; another try may succeed.
  [[nodiscard]] bool IsRefusedForNow() const noexcept { return code >= 400 && code < 500; }
  /// The server does not know the command, or not for this parameter.
  [[nodiscard]] bool IsUnknownCommand() const noexcept {
    return code == 500 || code == 501 || code == 502 || code == 504;
  }
};

}  // namespace trevane::ftp

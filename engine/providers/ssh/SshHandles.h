#pragma once

#include <QByteArray>

#include <cstdlib>
#include <memory>

#include <libssh/libssh.h>

namespace trevane {

struct SshSessionEnd {
  void operator()(ssh_session session) const noexcept { ssh_free(session); }
};
using SshSessionHandle = std::unique_ptr<ssh_session_struct, SshSessionEnd>;

struct SshEventEnd {
  void operator()(ssh_event event) const noexcept { ssh_event_free(event); }
};
using SshEventHandle = std::unique_ptr<ssh_event_struct, SshEventEnd>;

struct SshKeyEnd {
  void operator()(ssh_key key) const noexcept { ssh_key_free(key); }
};
using SshKey = std::unique_ptr<ssh_key_struct, SshKeyEnd>;

/// A text of the library's as one of ours; frees it.
[[nodiscard]] inline QByteArray TakeText(char* text) {
  QByteArray own(text);
  ssh_string_free_char(text);
  return own;
}

}  // namespace trevane

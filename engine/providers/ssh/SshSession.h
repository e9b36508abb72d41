#pragma once

#include "base/RunTimeError.h"
#include "engine/providers/sftp/SftpSettings.h"
#include "engine/providers/ssh/SshHandles.h"
#include "engine/providers/ssh/TcpConnection.h"

#include <QByteArrayList>
#include <QString>

#include <memory>

namespace trevane {

class CallControl;

/// The limit of connections to a computer has been reached.
inline constexpr qint32 kNoSessionLeft = error::kWin32Error + 1238;

/// One SSH session: its line, and the calls of the library, none of which waits by itself. One thread's
/// alone.
class SshSession final {
 public:
  SshSession(const SftpSettings& settings, std::shared_ptr<CallControl> control);
  ~SshSession();
  SshSession(const SshSession&) = delete;
  SshSession& operator=(const SshSession&) = delete;

  /// Connects and exchanges keys; host keys of `knownTypes` ("ssh-ed25519") are preferred. Fails with the
  /// reason.
  void Connect(const QByteArrayList& knownTypes);

  [[nodiscard]] ssh_session Raw() const noexcept { return session_.get(); }
  [[nodiscard]] net::TcpConnection& Line() noexcept { return line_; }
  [[nodiscard]] const SftpSettings& Settings() const noexcept { return settings_; }
  /// "cell4:2222", for people.
  [[nodiscard]] QString Name() const;
  /// The last failure of the library, in its own words.
  [[nodiscard]] QString LibraryText() const;
  /// The words with which the server has ended the session; empty where it gave none.
  [[nodiscard]] const QString& ServersLastWords() const noexcept { return lastWords_; }

  /// The key that the server has proved to have.
  [[nodiscard]] SshKey HostKey() const;

  /// Repeats `step` as long as it answers `again`, and waits for the server in between. SSH_ERROR when the
  /// session has ended meanwhile. Fails with error::kTimeOut or error::kCancelled.
  template <class Step>
  int Run(int again, const Step& step) {
    for (;;) {
      line_.RequireNotCancelled();
      const int answer = step();
      NoteLastWords();
      if (answer != again) {
        return answer;
      }
      if (ssh_is_connected(Raw()) == 0) {
        // Some calls of the library do not notice.
        return SSH_ERROR;
      }
      WaitForServer();
    }
  }

  /// Returns when the server has sent something, or takes what is to be sent.
  void WaitForServer();
  /// Takes in what has come and sends what can go. False when there was nothing.
  bool Pump();

 private:
  [[noreturn]] void ThrowConnectFailure() const;
  /// The library forgets them at its next failure.
  void NoteLastWords();

  const SftpSettings settings_;
  net::TcpConnection line_;
  SshSessionHandle session_;
  SshEventHandle event_;
  QString lastWords_;
};

}  // namespace trevane

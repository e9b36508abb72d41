#pragma once

#include <QByteArray>
#include <QtGlobal>

namespace trevane {

/// The bytes to and from an SFTP server: an SSH channel, or a pipe to a server of this computer. One thread's
/// alone; the destructor closes it without waiting for the server.
class SftpChannel {
 public:
  SftpChannel() = default;
  virtual ~SftpChannel() = default;
  SftpChannel(const SftpChannel&) = delete;
  SftpChannel& operator=(const SftpChannel&) = delete;

  /// Sends of `unsent` from its beginning as much as goes now and removes it there; returns what has come,
  /// at most some MiB. Waits until one of both has happened; with nothing to send, until something comes.
  /// Sending and receiving hinder each other never: a server that sends and reads nothing meanwhile loses no
  /// byte. Fails with error::kConnectionLost when the server has closed the channel or the line is lost, with
  /// error::kTimeOut after the silence that the settings allow, with error::kCancelled when the running call
  /// is cancelled.
  [[nodiscard]] virtual QByteArray Exchange(QByteArray& unsent) = 0;

  /// As Exchange, but does not wait: what has come already, and empty where nothing has.
  [[nodiscard]] virtual QByteArray Poll(QByteArray& unsent) = 0;

  /// Until EndPutBack a cancel of the running call ends no Exchange: what a cancelled call has changed is
  /// restored, and what it has left is taken away. They nest. The defaults are for channels that know no
  /// cancel.
  virtual void BeginPutBack() noexcept {}
  virtual void EndPutBack() noexcept {}

  /// A sign of life that the server answers at once, on the level of the connection below. The default does
  /// nothing.
  virtual void KeepAlive() {}
};

}  // namespace trevane

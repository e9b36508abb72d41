#pragma once

#include "tests/support/Sockets.h"

#include <QByteArray>
#include <QtGlobal>

#include <openssl/ssl.h>

namespace trevane::test {

/// One end of a connection, in the clear or over TLS. Every wait ends when the server ends: `stop` can be
/// read then.
class FtpTestSocket final {
 public:
  enum class Result { Done, Ended, TimedOut };

  FtpTestSocket() = default;
  /// Takes the socket.
  FtpTestSocket(sockets::Handle fd, sockets::Handle stop) : fd_(fd), stop_(stop) {}
  ~FtpTestSocket();
  FtpTestSocket(FtpTestSocket&& other) noexcept;
  FtpTestSocket& operator=(FtpTestSocket&& other) noexcept;
  FtpTestSocket(const FtpTestSocket&) = delete;
  FtpTestSocket& operator=(const FtpTestSocket&) = delete;

  [[nodiscard]] bool IsOpen() const noexcept { return fd_ >= 0; }
  [[nodiscard]] bool IsOverTls() const noexcept { return tls_ != nullptr; }
  [[nodiscard]] sockets::Handle Handle() const noexcept { return fd_; }
  /// Waits end, too, when the other end of this socket is gone.
  void Watch(const FtpTestSocket& other) noexcept { watched_ = other.fd_; }

  /// The greeting of TLS, as a server; the context is kept.
  [[nodiscard]] bool StartTls(SSL_CTX* context);
  [[nodiscard]] bool WasResumed() const;
  /// Appends what comes, at most `most` bytes. Milliseconds; below 0: no limit.
  [[nodiscard]] Result Read(QByteArray& bytes, qsizetype most, int timeout = -1);
  [[nodiscard]] bool Write(const QByteArray& bytes);
  /// Returns when the other end, or the one that is watched, or the server is gone.
  void Stall();
  /// With the sign that TLS ends, unless `abruptly`.
  void Close(bool abruptly = false);
  /// As a line that breaks: the other end sees a reset.
  void Break();

 private:
  using Until = sockets::Until;

  [[nodiscard]] Result Wait(Until until, int timeout);
  /// Whether a call of TLS is to be repeated, after waiting for what it wants.
  [[nodiscard]] bool WantsMore(int result);

  /// The socket stays open.
  void EndTls(bool abruptly);

  sockets::Handle fd_ = -1;
  sockets::Handle stop_ = -1;
  sockets::Handle watched_ = -1;
  SSL* tls_ = nullptr;
};

}  // namespace trevane::test

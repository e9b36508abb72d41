#pragma once

#include <QByteArrayView>

#include <openssl/ssl.h>

namespace trevane::curl {

/// Stands between TLS of a data connection and its socket. The library begins TLS before it sends the
/// command, which some servers take for a client that breaks off. And it takes the end of a data connection
/// for a failure, while the server's reason not to begin the transfer is still on its way: it gives up the
/// line, or sends a command that nobody expects. Here TLS begins behind the command, and a data connection
/// that ends early looks silent until the server has spoken. One thread's alone.
class HandshakeGate final {
 public:
  /// For each connection that is made in `context`; the gate outlives it.
  void Guard(SSL_CTX* context);

  /// A transfer begins.
  void Close() noexcept;
  /// The library has sent `command`.
  void NoteSent(QByteArrayView command) noexcept;
  /// The server has begun the transfer.
  void NoteBegun() noexcept { hasBegun_ = true; }

  /// The data connection has ended, which nobody was told yet: only the server's word matters.
  [[nodiscard]] bool HoldsEnd() const noexcept { return holdsEnd_; }
  /// The library has asked for another data connection, behind a command that was not answered by then.
  [[nodiscard]] bool HasLostStep() const noexcept { return hasLostStep_; }

 private:
  static void OnState(const SSL* connection, int where, int value) noexcept;
  static int Read(BIO* self, char* bytes, int most) noexcept;
  static int Write(BIO* self, const char* bytes, int count) noexcept;
  static long Control(BIO* self, int command, long number, void* pointer) noexcept;
  static int Create(BIO* self) noexcept;
  [[nodiscard]] static const BIO_METHOD* Method();
  void StandIn(SSL* connection) noexcept;

  bool isSent_ = false;
  bool hasBegun_ = false;
  bool holdsEnd_ = false;
  bool hasLostStep_ = false;
};

}  // namespace trevane::curl

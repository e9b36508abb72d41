#pragma once

#include <QString>
#include <QStringList>
#include <QtGlobal>

#include <chrono>

namespace trevane {

/// How a controller is reached, from the machine and option texts of its connection.
struct FtpSettings {
  enum class Tls { Off, Explicit, Implicit };
  enum class TlsMost { Tls12, Tls13 };

  static constexpr quint16 kPort = 21;
  static constexpr quint16 kImplicitPort = 990;
  static constexpr int kTimeout = 10;

  QString host;
  quint16 port = kPort;
  /// Empty for an anonymous log-on.
  QString user = {};
  Tls tls = Tls::Off;
  /// Servers that demand the session of the control connection for data refuse most transfers over TLS 1.3.
  TlsMost tlsMost = TlsMost::Tls12;
  /// Data connections are opened by the server.
  bool active = false;
  /// A file of certificates that are trusted beside those of the system; empty for none.
  QString caFile = {};
  /// Seconds, for connecting and for silence; above 0.
  int timeout = kTimeout;
  /// The encoding of names on the server, as QStringDecoder knows it; empty for UTF-8.
  QString encoding = {};
  /// The folder of the server that is shown as the top ("/MMC"); empty for the topmost one, or for that of
  /// the log-on where the topmost one cannot be listed or is empty.
  QString drive = {};
  /// How long a server may take to end a transfer that is broken off, and to tell why it has ended one.
  std::chrono::milliseconds patience{700};

  friend bool operator==(const FtpSettings&, const FtpSettings&) = default;
};

/// Reads machine and option as connectiontext does, with the keys User, Tls, TlsMax, Active, CaFile, Timeout,
/// Encoding and Drive. Fails with error::kInvalidParameter and a text for people.
[[nodiscard]] FtpSettings ReadFtpSettings(const QString& machine, const QString& option);

}  // namespace trevane

#pragma once

#include <QString>
#include <QtGlobal>

namespace trevane {

/// How a controller is reached, from the machine and option texts of its connection.
struct SftpSettings {
  static constexpr quint16 kPort = 22;
  static constexpr int kTimeout = 10;

  QString host;
  quint16 port = kPort;
  /// Never empty.
  QString user;
  /// The path of a private key on this computer; empty for the usual ones.
  QString keyFile = {};
  /// Seconds, for connecting and for silence; above 0.
  int timeout = kTimeout;
  /// The encoding of names on the server, as QStringDecoder knows it; empty for UTF-8.
  QString encoding = {};
  bool oldAlgorithms = false;

  friend bool operator==(const SftpSettings&, const SftpSettings&) = default;
};

/// Reads "host", "host:port" or "[ipv6]:port", and "Key=Value" separated by commas, where a value with commas
/// or outer blanks stands in double quotes (two of them within are one). `userOfComputer` is taken where no
/// User is named. Fails with error::kInvalidParameter and a text that names the key, the value or the missing
/// host; a Password is refused with the text that one will be asked for.
[[nodiscard]] SftpSettings ReadSftpSettings(const QString& machine, const QString& option,
                                            const QString& userOfComputer);

}  // namespace trevane

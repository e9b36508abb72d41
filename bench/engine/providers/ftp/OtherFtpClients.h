#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace trevane::bench {

class FtpLine;

/// Clients that do the same beside this program. Seconds without those for starting and connecting; nothing
/// where the client is missing or has failed.
class OtherFtpClients final {
 public:
  explicit OtherFtpClients(FtpLine& line) : line_(line) {}

  [[nodiscard]] std::optional<double> Put(quint16 port, const QString& file, const QString& name) const;
  [[nodiscard]] std::optional<double> Get(quint16 port, const QString& name, const QString& file) const;
  /// lftp with one connection, with commands of its own.
  [[nodiscard]] std::optional<double> Lftp(quint16 port, const QString& commands) const;

 private:
  [[nodiscard]] QStringList CurlArguments(quint16 port, const QString& name) const;
  [[nodiscard]] std::optional<double> Curl(quint16 port, const QString& name, const QStringList& more) const;
  [[nodiscard]] std::optional<double> RunLftp(quint16 port, const QString& commands) const;

  FtpLine& line_;
};

}  // namespace trevane::bench

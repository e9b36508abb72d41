#pragma once

#include <QString>

#include <optional>

namespace trevane::bench {

class FarServers;

/// Clients that do the same beside this program. Seconds without those for connecting; nothing where the
/// client is missing or has failed.
class OtherClients final {
 public:
  explicit OtherClients(const FarServers& servers);

  /// OpenSSH's, with commands of its own ("put -r a b").
  [[nodiscard]] std::optional<double> Sftp(quint16 port, const QString& commands) const;
  /// With four connections, where `commands` ask for them.
  [[nodiscard]] std::optional<double> Lftp(quint16 port, const QString& commands) const;

 private:
  [[nodiscard]] std::optional<double> RunSftp(quint16 port, const QString& commands) const;
  [[nodiscard]] std::optional<double> RunLftp(quint16 port, const QString& commands) const;

  const FarServers& servers_;
  QString lftp_;
};

}  // namespace trevane::bench

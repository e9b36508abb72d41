#pragma once

#include "engine/providers/ftp/FtpDialogue.h"

#include <QString>
#include <QStringList>

#include <memory>

namespace trevane {

/// Connects to one server, also again after a line was lost. One thread's alone.
class FtpConnector {
 public:
  FtpConnector() = default;
  virtual ~FtpConnector() = default;
  FtpConnector(const FtpConnector&) = delete;
  FtpConnector& operator=(const FtpConnector&) = delete;

  /// A new dialogue, logged on. May ask the user (a password, a certificate). A server that is busy with
  /// others is tried again for some seconds. Fails with a RunTimeError whose text gives the reason and the
  /// server's words; error::kCancelled where the user cancelled.
  [[nodiscard]] virtual std::unique_ptr<FtpDialogue> Connect() = 0;

  /// As Connect, to restore what a cancelled call has changed: the cancel does not end it, and nobody is
  /// asked. Only where ConnectsWithoutQuestion. The default connects as always.
  [[nodiscard]] virtual std::unique_ptr<FtpDialogue> ConnectToPutBack() { return Connect(); }

  /// Connecting once more surely asks the user nothing: an idle line may be closed. Else it is kept alive.
  [[nodiscard]] virtual bool ConnectsWithoutQuestion() const = 0;

  /// Tells the same server from all others: host, port and user, and with TLS the fingerprint of its
  /// certificate. After Connect.
  [[nodiscard]] virtual QString ServerKey() const = 0;
  /// What people want to know of the connection, a line each. After Connect.
  [[nodiscard]] virtual QStringList Details() const = 0;
  /// As FileSystemCapabilities::notice. After Connect.
  [[nodiscard]] virtual QString Notice() const = 0;
};

}  // namespace trevane

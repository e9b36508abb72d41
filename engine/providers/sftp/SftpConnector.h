#pragma once

#include "engine/providers/sftp/SftpChannel.h"

#include <QString>
#include <QStringList>

#include <memory>

namespace trevane {

/// Connects to one server, also again after an idle line was closed. One thread's alone.
class SftpConnector {
 public:
  SftpConnector() = default;
  virtual ~SftpConnector() = default;
  SftpConnector(const SftpConnector&) = delete;
  SftpConnector& operator=(const SftpConnector&) = delete;

  /// A new channel, on which nothing was sent yet. May ask the user. Fails with a RunTimeError whose text
  /// gives the reason; error::kCancelled where the user cancelled.
  [[nodiscard]] virtual std::unique_ptr<SftpChannel> Connect() = 0;

  /// Connecting once more surely asks the user nothing: an idle line may be closed. Else it is kept alive.
  [[nodiscard]] virtual bool ConnectsWithoutQuestion() const = 0;

  /// Tells the same server from all others: the text of its host key. After Connect.
  [[nodiscard]] virtual QString ServerKey() const = 0;
  /// What people want to know of the connection, a line each. After Connect.
  [[nodiscard]] virtual QStringList Details() const = 0;
  /// As FileSystemCapabilities::notice. After Connect.
  [[nodiscard]] virtual QString Notice() const = 0;
};

}  // namespace trevane

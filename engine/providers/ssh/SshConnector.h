#pragma once

#include "engine/providers/network/SecretMemory.h"
#include "engine/providers/sftp/SftpConnector.h"
#include "engine/providers/sftp/SftpSettings.h"
#include "engine/providers/ssh/SshPlace.h"
#include "engine/providers/ssh/SshSession.h"

#include <QString>
#include <QStringList>

#include <memory>

namespace trevane {

class CallControl;

/// Connects to the SFTP server of a controller over SSH.
class SshConnector final : public SftpConnector {
 public:
  /// `secrets` and `control` may be null: nothing is remembered, and nobody is asked.
  SshConnector(SftpSettings settings, SshPlace place, std::shared_ptr<SecretMemory> secrets,
               std::shared_ptr<CallControl> control);
  ~SshConnector() override;

  [[nodiscard]] std::unique_ptr<SftpChannel> Connect() override;
  [[nodiscard]] bool ConnectsWithoutQuestion() const override { return !needsTheUser_; }
  [[nodiscard]] QString ServerKey() const override { return serverKey_; }
  [[nodiscard]] QStringList Details() const override { return details_; }
  [[nodiscard]] QString Notice() const override { return notice_; }

 private:
  void CheckHostKey(SshSession& session, const class KnownHosts& known);
  void LogOnTo(SshSession& session);
  void Describe(SshSession& session);

  const SftpSettings settings_;
  const SshPlace place_;
  const std::shared_ptr<SecretMemory> secrets_;
  const std::shared_ptr<CallControl> control_;
  bool needsTheUser_ = true;
  QString serverKey_;
  /// Why the accepted host key could not be stored.
  QString keyNote_;
  QStringList details_;
  QString notice_;
};

}  // namespace trevane

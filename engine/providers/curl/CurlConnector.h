#pragma once

#include "engine/providers/curl/BusyServer.h"
#include "engine/providers/curl/FtpPlace.h"
#include "engine/providers/curl/OpenDialogue.h"
#include "engine/providers/ftp/FtpConnector.h"
#include "engine/providers/ftp/FtpSettings.h"
#include "engine/providers/network/SecretMemory.h"

#include <QString>
#include <QStringList>

#include <memory>

namespace trevane {

class CallControl;
class PutBackControl;
class SecretDesk;

/// Connects to the FTP server of a controller: asks for its password, judges its certificate, and waits a
/// little where it is busy.
class CurlConnector final : public FtpConnector {
 public:
  /// `secrets` and `control` may be null: nothing is remembered, and nobody is asked.
  CurlConnector(FtpSettings settings, FtpPlace place, std::shared_ptr<SecretMemory> secrets,
                std::shared_ptr<CallControl> control, DialogueOpener open = OpenCurlDialogue,
                busyserver::Patience patience = {});

  [[nodiscard]] std::unique_ptr<FtpDialogue> Connect() override;
  [[nodiscard]] std::unique_ptr<FtpDialogue> ConnectToPutBack() override;
  /// What was typed once is remembered as long as the controller is connected.
  [[nodiscard]] bool ConnectsWithoutQuestion() const override { return !needsTheUser_; }
  [[nodiscard]] QString ServerKey() const override { return serverKey_; }
  [[nodiscard]] QStringList Details() const override { return details_; }
  /// Always empty: a warning that stands there for most controllers would warn of nothing. The question for
  /// the password tells that it is sent readable, and the details that nothing is encrypted.
  [[nodiscard]] QString Notice() const override { return {}; }

 private:
  [[nodiscard]] bool IsEncrypted() const { return settings_.tls != FtpSettings::Tls::Off; }
  /// The server for people: "cell4:21".
  [[nodiscard]] QString Name() const;
  /// Whose password it is, for this host, port and user; what is typed over TLS is never sent without.
  [[nodiscard]] QString Account() const;

  [[nodiscard]] OpenDialogue LogOnAsAnonymous();
  [[nodiscard]] OpenDialogue LogOnAsUser();
  [[nodiscard]] OpenDialogue TryPassword(SecretDesk& desk, const Secret& password);
  /// Only to a server whose certificate is trusted.
  [[nodiscard]] OpenDialogue OpenTrusted(FtpLogOn logOn);
  [[nodiscard]] OpenDialogue OpenWhenFree(const FtpLogOn& logOn);
  void Describe(const OpenDialogue& open);

  const FtpSettings settings_;
  const FtpPlace place_;
  const std::shared_ptr<SecretMemory> secrets_;
  /// Null where nobody waits.
  const std::shared_ptr<PutBackControl> control_;
  const DialogueOpener open_;
  const busyserver::Patience patience_;
  bool needsTheUser_ = true;
  QString serverKey_ = {};
  /// Why the accepted certificate could not be stored.
  QString certificateNote_ = {};
  QStringList details_ = {};
};

}  // namespace trevane

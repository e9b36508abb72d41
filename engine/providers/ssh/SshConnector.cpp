#include "engine/providers/ssh/SshConnector.h"

#include "engine/files/ProviderError.h"
#include "engine/providers/network/SecretDesk.h"
#include "engine/providers/ssh/HostKeyCheck.h"
#include "engine/providers/ssh/HostKeyText.h"
#include "engine/providers/ssh/KnownHosts.h"
#include "engine/providers/ssh/LogOn.h"
#include "engine/providers/ssh/SshAlgorithms.h"
#include "engine/providers/ssh/SshChannel.h"
#include "engine/remote/CallControl.h"

#include <utility>

namespace trevane {
namespace {

/// A library that is linked into the program does not start itself on every system.
void StartLibrary() {
  static const int started = ssh_init();
  if (started != SSH_OK) {
    throw RunTimeError(providererror::kGeneralFailure, QStringLiteral("The SSH library cannot be started"));
  }
}

}  // namespace

SshConnector::SshConnector(SftpSettings settings, SshPlace place, std::shared_ptr<SecretMemory> secrets,
                           std::shared_ptr<CallControl> control)
    : settings_(std::move(settings)),
      place_(std::move(place)),
      secrets_(std::move(secrets)),
      control_(std::move(control)) {}

SshConnector::~SshConnector() = default;

std::unique_ptr<SftpChannel> SshConnector::Connect() {
  StartLibrary();
  const KnownHosts known(place_, settings_.host, settings_.port);
  auto session = std::make_unique<SshSession>(settings_, control_);
  session->Connect(known.Types());
  CheckHostKey(*session, known);
  LogOnTo(*session);
  Describe(*session);
  return std::make_unique<SshChannel>(std::move(session));
}

void SshConnector::CheckHostKey(SshSession& session, const KnownHosts& known) {
  const SshKey key = session.HostKey();
  const QString text = QString::fromLatin1(KeyTypeOf(key.get()) + ' ' + Base64Of(key.get()));
  // One that was accepted and could not be stored is not asked for again.
  const bool wasAccepted = text == serverKey_ && !keyNote_.isEmpty() &&
                           known.Judge(key.get()).verdict == KnownHosts::Verdict::Unknown;
  if (!wasAccepted) {
    keyNote_ = HostKeyCheck(known, session.Name(), control_.get()).Require(key.get());
  }
  serverKey_ = text;
}

void SshConnector::LogOnTo(SshSession& session) {
  SecretDesk desk(QStringLiteral("Log on to %1").arg(session.Name()), secrets_, place_.store, control_.get());
  LogOn(session, place_, desk).Run();
  desk.StoreRemembered();
  needsTheUser_ = desk.NeededTheUser();
}

void SshConnector::Describe(SshSession& session) {
  const auto text = [](const char* from) { return QString::fromUtf8(from); };
  const SshKey key = session.HostKey();
  const ssh_session raw = session.Raw();
  details_ = {QStringLiteral("Server: %1 (%2)").arg(session.Name(), session.Line().Address()),
              QStringLiteral("Protocol: SFTP over SSH, %1").arg(text(ssh_get_serverbanner(raw))),
              QStringLiteral("User: %1").arg(settings_.user),
              QStringLiteral("Cipher: %1, key exchange %2")
                  .arg(text(ssh_get_cipher_out(raw)), text(ssh_get_kex_algo(raw))),
              QStringLiteral("Host key: %1 %2")
                  .arg(QString::fromLatin1(KeyTypeOf(key.get())), FingerprintOf(key.get()))};
  if (!keyNote_.isEmpty()) {
    details_.append(keyNote_);
  }
  notice_.clear();
  const QStringList old = sshalgorithms::OldInUse(raw);
  if (!old.isEmpty()) {
    notice_ = QStringLiteral("The connection to %1 uses old, less safe algorithms: %2")
                  .arg(session.Name(), old.join(QStringLiteral(", ")));
  } else if (settings_.oldAlgorithms) {
    notice_ =
        QStringLiteral("Old, less safe algorithms are allowed for the connection to %1").arg(session.Name());
  }
}

}  // namespace trevane

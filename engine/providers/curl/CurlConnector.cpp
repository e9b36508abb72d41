#include "engine/providers/curl/CurlConnector.h"

#include "base/ForeignText.h"
#include "engine/files/ProviderError.h"
#include "engine/providers/certificates/CertificateCheck.h"
#include "engine/providers/certificates/CertificateText.h"
#include "engine/providers/certificates/TrustCheck.h"
#include "engine/providers/certificates/TrustedCertificates.h"
#include "engine/providers/curl/PutBackControl.h"
#include "engine/providers/network/SecretDesk.h"

#include <QScopeGuard>
#include <QStringDecoder>

#include <optional>
#include <utility>

namespace trevane {
namespace {

/// Passwords that a user may type for one log-on.
constexpr int kMostTyped = 3;
constexpr qint32 kLineLost = error::kWin32Error + 64;
constexpr qsizetype kLongestGreeting = 200;

/// Servers greet in any encoding.
QString WordsOf(const QByteArray& bytes) {
  QStringDecoder decoder(QStringConverter::Utf8, QStringConverter::Flag::Stateless);
  const QString text = decoder(bytes);
  return ForeignLine(decoder.hasError() ? QString::fromLatin1(bytes) : text, kLongestGreeting);
}

}  // namespace

CurlConnector::CurlConnector(FtpSettings settings, FtpPlace place, std::shared_ptr<SecretMemory> secrets,
                             std::shared_ptr<CallControl> control, DialogueOpener open,
                             busyserver::Patience patience)
    : settings_(std::move(settings)),
      place_(std::move(place)),
      secrets_(std::move(secrets)),
      control_(control ? std::make_shared<PutBackControl>(std::move(control)) : nullptr),
      open_(std::move(open)),
      patience_(patience) {}

QString CurlConnector::Name() const {
  return QStringLiteral("%1:%2")
      .arg(settings_.host.contains(u':') ? u'[' + settings_.host + u']' : settings_.host)
      .arg(settings_.port);
}

QString CurlConnector::Account() const {
  return QStringLiteral("%1 password for %2@%3")
      .arg(IsEncrypted() ? QStringLiteral("FTPS") : QStringLiteral("FTP"), settings_.user, Name().toLower());
}

std::unique_ptr<FtpDialogue> CurlConnector::Connect() {
  if (IsEncrypted() && !settings_.caFile.isEmpty()) {
    // Nobody types a password for a connection that cannot be made.
    static_cast<void>(CertificateCheck(settings_.host, settings_.caFile, {}));
  }
  OpenDialogue open = settings_.user.isEmpty() ? LogOnAsAnonymous() : LogOnAsUser();
  Describe(open);
  return std::move(open.dialogue);
}

std::unique_ptr<FtpDialogue> CurlConnector::ConnectToPutBack() {
  if (!control_) {
    return Connect();
  }
  control_->Hide();
  const auto show = qScopeGuard([this] { control_->Show(); });
  return Connect();
}

OpenDialogue CurlConnector::LogOnAsAnonymous() {
  try {
    // What such servers expect in place of a password.
    OpenDialogue open = OpenTrusted({QStringLiteral("anonymous"), Secret(QStringLiteral("anonymous@"))});
    needsTheUser_ = false;
    return open;
  } catch (const RunTimeError& failure) {
    if (failure.Number() != error::kLogonFailure) {
      throw;
    }
    throw RunTimeError(error::kLogonFailure,
                       QStringLiteral("%1\nThe log-on was anonymous, since the option User is missing")
                           .arg(failure.Description()));
  }
}

OpenDialogue CurlConnector::LogOnAsUser() {
  SecretDesk desk(QStringLiteral("Log on to %1").arg(Name()), secrets_, place_.store, control_.get());
  SecretDesk::Request request;
  request.account = Account();
  request.prompt = QStringLiteral("Password of %1 on %2").arg(settings_.user, Name());
  if (!IsEncrypted()) {
    request.informativeText =
        QStringLiteral("The connection is not encrypted: the password can be read on its way.");
  }
  for (;;) {
    const std::optional<Secret> password = desk.Get(request);
    if (!password) {
      Fail(error::kLogonFailure,
           QStringLiteral("The password of %1 is not known, and there is nobody to ask").arg(settings_.user),
           Name());
    }
    try {
      OpenDialogue open = TryPassword(desk, *password);
      // What is remembered opens the next line, too.
      needsTheUser_ = desk.NeededTheUser() && !secrets_;
      return open;
    } catch (const RunTimeError& failure) {
      if (failure.Number() != error::kLogonFailure || desk.Typed() >= kMostTyped) {
        throw;
      }
      if (desk.Typed() > 0) {
        request.informativeText.clear();
      }
      request.informativeText =
          QStringList{failure.Description(), request.informativeText}.join(u'\n').trimmed();
    }
  }
}

OpenDialogue CurlConnector::TryPassword(SecretDesk& desk, const Secret& password) {
  const QString account = Account();
  try {
    OpenDialogue open = OpenTrusted({settings_.user, password});
    desk.Accept(account);
    desk.StoreRemembered();
    return open;
  } catch (const RunTimeError& failure) {
    if (failure.Number() == error::kLogonFailure) {
      desk.Refuse(account);
    } else if (failure.Number() == kLineLost) {
      desk.LeftUnanswered(account);
    }
    throw;
  }
}

OpenDialogue CurlConnector::OpenTrusted(FtpLogOn logOn) {
  if (!IsEncrypted()) {
    return OpenWhenFree(logOn);
  }
  TrustedCertificates trusted(place_.trust, settings_.host, settings_.port);
  logOn.trustedFingerprint = trusted.Fingerprints().value(0);
  for (;;) {
    ShownCertificate shown;
    try {
      return OpenWhenFree(logOn);
    } catch (const CertificateRefused& refused) {
      shown = refused.Shown();
      if (shown.fingerprint == logOn.trustedFingerprint) {
        throw;
      }
    }
    // Of several that are trusted it may show another one.
    const QString note = TrustCheck(trusted, Name(), control_.get()).Require(shown);
    certificateNote_ = note.isEmpty() ? certificateNote_ : note;
    logOn.trustedFingerprint = shown.fingerprint;
  }
}

OpenDialogue CurlConnector::OpenWhenFree(const FtpLogOn& logOn) {
  OpenDialogue open;
  busyserver::ConnectWhenFree([&] { open = open_(settings_, logOn, control_); }, patience_, control_.get());
  return open;
}

void CurlConnector::Describe(const OpenDialogue& open) {
  const ShownCertificate& certificate = open.certificate;
  const QString user = settings_.user.isEmpty() ? QStringLiteral("anonymous") : settings_.user;
  const bool hasAddress = !open.address.isEmpty();
  details_ = {hasAddress ? QStringLiteral("Server: %1 (%2)").arg(Name(), open.address)
                         : QStringLiteral("Server: %1").arg(Name()),
              IsEncrypted() ? QStringLiteral("Protocol: FTP over TLS") : QStringLiteral("Protocol: FTP")};
  const QString greeting = WordsOf(open.greeting);
  if (!greeting.isEmpty()) {
    details_.append(QStringLiteral("Greeting: %1").arg(greeting));
  }
  details_.append(QStringLiteral("User: %1").arg(user));
  details_.append(QStringLiteral("Encryption: %1").arg(IsEncrypted() ? open.tls : QStringLiteral("none")));
  if (IsEncrypted()) {
    details_.append(
        QStringLiteral("Certificate: %1").arg(certificatetext::FingerprintText(certificate.fingerprint)));
    if (!certificate.reason.isEmpty()) {
      details_.append(QStringLiteral("Trusted for this controller alone: %1")
                          .arg(ForeignLine(certificate.reason, kLongestGreeting)));
    }
  }
  if (!certificateNote_.isEmpty()) {
    details_.append(certificateNote_);
  }
  serverKey_ = QStringLiteral("%1 %2 %3")
                   .arg(Name().toLower(),
                        IsEncrypted() ? certificatetext::FingerprintText(certificate.fingerprint)
                                      : QStringLiteral("plain"),
                        user);
}

}  // namespace trevane

#include "engine/providers/certificates/TrustCheck.h"

#include "base/ForeignText.h"
#include "base/RunTimeError.h"
#include "engine/files/ProviderError.h"
#include "engine/providers/certificates/CertificateText.h"
#include "engine/remote/CallControl.h"
#include "prompts/UserPrompts.h"

#include <QStringList>

#include <optional>

namespace trevane {
namespace {

/// The other side could not be proved to be the one that is meant.
constexpr qint32 kNotProved = error::kWin32Error + 1397;
constexpr qsizetype kLongestName = 200;

QString DayText(const QDateTime& time) {
  return time.isValid() ? time.toLocalTime().date().toString(Qt::ISODate) : QStringLiteral("(unknown)");
}

QString NameText(const QString& name) {
  const QString line = ForeignLine(name, kLongestName);
  return line.isEmpty() ? QStringLiteral("(none)") : line;
}

QString PlaceText(const TrustedCertificates::Line& line) {
  return line.file.isEmpty() ? QStringLiteral("in this run of the program")
                             : QStringLiteral("line %1 of %2").arg(line.number).arg(line.file);
}

}  // namespace

QString TrustCheck::Require(const ShownCertificate& shown) {
  RequireUnchanged(shown);
  if (trusted_.Judge(shown.fingerprint).verdict == TrustedCertificates::Verdict::Known) {
    return {};
  }
  if (!IsAccepted(shown)) {
    throw RunTimeError(error::kCancelled,
                       QStringLiteral("Cancelled: the certificate of %1 was not accepted").arg(host_));
  }
  const std::optional<QString> failure = trusted_.Add(shown, QDate::currentDate());
  // While the question stood there another copy of the program may have asked, too.
  RequireUnchanged(shown);
  if (!failure) {
    return {};
  }
  const Message message{
      .text = QStringLiteral("The certificate could not be stored."),
      .icon = PromptIcon::Exclamation,
      .title = QStringLiteral("Unknown certificate"),
      .informativeText = QStringLiteral("It is trusted until the program ends.\n%1").arg(*failure)};
  static_cast<void>(control_->AskUser([&message](UserPrompts& prompts) { prompts.ShowMessage(message); }));
  return QStringLiteral("The certificate is trusted until the program ends. It could not be stored: %1")
      .arg(*failure);
}

void TrustCheck::RequireUnchanged(const ShownCertificate& shown) const {
  const TrustedCertificates::Judgement judgement = trusted_.Judge(shown.fingerprint);
  if (judgement.verdict != TrustedCertificates::Verdict::Changed) {
    return;
  }
  const QString remedy =
      judgement.line.file.isEmpty()
          ? QStringLiteral("If the controller was given a new certificate, start the program anew.")
          : QStringLiteral("If the controller was given a new certificate, remove the old line there.");
  throw RunTimeError(
      kNotProved,
      QStringLiteral("The certificate of %1 has changed. Another machine may answer in its place, so nothing "
                     "was sent to it.\nTrusted (%2):\n%3\nShown now:\n%4\n%5")
          .arg(host_, PlaceText(judgement.line), certificatetext::FingerprintLines(judgement.oldFingerprint),
               certificatetext::FingerprintLines(shown.fingerprint), remedy));
}

bool TrustCheck::IsAccepted(const ShownCertificate& shown) const {
  ChoiceQuestion question;
  question.title = QStringLiteral("Unknown certificate");
  question.prompt = QStringLiteral("The certificate of %1 is not known. Trust it, and connect?").arg(host_);
  const QString subject = NameText(shown.subject);
  const QString issuer = NameText(shown.issuer);
  // No more lines than the window shows without a scroll bar.
  const QStringList lines{
      QStringLiteral("Not trusted by itself: %1").arg(NameText(shown.reason)),
      subject == issuer ? QStringLiteral("Subject and issuer: %1").arg(subject)
                        : QStringLiteral("Subject: %1\nIssuer: %2").arg(subject, issuer),
      QStringLiteral("Valid: %1 to %2").arg(DayText(shown.validFrom), DayText(shown.validUntil)),
      QStringLiteral("Fingerprint (SHA-256):\n%1").arg(certificatetext::FingerprintLines(shown.fingerprint)),
      QString(),
      QStringLiteral("Compare the fingerprint with that of the controller. If it is another one, another "
                     "machine has answered."),
  };
  question.informativeText = lines.join(u'\n');
  question.icon = PromptIcon::Exclamation;
  question.captions = QStringList{QStringLiteral("&Connect"), QStringLiteral("Cancel")};
  question.defaultButton = 1;
  question.cancelButton = 1;
  question.harmlessButton = 1;
  int answer = 1;
  const bool wasAsked = control_ != nullptr && control_->AskUser([&question, &answer](UserPrompts& prompts) {
    answer = prompts.Choose(question);
  });
  if (!wasAsked && (control_ == nullptr || !control_->IsCancelled())) {
    Fail(kNotProved,
         QStringLiteral("The certificate of the controller is not trusted (%1), and there is nobody to ask: "
                        "%2")
             .arg(NameText(shown.reason), certificatetext::FingerprintText(shown.fingerprint)),
         host_);
  }
  return wasAsked && answer == 0;
}

}  // namespace trevane

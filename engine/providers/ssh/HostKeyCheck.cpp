#include "engine/providers/ssh/HostKeyCheck.h"

#include "engine/files/ProviderError.h"
#include "engine/providers/ssh/HostKeyText.h"
#include "engine/providers/ssh/KnownHosts.h"
#include "engine/remote/CallControl.h"
#include "prompts/UserPrompts.h"

#include <optional>

namespace trevane {
namespace {

/// The other side could not be proved to be the one that is meant.
constexpr qint32 kNotProved = error::kWin32Error + 1397;

QString LineText(const KnownHosts::Line& line) {
  return QStringLiteral("line %1 of %2").arg(line.number).arg(line.file);
}

}  // namespace

QString HostKeyCheck::Require(ssh_key key) const {
  const KnownHosts::Judgement judgement = known_.Judge(key);
  const QString type = QString::fromLatin1(KeyTypeOf(key));
  switch (judgement.verdict) {
    case KnownHosts::Verdict::Known:
      return {};
    case KnownHosts::Verdict::Revoked:
      Fail(kNotProved,
           QStringLiteral("The host key of the controller has been revoked (%1): %2 %3")
               .arg(LineText(judgement.line), type, judgement.oldFingerprint),
           host_);
    case KnownHosts::Verdict::Changed:
      Fail(kNotProved,
           QStringLiteral(
               "The host key of the controller has changed. Another machine may answer in its place, "
               "so nothing was sent to it.\nKnown (%1): %2 %3\nShown now: %4 %5\nIf the controller "
               "was given a new key, remove the old line there")
               .arg(LineText(judgement.line), QString::fromLatin1(judgement.oldType),
                    judgement.oldFingerprint, type, FingerprintOf(key)),
           host_);
    case KnownHosts::Verdict::Unknown:
      break;
  }
  if (!IsAccepted(key)) {
    throw RunTimeError(error::kCancelled,
                       QStringLiteral("Cancelled: the host key of %1 was not accepted").arg(host_));
  }
  const std::optional<QString> failure = known_.Add(key);
  return failure ? QStringLiteral("The host key could not be stored: %1").arg(*failure) : QString();
}

bool HostKeyCheck::IsAccepted(ssh_key key) const {
  ChoiceQuestion question;
  question.title = QStringLiteral("Unknown host key");
  question.prompt = QStringLiteral("The host key of %1 is not known. Connect to it?").arg(host_);
  question.informativeText =
      QStringLiteral(
          "Key type: %1\nFingerprint: %2\n\nCompare the fingerprint with that of the controller. If it "
          "is another one, another machine has answered.")
          .arg(QString::fromLatin1(KeyTypeOf(key)), FingerprintOf(key));
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
         QStringLiteral("The host key of the controller is not known, and there is nobody to ask: %1 %2")
             .arg(QString::fromLatin1(KeyTypeOf(key)), FingerprintOf(key)),
         host_);
  }
  return wasAsked && answer == 0;
}

}  // namespace trevane

#include "engine/providers/ssh/LogOn.h"

#include "base/RunTimeError.h"
#include "engine/files/ProviderError.h"
#include "engine/providers/ssh/AgentLogOn.h"
#include "engine/providers/ssh/SshPlace.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace trevane {
namespace {

/// Passwords and answers that a user may type for one log-on, and passphrases for one key.
constexpr int kMostTyped = 3;
/// A server may want several methods, one after the other; it does not want one without end.
constexpr int kMostSteps = 10;
constexpr int kMostQuestionRounds = 20;
constexpr qsizetype kLongestText = 1000;

/// A server's text for people: what could deceive them in a window is left out.
QString Shown(const char* text) {
  QString shown;
  for (const QChar c : QString::fromUtf8(text).left(kLongestText)) {
    if (c == u'\n' || (c.isPrint() && c.category() != QChar::Other_Format)) {
      shown.append(c);
    }
  }
  return shown.trimmed();
}

QString MethodsText(int methods) {
  QStringList names;
  const auto add = [methods, &names](unsigned int method, const char16_t* name) {
    if ((static_cast<unsigned int>(methods) & method) != 0) {
      names.append(QString::fromUtf16(name));
    }
  };
  add(SSH_AUTH_METHOD_PUBLICKEY, u"publickey");
  add(SSH_AUTH_METHOD_INTERACTIVE, u"keyboard-interactive");
  add(SSH_AUTH_METHOD_PASSWORD, u"password");
  add(SSH_AUTH_METHOD_HOSTBASED, u"hostbased");
  add(SSH_AUTH_METHOD_GSSAPI_MIC, u"gssapi-with-mic");
  return names.isEmpty() ? QStringLiteral("nothing that this program knows")
                         : names.join(QStringLiteral(", "));
}

bool Offers(ssh_session session, unsigned int method) {
  return (static_cast<unsigned int>(ssh_userauth_list(session, nullptr)) & method) != 0;
}

}  // namespace

LogOn::LogOn(SshSession& session, const SshPlace& place, SecretDesk& secrets)
    : session_(session), place_(place), secrets_(secrets) {}

void LogOn::Run() {
  Outcome outcome = Attempt([this] { return ssh_userauth_none(session_.Raw(), nullptr); });
  for (int step = 0; outcome != Outcome::Done; ++step) {
    if (step == kMostSteps) {
      ThrowRefused();
    }
    outcome = TryMethods();
    if (outcome == Outcome::Refused) {
      ThrowRefused();
    }
  }
}

LogOn::Outcome LogOn::TryMethods() {
  const std::pair<unsigned int, Outcome (LogOn::*)()> methods[] = {
      {SSH_AUTH_METHOD_PUBLICKEY, &LogOn::TryKeys},
      {SSH_AUTH_METHOD_INTERACTIVE, &LogOn::TryQuestions},
      {SSH_AUTH_METHOD_PASSWORD, &LogOn::TryPassword}};
  for (const auto& [method, tryIt] : methods) {
    if (!Offers(session_.Raw(), method)) {
      continue;
    }
    const Outcome outcome = (this->*tryIt)();
    if (outcome != Outcome::Refused) {
      return outcome;
    }
  }
  return Outcome::Refused;
}

template <class Step>
LogOn::Outcome LogOn::Attempt(const Step& step) {
  return OutcomeOf(session_.Run(SSH_AUTH_AGAIN, step));
}

LogOn::Outcome LogOn::OutcomeOf(int answer) const {
  if (answer == SSH_AUTH_SUCCESS) {
    return Outcome::Done;
  }
  if (ssh_is_connected(session_.Raw()) == 0) {
    ThrowRefused();
  }
  return answer == SSH_AUTH_PARTIAL ? Outcome::Partly : Outcome::Refused;
}

LogOn::Outcome LogOn::TryKeys() {
  std::vector<KeyFile> locked;
  Outcome outcome = TryOpenKeys(locked);
  if (outcome == Outcome::Refused) {
    outcome = TryAgent();
  }
  for (const KeyFile& file : locked) {
    if (outcome != Outcome::Refused) {
      break;
    }
    outcome = TryLocked(file);
  }
  return outcome;
}

LogOn::Outcome LogOn::TryOpenKeys(std::vector<KeyFile>& locked) {
  const QString& named = session_.Settings().keyFile;
  const QStringList paths = named.isEmpty() ? place_.keyFiles : QStringList{named};
  for (const QString& path : paths) {
    KeyFile file(path);
    if (!file.WhyNot().isEmpty()) {
      if (!named.isEmpty()) {
        Fail(error::kInvalidParameter,
             QStringLiteral("The key file %1 cannot be used: %2").arg(path, file.WhyNot()), session_.Name());
      }
      continue;
    }
    Tried(QStringLiteral("the key %1").arg(path));
    if (file.PublicKey() == nullptr) {
      // The server cannot be asked whether it takes this key: only for one that was named is that a reason to
      // ask the user.
      if (!named.isEmpty()) {
        locked.push_back(std::move(file));
      }
      continue;
    }
    if (!file.IsLocked()) {
      // Asking first would cost a round trip more, and say no less.
      const Outcome outcome = TryKey(file.PrivateKey());
      if (outcome != Outcome::Refused) {
        return outcome;
      }
    } else if (Accepts(file.PublicKey())) {
      locked.push_back(std::move(file));
    }
  }
  return Outcome::Refused;
}

bool LogOn::Accepts(ssh_key key) {
  return Attempt([this, key] { return ssh_userauth_try_publickey(session_.Raw(), nullptr, key); }) !=
         Outcome::Refused;
}

LogOn::Outcome LogOn::TryKey(ssh_key key) {
  return Attempt([this, key] { return ssh_userauth_publickey(session_.Raw(), nullptr, key); });
}

LogOn::Outcome LogOn::TryAgent() {
  if (place_.agent.isEmpty()) {
    return Outcome::Refused;
  }
  const int answer = LogOnWithAgent(session_, place_.agent);
  Tried(QStringLiteral("the keys of the agent"));
  return OutcomeOf(answer);
}

std::optional<Secret> LogOn::Ask(const SecretDesk::Request& request) {
  while (session_.Pump()) {
  }
  if (ssh_is_connected(session_.Raw()) == 0) {
    // Nobody is asked in vain.
    ThrowRefused();
  }
  return secrets_.Get(request);
}

LogOn::Outcome LogOn::TryLocked(const KeyFile& file) {
  SecretDesk::Request request;
  request.account = Account(QStringLiteral("passphrase of ") + file.Path());
  request.prompt = QStringLiteral("Passphrase of the key %1").arg(file.Path());
  for (int typed = secrets_.Typed(); secrets_.Typed() - typed < kMostTyped;) {
    const std::optional<Secret> passphrase = Ask(request);
    if (!passphrase) {
      return Outcome::Refused;
    }
    const SshKey key = file.Unlock(*passphrase);
    if (key) {
      secrets_.Accept(request.account);
      return TryKey(key.get());
    }
    secrets_.Refuse(request.account);
    request.informativeText = QStringLiteral("The passphrase is wrong.");
  }
  return Outcome::Refused;
}

LogOn::Outcome LogOn::TryPassword() {
  SecretDesk::Request request;
  request.account = Account(QStringLiteral("password"));
  request.prompt = QStringLiteral("Password of %1 on %2").arg(session_.Settings().user, session_.Name());
  request.informativeText = WithServersWords(QString());
  while (secrets_.Typed() < kMostTyped && Offers(session_.Raw(), SSH_AUTH_METHOD_PASSWORD)) {
    Tried(QStringLiteral("a password"));
    const std::optional<Secret> password = Ask(request);
    if (!password) {
      return Outcome::Refused;
    }
    const Outcome outcome =
        Attempt([&] { return ssh_userauth_password(session_.Raw(), nullptr, password->CString()); });
    if (outcome != Outcome::Refused) {
      secrets_.Accept(request.account);
      return outcome;
    }
    secrets_.Refuse(request.account);
    request.informativeText = WithServersWords(QStringLiteral("The log-on was refused."));
  }
  return Outcome::Refused;
}

SecretDesk::Request LogOn::QuestionOf(unsigned int position, bool isAlone, const QString& note) const {
  char echo = 0;
  const QString prompt = Shown(ssh_userauth_kbdint_getprompt(session_.Raw(), position, &echo));
  SecretDesk::Request request;
  request.isHidden = echo == 0;
  // A code that is good for once is never kept; a password is asked for alone, and named so.
  if (isAlone && request.isHidden && prompt.contains(QStringLiteral("passw"), Qt::CaseInsensitive)) {
    request.account = Account(QStringLiteral("password"));
  }
  request.prompt = QStringLiteral("%1 on %2: %3").arg(session_.Settings().user, session_.Name(), prompt);
  QStringList texts{note};
  for (const char* text :
       {ssh_userauth_kbdint_getname(session_.Raw()), ssh_userauth_kbdint_getinstruction(session_.Raw())}) {
    texts.append(Shown(text));
  }
  texts.removeAll(QString());
  request.informativeText = WithServersWords(texts.join(u'\n'));
  return request;
}

bool LogOn::AnswerQuestions(QString& account, const QString& note) {
  const int count = ssh_userauth_kbdint_getnprompts(session_.Raw());
  for (int i = 0; i < count; ++i) {
    const auto position = static_cast<unsigned int>(i);
    const SecretDesk::Request request = QuestionOf(position, count == 1, note);
    const std::optional<Secret> answer = Ask(request);
    if (!answer) {
      return false;
    }
    if (!request.account.isEmpty()) {
      account = request.account;
    }
    ssh_userauth_kbdint_setanswer(session_.Raw(), position, answer->CString());
  }
  return true;
}

LogOn::Outcome LogOn::TryQuestions() {
  QString note;
  while (secrets_.Typed() < kMostTyped && Offers(session_.Raw(), SSH_AUTH_METHOD_INTERACTIVE)) {
    QString account;
    bool wasAsked = false;
    const auto step = [this] { return ssh_userauth_kbdint(session_.Raw(), nullptr, nullptr); };
    int answer = session_.Run(SSH_AUTH_AGAIN, step);
    // After the last question mostly another request comes, with none.
    for (int round = 0; answer == SSH_AUTH_INFO && round < kMostQuestionRounds; ++round) {
      wasAsked = wasAsked || ssh_userauth_kbdint_getnprompts(session_.Raw()) > 0;
      if (!AnswerQuestions(account, note)) {
        return Outcome::Refused;
      }
      answer = session_.Run(SSH_AUTH_AGAIN, step);
    }
    if (wasAsked) {
      Tried(QStringLiteral("answers to the server's questions"));
    }
    const Outcome outcome = OutcomeOf(answer);
    if (outcome != Outcome::Refused) {
      secrets_.Accept(account);
      return outcome;
    }
    secrets_.Refuse(account);
    if (!wasAsked) {
      break;
    }
    note = QStringLiteral("The log-on was refused.");
  }
  return Outcome::Refused;
}

QString LogOn::Account(const QString& purpose) const {
  return QStringLiteral("%1 for %2@%3").arg(purpose, session_.Settings().user, session_.Name());
}

QString LogOn::WithServersWords(const QString& text) const {
  char* const banner = ssh_get_issue_banner(session_.Raw());
  const QString words = banner == nullptr ? QString() : Shown(TakeText(banner).constData());
  QStringList texts{text, words};
  texts.removeAll(QString());
  return texts.join(QStringLiteral("\n\n"));
}

void LogOn::Tried(const QString& what) {
  if (!tried_.contains(what)) {
    tried_.append(what);
  }
}

void LogOn::ThrowRefused() const {
  const QString words = session_.ServersLastWords();
  if (tried_.isEmpty() && ssh_is_connected(session_.Raw()) == 0) {
    Fail(kNoSessionLeft,
         words.isEmpty()
             ? QStringLiteral("The server has closed the connection before the log-on. It may have "
                              "no session left")
             : QStringLiteral("The server has ended the connection before the log-on: \"%1\"").arg(words),
         session_.Name());
  }
  QString text = QStringLiteral("The log-on as %1 has failed. Tried: %2. The server offers: %3")
                     .arg(session_.Settings().user,
                          tried_.isEmpty() ? QStringLiteral("nothing, since there was nothing to try")
                                           : tried_.join(QStringLiteral(", ")),
                          MethodsText(ssh_userauth_list(session_.Raw(), nullptr)));
  if (!words.isEmpty()) {
    text += QStringLiteral(". It has ended the connection: \"%1\"").arg(words);
  } else if (ssh_is_connected(session_.Raw()) == 0) {
    text += QStringLiteral(". It has closed the connection");
  }
  Fail(error::kLogonFailure, text, session_.Name());
}

}  // namespace trevane

#include "engine/providers/ssh/LogOn.h"

#include "base/RunTimeError.h"
#include "engine/files/ProviderError.h"
#include "engine/providers/ssh/AgentLogOn.h"
#include "engine/providers/ssh/SshPlace.h"

#include <QRegularExpression>

#include <optional>
#include <utility>

namespace trevane {
namespace {

/// Passwords that a user may type for one log-on, answers to one question, and passphrases for one key.
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

bool NamesAPassword(const QString& prompt) {
  return prompt.contains(QStringLiteral("passw"), Qt::CaseInsensitive);
}

/// The old one is never an answer to it.
bool AsksForANewOne(const QString& prompt) {
  static const QRegularExpression words(
      QStringLiteral("\\b(new|retype|re-type|re-enter|repeat|confirm|again|change|choose)\\b"),
      QRegularExpression::CaseInsensitiveOption);
  return prompt.contains(words);
}

/// Good for once.
bool AsksForACode(const QString& prompt) {
  static const QRegularExpression words(QStringLiteral("\\b(one[- ]?time|otp|passcode)\\b"),
                                        QRegularExpression::CaseInsensitiveOption);
  return prompt.contains(words);
}

/// Asks for nothing but the user's password, in the words of many servers: "(joe@cell4) Password:".
bool IsPlainPassword(const QString& prompt, const QString& user) {
  static const QRegularExpression around(QStringLiteral("^\\([^)]*\\)\\s*|\\s*:\\s*$"));
  QString plain = prompt;
  plain.remove(around);
  for (const QString& form : {QStringLiteral("password"), QStringLiteral("password for ") + user,
                              user + QStringLiteral("'s password")}) {
    if (plain.compare(form, Qt::CaseInsensitive) == 0) {
      return true;
    }
  }
  return false;
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

LogOn::Outcome LogOn::OutcomeOf(int answer) {
  if (answer == SSH_AUTH_SUCCESS) {
    return Outcome::Done;
  }
  if (ssh_is_connected(session_.Raw()) == 0) {
    ThrowEnded(answer == SSH_AUTH_DENIED);
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
    ThrowEnded(false);
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
    sent_ = request.account;
    const Outcome outcome =
        Attempt([&] { return ssh_userauth_password(session_.Raw(), nullptr, password->CString()); });
    sent_.clear();
    if (outcome != Outcome::Refused) {
      secrets_.Accept(request.account);
      return outcome;
    }
    secrets_.Refuse(request.account);
    request.informativeText = WithServersWords(QStringLiteral("The log-on was refused."));
  }
  return Outcome::Refused;
}

QString LogOn::AccountOfQuestion(const QString& prompt) const {
  if (!NamesAPassword(prompt) || AsksForANewOne(prompt) || AsksForACode(prompt)) {
    return {};
  }
  // Under any other words something else may be meant: what was kept for these answers these alone.
  return Account(IsPlainPassword(prompt, session_.Settings().user)
                     ? QStringLiteral("password")
                     : QStringLiteral("answer to \"%1\"").arg(prompt));
}

SecretDesk::Request LogOn::QuestionOf(unsigned int position, Exchange& exchange) const {
  char echo = 0;
  const QString prompt = Shown(ssh_userauth_kbdint_getprompt(session_.Raw(), position, &echo));
  exchange.hasNewPassword =
      exchange.hasNewPassword || (echo == 0 && NamesAPassword(prompt) && AsksForANewOne(prompt));
  SecretDesk::Request request;
  request.isHidden = echo == 0;
  // A code that is good for once is never kept; a password is asked for alone, and named so.
  if (request.isHidden && ssh_userauth_kbdint_getnprompts(session_.Raw()) == 1) {
    request.account = AccountOfQuestion(prompt);
  }
  request.prompt = QStringLiteral("%1 on %2: %3").arg(session_.Settings().user, session_.Name(), prompt);
  QStringList texts{exchange.note};
  for (const char* text :
       {ssh_userauth_kbdint_getname(session_.Raw()), ssh_userauth_kbdint_getinstruction(session_.Raw())}) {
    texts.append(Shown(text));
  }
  texts.removeAll(QString());
  request.informativeText = WithServersWords(texts.join(u'\n'));
  return request;
}

bool LogOn::AnswerQuestion(unsigned int position, SecretDesk::Request& question, Exchange& exchange) {
  if (typedFor_.value(question.prompt) == kMostTyped) {
    return false;
  }
  const int typed = secrets_.Typed();
  const std::optional<Secret> answer = Ask(question);
  if (!answer) {
    return false;
  }
  if (secrets_.Typed() > typed) {
    ++typedFor_[question.prompt];
  }
  if (!question.account.isEmpty()) {
    exchange.account = question.account;
    sent_ = question.account;
  }
  ssh_userauth_kbdint_setanswer(session_.Raw(), position, answer->CString());
  return true;
}

bool LogOn::AnswerQuestions(Exchange& exchange) {
  const int count = ssh_userauth_kbdint_getnprompts(session_.Raw());
  for (int i = 0; i < count; ++i) {
    const auto position = static_cast<unsigned int>(i);
    SecretDesk::Request question = QuestionOf(position, exchange);
    if (!exchange.account.isEmpty() && question.account == exchange.account) {
      // The answer was wrong, or is good for no second time.
      secrets_.Refuse(exchange.account);
    } else if (!exchange.account.isEmpty()) {
      // A second password of the same exchange is another one.
      question.account.clear();
    }
    if (!AnswerQuestion(position, question, exchange)) {
      return false;
    }
  }
  return true;
}

std::optional<int> LogOn::AnswerRounds(Exchange& exchange) {
  const auto step = [this] { return ssh_userauth_kbdint(session_.Raw(), nullptr, nullptr); };
  int answer = session_.Run(SSH_AUTH_AGAIN, step);
  // After the last question mostly another request comes, with none.
  for (int round = 0; answer == SSH_AUTH_INFO && round < kMostQuestionRounds; ++round) {
    exchange.wasAsked = exchange.wasAsked || ssh_userauth_kbdint_getnprompts(session_.Raw()) > 0;
    if (!AnswerQuestions(exchange)) {
      return std::nullopt;
    }
    answer = session_.Run(SSH_AUTH_AGAIN, step);
  }
  return answer;
}

LogOn::Outcome LogOn::TryQuestions() {
  QString note;
  while (secrets_.Typed() < kMostTyped && Offers(session_.Raw(), SSH_AUTH_METHOD_INTERACTIVE)) {
    Exchange exchange;
    exchange.note = note;
    const std::optional<int> answer = AnswerRounds(exchange);
    if (exchange.wasAsked) {
      Tried(QStringLiteral("answers to the server's questions"));
    }
    if (!answer) {
      sent_.clear();
      return Outcome::Refused;
    }
    const Outcome outcome = OutcomeOf(*answer);
    sent_.clear();
    if (outcome != Outcome::Refused && !exchange.hasNewPassword) {
      secrets_.Accept(exchange.account);
    } else {
      secrets_.Refuse(exchange.account);
    }
    if (outcome != Outcome::Refused || !exchange.wasAsked) {
      return outcome;
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

void LogOn::ThrowEnded(bool wasRefused) {
  // Some servers end the session together with a refusal, or in place of it. A secret that stayed would be
  // sent at every connection, and lock the user out.
  if (wasRefused || !session_.ServersLastWords().isEmpty()) {
    secrets_.Refuse(sent_);
  } else {
    secrets_.LeftUnanswered(sent_);
  }
  ThrowRefused();
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

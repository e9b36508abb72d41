#pragma once

#include "engine/providers/network/SecretDesk.h"
#include "engine/providers/ssh/KeyFile.h"
#include "engine/providers/ssh/SshSession.h"

#include <QHash>
#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace trevane {

struct SshPlace;

/// Logs the user on: with the keys and the agent first, then with what the server asks for, then with a
/// password; only with what the server offers.
class LogOn final {
 public:
  LogOn(SshSession& session, const SshPlace& place, SecretDesk& secrets);
  LogOn(const LogOn&) = delete;
  LogOn& operator=(const LogOn&) = delete;

  /// Fails with error::kLogonFailure, what was tried and what the server offers, or with error::kCancelled.
  void Run();

 private:
  enum class Outcome { Done, Partly, Refused };

  /// One keyboard-interactive log-on: rounds of questions, until the server takes or refuses all answers.
  struct Exchange {
    /// That of the first password among the answers, the only one that is kept.
    QString account = {};
    bool wasAsked = false;
    /// What is kept has lost its use.
    bool hasNewPassword = false;
    /// Shown with the questions.
    QString note = {};
  };

  [[nodiscard]] Outcome TryMethods();
  [[nodiscard]] Outcome TryKeys();
  [[nodiscard]] Outcome TryKey(ssh_key key);
  [[nodiscard]] Outcome TryAgent();
  [[nodiscard]] Outcome TryLocked(const KeyFile& file);
  [[nodiscard]] Outcome TryQuestions();
  [[nodiscard]] Outcome TryPassword();

  /// Keys that wait for their passphrase; those that need none are tried at once.
  [[nodiscard]] Outcome TryOpenKeys(std::vector<KeyFile>& locked);
  [[nodiscard]] bool Accepts(ssh_key key);
  /// What the server answers (ssh_auth_e); nothing where it was left without an answer.
  [[nodiscard]] std::optional<int> AnswerRounds(Exchange& exchange);
  /// False where there is nobody to answer, or it was answered often enough.
  [[nodiscard]] bool AnswerQuestions(Exchange& exchange);
  [[nodiscard]] bool AnswerQuestion(unsigned int position, SecretDesk::Request& question, Exchange& exchange);
  [[nodiscard]] SecretDesk::Request QuestionOf(unsigned int position, Exchange& exchange) const;
  /// For a password that may be kept; empty for any other question.
  [[nodiscard]] QString AccountOfQuestion(const QString& prompt) const;

  [[nodiscard]] std::optional<Secret> Ask(const SecretDesk::Request& request);

  template <class Step>
  [[nodiscard]] Outcome Attempt(const Step& step);
  [[nodiscard]] Outcome OutcomeOf(int answer);
  [[nodiscard]] QString Account(const QString& purpose) const;
  [[nodiscard]] QString WithServersWords(const QString& text) const;
  void Tried(const QString& what);
  /// Judges the secret that was sent last by how the server has ended the session.
  [[noreturn]] void ThrowEnded(bool wasRefused);
  [[noreturn]] void ThrowRefused() const;

  SshSession& session_;
  const SshPlace& place_;
  SecretDesk& secrets_;
  QStringList tried_;
  /// The account of the secret that was sent and is not judged yet; empty for none.
  QString sent_;
  /// How often the user has answered a question, by its text.
  QHash<QString, int> typedFor_;
};

}  // namespace trevane

#pragma once

#include "engine/providers/ssh/KeyFile.h"
#include "engine/providers/ssh/SecretDesk.h"
#include "engine/providers/ssh/SshSession.h"

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
  /// False where there is nobody to answer. `account` becomes that of the password among the questions.
  [[nodiscard]] bool AnswerQuestions(QString& account, const QString& note);
  [[nodiscard]] SecretDesk::Request QuestionOf(unsigned int position, bool isAlone,
                                               const QString& note) const;

  [[nodiscard]] std::optional<Secret> Ask(const SecretDesk::Request& request);

  template <class Step>
  [[nodiscard]] Outcome Attempt(const Step& step);
  [[nodiscard]] Outcome OutcomeOf(int answer) const;
  [[nodiscard]] QString Account(const QString& purpose) const;
  [[nodiscard]] QString WithServersWords(const QString& text) const;
  void Tried(const QString& what);
  [[noreturn]] void ThrowRefused() const;

  SshSession& session_;
  const SshPlace& place_;
  SecretDesk& secrets_;
  QStringList tried_;
};

}  // namespace trevane

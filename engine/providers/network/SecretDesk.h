#pragma once

#include "platform/Secret.h"

#include <QString>
#include <QStringList>

#include <memory>
#include <optional>
#include <vector>

namespace trevane {

class CallControl;
class SecretMemory;
class SecretStore;
struct SecretQuestion;

/// The secrets of one log-on: those that were typed before, those of the system's store, and those that the
/// user is asked for. The controller's thread's alone.
class SecretDesk final {
 public:
  struct Request {
    /// What the secret is kept for; empty for one that is good for once.
    QString account;
    QString prompt;
    QString informativeText = {};
    bool isHidden = true;
  };

  /// `title` is that of the window that asks. `control` and `store` may be null: nobody is asked then, and
  /// nothing kept.
  SecretDesk(QString title, std::shared_ptr<SecretMemory> memory, SecretStore* store, CallControl* control);
  SecretDesk(const SecretDesk&) = delete;
  SecretDesk& operator=(const SecretDesk&) = delete;

  /// Nothing where there is nobody to ask. Fails with error::kCancelled where the user gives none.
  [[nodiscard]] std::optional<Secret> Get(const Request& request);
  /// The secret of that account was wrong: it is forgotten everywhere, and the user is asked from here on.
  void Refuse(const QString& account);
  /// The server has ended the line without a word after it was sent: it may have been wrong. At the second
  /// time in a row it counts as refused.
  void LeftUnanswered(const QString& account);
  /// It was right: it is kept in memory.
  void Accept(const QString& account);
  /// The log-on has succeeded: stores what the user wants to be remembered.
  void StoreRemembered();

  /// A question was asked, or one would have been without what was typed before.
  [[nodiscard]] bool NeededTheUser() const noexcept { return neededTheUser_; }
  [[nodiscard]] int Typed() const noexcept { return typed_; }

 private:
  struct Given {
    QString account;
    Secret secret;
    bool remember = false;
    bool isAccepted = false;
  };

  [[nodiscard]] std::optional<Secret> Ask(const Request& request);
  [[nodiscard]] Given* Find(const QString& account);
  void Drop(const QString& account);

  const QString title_;
  const std::shared_ptr<SecretMemory> memory_;
  SecretStore* const store_;
  CallControl* const control_;
  std::vector<Given> given_;
  QStringList refused_;
  bool neededTheUser_ = false;
  int typed_ = 0;
};

}  // namespace trevane

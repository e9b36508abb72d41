#pragma once

#include "platform/Secret.h"

#include <QString>
#include <QStringList>

#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>

namespace trevane {

class SecretStore;

/// Secrets that were typed, for reconnecting: in memory until the controller is disconnected. Any thread's.
class SecretMemory final {
 public:
  [[nodiscard]] std::optional<Secret> Find(const QString& account) const {
    const std::lock_guard lock(mutex_);
    const auto found = secrets_.find(account);
    return found == secrets_.end() ? std::nullopt : std::optional<Secret>(found->second);
  }
  void Keep(const QString& account, const Secret& secret) {
    const std::lock_guard lock(mutex_);
    secrets_.insert_or_assign(account, secret);
  }
  void Forget(const QString& account) {
    const std::lock_guard lock(mutex_);
    secrets_.erase(account);
    unanswered_.erase(account);
  }
  /// A line has ended without a word after the secret of that account had gone over it. True when the one
  /// before has, too.
  [[nodiscard]] bool NoteUnanswered(const QString& account) {
    const std::lock_guard lock(mutex_);
    return !unanswered_.insert(account).second;
  }
  void NoteAnswered(const QString& account) {
    const std::lock_guard lock(mutex_);
    unanswered_.erase(account);
  }

 private:
  mutable std::mutex mutex_;
  std::map<QString, Secret> secrets_;
  std::set<QString> unanswered_;
};

/// What an SSH connection uses of this computer and its user. Tests give their own.
struct SshPlace {
  /// The file of known host keys, to which an accepted one is added.
  QString knownHosts;
  /// Files of known host keys that are only read, for instance those of the whole system.
  QStringList moreKnownHosts = {};
  /// The private keys that are tried where the settings name none. Those that are missing are no error.
  QStringList keyFiles = {};
  /// The socket of the agent (on Windows the name of its pipe); empty for none.
  QString agent = {};
  /// The user's name on this computer.
  QString userName;
  /// Lives on the window's thread, and is called there only. Null where the system has none.
  SecretStore* store = nullptr;
};

/// The place of the user who runs the program.
[[nodiscard]] SshPlace UsersSshPlace(SecretStore* store);

}  // namespace trevane

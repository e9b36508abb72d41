#pragma once

#include "platform/Secret.h"

#include <QString>

#include <map>
#include <mutex>
#include <optional>
#include <set>

namespace trevane {

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

}  // namespace trevane

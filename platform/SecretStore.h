#pragma once

#include "platform/Secret.h"

#include <QString>

#include <optional>

namespace trevane {

/// The system's own store for passwords. The window's thread's alone: a store can ask the user itself.
class SecretStore {
 public:
  /// Whether something can be kept there now, and if not, why not, for people ("The password store is
  /// locked.").
  struct Condition {
    bool isReady = false;
    QString whyNot = {};
  };

  virtual ~SecretStore() = default;

  [[nodiscard]] virtual Condition Look() = 0;
  /// Nothing where none is kept for that account, or the store cannot be read. An account names host, port
  /// and user, and what the secret is for: it is offered to nobody else.
  [[nodiscard]] virtual std::optional<Secret> Find(const QString& account) = 0;
  /// Replaces an older one. Fails with a RunTimeError.
  virtual void Keep(const QString& account, const Secret& secret) = 0;
  /// No error where none is kept, or the store cannot be changed: it gives nothing away then, either.
  virtual void Forget(const QString& account) = 0;
};

}  // namespace trevane

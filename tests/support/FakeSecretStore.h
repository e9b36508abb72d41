#pragma once

#include "base/RunTimeError.h"
#include "platform/SecretStore.h"

#include <map>
#include <optional>

namespace trevane::test {

/// A store in memory, which a test looks into and can close.
class FakeSecretStore final : public SecretStore {
 public:
  [[nodiscard]] Condition Look() override {
    return whyNot.isEmpty() ? Condition{true} : Condition{false, whyNot};
  }
  [[nodiscard]] std::optional<Secret> Find(const QString& account) override {
    ++finds;
    const auto found = kept.find(account);
    return found == kept.end() ? std::nullopt : std::optional<Secret>(found->second);
  }
  void Keep(const QString& account, const Secret& secret) override {
    if (!keepFailure.isEmpty()) {
      throw RunTimeError(error::kAccessDenied, keepFailure);
    }
    kept.insert_or_assign(account, secret);
  }
  void Forget(const QString& account) override { kept.erase(account); }

  std::map<QString, Secret> kept;
  QString whyNot;
  QString keepFailure;
  int finds = 0;
};

}  // namespace trevane::test

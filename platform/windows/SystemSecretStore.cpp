#include "base/RunTimeError.h"
#include "platform/MakeSecretStore.h"
#include "platform/windows/WindowsText.h"

#include <array>

#include <windows.h>

#include <wincred.h>

namespace trevane {

namespace {

using windowstext::Wide;

/// Of Windows 7 and later; the headers still have the limit before it.
constexpr qsizetype kMostBytes = 5 * 512;

/// The Credential Manager, which answers at once.
class SystemSecretStore final : public SecretStore {
 public:
  [[nodiscard]] Condition Look() override;
  [[nodiscard]] std::optional<Secret> Find(const QString& account) override;
  void Keep(const QString& account, const Secret& secret) override;
  void Forget(const QString& account) override;

 private:
  [[nodiscard]] static QString Target(const QString& account) { return QStringLiteral("Trevane:") + account; }
};

SecretStore::Condition SystemSecretStore::Look() {
  std::array<DWORD, CRED_TYPE_MAXIMUM> longest{};
  if (CredGetSessionTypes(DWORD(longest.size()), longest.data()) != FALSE &&
      longest[CRED_TYPE_GENERIC] == CRED_PERSIST_NONE) {
    return {.isReady = false, .whyNot = QStringLiteral("Windows keeps no passwords in this session.")};
  }
  return {.isReady = true};
}

std::optional<Secret> SystemSecretStore::Find(const QString& account) {
  PCREDENTIALW found = nullptr;
  if (CredReadW(Wide(Target(account)), CRED_TYPE_GENERIC, 0, &found) == FALSE) {
    return std::nullopt;
  }
  auto* const bytes = reinterpret_cast<char*>(found->CredentialBlob);
  Secret secret{QByteArrayView(bytes, qsizetype(found->CredentialBlobSize))};
  if (bytes != nullptr) {
    WipeBytes(bytes, found->CredentialBlobSize);
  }
  CredFree(found);
  return secret;
}

void SystemSecretStore::Keep(const QString& account, const Secret& secret) {
  if (secret.Bytes().size() > kMostBytes) {
    throw RunTimeError(error::kInvalidParameter,
                       QStringLiteral("Windows keeps no password of more than %1 bytes").arg(kMostBytes));
  }
  QString target = Target(account);
  QString user = account;
  CREDENTIALW credential{};
  credential.Type = CRED_TYPE_GENERIC;
  credential.TargetName = reinterpret_cast<LPWSTR>(target.data());
  credential.UserName = reinterpret_cast<LPWSTR>(user.data());
  credential.Persist = CRED_PERSIST_LOCAL_MACHINE;
  credential.CredentialBlobSize = DWORD(secret.Bytes().size());
  credential.CredentialBlob = reinterpret_cast<LPBYTE>(const_cast<char*>(secret.Bytes().data()));
  if (CredWriteW(&credential, 0) == FALSE) {
    throw RunTimeError(error::kWin32Error + qint32(GetLastError()),
                       QStringLiteral("Windows did not keep the password"));
  }
}

void SystemSecretStore::Forget(const QString& account) {
  CredDeleteW(Wide(Target(account)), CRED_TYPE_GENERIC, 0);
}

}  // namespace

std::unique_ptr<SecretStore> MakeSecretStore(std::function<bool()> /*isCancelled*/) {
  return std::make_unique<SystemSecretStore>();
}

}  // namespace trevane

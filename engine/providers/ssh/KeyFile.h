#pragma once

#include "engine/providers/ssh/SshHandles.h"

#include <QByteArray>
#include <QString>

namespace trevane {

class Secret;

/// A private key of the user, as it stands in its file.
class KeyFile final {
 public:
  explicit KeyFile(const QString& path);
  ~KeyFile();
  KeyFile(KeyFile&& other) noexcept = default;
  KeyFile& operator=(KeyFile&&) = delete;
  KeyFile(const KeyFile&) = delete;
  KeyFile& operator=(const KeyFile&) = delete;

  [[nodiscard]] const QString& Path() const noexcept { return path_; }
  /// Why there is no key in it; empty where there is one.
  [[nodiscard]] const QString& WhyNot() const noexcept { return whyNot_; }
  /// Its content is only read with a passphrase.
  [[nodiscard]] bool IsLocked() const noexcept { return isLocked_; }
  /// Null where it is not known without the passphrase.
  [[nodiscard]] ssh_key PublicKey() const noexcept { return public_.get(); }
  /// Of one that is not locked.
  [[nodiscard]] ssh_key PrivateKey() const noexcept { return private_.get(); }
  /// Null for a wrong passphrase.
  [[nodiscard]] SshKey Unlock(const Secret& passphrase) const;

 private:
  [[nodiscard]] SshKey ReadPublic() const;

  QString path_;
  QByteArray content_;
  QString whyNot_;
  bool isLocked_ = false;
  SshKey private_;
  SshKey public_;
};

}  // namespace trevane

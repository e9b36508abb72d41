#pragma once

#include "base/RunTimeError.h"
#include "engine/providers/network/SecretMemory.h"
#include "tests/engine/providers/ssh/SshWorld.h"
#include "tests/support/Sshd.h"

#include <QCryptographicHash>

#include <gtest/gtest.h>

#include <memory>

namespace trevane::test {

/// Connections to servers that a test starts; skipped where their programs are not there.
class SshdWorld : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!Sshd::IsAvailable()) {
      GTEST_SKIP() << "the SSH servers were not fetched: see CONTRIBUTING";
    }
  }

  [[nodiscard]] std::unique_ptr<SshConnector> ConnectorOf(const QString& machine, const SshPlace& place,
                                                          const QString& option = {}) {
    return std::make_unique<SshConnector>(ReadSftpSettings(machine, option, place.userName), place, secrets_,
                                          control_);
  }
  [[nodiscard]] std::unique_ptr<SshConnector> ConnectorOf(const Sshd& sshd, const SshPlace& place,
                                                          const QString& option = {}) {
    return ConnectorOf(sshd.Machine(), place, option);
  }
  [[nodiscard]] std::unique_ptr<SshConnector> ConnectorOf(const Sshd& sshd) {
    return ConnectorOf(sshd, sshd.Place());
  }
  /// With which connecting ends; the number 0 where it succeeds.
  [[nodiscard]] static RunTimeError FailureOf(SshConnector& connector) {
    try {
      static_cast<void>(connector.Connect());
    } catch (const RunTimeError& failure) {
      return failure;
    }
    return {0, QString()};
  }
  /// Of a key as it stands in files: "ssh-ed25519 AAAA...".
  [[nodiscard]] static QString FingerprintIn(const QByteArray& key) {
    const QByteArray bytes = QByteArray::fromBase64(key.split(' ').value(1));
    return QStringLiteral("SHA256:") +
           QString::fromLatin1(QCryptographicHash::hash(bytes, QCryptographicHash::Sha256)
                                   .toBase64(QByteArray::OmitTrailingEquals));
  }

  ScriptedPrompts prompts_;
  std::shared_ptr<SecretMemory> secrets_ = std::make_shared<SecretMemory>();
  std::shared_ptr<TestControl> control_ = std::make_shared<TestControl>(&prompts_);
};

}  // namespace trevane::test

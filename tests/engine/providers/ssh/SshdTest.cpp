#include "tests/engine/providers/ssh/SshWorld.h"
#include "tests/support/Sshd.h"

#include <gtest/gtest.h>

namespace trevane::test {
namespace {

class SshdTest : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!Sshd::IsAvailable()) {
      GTEST_SKIP() << "the SSH servers were not fetched: see CONTRIBUTING";
    }
  }

  [[nodiscard]] std::unique_ptr<SshConnector> ConnectorOf(const Sshd& sshd, const SshPlace& place,
                                                          const QString& option = {}) {
    return std::make_unique<SshConnector>(ReadSftpSettings(sshd.Machine(), option, place.userName), place,
                                          secrets_, control_);
  }
  [[nodiscard]] std::unique_ptr<SshConnector> ConnectorOf(const Sshd& sshd) {
    return ConnectorOf(sshd, sshd.Place());
  }

  ScriptedPrompts prompts_;
  std::shared_ptr<SecretMemory> secrets_ = std::make_shared<SecretMemory>();
  std::shared_ptr<TestControl> control_ = std::make_shared<TestControl>(&prompts_);
};

TEST_F(SshdTest, LogsOnWithAKeyAndReachesTheSftpServer) {
  const Sshd sshd;
  const auto connector = ConnectorOf(sshd);
  const std::unique_ptr<SftpChannel> channel = connector->Connect();
  EXPECT_EQ(Greet(*channel).sliced(4, 5), kVersion3);
  EXPECT_TRUE(connector->ConnectsWithoutQuestion());
  EXPECT_EQ(connector->ServerKey().toLatin1(), sshd.HostKey(QStringLiteral("ed25519")));
  EXPECT_EQ(connector->Notice(), QString());
  EXPECT_TRUE(connector->Details().contains(
      QStringLiteral("Cipher: aes128-gcm@openssh.com, key exchange curve25519-sha256")))
      << connector->Details().join(u'\n').toStdString();
}

TEST_F(SshdTest, ListensOnThisComputerAlone) {
  const Sshd sshd;
  EXPECT_EQ(ListeningAddresses(sshd.Process()), QStringList{sshd.Machine()});
}

}  // namespace
}  // namespace trevane::test

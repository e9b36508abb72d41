#include "tests/engine/providers/ssh/SshdWorld.h"

#include <gtest/gtest.h>

namespace trevane::test {
namespace {

class SshdTest : public SshdWorld {};

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

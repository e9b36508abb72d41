#include "tests/engine/providers/ssh/SshdWorld.h"
#include "tests/support/Listening.h"
#include "tests/support/SshTestServer.h"
#include "tests/support/TestFiles.h"

#include <QCoreApplication>

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
  const SshTestServer server({});
  EXPECT_EQ(ListeningAddresses(QCoreApplication::applicationPid()), QStringList{server.Machine()});
}

TEST_F(SshdTest, UsesOldAlgorithmsOnRequestAndSaysSo) {
  const Sshd sshd(Sshd::OldAlgorithms());
  const SshPlace place = sshd.Place();
  EXPECT_EQ(FailureOf(*ConnectorOf(sshd, place)).Number(), error::kNotSupported);
  const auto connector = ConnectorOf(sshd, place, QStringLiteral("OldAlgorithms=Yes"));
  EXPECT_EQ(Greet(*connector->Connect()).sliced(4, 5), kVersion3);
  EXPECT_EQ(connector->Notice(), QStringLiteral("The connection to %1 uses old, less safe algorithms: "
                                                "diffie-hellman-group14-sha1, aes128-cbc, hmac-sha1")
                                     .arg(sshd.Machine()));
}

TEST_F(SshdTest, SaysThatOldAlgorithmsAreAllowedWhereNoneIsUsed) {
  const Sshd sshd;
  const auto connector = ConnectorOf(sshd, sshd.Place(), QStringLiteral("OldAlgorithms=Yes"));
  static_cast<void>(connector->Connect());
  EXPECT_EQ(
      connector->Notice(),
      QStringLiteral("Old, less safe algorithms are allowed for the connection to %1").arg(sshd.Machine()));
}

TEST_F(SshdTest, ReachesAServerByItsNameToo) {
  const Sshd sshd;
  SshPlace place = sshd.Place();
  QByteArray known = ContentOf(place.knownHosts);
  WriteFile(place.knownHosts, known.replace("[127.0.0.1]", "[localhost]"));
  // Where the name leads to an IPv6 address, too, nobody listens there.
  const auto connector = ConnectorOf(QStringLiteral("localhost:%1").arg(sshd.Port()), place);
  EXPECT_EQ(Greet(*connector->Connect()).sliced(4, 5), kVersion3);
}

TEST_F(SshdTest, ConnectsAgainAndAgain) {
  const Sshd sshd;
  const auto connector = ConnectorOf(sshd);
  for (int i = 0; i < 5; ++i) {
    EXPECT_EQ(Greet(*connector->Connect()).sliced(4, 5), kVersion3);
  }
}

TEST_F(SshdTest, SendsManySignsOfLife) {
  const Sshd sshd;
  const std::unique_ptr<SftpChannel> channel = ConnectorOf(sshd)->Connect();
  EXPECT_EQ(Greet(*channel).sliced(4, 5), kVersion3);
  for (int i = 0; i < 5; ++i) {
    channel->KeepAlive();
    QByteArray nothing;
    EXPECT_TRUE(channel->Poll(nothing).isEmpty());
  }
}

}  // namespace
}  // namespace trevane::test

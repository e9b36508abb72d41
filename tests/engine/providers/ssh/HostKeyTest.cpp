#include "tests/engine/providers/ssh/SshdWorld.h"
#include "tests/support/TestFiles.h"

#include <QFile>

#include <gtest/gtest.h>

namespace trevane::test {
namespace {

const qint32 kNotProved = error::kWin32Error + 1397;

class HostKeyTest : public SshdWorld {
 protected:
  /// A line for the server with that key.
  [[nodiscard]] static QByteArray LineOf(const Sshd& sshd, const QByteArray& key) {
    return "[127.0.0.1]:" + QByteArray::number(sshd.Port()) + ' ' + key + '\n';
  }
  /// A key that is not the server's.
  [[nodiscard]] static QByteArray OtherKey(const Sshd& sshd,
                                           const QString& type = QStringLiteral("ed25519")) {
    const QString path = sshd.At(QStringLiteral("other_") + type);
    Sshd::MakeKey(path, type);
    const QByteArrayList words = ContentOf(path + QStringLiteral(".pub")).split(' ');
    return words.value(0) + ' ' + words.value(1);
  }
};

TEST_F(HostKeyTest, AsksForAnUnknownKeyAndKeepsIt) {
  const Sshd sshd;
  SshPlace place = sshd.Place();
  place.knownHosts = sshd.At(QStringLiteral("home/.ssh/known_hosts"));
  const QByteArray key = sshd.HostKey(QStringLiteral("ed25519"));
  prompts_.ExpectChoice(QStringLiteral("The host key of %1 is not known. Connect to it?").arg(sshd.Machine()),
                        0);
  EXPECT_EQ(Greet(*ConnectorOf(sshd, place)->Connect()).sliced(4, 5), kVersion3);
  ASSERT_EQ(prompts_.Asked().size(), 1U);
  const AskedQuestion& asked = prompts_.Asked().front();
  EXPECT_EQ(asked.captions, (QStringList{QStringLiteral("&Connect"), QStringLiteral("Cancel")}));
  EXPECT_EQ(asked.defaultButton, 1);
  EXPECT_EQ(asked.cancelButton, 1);
  EXPECT_TRUE(asked.informativeText.startsWith(
      QStringLiteral("Key type: ssh-ed25519\nFingerprint: %1\n").arg(FingerprintIn(key))))
      << asked.informativeText.toStdString();
  EXPECT_EQ(ContentOf(place.knownHosts), LineOf(sshd, key));
  // Nobody is asked again.
  EXPECT_EQ(Greet(*ConnectorOf(sshd, place)->Connect()).sliced(4, 5), kVersion3);
}

TEST_F(HostKeyTest, ConnectsToNobodyWhoIsNotAccepted) {
  const Sshd sshd;
  SshPlace place = sshd.Place();
  place.knownHosts = sshd.At(QStringLiteral("home/.ssh/known_hosts"));
  prompts_.ExpectChoice(1);
  EXPECT_EQ(FailureOf(*ConnectorOf(sshd, place)).Number(), error::kCancelled);
  EXPECT_FALSE(QFile::exists(place.knownHosts));
  EXPECT_FALSE(const_cast<Sshd&>(sshd).Log().contains("Accepted"));
}

TEST_F(HostKeyTest, ConnectsToNoUnknownHostWhereNobodyCanBeAsked) {
  const Sshd sshd;
  SshPlace place = sshd.Place();
  place.knownHosts = sshd.At(QStringLiteral("none"));
  control_ = nullptr;
  const RunTimeError failure = FailureOf(*ConnectorOf(sshd, place));
  EXPECT_EQ(failure.Number(), kNotProved);
  EXPECT_TRUE(failure.Description().contains(FingerprintIn(sshd.HostKey(QStringLiteral("ed25519")))));
}

TEST_F(HostKeyTest, EndsForAChangedKeyWithBothFingerprintsAndWithoutAQuestion) {
  Sshd sshd;
  const SshPlace place = sshd.Place();
  const QByteArray other = OtherKey(sshd);
  WriteFile(place.knownHosts, LineOf(sshd, other));
  const RunTimeError failure = FailureOf(*ConnectorOf(sshd, place));
  EXPECT_EQ(failure.Number(), kNotProved);
  EXPECT_TRUE(failure.Description().contains(
      QStringLiteral("Known (line 1 of %1): ssh-ed25519 %2\nShown now: ssh-ed25519 %3\n")
          .arg(place.knownHosts, FingerprintIn(other),
               FingerprintIn(sshd.HostKey(QStringLiteral("ed25519"))))))
      << failure.Description().toStdString();
  EXPECT_EQ(ContentOf(place.knownHosts), LineOf(sshd, other));
  EXPECT_FALSE(sshd.Log().contains("Accepted"));
}

TEST_F(HostKeyTest, PrefersTheKeyThatIsKnown) {
  Sshd::Options options;
  options.hostKeys = QStringList{QStringLiteral("ed25519"), QStringLiteral("rsa")};
  const Sshd sshd(options);
  const SshPlace place = sshd.Place();
  WriteFile(place.knownHosts, LineOf(sshd, sshd.HostKey(QStringLiteral("rsa"))));
  const auto connector = ConnectorOf(sshd, place);
  EXPECT_EQ(Greet(*connector->Connect()).sliced(4, 5), kVersion3);
  EXPECT_EQ(connector->ServerKey().toLatin1(), sshd.HostKey(QStringLiteral("rsa")));
}

TEST_F(HostKeyTest, EndsForAServerThatHasNoKeyOfAKnownTypeAnyMore) {
  const Sshd sshd;
  const SshPlace place = sshd.Place();
  WriteFile(place.knownHosts, LineOf(sshd, OtherKey(sshd, QStringLiteral("ecdsa"))));
  EXPECT_EQ(FailureOf(*ConnectorOf(sshd, place)).Number(), kNotProved);
}

TEST_F(HostKeyTest, RefusesARevokedKey) {
  const Sshd sshd;
  const SshPlace place = sshd.Place();
  const QByteArray key = sshd.HostKey(QStringLiteral("ed25519"));
  WriteFile(place.knownHosts, LineOf(sshd, key) + "@revoked * " + key + '\n');
  const RunTimeError failure = FailureOf(*ConnectorOf(sshd, place));
  EXPECT_EQ(failure.Number(), kNotProved);
  EXPECT_TRUE(failure.Description().contains(QStringLiteral("has been revoked (line 2 of ")))
      << failure.Description().toStdString();
}

TEST_F(HostKeyTest, ConnectsOnceMoreWithoutAQuestionWhereTheKeyCouldNotBeStored) {
  const Sshd sshd;
  SshPlace place = sshd.Place();
  WriteFile(sshd.At(QStringLiteral("closed")), "a file");
  place.knownHosts = sshd.At(QStringLiteral("closed/known_hosts"));
  const auto connector = ConnectorOf(sshd, place);
  prompts_.ExpectChoice(0);
  static_cast<void>(connector->Connect());
  EXPECT_TRUE(connector->Details().last().startsWith(QStringLiteral("The host key could not be stored: ")))
      << connector->Details().join(u'\n').toStdString();
  static_cast<void>(connector->Connect());
  EXPECT_EQ(prompts_.Asked().size(), 1U);
}

}  // namespace
}  // namespace trevane::test

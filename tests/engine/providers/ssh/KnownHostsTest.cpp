#include "base/RunTimeError.h"
#include "engine/providers/ssh/HostKeyText.h"
#include "engine/providers/ssh/KnownHosts.h"
#include "engine/providers/ssh/SshPlace.h"
#include "tests/support/TestFiles.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QMessageAuthenticationCode>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <thread>
#include <utility>
#include <vector>

namespace trevane::test {
namespace {

using Verdict = KnownHosts::Verdict;

SshKey NewKey(ssh_keytypes_e type = SSH_KEYTYPE_ED25519) {
  ssh_key key = nullptr;
  EXPECT_EQ(ssh_pki_generate(type, 0, &key), SSH_OK);
  return SshKey(key);
}

QByteArray LineOf(const QByteArray& names, const SshKey& key) {
  return names + ' ' + KeyTypeOf(key.get()) + ' ' + Base64Of(key.get()) + '\n';
}

class KnownHostsTest : public ::testing::Test {
 protected:
  [[nodiscard]] QString File() const { return folder_.filePath(QStringLiteral("ssh/known_hosts")); }
  [[nodiscard]] SshPlace Place() const {
    SshPlace place;
    place.knownHosts = File();
    place.moreKnownHosts = QStringList{folder_.filePath(QStringLiteral("system"))};
    return place;
  }
  [[nodiscard]] Verdict VerdictOf(const SshKey& key, const char* host = "cell4", quint16 port = 22) const {
    return KnownHosts(Place(), QString::fromLatin1(host), port).Judge(key.get()).verdict;
  }
  [[nodiscard]] std::optional<QString> Add(const SshKey& key, const char* host = "cell4",
                                           quint16 port = 22) const {
    return KnownHosts(Place(), QString::fromLatin1(host), port).Add(key.get());
  }

  QTemporaryDir folder_;
  const SshKey key_ = NewKey();
  const SshKey other_ = NewKey();
};

TEST_F(KnownHostsTest, KnowsNothingWithoutFiles) {
  EXPECT_EQ(VerdictOf(key_), Verdict::Unknown);
  EXPECT_TRUE(KnownHosts(Place(), QStringLiteral("cell4"), 22).Types().isEmpty());
}

TEST_F(KnownHostsTest, FailsWhereAFileThatIsThereCannotBeRead) {
  WriteFile(File(), LineOf("cell4", key_));
  const SshPlace place = Place();
  // Not even the superuser reads these.
  ASSERT_TRUE(QDir().mkpath(place.moreKnownHosts.front()));
  SshPlace other = place;
  std::swap(other.knownHosts, other.moreKnownHosts.front());
  for (const SshPlace& each : {place, other}) {
    try {
      const KnownHosts known(each, QStringLiteral("cell4"), 22);
      ADD_FAILURE() << "the file counts as missing";
    } catch (const RunTimeError& failure) {
      EXPECT_EQ(failure.Number(), error::kAccessDenied);
      const QString begin =
          QStringLiteral("The file of known host keys %1 cannot be read: ").arg(place.moreKnownHosts.front());
      EXPECT_TRUE(failure.Description().startsWith(begin)) << failure.Description().toStdString();
      EXPECT_GT(failure.Description().size(), begin.size());
    }
  }
  ASSERT_TRUE(QDir().rmdir(place.moreKnownHosts.front()));
  EXPECT_EQ(VerdictOf(other_), Verdict::Changed);
}

TEST_F(KnownHostsTest, FailsWhereALinkLeadsToNoEnd) {
  ASSERT_TRUE(QDir().mkpath(folder_.filePath(QStringLiteral("ssh"))));
  ASSERT_TRUE(QFile::link(File(), File()));
  EXPECT_THROW(static_cast<void>(VerdictOf(key_)), RunTimeError);
}

TEST_F(KnownHostsTest, AnEmptyDeviceHoldsNothingAndSaysThatItKeepsNothing) {
  SshPlace place = Place();
  place.knownHosts = QStringLiteral("/dev/null");
  const KnownHosts direct(place, QStringLiteral("cell4"), 22);
  EXPECT_EQ(direct.Judge(key_.get()).verdict, Verdict::Unknown);
  EXPECT_EQ(direct.Add(key_.get()), QStringLiteral("/dev/null keeps nothing"));

  ASSERT_TRUE(QDir().mkpath(folder_.filePath(QStringLiteral("ssh"))));
  ASSERT_TRUE(QFile::link(place.knownHosts, File()));
  WriteFile(Place().moreKnownHosts.front(), LineOf("cell5", other_));
  EXPECT_EQ(VerdictOf(key_), Verdict::Unknown);
  EXPECT_EQ(VerdictOf(key_, "cell5"), Verdict::Changed) << "the system's file still counts";
  EXPECT_EQ(Add(key_), File() + QStringLiteral(" keeps nothing"));
  EXPECT_EQ(QFile::symLinkTarget(File()), place.knownHosts);
  EXPECT_EQ(VerdictOf(key_), Verdict::Unknown);
}

TEST_F(KnownHostsTest, AddsAKeyForThisUserAlone) {
  EXPECT_EQ(Add(key_), std::nullopt);
  EXPECT_EQ(VerdictOf(key_), Verdict::Known);
  EXPECT_EQ(ContentOf(File()), LineOf("cell4", key_));
  constexpr QFile::Permissions kOthers = QFile::ReadGroup | QFile::WriteGroup | QFile::ExeGroup |
                                         QFile::ReadOther | QFile::WriteOther | QFile::ExeOther;
  EXPECT_FALSE(QFile::permissions(File()) & kOthers);
  EXPECT_FALSE(QFile::permissions(folder_.filePath(QStringLiteral("ssh"))) & kOthers);
}

TEST_F(KnownHostsTest, TellsPortsAndNamesApart) {
  EXPECT_EQ(Add(key_, "Cell4", 2222), std::nullopt);
  EXPECT_EQ(ContentOf(File()), LineOf("[cell4]:2222", key_));
  EXPECT_EQ(VerdictOf(key_, "CELL4", 2222), Verdict::Known);
  EXPECT_EQ(VerdictOf(key_, "cell4", 2223), Verdict::Unknown);
  EXPECT_EQ(VerdictOf(key_, "cell4", 22), Verdict::Unknown);
  EXPECT_EQ(VerdictOf(key_, "cell5", 2222), Verdict::Unknown);
  EXPECT_EQ(Add(key_, "fe80::1", 2222), std::nullopt);
  EXPECT_EQ(VerdictOf(key_, "fe80::1", 2222), Verdict::Known);
}

TEST_F(KnownHostsTest, KeepsWhatStandsThere) {
  // Without an end of line behind the last one.
  WriteFile(File(), "# mine\n\n" + LineOf("cell5", other_).trimmed());
  EXPECT_EQ(Add(key_), std::nullopt);
  EXPECT_EQ(ContentOf(File()), "# mine\n\n" + LineOf("cell5", other_) + LineOf("cell4", key_));
}

TEST_F(KnownHostsTest, LosesNoLineOfProgramsThatAddAtOnce) {
  constexpr int kThreads = 8;
  std::vector<std::thread> threads;
  threads.reserve(kThreads);
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([this, i] {
      for (int port = 1; port <= 20; ++port) {
        EXPECT_EQ(Add(key_, "cell4", static_cast<quint16>(1000 * (i + 1) + port)), std::nullopt);
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  // One that reads while another writes may take the line for one without an end: it puts an empty one
  // behind.
  EXPECT_EQ(ContentOf(File()).count("\n[cell4]") + 1, kThreads * 20);
  for (int i = 0; i < kThreads; ++i) {
    EXPECT_EQ(VerdictOf(key_, "cell4", static_cast<quint16>(1000 * (i + 1) + 20)), Verdict::Known);
  }
}

TEST_F(KnownHostsTest, HidesTheNameWhereOthersAreHidden) {
  const QByteArray salt = "12345678901234567890";
  const QByteArray hash =
      QMessageAuthenticationCode::hash("cell5", salt, QCryptographicHash::Sha1).toBase64();
  WriteFile(File(), LineOf("|1|" + salt.toBase64() + '|' + hash, other_));
  EXPECT_EQ(VerdictOf(other_, "cell5"), Verdict::Known);
  EXPECT_EQ(VerdictOf(other_, "cell4"), Verdict::Unknown);
  EXPECT_EQ(Add(key_), std::nullopt);
  EXPECT_FALSE(ContentOf(File()).contains("cell4"));
  EXPECT_EQ(VerdictOf(key_, "cell4"), Verdict::Known);
}

TEST_F(KnownHostsTest, NoticesAChangedKey) {
  WriteFile(File(), "\n" + LineOf("cell3,cell4", other_));
  const KnownHosts::Judgement judgement = KnownHosts(Place(), QStringLiteral("cell4"), 22).Judge(key_.get());
  EXPECT_EQ(judgement.verdict, Verdict::Changed);
  EXPECT_EQ(judgement.oldType, "ssh-ed25519");
  EXPECT_EQ(judgement.oldFingerprint, FingerprintOf(other_.get()));
  EXPECT_EQ(judgement.line.file, File());
  EXPECT_EQ(judgement.line.number, 2);
}

TEST_F(KnownHostsTest, TakesAKeyOfAnotherTypeForAChangedOne) {
  WriteFile(File(), LineOf("cell4", NewKey(SSH_KEYTYPE_ECDSA_P256)));
  EXPECT_EQ(VerdictOf(key_), Verdict::Changed);
  // Both are the host's: each of them is good.
  WriteFile(File(), ContentOf(File()) + LineOf("cell4", key_));
  EXPECT_EQ(VerdictOf(key_), Verdict::Known);
  EXPECT_EQ(KnownHosts(Place(), QStringLiteral("cell4"), 22).Types(),
            (QByteArrayList{"ecdsa-sha2-nistp256", "ssh-ed25519"}));
}

TEST_F(KnownHostsTest, ReadsTheSystemsFileAndNeverWritesIt) {
  const QString systems = folder_.filePath(QStringLiteral("system"));
  WriteFile(systems, LineOf("cell4", key_));
  EXPECT_EQ(VerdictOf(key_), Verdict::Known);
  EXPECT_EQ(VerdictOf(other_), Verdict::Changed);
  EXPECT_EQ(Add(other_, "cell5"), std::nullopt);
  EXPECT_EQ(ContentOf(systems), LineOf("cell4", key_));
}

TEST_F(KnownHostsTest, RefusesARevokedKeyWhateverElseStandsThere) {
  WriteFile(File(), LineOf("cell4", key_) + LineOf("@revoked *", key_));
  EXPECT_EQ(VerdictOf(key_), Verdict::Revoked);
  WriteFile(File(), LineOf("@revoked\tcell4", key_));
  EXPECT_EQ(VerdictOf(key_), Verdict::Revoked);
  // Another key of that host is neither known nor changed by that.
  EXPECT_EQ(VerdictOf(other_), Verdict::Unknown);
  EXPECT_EQ(VerdictOf(key_, "cell5"), Verdict::Unknown);
}

TEST_F(KnownHostsTest, LeavesOutWhatItDoesNotUnderstand) {
  WriteFile(File(), LineOf("@cert-authority *", key_) +
                        "cell4 ssh-unknown AAAA\ncell4\n@revoked\ncell4 ssh-rsa !!\n" + "\xff\xfe\n" +
                        LineOf("cell4", key_).replace(' ', '\t'));
  EXPECT_EQ(VerdictOf(key_), Verdict::Known);
  EXPECT_EQ(VerdictOf(key_, "cell5"), Verdict::Unknown);
}

TEST_F(KnownHostsTest, TellsWhyAKeyCouldNotBeAdded) {
  WriteFile(folder_.filePath(QStringLiteral("ssh")), "a file");
  const std::optional<QString> reason = Add(key_);
  ASSERT_TRUE(reason.has_value());
  EXPECT_FALSE(reason->isEmpty());
}

}  // namespace
}  // namespace trevane::test

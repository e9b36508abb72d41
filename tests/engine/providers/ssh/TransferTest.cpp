#include "engine/files/FileSystem.h"
#include "engine/files/WholeFile.h"
#include "engine/providers/ssh/OpenSftp.h"
#include "tests/engine/providers/ssh/SshdWorld.h"
#include "tests/support/SshTestServer.h"
#include "tests/support/TestFiles.h"

#include <QRandomGenerator>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace trevane::test {
namespace {

/// Bytes that no compression and no mistake in their order leave as they are.
QByteArray SomeBytes(qsizetype size) {
  QByteArray bytes(size, Qt::Uninitialized);
  QRandomGenerator random(1);
  random.fillRange(reinterpret_cast<quint32*>(bytes.data()), size / qsizetype(sizeof(quint32)));
  return bytes;
}

class TransferTest : public SshdWorld {
 protected:
  [[nodiscard]] std::shared_ptr<FileSystem> Open(const Sshd& sshd) {
    return OpenSftp({sshd.Machine(), QString(), control_}, sshd.Place(), secrets_);
  }
  /// A path below the test's folder, as the file system has it.
  [[nodiscard]] QString At(const QString& name) const {
    return folder_.filePath(name).sliced(1).replace(u'/', u'\\');
  }

  QTemporaryDir folder_;
};

TEST_F(TransferTest, SendsAndReceivesAtOnce) {
  Sshd::Options options;
  // All that is sent comes back: a server that sends and does not read until that has gone.
  options.subsystem = QStringLiteral("/bin/cat");
  const Sshd sshd(options);
  const std::unique_ptr<SftpChannel> channel = ConnectorOf(sshd)->Connect();
  const QByteArray sent = SomeBytes(16 * 1024 * 1024);
  QByteArray unsent = sent;
  QByteArray came;
  while (came.size() < sent.size()) {
    came += channel->Exchange(unsent);
  }
  EXPECT_TRUE(unsent.isEmpty());
  EXPECT_TRUE(came == sent);
}

TEST_F(TransferTest, GoesOnWhileKeysAreExchangedAnew) {
  Sshd::Options options;
  options.configuration = QStringList{QStringLiteral("RekeyLimit 1M")};
  Sshd sshd(options);
  const std::shared_ptr<FileSystem> files = Open(sshd);
  const QByteArray content = SomeBytes(8 * 1024 * 1024);
  trevane::WriteFile(*files, At(QStringLiteral("up")), content);
  EXPECT_TRUE(ContentOf(folder_.filePath(QStringLiteral("up"))) == content);
  EXPECT_TRUE(ReadFile(*files, At(QStringLiteral("up"))) == content);
}

TEST_F(TransferTest, ReadsFromAReadOnlyTopAndWritesNothing) {
  Sshd::Options options;
  options.subsystem = QStringLiteral("internal-sftp -R");
  const Sshd sshd(options);
  const std::shared_ptr<FileSystem> files = Open(sshd);
  WriteFile(folder_.filePath(QStringLiteral("file")), "content");
  EXPECT_EQ(ReadFile(*files, At(QStringLiteral("file"))), "content");
  EXPECT_TRUE(files->Find(At(QStringLiteral("file"))).has_value());
  const auto numberOf = [](const std::function<void()>& work) {
    try {
      work();
    } catch (const RunTimeError& failure) {
      return failure.Number();
    }
    return 0;
  };
  EXPECT_EQ(numberOf([&] { files->CreateFolder(At(QStringLiteral("new"))); }), error::kAccessDenied);
  EXPECT_EQ(numberOf([&] { trevane::WriteFile(*files, At(QStringLiteral("new")), "x"); }),
            error::kAccessDenied);
  EXPECT_EQ(numberOf([&] { trevane::WriteFile(*files, At(QStringLiteral("file")), "x"); }),
            error::kAccessDenied);
  EXPECT_EQ(numberOf([&] { files->RemoveAlone(At(QStringLiteral("file"))); }), error::kAccessDenied);
  EXPECT_EQ(numberOf([&] { files->Rename(At(QStringLiteral("file")), At(QStringLiteral("new")), false); }),
            error::kAccessDenied);
  EXPECT_EQ(EntriesOf(folder_.path()), QStringList{QStringLiteral("file")});
  EXPECT_EQ(ContentOf(folder_.filePath(QStringLiteral("file"))), "content");
}

TEST_F(TransferTest, TellsTheNoticeAndTheDetailsOfTheConnection) {
  const Sshd sshd;
  const std::shared_ptr<FileSystem> files =
      OpenSftp({sshd.Machine(), QStringLiteral("OldAlgorithms=Yes"), control_}, sshd.Place(), secrets_);
  EXPECT_EQ(files->Capabilities().notice,
            QStringLiteral("Old, less safe algorithms are allowed for the connection to ") + sshd.Machine());
  EXPECT_TRUE(files->Details(QString()).join(u'\n').contains(
      QStringLiteral("Host key: ssh-ed25519 ") + FingerprintIn(sshd.HostKey(QStringLiteral("ed25519")))));
}

TEST_F(TransferTest, ClosesAnIdleLineAndConnectsAgainWhereNoQuestionIsNeeded) {
  Sshd sshd;
  const std::shared_ptr<FileSystem> files = Open(sshd);
  static_cast<void>(files->Find(At(QStringLiteral("file"))));
  const qint64 next = files->Idle(0);
  EXPECT_EQ(next, 60'000);
  static_cast<void>(files->Idle(next));
  EXPECT_FALSE(files->Find(At(QStringLiteral("file"))).has_value());
  EXPECT_EQ(sshd.Log().count("Accepted publickey"), 2);
}

TEST_F(TransferTest, KeepsALineAliveWhoseLogOnNeedsAQuestion) {
  const SshTestServer server({.password = "swordfish"});
  SshPlace place;
  place.knownHosts = folder_.filePath(QStringLiteral("known_hosts"));
  place.userName = QStringLiteral("joe");
  WriteFile(place.knownHosts, server.KnownHostsLine());
  prompts_.ExpectSecret(QString(), QStringLiteral("swordfish"));
  const std::shared_ptr<FileSystem> files =
      OpenSftp({server.Machine(), QString(), control_}, place, secrets_);
  qint64 next = files->Idle(0);
  EXPECT_EQ(next, 30'000);
  for (int i = 0; i < 5; ++i) {
    next = files->Idle(next);
    EXPECT_EQ(next, 30'000 * (i + 2));
  }
  EXPECT_FALSE(files->Find(At(QStringLiteral("file"))).has_value());
  EXPECT_EQ(server.Sessions(), 1);
}

}  // namespace
}  // namespace trevane::test

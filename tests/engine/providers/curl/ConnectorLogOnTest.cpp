#include "base/RunTimeError.h"
#include "engine/providers/certificates/CertificateText.h"
#include "engine/providers/curl/CurlConnector.h"
#include "engine/providers/curl/CurlFailures.h"
#include "engine/providers/ftp/FtpFileSystem.h"
#include "tests/support/FakeSecretStore.h"
#include "tests/support/ScriptedPrompts.h"
#include "tests/support/TestControl.h"
#include "tests/support/TestFiles.h"
#include "tests/support/ftp/FtpTestServer.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <utility>

namespace trevane::test {
namespace {

/// A connector to a scripted controller, over the network.
class ConnectorLogOnTest : public ::testing::Test {
 protected:
  void Start(const FtpVices& vices) { server_.emplace(vices); }
  void StartOverTls() {
    FtpVices vices;
    vices.tls = FtpVices::Tls::Explicit;
    Start(vices);
  }
  [[nodiscard]] CurlConnector ConnectorOf(const QString& option, DialogueOpener open = OpenCurlDialogue) {
    const FtpPlace place{.trust = {.file = TrustFile()}, .store = &store_};
    return {ReadFtpSettings(server_->Machine(), option),
            place,
            std::make_shared<SecretMemory>(),
            control_,
            std::move(open),
            {.whole = 60'000, .pause = 1}};
  }
  static RunTimeError FailureOf(CurlConnector& connector) {
    try {
      static_cast<void>(connector.Connect());
    } catch (const RunTimeError& failure) {
      return failure;
    }
    ADD_FAILURE() << "it has connected";
    return RunTimeError(0, QString());
  }
  [[nodiscard]] QString TrustFile() const { return folder_.filePath(QStringLiteral("trust")); }
  void ExpectPassword(const char* password, bool remember = false) {
    prompts_.ExpectSecret(QStringLiteral("Password of joe on %1").arg(server_->Machine()),
                          QString::fromLatin1(password), remember);
  }

  QTemporaryDir folder_;
  ScriptedPrompts prompts_;
  FakeSecretStore store_;
  std::shared_ptr<TestControl> control_ = std::make_shared<TestControl>(&prompts_);
  std::optional<FtpTestServer> server_;
};

const QString kJoe = QStringLiteral("User=joe");
const QString kJoeOverTls = QStringLiteral("User=joe,Tls=Explicit");

TEST_F(ConnectorLogOnTest, AWrongPasswordIsAskedForAgainWithTheServersWords) {
  Start({});
  ExpectPassword("wrong", true);
  ExpectPassword("secret", true);
  CurlConnector connector = ConnectorOf(kJoe);
  EXPECT_EQ(connector.Connect()->Start(), "/");
  EXPECT_TRUE(prompts_.Asked().back().informativeText.contains(QStringLiteral("530 Login incorrect.")));
  ASSERT_EQ(store_.kept.size(), 1U);
  EXPECT_EQ(store_.kept.begin()->second, Secret(QStringLiteral("secret")));
  EXPECT_TRUE(connector.Details().contains(QStringLiteral("Encryption: none")));
}

TEST_F(ConnectorLogOnTest, ABusyServerIsTriedUntilItHasRoom) {
  FtpVices vices;
  vices.mostClients = 0;
  vices.users.insert("anonymous", {.password = "anonymous@"});
  Start(vices);
  int tries = 0;
  CurlConnector connector = ConnectorOf(QString(), [&](const FtpSettings& settings, const FtpLogOn& logOn,
                                                       const std::shared_ptr<CallControl>& control) {
    if (++tries == 3) {
      server_->Script().Change([](FtpVices& changed) { changed.mostClients = 1; });
    }
    return OpenCurlDialogue(settings, logOn, control);
  });
  EXPECT_NE(connector.Connect(), nullptr);
  EXPECT_EQ(tries, 3);
}

TEST_F(ConnectorLogOnTest, APasswordIsNotSentAgainAndAgainToAServerThatEnds) {
  FtpVices vices;
  vices.wrongLogOn = "421 Closing";
  Start(vices);
  ExpectPassword("wrong");
  CurlConnector connector = ConnectorOf(kJoe);
  const RunTimeError failure = FailureOf(connector);
  EXPECT_EQ(failure.Number(), curl::kLineLost);
  EXPECT_TRUE(failure.Description().contains(QStringLiteral("421 Closing")));
  EXPECT_EQ(server_->Count("PASS"), 1);
}

TEST_F(ConnectorLogOnTest, TooManyAttemptsAreNoBusyServer) {
  FtpVices vices;
  vices.wrongLogOn = "530 Too many log-on attempts, try again later";
  Start(vices);
  for (int i = 0; i < 3; ++i) {
    ExpectPassword("wrong");
  }
  CurlConnector connector = ConnectorOf(kJoe);
  EXPECT_EQ(FailureOf(connector).Number(), error::kLogonFailure);
  EXPECT_EQ(server_->Count("PASS"), 3);
}

TEST_F(ConnectorLogOnTest, AnAcceptedCertificateIsTrustedFromThenOn) {
  StartOverTls();
  ExpectPassword("secret");
  prompts_.ExpectChoice(0);
  CurlConnector connector = ConnectorOf(kJoeOverTls);
  EXPECT_NE(connector.Connect(), nullptr);
  const QString fingerprint = certificatetext::FingerprintText(server_->Fingerprint());
  EXPECT_TRUE(prompts_.Asked().back().informativeText.contains(
      certificatetext::FingerprintLines(server_->Fingerprint())));
  EXPECT_TRUE(connector.ServerKey().contains(fingerprint));
  EXPECT_TRUE(connector.Details().contains(QStringLiteral("Certificate: ") + fingerprint));
  EXPECT_FALSE(connector.Details().filter(QStringLiteral("Encryption: TLSv1.2")).isEmpty());
  // Another run of the program, as it were.
  ExpectPassword("secret");
  CurlConnector another = ConnectorOf(kJoeOverTls);
  EXPECT_NE(another.Connect(), nullptr);
}

TEST_F(ConnectorLogOnTest, NothingIsSentToAServerWhoseCertificateHasChanged) {
  StartOverTls();
  ExpectPassword("secret");
  prompts_.ExpectChoice(0);
  CurlConnector connector = ConnectorOf(kJoeOverTls);
  EXPECT_NE(connector.Connect(), nullptr);
  server_->ChangeCertificate();
  server_->Script().ClearCounts();
  const RunTimeError failure = FailureOf(connector);
  EXPECT_EQ(failure.Number(), error::kWin32Error + 1397);
  EXPECT_TRUE(failure.Description().contains(certificatetext::FingerprintLines(server_->Fingerprint())));
  EXPECT_EQ(server_->Count("USER"), 0);
  EXPECT_EQ(server_->Count("PASS"), 0);
}

TEST_F(ConnectorLogOnTest, ADriveEndsWhereTheCertificateHasChanged) {
  StartOverTls();
  server_->Tree().AddFile("/a", "content");
  ExpectPassword("secret");
  prompts_.ExpectChoice(0);
  const auto files =
      OpenFtpFileSystem(std::unique_ptr<FtpConnector>(new CurlConnector(ConnectorOf(kJoeOverTls))),
                        ReadFtpSettings(server_->Machine(), kJoeOverTls), control_);
  EXPECT_EQ(files->List(QString()).size(), 1U);
  server_->ChangeCertificate();
  server_->Script().ClearCounts();
  server_->DropAll();
  // The first call may find nothing but the end of the line.
  std::optional<RunTimeError> failure;
  for (int i = 0; i < 2 && (!failure || failure->Number() == curl::kLineLost); ++i) {
    try {
      static_cast<void>(files->List(QString()));
      ADD_FAILURE() << "it has connected";
    } catch (const RunTimeError& refusal) {
      failure = refusal;
    }
  }
  ASSERT_TRUE(failure);
  EXPECT_EQ(failure->Number(), error::kWin32Error + 1397);
  EXPECT_TRUE(failure->Description().contains(TrustFile())) << failure->what();
  EXPECT_EQ(server_->Count("USER") + server_->Count("PASS"), 0);
  // Nobody was asked once more.
  EXPECT_EQ(prompts_.Asked().size(), 2U);
}

TEST_F(ConnectorLogOnTest, ACertificateOfTheCaFileNeedsNoQuestion) {
  StartOverTls();
  const QString caFile = folder_.filePath(QStringLiteral("plant, all.pem"));
  WriteFile(caFile, server_->CertificatePem());
  ExpectPassword("secret");
  CurlConnector connector = ConnectorOf(kJoeOverTls + QStringLiteral(",CaFile=\"%1\"").arg(caFile));
  EXPECT_NE(connector.Connect(), nullptr);
  EXPECT_EQ(prompts_.Asked().size(), 1U);
}

}  // namespace
}  // namespace trevane::test

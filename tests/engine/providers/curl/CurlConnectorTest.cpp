#include "base/RunTimeError.h"
#include "engine/providers/certificates/AcceptedCertificates.h"
#include "engine/providers/certificates/CertificateText.h"
#include "engine/providers/curl/CurlConnector.h"
#include "engine/providers/curl/OpenFtp.h"
#include "engine/providers/ftp/AbandonedItems.h"
#include "tests/support/FakeSecretStore.h"
#include "tests/support/ScriptedPrompts.h"
#include "tests/support/TestControl.h"
#include "tests/support/TestFiles.h"

#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <deque>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include <curl/curl.h>

namespace trevane::test {
namespace {

constexpr qint32 kNotProved = error::kWin32Error + 1397;
constexpr qint32 kLineLost = error::kWin32Error + 64;

/// A line on which nothing is done.
class IdleDialogue final : public FtpDialogue {
 public:
  [[nodiscard]] ftp::Reply Command(const QByteArray& /*command*/) override { return {.code = 502}; }
  [[nodiscard]] std::vector<ftp::Reply> Commands(const QByteArrayList& /*commands*/) override { return {}; }
  [[nodiscard]] Text ReadText(const QByteArray& /*command*/, qint64 /*most*/) override {
    return {.reply = {.code = 502}};
  }
  [[nodiscard]] std::unique_ptr<FtpDownload> Retrieve(const QByteArray& /*path*/, qint64 /*offset*/,
                                                      ftp::Reply& refusal) override {
    refusal.code = 502;
    return nullptr;
  }
  [[nodiscard]] std::unique_ptr<FtpUpload> Store(const QByteArray& /*path*/) override { return nullptr; }
  [[nodiscard]] const QByteArrayList& Features() const override { return features_; }
  [[nodiscard]] const QByteArray& Start() const override { return start_; }
  [[nodiscard]] bool IsBroken() const noexcept override { return false; }
  void BeginPutBack() noexcept override {}
  void EndPutBack() noexcept override {}

 private:
  QByteArrayList features_;
  QByteArray start_ = "/";
};

QByteArray Fingerprint(char byte) {
  return QByteArray(certificatetext::kFingerprintSize, byte);
}

QString LinesOf(char byte) {
  return certificatetext::FingerprintLines(Fingerprint(byte));
}

/// Servers and users of a connector without a network.
class CurlConnectorTest : public ::testing::Test {
 protected:
  /// What each connection finds, in order; then a server that takes everybody.
  using Step = std::function<void(const FtpLogOn&)>;

  static Step Fails(qint32 number, const char* text) {
    return
        [number, text](const FtpLogOn& /*logOn*/) { throw RunTimeError(number, QString::fromLatin1(text)); };
  }
  static Step Refuses(const char* words = "The log-on was refused: \"Login incorrect\"") {
    return Fails(error::kLogonFailure, words);
  }
  static Step IsFull() {
    return Fails(busyserver::kNoRoom, "The server takes no further client: \"Too many users\"");
  }

  /// The certificate that the server shows, for which nobody vouches.
  void Show(char byte) { shown_ = byte; }

  [[nodiscard]] OpenDialogue Open(const FtpLogOn& logOn) {
    logOns_.push_back(logOn);
    if (!steps_.empty()) {
      const Step step = steps_.front();
      steps_.pop_front();
      if (step) {
        step(logOn);
      }
    }
    OpenDialogue open;
    if (shown_ != 0) {
      open.certificate = {.fingerprint = Fingerprint(shown_),
                          .subject = QStringLiteral("CN=cell4"),
                          .issuer = QStringLiteral("CN=cell4"),
                          .validFrom = QDateTime(QDate(2024, 1, 2), QTime(12, 0)),
                          .validUntil = QDateTime(QDate(2034, 1, 2), QTime(12, 0)),
                          .reason = isVouchedFor_ ? QString() : QStringLiteral("it is signed by itself")};
      if (!isVouchedFor_ && logOn.trustedFingerprint != Fingerprint(shown_)) {
        throw CertificateRefused(open.certificate, QStringLiteral("The certificate is not trusted"));
      }
      open.tls = QStringLiteral("TLSv1.2, ECDHE-RSA-AES256-GCM-SHA384");
    }
    open.greeting = greeting_;
    open.address = QStringLiteral("10.0.0.4");
    open.dialogue = std::make_unique<IdleDialogue>();
    return open;
  }

  [[nodiscard]] FtpPlace Place() {
    return {.trust = {.file = TrustFile(), .accepted = accepted_}, .store = &store_};
  }
  [[nodiscard]] QString TrustFile() const { return folder_.filePath(QStringLiteral("Trevane.ini.trust")); }

  [[nodiscard]] std::unique_ptr<CurlConnector> ConnectorOf(const QString& option, bool hasUser = true) {
    return std::make_unique<CurlConnector>(
        ReadFtpSettings(QStringLiteral("Cell4:2121"), option), Place(), secrets_,
        hasUser ? control_ : nullptr,
        [this](const FtpSettings& /*settings*/, const FtpLogOn& logOn,
               const std::shared_ptr<CallControl>& /*control*/) { return Open(logOn); },
        patience_);
  }

  /// The failure of a connection that must not succeed.
  static RunTimeError FailureOf(CurlConnector& connector) {
    try {
      static_cast<void>(connector.Connect());
    } catch (const RunTimeError& failure) {
      return failure;
    }
    ADD_FAILURE() << "it has connected";
    return RunTimeError(0, QString());
  }

  [[nodiscard]] QStringList PasswordsSent() const {
    QStringList sent;
    for (const FtpLogOn& each : logOns_) {
      sent.append(QString::fromUtf8(each.password.Bytes()));
    }
    return sent;
  }

  QTemporaryDir folder_;
  ScriptedPrompts prompts_;
  FakeSecretStore store_;
  std::shared_ptr<TestControl> control_ = std::make_shared<TestControl>(&prompts_);
  std::shared_ptr<SecretMemory> secrets_ = std::make_shared<SecretMemory>();
  std::shared_ptr<AcceptedCertificates> accepted_ = std::make_shared<AcceptedCertificates>();
  busyserver::Patience patience_{.whole = 60'000, .pause = 1};
  std::shared_ptr<CallControl> dialogueControl_;
  std::deque<Step> steps_;
  std::vector<FtpLogOn> logOns_;
  QByteArray greeting_ = "220 Cell 4 ready";
  char shown_ = 0;
  bool isVouchedFor_ = false;
};

const QString kPrompt = QStringLiteral("Password of joe on Cell4:2121");
const QString kAccount = QStringLiteral("FTP password for joe@cell4:2121");
const QString kTlsAccount = QStringLiteral("FTPS password for joe@cell4:2121");
const QString kUser = QStringLiteral("User=joe");
const QString kTls = QStringLiteral("Tls=Explicit");
const QString kReadable =
    QStringLiteral("The connection is not encrypted: the password can be read on its way.");

TEST_F(CurlConnectorTest, AsksNothingForAnAnonymousLogOn) {
  const auto connector = ConnectorOf(QString());
  EXPECT_NE(connector->Connect(), nullptr);
  EXPECT_EQ(logOns_.front().user, QStringLiteral("anonymous"));
  EXPECT_EQ(PasswordsSent(), QStringList{QStringLiteral("anonymous@")});
  EXPECT_TRUE(connector->ConnectsWithoutQuestion());
  EXPECT_EQ(store_.finds, 0);
}

TEST_F(CurlConnectorTest, TellsThatARefusedLogOnWasAnonymous) {
  steps_ = {Refuses()};
  const auto connector = ConnectorOf(QString());
  const RunTimeError failure = FailureOf(*connector);
  EXPECT_EQ(failure.Number(), error::kLogonFailure);
  EXPECT_EQ(failure.Description(),
            QStringLiteral("The log-on was refused: \"Login incorrect\"\n"
                           "The log-on was anonymous, since the option User is missing"));
}

TEST_F(CurlConnectorTest, AsksForThePasswordAndTellsThatItIsReadable) {
  prompts_.ExpectSecret(kPrompt, QStringLiteral("swordfish"));
  const auto connector = ConnectorOf(kUser);
  EXPECT_NE(connector->Connect(), nullptr);
  EXPECT_EQ(logOns_.front().user, QStringLiteral("joe"));
  EXPECT_EQ(PasswordsSent(), QStringList{QStringLiteral("swordfish")});
  const AskedQuestion& question = prompts_.Asked().front();
  EXPECT_EQ(question.title, QStringLiteral("Log on to Cell4:2121"));
  EXPECT_EQ(question.informativeText, kReadable);
  EXPECT_TRUE(question.isHidden);
  EXPECT_TRUE(question.offersRemember);
  EXPECT_TRUE(store_.kept.empty());
}

TEST_F(CurlConnectorTest, SaysNothingOfThatOverTls) {
  Show(1);
  isVouchedFor_ = true;
  prompts_.ExpectSecret(kPrompt, QStringLiteral("swordfish"));
  EXPECT_NE(ConnectorOf(QStringLiteral("User=joe,Tls=Explicit"))->Connect(), nullptr);
  EXPECT_EQ(prompts_.Asked().front().informativeText, QString());
}

TEST_F(CurlConnectorTest, ReconnectsWithWhatWasTyped) {
  prompts_.ExpectSecret(kPrompt, QStringLiteral("swordfish"));
  const auto connector = ConnectorOf(kUser);
  EXPECT_FALSE(connector->ConnectsWithoutQuestion());
  EXPECT_NE(connector->Connect(), nullptr);
  EXPECT_TRUE(connector->ConnectsWithoutQuestion());
  EXPECT_NE(connector->Connect(), nullptr);
  // Also a second connection of the same controller.
  EXPECT_NE(ConnectorOf(kUser)->Connect(), nullptr);
  EXPECT_EQ(PasswordsSent(), QStringList(3, QStringLiteral("swordfish")));
}

TEST_F(CurlConnectorTest, KeepsAPasswordOnlyWhereTheUserWants) {
  prompts_.ExpectSecret(kPrompt, QStringLiteral("swordfish"), true);
  EXPECT_NE(ConnectorOf(kUser)->Connect(), nullptr);
  ASSERT_EQ(store_.kept.size(), 1U);
  EXPECT_EQ(store_.kept.begin()->first, kAccount);
  secrets_ = std::make_shared<SecretMemory>();
  const auto connector = ConnectorOf(kUser);
  EXPECT_NE(connector->Connect(), nullptr);
  EXPECT_EQ(PasswordsSent(), QStringList(2, QStringLiteral("swordfish")));
  EXPECT_TRUE(connector->ConnectsWithoutQuestion());
}

TEST_F(CurlConnectorTest, SendsAPasswordOfTlsNeverWithoutIt) {
  store_.kept.emplace(kTlsAccount, Secret(QStringLiteral("secret")));
  store_.kept.emplace(QStringLiteral("password for joe@cell4:2121"), Secret(QStringLiteral("of SFTP")));
  prompts_.ExpectSecret(kPrompt, QStringLiteral("swordfish"));
  EXPECT_NE(ConnectorOf(kUser)->Connect(), nullptr);
  EXPECT_EQ(PasswordsSent(), QStringList{QStringLiteral("swordfish")});
}

TEST_F(CurlConnectorTest, ForgetsARefusedPasswordAndAsksAgain) {
  store_.kept.emplace(kAccount, Secret(QStringLiteral("old")));
  steps_ = {Refuses(), Refuses()};
  prompts_.ExpectSecret(kPrompt, QStringLiteral("wrong"));
  prompts_.ExpectSecret(kPrompt, QStringLiteral("right"));
  EXPECT_NE(ConnectorOf(kUser)->Connect(), nullptr);
  EXPECT_EQ(PasswordsSent(),
            (QStringList{QStringLiteral("old"), QStringLiteral("wrong"), QStringLiteral("right")}));
  EXPECT_TRUE(store_.kept.empty());
  const QString refusal = QStringLiteral("The log-on was refused: \"Login incorrect\"");
  // That it is readable is told with the first question alone.
  EXPECT_EQ(prompts_.Asked()[0].informativeText, refusal + u'\n' + kReadable);
  EXPECT_EQ(prompts_.Asked()[1].informativeText, refusal);
}

TEST_F(CurlConnectorTest, GivesUpAfterThreePasswords) {
  steps_ = {Refuses(), Refuses(), Refuses("No, and no again")};
  for (int i = 0; i < 3; ++i) {
    prompts_.ExpectSecret(kPrompt, QStringLiteral("wrong"), true);
  }
  const RunTimeError failure = FailureOf(*ConnectorOf(kUser));
  EXPECT_EQ(failure.Number(), error::kLogonFailure);
  EXPECT_EQ(failure.Description(), QStringLiteral("No, and no again"));
  EXPECT_TRUE(store_.kept.empty());
  EXPECT_EQ(secrets_->Find(kAccount), std::nullopt);
}

TEST_F(CurlConnectorTest, SendsNothingWhereTheUserGivesNoPassword) {
  prompts_.ExpectCancelledSecret(kPrompt);
  EXPECT_EQ(FailureOf(*ConnectorOf(kUser)).Number(), error::kCancelled);
  EXPECT_TRUE(logOns_.empty());
}

TEST_F(CurlConnectorTest, FailsWhereNobodyCanBeAsked) {
  const RunTimeError failure = FailureOf(*ConnectorOf(kUser, false));
  EXPECT_EQ(failure.Number(), error::kLogonFailure);
  EXPECT_EQ(failure.Description(),
            QStringLiteral("The password of joe is not known, and there is nobody to ask: Cell4:2121"));
}

TEST_F(CurlConnectorTest, SuspectsAPasswordAfterTwoSilentEnds) {
  store_.kept.emplace(kAccount, Secret(QStringLiteral("old")));
  steps_ = {Fails(kLineLost, "The connection was lost"), Fails(kLineLost, "The connection was lost")};
  EXPECT_EQ(FailureOf(*ConnectorOf(kUser)).Number(), kLineLost);
  EXPECT_EQ(store_.kept.size(), 1U);
  EXPECT_EQ(FailureOf(*ConnectorOf(kUser)).Number(), kLineLost);
  EXPECT_TRUE(store_.kept.empty());
}

TEST_F(CurlConnectorTest, TriesABusyServerAgainAndTellsSo) {
  steps_ = {IsFull(), IsFull(), IsFull()};
  EXPECT_NE(ConnectorOf(QString())->Connect(), nullptr);
  EXPECT_EQ(logOns_.size(), 4U);
  EXPECT_EQ(control_->Told().first(), QStringLiteral("Busy with another client, trying again"));
  EXPECT_EQ(control_->Told().last(), QString());
}

TEST_F(CurlConnectorTest, PassesOnTheWordsOfAServerThatStaysBusy) {
  patience_.whole = 0;
  steps_ = {IsFull()};
  const RunTimeError failure = FailureOf(*ConnectorOf(QString()));
  EXPECT_EQ(failure.Number(), busyserver::kNoRoom);
  EXPECT_EQ(failure.Description(), QStringLiteral("The server takes no further client: \"Too many users\""));
  EXPECT_EQ(logOns_.size(), 1U);
}

TEST_F(CurlConnectorTest, TriesNoOtherFailureAgain) {
  steps_ = {Fails(error::kTimeOut, "The host has not answered in time")};
  EXPECT_EQ(FailureOf(*ConnectorOf(QString())).Number(), error::kTimeOut);
  EXPECT_EQ(logOns_.size(), 1U);
}

TEST_F(CurlConnectorTest, CancelEndsTheWaitForABusyServer) {
  // So long that the test would never end.
  patience_ = {.whole = 1'000'000'000, .pause = 1'000'000'000};
  steps_ = {[this](const FtpLogOn& logOn) {
    control_->Cancel();
    IsFull()(logOn);
  }};
  EXPECT_EQ(FailureOf(*ConnectorOf(QString())).Number(), error::kCancelled);
  EXPECT_EQ(logOns_.size(), 1U);
}

TEST_F(CurlConnectorTest, ACancelledCallConnectsOnceMoreToPutBack) {
  // The connection hears the cancel of the call, as a real one does.
  const DialogueOpener open = [this](const FtpSettings& /*settings*/, const FtpLogOn& logOn,
                                     const std::shared_ptr<CallControl>& control) {
    dialogueControl_ = control;
    if (control->IsCancelled()) {
      throw RunTimeError(error::kCancelled, QStringLiteral("Cancelled"));
    }
    return Open(logOn);
  };
  CurlConnector connector(ReadFtpSettings(QStringLiteral("cell4"), QString()), Place(), secrets_, control_,
                          open, patience_);
  EXPECT_NE(connector.Connect(), nullptr);
  control_->Cancel();
  EXPECT_EQ(FailureOf(connector).Number(), error::kCancelled);
  EXPECT_NE(connector.ConnectToPutBack(), nullptr);
  EXPECT_TRUE(dialogueControl_->IsCancelled()) << "what comes after it is cancelled as ever";
}

TEST_F(CurlConnectorTest, PuttingBackAsksForNoPassword) {
  const auto connector = ConnectorOf(kUser);
  EXPECT_THROW(static_cast<void>(connector->ConnectToPutBack()), RunTimeError);
  EXPECT_TRUE(logOns_.empty());
}

TEST_F(CurlConnectorTest, AsksForAnUnknownCertificateAndTrustsItFromThenOn) {
  Show(1);
  prompts_.ExpectChoice(QStringLiteral("The certificate of Cell4:2121 is not known. Trust it, and connect?"),
                        0);
  const auto connector = ConnectorOf(kTls);
  EXPECT_NE(connector->Connect(), nullptr);
  const AskedQuestion& question = prompts_.Asked().front();
  EXPECT_EQ(question.title, QStringLiteral("Unknown certificate"));
  EXPECT_EQ(question.icon, PromptIcon::Exclamation);
  EXPECT_EQ(question.captions, (QStringList{QStringLiteral("&Connect"), QStringLiteral("Cancel")}));
  EXPECT_EQ(question.defaultButton, 1);
  EXPECT_EQ(question.cancelButton, 1);
  EXPECT_EQ(question.informativeText,
            QStringLiteral("Not trusted by itself: it is signed by itself\nSubject and issuer: CN=cell4\n"
                           "Valid: 2024-01-02 to 2034-01-02\nFingerprint (SHA-256):\n%1\n\nCompare the "
                           "fingerprint with that of the controller. If it is another one, another machine "
                           "has answered.")
                .arg(LinesOf(1)));
  EXPECT_TRUE(ContentOf(TrustFile()).contains("\ncell4:2121 01:01:"));
  EXPECT_NE(connector->Connect(), nullptr);
  EXPECT_NE(ConnectorOf(kTls)->Connect(), nullptr);
  EXPECT_EQ(prompts_.Asked().size(), 1U);
  EXPECT_TRUE(connector->Details().contains(
      QStringLiteral("Trusted for this controller alone: it is signed by itself")));
}

TEST_F(CurlConnectorTest, ConnectsToNobodyWhoseCertificateIsNotAccepted) {
  Show(1);
  prompts_.ExpectChoice(1);
  const RunTimeError failure = FailureOf(*ConnectorOf(kTls));
  EXPECT_EQ(failure.Number(), error::kCancelled);
  EXPECT_EQ(failure.Description(),
            QStringLiteral("Cancelled: the certificate of Cell4:2121 was not accepted"));
  EXPECT_FALSE(QFile::exists(TrustFile()));
  EXPECT_EQ(logOns_.size(), 1U);
}

TEST_F(CurlConnectorTest, FailsForAnUnknownCertificateWhereNobodyCanBeAsked) {
  Show(1);
  const RunTimeError failure = FailureOf(*ConnectorOf(kTls, false));
  EXPECT_EQ(failure.Number(), kNotProved);
  EXPECT_TRUE(failure.Description().contains(certificatetext::FingerprintText(Fingerprint(1))));
}

TEST_F(CurlConnectorTest, ACertificateThatIsVouchedForNeedsNoQuestion) {
  Show(1);
  isVouchedFor_ = true;
  EXPECT_NE(ConnectorOf(kTls)->Connect(), nullptr);
  EXPECT_FALSE(QFile::exists(TrustFile()));
}

TEST_F(CurlConnectorTest, AChangedCertificateEndsTheAttempt) {
  WriteFile(TrustFile(), "# mine\ncell4:2121 " + certificatetext::FingerprintText(Fingerprint(1)).toLatin1() +
                             " 2024-01-01\n");
  Show(2);
  const RunTimeError failure = FailureOf(*ConnectorOf(kTls));
  EXPECT_EQ(failure.Number(), kNotProved);
  EXPECT_EQ(
      failure.Description(),
      QStringLiteral("The certificate of Cell4:2121 has changed. Another machine may answer in its place, "
                     "so nothing was sent to it.\nTrusted (line 2 of %1):\n%2\nShown now:\n%3\nIf the "
                     "controller was given a new certificate, remove the old line there.")
          .arg(TrustFile(), LinesOf(1), LinesOf(2)));
  EXPECT_EQ(logOns_.size(), 1U);
  EXPECT_TRUE(prompts_.Asked().empty());
}

TEST_F(CurlConnectorTest, TakesEachOfSeveralTrustedCertificates) {
  const auto line = [](char byte) {
    return "cell4:2121 " + certificatetext::FingerprintText(Fingerprint(byte)).toLatin1() + '\n';
  };
  WriteFile(TrustFile(), line(1) + line(2));
  for (const char byte : {'\1', '\2'}) {
    Show(byte);
    EXPECT_NE(ConnectorOf(kTls)->Connect(), nullptr);
  }
}

TEST_F(CurlConnectorTest, AnotherCertificateAfterTheQuestionIsAChangedOne) {
  Show(1);
  prompts_.ExpectChoice(0);
  steps_ = {nullptr, [this](const FtpLogOn& /*logOn*/) { Show(2); }};
  EXPECT_EQ(FailureOf(*ConnectorOf(kTls)).Number(), kNotProved);
}

TEST_F(CurlConnectorTest, NothingIsSentWhileTheTrustFileCannotBeRead) {
  ASSERT_TRUE(QDir().mkpath(TrustFile()));
  Show(1);
  const RunTimeError failure = FailureOf(*ConnectorOf(kTls));
  EXPECT_EQ(failure.Number(), error::kAccessDenied);
  EXPECT_TRUE(failure.Description().contains(TrustFile()));
  EXPECT_TRUE(logOns_.empty());
  // Without TLS it is not needed.
  Show(0);
  EXPECT_NE(ConnectorOf(QString())->Connect(), nullptr);
}

TEST_F(CurlConnectorTest, TellsWhyACertificateCouldNotBeStored) {
  WriteFile(folder_.filePath(QStringLiteral("closed")), "a file");
  FtpPlace place = Place();
  place.trust.file = folder_.filePath(QStringLiteral("closed/Trevane.ini.trust"));
  Show(1);
  const auto newConnector = [&] {
    return CurlConnector(ReadFtpSettings(QStringLiteral("cell4"), kTls), place, secrets_, control_,
                         [this](const FtpSettings& /*settings*/, const FtpLogOn& logOn,
                                const std::shared_ptr<CallControl>& /*control*/) { return Open(logOn); });
  };
  prompts_.ExpectChoice(0);
  prompts_.ExpectBox(QStringLiteral("The certificate could not be stored."));
  CurlConnector connector = newConnector();
  EXPECT_NE(connector.Connect(), nullptr);
  EXPECT_EQ(prompts_.Asked().back().informativeText,
            QStringLiteral("It is trusted until the program ends.\nThe folder of the file cannot be made"));
  EXPECT_TRUE(connector.Details().last().startsWith(
      QStringLiteral("The certificate is trusted until the program ends.")));
  CurlConnector another = newConnector();
  EXPECT_NE(another.Connect(), nullptr);
  EXPECT_EQ(prompts_.Asked().size(), 2U);
}

TEST_F(CurlConnectorTest, TellsWhatTheConnectionIs) {
  Show(1);
  isVouchedFor_ = true;
  prompts_.ExpectSecret(kPrompt, QStringLiteral("swordfish"));
  const auto connector = ConnectorOf(QStringLiteral("User=joe,Tls=Explicit"));
  EXPECT_NE(connector->Connect(), nullptr);
  const QString fingerprint = certificatetext::FingerprintText(Fingerprint(1));
  EXPECT_EQ(
      connector->Details(),
      (QStringList{QStringLiteral("Server: Cell4:2121 (10.0.0.4)"), QStringLiteral("Protocol: FTP over TLS"),
                   QStringLiteral("Greeting: 220 Cell 4 ready"), QStringLiteral("User: joe"),
                   QStringLiteral("Encryption: TLSv1.2, ECDHE-RSA-AES256-GCM-SHA384"),
                   QStringLiteral("Certificate: ") + fingerprint}));
  EXPECT_EQ(connector->ServerKey(), QStringLiteral("cell4:2121 %1 joe").arg(fingerprint));
  EXPECT_EQ(connector->Notice(), QString());
}

TEST_F(CurlConnectorTest, TellsThatNothingIsEncrypted) {
  greeting_ = "220 Zelle 4 l\xe4uft\r\n\x1b[2J";
  const auto connector = ConnectorOf(QString());
  EXPECT_NE(connector->Connect(), nullptr);
  EXPECT_EQ(connector->ServerKey(), QStringLiteral("cell4:2121 plain anonymous"));
  EXPECT_TRUE(connector->Details().contains(QStringLiteral("Encryption: none")));
  EXPECT_TRUE(connector->Details().contains(QStringLiteral("User: anonymous")));
  const QString greeting = connector->Details()[2];
  EXPECT_TRUE(greeting.startsWith(QStringLiteral("Greeting: 220 Zelle 4 l\u00e4uft")))
      << greeting.toStdString();
  EXPECT_FALSE(greeting.contains(u'\x1b'));
}

TEST_F(CurlConnectorTest, AsksForNoPasswordWhereCaFileCannotBeRead) {
  const QString missing = folder_.filePath(QStringLiteral("missing.pem"));
  const auto connector = ConnectorOf(QStringLiteral("User=joe, Tls=Explicit, CaFile=") + missing);
  const RunTimeError failure = FailureOf(*connector);
  EXPECT_EQ(failure.Number(), error::kInvalidParameter);
  EXPECT_TRUE(failure.Description().contains(missing)) << failure.Description().toStdString();
  EXPECT_TRUE(logOns_.empty());
}

// Of Debian 12 and of the Windows build.
TEST_F(CurlConnectorTest, RefusesActiveOverTlsWhereItWouldHang) {
  const QString version = QString::fromLatin1(curl_version_info(CURLVERSION_NOW)->version);
  if (!version.startsWith(QStringLiteral("7.87.")) && !version.startsWith(QStringLiteral("7.88."))) {
    GTEST_SKIP() << "libcurl " << version.toStdString() << " can do it";
  }
  const FileSystemRequest request{.machine = QStringLiteral("127.0.0.1:1"),
                                  .option = QStringLiteral("User=joe, Tls=Explicit, Active=Yes")};
  try {
    static_cast<void>(OpenFtp(request, Place(), secrets_, std::make_shared<ftp::AbandonedItems>()));
    FAIL();
  } catch (const RunTimeError& failure) {
    EXPECT_EQ(failure.Number(), error::kNotSupported);
    EXPECT_EQ(failure.Description(),
              QStringLiteral("Active=Yes cannot be used over TLS: libcurl %1 cannot do it").arg(version));
  }
}

}  // namespace
}  // namespace trevane::test

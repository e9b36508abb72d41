#include "base/RunTimeError.h"
#include "engine/providers/curl/CurlDialogue.h"
#include "tests/support/ftp/FtpTestServer.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <optional>
#include <vector>

namespace trevane::test {
namespace {

using Tls = FtpVices::Tls;

FtpSettings SettingsOf(const FtpTestServer& server, Tls tls) {
  FtpSettings settings;
  settings.host = QStringLiteral("127.0.0.1");
  settings.port = server.Port();
  settings.user = QStringLiteral("joe");
  settings.tls = tls == Tls::Implicit ? FtpSettings::Tls::Implicit : FtpSettings::Tls::Explicit;
  return settings;
}

FtpLogOn Joe(const QByteArray& trusted) {
  return {QStringLiteral("joe"), Secret(QStringView(u"secret")), trusted};
}

struct Refused {
  ShownCertificate shown;
  QString text;
};

std::optional<Refused> RefusalOf(const FtpSettings& settings, const FtpLogOn& logOn) {
  try {
    const CurlDialogue dialogue(settings, logOn, nullptr);
  } catch (const CertificateRefused& refused) {
    return Refused{refused.Shown(), refused.Description()};
  }
  return std::nullopt;
}

qint32 FailureOf(const FtpSettings& settings, const FtpLogOn& logOn) {
  try {
    const CurlDialogue dialogue(settings, logOn, nullptr);
  } catch (const RunTimeError& failure) {
    return failure.Number();
  }
  return 0;
}

/// Some files there and back, as each transfer needs a connection of its own.
void Exchange(FtpTestServer& server, CurlDialogue& dialogue) {
  for (int i = 0; i < 5; ++i) {
    SCOPED_TRACE(i);
    const QByteArray content = QByteArray("0123456789abcdef").repeated(4000 + i);
    const std::unique_ptr<FtpUpload> upload = dialogue.Store("/file");
    upload->Write(content);
    EXPECT_EQ(upload->Finish().code, 226);
    EXPECT_EQ(server.Tree().ContentOf("/file"), content);
    ftp::Reply refusal;
    const std::unique_ptr<FtpDownload> download = dialogue.Retrieve("/file", 0, refusal);
    ASSERT_TRUE(download) << refusal.code << refusal.text.toStdString();
    QByteArray all;
    for (QByteArray piece = download->Read(65536); !piece.isEmpty(); piece = download->Read(65536)) {
      all += piece;
    }
    EXPECT_EQ(all, content);
    EXPECT_EQ(download->Finish().code, 226);
    EXPECT_EQ(dialogue.ReadText("LIST /", 100000).reply.code, 226);
  }
}

TEST(CurlTlsTest, RefusesACertificateSignedByItself) {
  for (const Tls tls : {Tls::Explicit, Tls::Implicit}) {
    FtpTestServer server({.tls = tls});
    const std::optional<Refused> refused = RefusalOf(SettingsOf(server, tls), Joe({}));
    ASSERT_TRUE(refused);
    EXPECT_EQ(refused->shown.fingerprint, server.Fingerprint());
    EXPECT_EQ(refused->shown.reason, QStringLiteral("it is signed by itself"));
    EXPECT_TRUE(refused->text.contains(refused->shown.reason)) << refused->text.toStdString();
    EXPECT_TRUE(refused->shown.subject.contains(QStringLiteral("CN = ")))
        << refused->shown.subject.toStdString();
    EXPECT_LT(refused->shown.validFrom, QDateTime::currentDateTimeUtc());
    EXPECT_GT(refused->shown.validUntil, QDateTime::currentDateTimeUtc());
    EXPECT_EQ(server.Count("USER"), 0);
  }
}

TEST(CurlTlsTest, TakesTheCertificateThatTheUserTrusts) {
  for (const Tls tls : {Tls::Explicit, Tls::Implicit}) {
    FtpTestServer server({.tls = tls, .demandsTls = true});
    CurlDialogue dialogue(SettingsOf(server, tls), Joe(server.Fingerprint()), nullptr);
    EXPECT_TRUE(dialogue.TlsInUse().startsWith(QStringLiteral("TLSv1.2, ")))
        << dialogue.TlsInUse().toStdString();
    EXPECT_EQ(dialogue.Certificate().fingerprint, server.Fingerprint());
    Exchange(server, dialogue);
  }
}

TEST(CurlTlsTest, SendsCommandsOneAfterTheOther) {
  FtpTestServer server({.closesPipelined = true, .tls = Tls::Explicit});
  CurlDialogue dialogue(SettingsOf(server, Tls::Explicit), Joe(server.Fingerprint()), nullptr);
  EXPECT_FALSE(dialogue.TakesTogether());
  const std::vector<ftp::Reply> replies = dialogue.Together({"NOOP", "DELE /missing", "PWD"});
  ASSERT_EQ(replies.size(), 3U);
  EXPECT_EQ(replies[0].code, 200);
  EXPECT_EQ(replies[1].code, 550);
  EXPECT_EQ(replies[2].code, 257);
}

TEST(CurlTlsTest, RefusesAChangedCertificate) {
  FtpTestServer server({.tls = Tls::Explicit});
  const QByteArray trusted = server.Fingerprint();
  server.ChangeCertificate();
  const std::optional<Refused> refused = RefusalOf(SettingsOf(server, Tls::Explicit), Joe(trusted));
  ASSERT_TRUE(refused);
  EXPECT_EQ(refused->shown.fingerprint, server.Fingerprint());
  EXPECT_TRUE(refused->text.contains(QStringLiteral("another certificate"))) << refused->text.toStdString();
  EXPECT_EQ(server.Count("USER"), 0);
}

TEST(CurlTlsTest, CertificatesOfCaFileVouch) {
  const QTemporaryDir folder;
  FtpTestServer server({.tls = Tls::Explicit});
  QFile file(folder.filePath(QStringLiteral("cell.pem")));
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  file.write(server.CertificatePem());
  file.close();
  FtpSettings settings = SettingsOf(server, Tls::Explicit);
  settings.caFile = file.fileName();
  {
    CurlDialogue dialogue(settings, Joe({}), nullptr);
    EXPECT_EQ(dialogue.Certificate().reason, QString());
    Exchange(server, dialogue);
  }
  // One that is trusted for this host alone is the only one.
  const std::optional<Refused> refused = RefusalOf(settings, Joe(QByteArray(32, 'x')));
  ASSERT_TRUE(refused);
  EXPECT_EQ(refused->shown.reason, QString());
  settings.caFile = folder.filePath(QStringLiteral("none.pem"));
  EXPECT_EQ(FailureOf(settings, Joe({})), error::kInvalidParameter);
}

TEST(CurlTlsTest, DataShowTheCertificateOfTheLine) {
  FtpTestServer server({.tls = Tls::Explicit, .reuse = FtpVices::Reuse::Impossible});
  CurlDialogue dialogue(SettingsOf(server, Tls::Explicit), Joe(server.Fingerprint()), nullptr);
  Exchange(server, dialogue);
}

TEST(CurlTlsTest, DataResumeTheSessionOfTheLine) {
  for (const Tls tls : {Tls::Explicit, Tls::Implicit}) {
    FtpTestServer server({.tls = tls, .reuse = FtpVices::Reuse::Demanded});
    CurlDialogue dialogue(SettingsOf(server, tls), Joe(server.Fingerprint()), nullptr);
    Exchange(server, dialogue);
  }
}

TEST(CurlTlsTest, TheReplyDecidesWhereTlsEndsAbruptly) {
  FtpTestServer server({.tls = Tls::Explicit, .endsTlsAbruptly = true});
  CurlDialogue dialogue(SettingsOf(server, Tls::Explicit), Joe(server.Fingerprint()), nullptr);
  Exchange(server, dialogue);
}

TEST(CurlTlsTest, AFullDiskInTheMiddleIsTold) {
  for (const Tls tls : {Tls::Explicit, Tls::Implicit}) {
    for (const bool isUpTo12 : {true, false}) {
      FtpTestServer server({.tls = tls, .upToTls12 = isUpTo12});
      FtpSettings settings = SettingsOf(server, tls);
      // However slow this computer is.
      settings.patience = std::chrono::seconds(30);
      settings.tlsMost = isUpTo12 ? FtpSettings::TlsMost::Tls12 : FtpSettings::TlsMost::Tls13;
      CurlDialogue dialogue(settings, Joe(server.Fingerprint()), nullptr);
      server.Script().ArmBlock(3, {.kind = FtpFault::Kind::LoseData, .reply = "452 Disk full"});
      const std::unique_ptr<FtpUpload> upload = dialogue.Store("/file");
      const QByteArray piece(1024 * 1024, 'x');
      for (int i = 0; i < 32; ++i) {
        upload->Write(piece);
      }
      const ftp::Reply reply = upload->Finish();
      EXPECT_EQ(reply.code, 452);
      EXPECT_EQ(reply.text, "Disk full");
    }
  }
}

TEST(CurlTlsTest, ARefusalIsReadBehindTheEndOfItsData) {
  // The end of the data connection is seen before the reply.
  FtpTestServer server({.refusalDelayMs = 20, .tls = Tls::Explicit, .reuse = FtpVices::Reuse::Demanded});
  CurlDialogue dialogue(SettingsOf(server, Tls::Explicit), Joe(server.Fingerprint()), nullptr);
  for (int i = 0; i < 3; ++i) {
    SCOPED_TRACE(i);
    EXPECT_EQ(dialogue.ReadText("MLSD /none", 100000).reply.code, 550);
    ftp::Reply refusal;
    EXPECT_EQ(dialogue.Retrieve("/none", 0, refusal), nullptr);
    EXPECT_EQ(refusal.code, 550);
    const std::unique_ptr<FtpUpload> upload = dialogue.Store("/none/file");
    EXPECT_TRUE(upload->WasRefused());
    EXPECT_EQ(upload->Finish().code, 553);
    EXPECT_FALSE(dialogue.IsBroken());
    Exchange(server, dialogue);
  }
  EXPECT_EQ(server.Count("USER"), 1);
  EXPECT_EQ(server.Count("PASV"), 0);
}

TEST(CurlTlsTest, NothingGoesInTheClear) {
  {
    FtpTestServer server({.tls = Tls::Explicit, .refusesProtection = true});
    EXPECT_EQ(FailureOf(SettingsOf(server, Tls::Explicit), Joe(server.Fingerprint())), error::kNotSupported);
  }
  FtpTestServer server;
  EXPECT_EQ(FailureOf(SettingsOf(server, Tls::Explicit), Joe({})), error::kNotSupported);
  EXPECT_EQ(server.Count("PASS"), 0);
}

TEST(CurlTlsTest, NewerTlsIsUsedWhereItIsAskedFor) {
  FtpTestServer server({.tls = Tls::Explicit});
  FtpSettings settings = SettingsOf(server, Tls::Explicit);
  settings.tlsMost = FtpSettings::TlsMost::Tls13;
  CurlDialogue dialogue(settings, Joe(server.Fingerprint()), nullptr);
  EXPECT_TRUE(dialogue.TlsInUse().startsWith(QStringLiteral("TLSv1.3, ")))
      << dialogue.TlsInUse().toStdString();
  Exchange(server, dialogue);
}

}  // namespace
}  // namespace trevane::test

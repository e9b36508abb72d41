#include "engine/providers/curl/CurlDialogue.h"
#include "tests/support/TestFiles.h"
#include "tests/support/ftp/FtpDaemon.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <tuple>

namespace trevane::test {
namespace {

using Options = FtpDaemon::Options;
using Case = std::tuple<const char*, Options>;

class CurlServersTest : public testing::TestWithParam<Case> {};

TEST_P(CurlServersTest, FilesGoAndComeAgainAndAgain) {
  if (!FtpDaemon::IsAvailable()) {
    GTEST_SKIP() << FtpDaemon::MissingText().toStdString();
  }
  const Options options = std::get<1>(GetParam());
  FtpDaemon daemon(options);
  FtpSettings settings;
  settings.host = QStringLiteral("127.0.0.1");
  settings.port = daemon.Port();
  settings.user = daemon.User();
  const bool isOverTls = options.tls != Options::Tls::Off;
  settings.tls = isOverTls ? FtpSettings::Tls::Explicit : FtpSettings::Tls::Off;
  const FtpLogOn logOn{daemon.User(), Secret(daemon.Password()),
                       isOverTls ? daemon.Fingerprint() : QByteArray()};
  CurlDialogue dialogue(settings, logOn, nullptr);
  EXPECT_EQ(dialogue.TlsInUse().startsWith(QStringLiteral("TLSv1.2")), isOverTls);
  const QByteArray path = daemon.ClientFolder().toUtf8() + "/a b";
  for (int i = 0; i < 20; ++i) {
    SCOPED_TRACE(i);
    const QByteArray content = QByteArray("0123456789\n").repeated(i * i * 100);
    const std::unique_ptr<FtpUpload> upload = dialogue.Store(path);
    upload->Write(content);
    const ftp::Reply stored = upload->Finish();
    ASSERT_EQ(stored.code, 226) << stored.text.toStdString() << daemon.Log().toStdString();
    EXPECT_EQ(ContentOf(daemon.Folder() + QStringLiteral("/a b")), content);
    EXPECT_EQ(dialogue.Command("SIZE " + path).text, QByteArray::number(content.size()));
    ftp::Reply refusal;
    const std::unique_ptr<FtpDownload> download = dialogue.Retrieve(path, 0, refusal);
    ASSERT_TRUE(download) << refusal.code << refusal.text.toStdString();
    QByteArray all;
    for (QByteArray piece = download->Read(65536); !piece.isEmpty(); piece = download->Read(65536)) {
      all += piece;
    }
    EXPECT_EQ(all, content);
    EXPECT_EQ(download->Finish().code, 226);
    const FtpDialogue::Text text = dialogue.ReadText("LIST " + daemon.ClientFolder().toUtf8(), 100000);
    EXPECT_EQ(text.reply.code, 226);
    EXPECT_TRUE(text.bytes.contains("a b")) << text.bytes.toStdString();
  }
  // From the middle, and broken off.
  ftp::Reply refusal;
  const std::unique_ptr<FtpDownload> rest = dialogue.Retrieve(path, 361 * 1100 - 5, refusal);
  ASSERT_TRUE(rest) << refusal.code << refusal.text.toStdString();
  EXPECT_EQ(rest->Read(100), "6789\n");
  EXPECT_TRUE(rest->Read(100).isEmpty());
  EXPECT_EQ(rest->Finish().code, 226);
  EXPECT_EQ(dialogue.Command("DELE " + path).code, 250);
}

INSTANTIATE_TEST_SUITE_P(
    All, CurlServersTest,
    testing::Values(
        Case{"Vsftpd", {.program = Options::Program::Vsftpd}},
        Case{"VsftpdReuse", {.program = Options::Program::Vsftpd, .tls = Options::Tls::ExplicitWithReuse}},
        Case{"ProFtpd", {.program = Options::Program::ProFtpd}},
        Case{"ProFtpdTls", {.program = Options::Program::ProFtpd, .tls = Options::Tls::Explicit}},
        Case{"ProFtpdReuse", {.program = Options::Program::ProFtpd, .tls = Options::Tls::ExplicitWithReuse}},
        Case{"PyFtpd", {.program = Options::Program::PyFtpd}},
        Case{"PyFtpdTls", {.program = Options::Program::PyFtpd, .tls = Options::Tls::Explicit}}),
    [](const testing::TestParamInfo<Case>& info) { return std::string(std::get<0>(info.param)); });

}  // namespace
}  // namespace trevane::test

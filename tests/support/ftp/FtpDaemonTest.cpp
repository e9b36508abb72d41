#include "tests/support/Listening.h"
#include "tests/support/TestFiles.h"
#include "tests/support/ftp/FtpDaemon.h"
#include "tests/support/ftp/PlainFtpClient.h"

#include <gtest/gtest.h>

#include <tuple>

namespace trevane::test {
namespace {

using Options = FtpDaemon::Options;
using Case = std::tuple<const char*, Options>;

class FtpDaemonTest : public ::testing::TestWithParam<Case> {};

TEST_P(FtpDaemonTest, ListensOnLoopbackOnlyAndStoresAFile) {
  if (!FtpDaemon::IsAvailable()) {
    GTEST_SKIP() << FtpDaemon::MissingText().toStdString();
  }
  const Options options = std::get<1>(GetParam());
  FtpDaemon daemon(options);
  EXPECT_EQ(ListeningAddresses(daemon.Process()), QStringList{daemon.Machine()});
  PlainFtpClient client(daemon.Port());
  EXPECT_EQ(client.Greeting().left(3), "220");
  if (options.tls != Options::Tls::Off) {
    ASSERT_TRUE(client.StartTls());
    EXPECT_EQ(client.Fingerprint(), daemon.Fingerprint());
  }
  EXPECT_EQ(client.Ask("USER " + daemon.User().toLatin1()).left(3), "331");
  EXPECT_EQ(client.Ask("PASS " + daemon.Password().toLatin1()).left(3), "230");
  EXPECT_EQ(client.Ask("TYPE I").left(3), "200");
  const QByteArray path = daemon.ClientFolder().toUtf8() + "/f";
  EXPECT_EQ(client.Store(path, "content").left(3), "226") << daemon.Log().toStdString();
  EXPECT_EQ(ContentOf(daemon.Folder() + QStringLiteral("/f")), "content");
  EXPECT_TRUE(client.Fetch("RETR " + path).startsWith("content"));
}

INSTANTIATE_TEST_SUITE_P(
    All, FtpDaemonTest,
    ::testing::Values(
        Case{"Vsftpd", {.program = Options::Program::Vsftpd}},
        Case{"VsftpdReuse", {.program = Options::Program::Vsftpd, .tls = Options::Tls::ExplicitWithReuse}},
        Case{"ProFtpd", {.program = Options::Program::ProFtpd}},
        Case{"ProFtpdTls", {.program = Options::Program::ProFtpd, .tls = Options::Tls::Explicit}},
        Case{"ProFtpdReuse", {.program = Options::Program::ProFtpd, .tls = Options::Tls::ExplicitWithReuse}},
        Case{"PyFtpd", {.program = Options::Program::PyFtpd}},
        Case{"PyFtpdTls", {.program = Options::Program::PyFtpd, .tls = Options::Tls::Explicit}}),
    [](const ::testing::TestParamInfo<Case>& info) { return std::string(std::get<0>(info.param)); });

}  // namespace
}  // namespace trevane::test

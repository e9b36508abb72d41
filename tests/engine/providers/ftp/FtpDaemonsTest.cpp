#include "engine/files/WholeFile.h"
#include "engine/providers/ftp/FtpFileSystem.h"
#include "tests/support/TestFiles.h"
#include "tests/support/ftp/FtpDaemon.h"
#include "tests/support/ftp/TestFtpConnector.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

#include <tuple>

namespace trevane::test {
namespace {

using Options = FtpDaemon::Options;
using Case = std::tuple<const char*, Options>;

/// The real servers.
class FtpDaemons : public ::testing::TestWithParam<Case> {
 protected:
  void SetUp() override {
    if (!FtpDaemon::IsAvailable()) {
      GTEST_SKIP() << FtpDaemon::MissingText().toStdString();
    }
    const Options options = std::get<1>(GetParam());
    daemon_ = std::make_unique<FtpDaemon>(options);
    FtpSettings settings;
    settings.host = QStringLiteral("127.0.0.1");
    settings.port = daemon_->Port();
    settings.user = daemon_->User();
    settings.tls = options.tls == Options::Tls::Off ? FtpSettings::Tls::Off : FtpSettings::Tls::Explicit;
    const FtpLogOn logOn{.user = daemon_->User(),
                         .password = Secret(daemon_->Password()),
                         .trustedFingerprint = daemon_->Fingerprint()};
    files_ = OpenFtpFileSystem(std::make_unique<TestFtpConnector>(settings, logOn), settings, {});
  }

  [[nodiscard]] QString At(const QString& name) const {
    const QString folder = daemon_->ClientFolder();
    QString path = (folder == u'/' ? QString() : folder) + u'/' + name;
    return path.replace(u'/', u'\\').sliced(1);
  }
  [[nodiscard]] QString OnDisk(const QString& name) const { return daemon_->Folder() + u'/' + name; }

  std::unique_ptr<FtpDaemon> daemon_;
  std::shared_ptr<FileSystem> files_;
};

TEST_P(FtpDaemons, ThirtyUploadsInARow) {
  for (int i = 0; i < 30; ++i) {
    SCOPED_TRACE(i);
    const QByteArray content(1000 * i, static_cast<char>('a' + i % 26));
    const QString name = QStringLiteral("f%1").arg(i);
    WriteFile(*files_, At(name), content);
    ASSERT_EQ(ContentOf(OnDisk(name)), content);
  }
}

TEST_P(FtpDaemons, ThirtyRoundsUpDownListAndRename) {
  for (int i = 0; i < 30; ++i) {
    SCOPED_TRACE(i);
    const QByteArray content(1000 * i, static_cast<char>('a' + i % 26));
    WriteFile(*files_, At(QStringLiteral("f")), content);
    ASSERT_EQ(ReadFile(*files_, At(QStringLiteral("f"))), content);
    const QString path = At(QStringLiteral("f"));
    const Listing listing = files_->List(path.first(qMax<qsizetype>(path.lastIndexOf(u'\\'), 0)));
    ASSERT_GE(listing.size(), 1U);
    files_->Rename(At(QStringLiteral("f")), At(QStringLiteral("g")), true);
    ASSERT_EQ(ContentOf(OnDisk(QStringLiteral("g"))), content);
  }
}

TEST_P(FtpDaemons, RemovingATreeLeavesWhatLinksLeadTo) {
  ASSERT_TRUE(QDir(daemon_->Folder()).mkpath(QStringLiteral("tree/sub")));
  ASSERT_TRUE(QDir(daemon_->Folder()).mkpath(QStringLiteral("outside")));
  WriteFile(OnDisk(QStringLiteral("outside/precious")), "precious");
  ASSERT_TRUE(QFile::link(OnDisk(QStringLiteral("outside")), OnDisk(QStringLiteral("tree/sub/link"))));
  ASSERT_TRUE(QFile::link(OnDisk(QStringLiteral("outside")), OnDisk(QStringLiteral("top"))));
  ASSERT_TRUE(QFile::link(OnDisk(QStringLiteral("outside/precious")), OnDisk(QStringLiteral("tree/file"))));
  files_->Remove(At(QStringLiteral("tree")));
  files_->Remove(At(QStringLiteral("top")));
  EXPECT_EQ(ContentOf(OnDisk(QStringLiteral("outside/precious"))), "precious");
  EXPECT_EQ(EntriesOf(daemon_->Folder()), QStringList{QStringLiteral("outside")});
}

INSTANTIATE_TEST_SUITE_P(
    All, FtpDaemons,
    ::testing::Values(
        Case{"Vsftpd", {.program = Options::Program::Vsftpd}},
        Case{"VsftpdReuse", {.program = Options::Program::Vsftpd, .tls = Options::Tls::ExplicitWithReuse}},
        Case{"ProFtpd", {.program = Options::Program::ProFtpd}},
        Case{"ProFtpdReuse", {.program = Options::Program::ProFtpd, .tls = Options::Tls::ExplicitWithReuse}}),
    [](const ::testing::TestParamInfo<Case>& info) { return std::string(std::get<0>(info.param)); });

}  // namespace
}  // namespace trevane::test

#include "tests/engine/providers/windows/LoopbackBeds.h"

#include "engine/providers/ftp/FtpFileSystem.h"
#include "engine/providers/ssh/OpenSftp.h"
#include "platform/windows/WindowsText.h"
#include "tests/engine/providers/windows/NativeDates.h"
#include "tests/support/ftp/TestFtpConnector.h"

#include <QDir>
#include <QTemporaryDir>
#include <QUrl>

#include <utility>

namespace trevane::test {
namespace {

constexpr qint64 kSecond = 1000;
constexpr qint64 kDay = 24 * 60 * 60 * kSecond;

/// Wine's drive Z: shows what the servers have.
QString OfServer(const char* variable) {
  return QStringLiteral("Z:") + qEnvironmentVariable(variable);
}

/// What differs between the servers.
struct LoopbackFacts {
  qint64 timePrecision = kSecond;
  bool isPlain = false;
  bool holdsAnyBytes = false;
  /// Names have no ends of lines.
  bool hasCommandLines = false;
  /// Names have no blanks at their ends.
  bool hasListingLines = false;
};

/// A folder of one of the servers that are started beside Wine.
class LoopbackBed final : public ProviderBed {
 public:
  LoopbackBed(std::shared_ptr<FileSystem> files, const LoopbackFacts& facts)
      : facts_(facts), files_(std::move(files)) {
    EXPECT_TRUE(folder_.isValid()) << folder_.errorString().toStdString();
    EXPECT_TRUE(QDir(folder_.path()).mkpath(QStringLiteral("base")));
  }
  ~LoopbackBed() override {
    // QTemporaryDir cannot remove every name that Linux has.
    EXPECT_EQ(ErrorOf([this] { files_->Remove(Base()); }), 0);
  }
  LoopbackBed(const LoopbackBed&) = delete;
  LoopbackBed& operator=(const LoopbackBed&) = delete;

  FileSystem& Files() override { return *files_; }
  QString Base() const override {
    QString base = folder_.filePath(QStringLiteral("base")).sliced(QStringLiteral("Z:/").size());
    base.replace(u'/', u'\\');
    return base;
  }
  // Wine makes neither.
  bool MakeLink(const QString& /*path*/, const QString& /*target*/) override { return false; }
  bool MakeDevice(const QString& /*path*/) override { return false; }
  void SetModified(const QString& path, Date modified) override {
    SetNativeModified(windowstext::LiteralPath(QStringLiteral("Z:/") + path), modified);
  }
  qint64 TimePrecision() const override { return facts_.timePrecision; }
  bool HoldsName(const QString& name) const override {
    return !(facts_.hasCommandLines && name.contains(u'\n')) &&
           !(facts_.hasListingLines && name.trimmed() != name);
  }
  bool HoldsAnyBytes() const override { return facts_.holdsAnyBytes; }
  bool HoldsEarlyDates() const override { return false; }
  bool IsPlain() const override { return facts_.isPlain; }
  // The server's system takes 4096 bytes in one call.
  qsizetype LongestPath() const override { return 3000; }

 private:
  LoopbackFacts facts_;
  QTemporaryDir folder_{OfServer("TREVANE_LOOPBACK_FOLDER") + QStringLiteral("/XXXXXX")};
  std::shared_ptr<FileSystem> files_;
};

std::shared_ptr<FileSystem> OpenSshd() {
  SshPlace place;
  place.knownHosts = OfServer("TREVANE_SSHD_KNOWN_HOSTS");
  place.keyFiles = QStringList{OfServer("TREVANE_SSHD_KEY")};
  place.userName = qEnvironmentVariable("TREVANE_SSHD_USER");
  return OpenSftp({QStringLiteral("127.0.0.1:") + qEnvironmentVariable("TREVANE_SSHD_PORT"), QString()},
                  place, {});
}

std::shared_ptr<FileSystem> OpenFtpd(const char* variable, FtpSettings::Tls tls) {
  const QUrl url(qEnvironmentVariable(variable));
  FtpSettings settings;
  settings.host = url.host();
  settings.port = static_cast<quint16>(url.port());
  settings.user = url.userName();
  settings.tls = tls;
  return OpenFtpFileSystem(
      std::make_unique<TestFtpConnector>(
          settings, FtpLogOn{.user = settings.user,
                             .password = Secret(url.password()),
                             .trustedFingerprint = QByteArray::fromHex(qgetenv("TREVANE_FTPS_FINGERPRINT"))}),
      settings, {});
}

QString NoServerText() {
  return QStringLiteral("no such server beside Wine: test.sh starts it");
}

/// Null where there is no such server.
ProviderCase LoopbackCase(const char* name, const char* variable,
                          const std::function<std::shared_ptr<FileSystem>()>& open,
                          const LoopbackFacts& facts) {
  return {name,
          [=]() -> std::unique_ptr<ProviderBed> {
            return qEnvironmentVariableIsSet(variable) ? std::make_unique<LoopbackBed>(open(), facts)
                                                       : nullptr;
          },
          NoServerText};
}

ProviderCase LoopbackFtpCase(const char* name, const char* variable, FtpSettings::Tls tls,
                             const LoopbackFacts& facts) {
  return LoopbackCase(
      name, variable, [=] { return OpenFtpd(variable, tls); }, facts);
}

}  // namespace

std::vector<ProviderCase> LoopbackProviders() {
  using Tls = FtpSettings::Tls;
  const LoopbackFacts lines{.timePrecision = kDay,
                            .isPlain = true,
                            .holdsAnyBytes = true,
                            .hasCommandLines = true,
                            .hasListingLines = true};
  return {
      LoopbackCase("LoopbackSshd", "TREVANE_SSHD_PORT", OpenSshd, {.holdsAnyBytes = true}),
      LoopbackFtpCase("LoopbackFtp", "TREVANE_VSFTPD", Tls::Off, lines),
      LoopbackFtpCase("LoopbackFtps", "TREVANE_VSFTPD_TLS", Tls::Explicit, lines),
  };
}

}  // namespace trevane::test

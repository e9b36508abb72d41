#include "tests/engine/providers/FtpBeds.h"

#include "engine/providers/ftp/FtpFileSystem.h"
#include "tests/support/ftp/FtpDaemon.h"
#include "tests/support/ftp/FtpTestServer.h"
#include "tests/support/ftp/TestFtpConnector.h"

#include <QDir>
#include <QFile>

#include <map>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace trevane::test {
namespace {

constexpr qint64 kSecond = 1000;
constexpr qint64 kDay = 24 * 60 * 60 * kSecond;

FtpSettings SettingsOf(quint16 port, const QString& user, bool isOverTls) {
  FtpSettings settings;
  settings.host = QStringLiteral("127.0.0.1");
  settings.port = port;
  settings.user = user;
  settings.tls = isOverTls ? FtpSettings::Tls::Explicit : FtpSettings::Tls::Off;
  return settings;
}

/// Commands are lines; a listing of lines tells no blanks at the ends of names.
bool IsHeld(const QString& name, bool hasFacts) {
  return !name.contains(u'\n') && (hasFacts || name.trimmed() == name);
}

/// A folder of this computer behind one of the real servers. One server serves all beds of the process.
class FtpDaemonBed final : public ProviderBed {
 public:
  FtpDaemonBed(FtpDaemon& daemon, const FtpDaemon::Options& options)
      : daemon_(daemon), program_(options.program) {
    static int made = 0;
    name_ = QStringLiteral("base%1").arg(++made);
    EXPECT_TRUE(QDir(daemon.Folder()).mkpath(name_));
    const FtpSettings settings =
        SettingsOf(daemon.Port(), daemon.User(), options.tls != FtpDaemon::Options::Tls::Off);
    files_ = OpenFtpFileSystem(
        std::make_unique<TestFtpConnector>(settings, FtpLogOn{.user = daemon.User(),
                                                              .password = Secret(daemon.Password()),
                                                              .trustedFingerprint = daemon.Fingerprint()}),
        settings, {});
  }
  ~FtpDaemonBed() override {
    // QTemporaryDir cannot remove names that are no text.
    EXPECT_EQ(ErrorOf([this] { files_->Remove(Base()); }), 0);
  }
  FtpDaemonBed(const FtpDaemonBed&) = delete;
  FtpDaemonBed& operator=(const FtpDaemonBed&) = delete;

  FileSystem& Files() override { return *files_; }
  QString Base() const override {
    const QString above = daemon_.ClientFolder();
    QString base = (above == u'/' ? above : above + u'/') + name_;
    return base.replace(u'/', u'\\').sliced(1);
  }
  bool MakeLink(const QString& path, const QString& target) override {
    // The facts of the others show what links lead to.
    return !HasFacts() && ::symlink(Native(target).constData(), Native(path).constData()) == 0;
  }
  bool MakeDevice(const QString& path) override {
    // The others show them as files.
    return !HasFacts() && ::mkfifo(Native(path).constData(), 0600) == 0;
  }
  void SetModified(const QString& path, Date modified) override {
    const timespec time{static_cast<time_t>(modified.msecs / kSecond),
                        static_cast<long>(modified.msecs % kSecond * 1000000)};
    const timespec times[] = {time, time};
    ASSERT_EQ(::utimensat(AT_FDCWD, Native(path).constData(), times, AT_SYMLINK_NOFOLLOW), 0);
  }
  qint64 TimePrecision() const override { return HasFacts() ? kSecond : kDay; }
  // PyFtpd replaces what is no UTF-8.
  bool HoldsAnyBytes() const override { return program_ != FtpDaemon::Options::Program::PyFtpd; }
  bool HoldsName(const QString& name) const override {
    // ProFTPD takes a folder of such a name for a pattern.
    return IsHeld(name, HasFacts()) &&
           !(name.contains(u'*') && program_ == FtpDaemon::Options::Program::ProFtpd);
  }
  bool WritesThroughLinks() const override { return false; }
  bool HoldsEarlyDates() const override { return false; }
  bool IsPlain() const override { return true; }
  // PyFtpd takes commands of 2048 bytes, and the system of the others 4096 in one call.
  qsizetype LongestPath() const override {
    return program_ == FtpDaemon::Options::Program::PyFtpd ? 2600 : 3000;
  }

 private:
  [[nodiscard]] bool HasFacts() const { return program_ != FtpDaemon::Options::Program::Vsftpd; }
  [[nodiscard]] QByteArray Native(const QString& path) const {
    QString native = u'/' + path;
    native.replace(u'\\', u'/');
    if (daemon_.ClientFolder() == u'/') {
      native.prepend(daemon_.Folder());
    }
    return QFile::encodeName(native);
  }

  FtpDaemon& daemon_;
  FtpDaemon::Options::Program program_;
  QString name_;
  std::shared_ptr<FileSystem> files_;
};

/// The scripted controller.
class FtpControllerBed final : public ProviderBed {
 public:
  explicit FtpControllerBed(const FtpVices& vices)
      : server_(vices),
        hasFacts_(!vices.missing.contains("MLSD")),
        renames_(!vices.missing.contains("RNFR")),
        setsDates_(!vices.missing.contains("MFMT")) {
    server_.Tree().AddFolder("/base");
    const FtpSettings settings =
        SettingsOf(server_.Port(), QStringLiteral("joe"), vices.tls != FtpVices::Tls::Off);
    files_ = OpenFtpFileSystem(
        std::make_unique<TestFtpConnector>(settings, FtpLogOn{.user = QStringLiteral("joe"),
                                                              .password = Secret(QByteArrayView("secret")),
                                                              .trustedFingerprint = server_.Fingerprint()}),
        settings, {});
  }

  FileSystem& Files() override { return *files_; }
  QString Base() const override { return QStringLiteral("base"); }
  // The tree has links, but nothing follows them.
  bool MakeLink(const QString& /*path*/, const QString& /*target*/) override { return false; }
  bool MakeDevice(const QString& /*path*/) override { return false; }
  void SetModified(const QString& path, Date modified) override {
    EXPECT_TRUE(server_.Tree().Change('/' + QString(path).replace(u'\\', u'/').toUtf8(),
                                      [&](FtpTestItem& item) { item.modified = modified.msecs; }));
  }
  bool SetsDates() const override { return setsDates_; }
  bool Renames() const override { return renames_; }
  bool HoldsName(const QString& name) const override { return IsHeld(name, hasFacts_); }
  qint64 TimePrecision() const override { return hasFacts_ ? kSecond : kDay; }
  bool HoldsAnyBytes() const override { return true; }
  bool HoldsEarlyDates() const override { return false; }
  bool IsPlain() const override { return true; }
  qsizetype LongestPath() const override { return 3000; }

 private:
  FtpTestServer server_;
  bool hasFacts_;
  bool renames_;
  bool setsDates_;
  std::shared_ptr<FileSystem> files_;
};

/// Null where there is no server.
ProviderCase DaemonCase(const char* name, const FtpDaemon::Options& options) {
  return {name,
          [name, options]() -> std::unique_ptr<ProviderBed> {
            if (!FtpDaemon::IsAvailable()) {
              return nullptr;
            }
            static std::map<std::string, std::unique_ptr<FtpDaemon>> daemons;
            std::unique_ptr<FtpDaemon>& daemon = daemons[name];
            if (!daemon) {
              daemon = std::make_unique<FtpDaemon>(options);
            }
            return std::make_unique<FtpDaemonBed>(*daemon, options);
          },
          FtpDaemon::MissingText};
}

ProviderCase ControllerCase(const char* name, const FtpVices& vices) {
  return {name, [vices] { return std::make_unique<FtpControllerBed>(vices); }};
}

}  // namespace

std::vector<ProviderCase> FtpProviders() {
  using Program = FtpDaemon::Options::Program;
  using Tls = FtpDaemon::Options::Tls;
  return {
      DaemonCase("FtpVsftpd", {.program = Program::Vsftpd}),
      DaemonCase("FtpVsftpdReuse", {.program = Program::Vsftpd, .tls = Tls::ExplicitWithReuse}),
      DaemonCase("FtpProFtpd", {.program = Program::ProFtpd}),
      DaemonCase("FtpProFtpdTls", {.program = Program::ProFtpd, .tls = Tls::Explicit}),
      DaemonCase("FtpProFtpdReuse", {.program = Program::ProFtpd, .tls = Tls::ExplicitWithReuse}),
      DaemonCase("FtpPyFtpd", {.program = Program::PyFtpd}),
      DaemonCase("FtpPyFtpdTls", {.program = Program::PyFtpd, .tls = Tls::Explicit}),
      ControllerCase("FtpController", {}),
      ControllerCase("FtpControllerWithoutFacts", {.missing = {"MLSD", "MLST", "FEAT", "MFMT", "SITE"},
                                                   .renameOnto = FtpVices::Onto::Refuses}),
      ControllerCase("FtpControllerWithoutRename", {.missing = {"RNFR", "RNTO"}}),
      ControllerCase("FtpControllerWithoutSizes", {.missing = {"SIZE", "MDTM"}}),
      ControllerCase("FtpOldController", {.missing = {"MLSD", "MLST", "FEAT", "EPSV", "EPRT", "MDTM", "MFMT",
                                                      "REST", "SITE", "OPTS", "NOOP"},
                                          .repliesInManyLines = true,
                                          .renameOnto = FtpVices::Onto::RefusesMisleading,
                                          .list = FtpVices::List::EightColumns,
                                          .listOfFile = FtpVices::Odd::EmptyDone,
                                          .listOfMissing = FtpVices::Odd::EmptyDone,
                                          .listCutsAtBlank = true}),
  };
}

}  // namespace trevane::test

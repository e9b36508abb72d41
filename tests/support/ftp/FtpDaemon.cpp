#include "tests/support/ftp/FtpDaemon.h"

#include "tests/support/Listening.h"
#include "tests/support/TestFiles.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcessEnvironment>

#include <gtest/gtest.h>

#include <csignal>
#include <utility>

#include <crypt.h>
#include <grp.h>
#include <pwd.h>
#include <sys/prctl.h>
#include <unistd.h>

namespace trevane::test {
namespace {

/// Milliseconds; the sanitizers and a full machine are slow.
constexpr int kLongestStart = 20'000;
constexpr int kMostStarts = 10;

QString Servers() {
  return qEnvironmentVariable("TREVANE_FTP_SERVERS");
}

QString OwnUser() {
  const passwd* const user = ::getpwuid(::getuid());
  return user == nullptr ? QString() : QFile::decodeName(user->pw_name);
}

QString OwnGroup() {
  const group* const own = ::getgrgid(::getgid());
  return own == nullptr ? QString() : QFile::decodeName(own->gr_name);
}

void WritePrivateFile(const QString& path, const QByteArray& content) {
  WriteFile(path, content);
  QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner);
}

}  // namespace

bool FtpDaemon::IsAvailable() {
  return !Servers().isEmpty() && QFile::exists(ProgramFile(QStringLiteral("usr/sbin/vsftpd")));
}

QString FtpDaemon::MissingText() {
  return QStringLiteral(
      "no FTP servers: ./test.sh fetches them and names their folder in TREVANE_FTP_SERVERS");
}

QString FtpDaemon::ProgramFile(const QString& path) {
  return Servers() + u'/' + path;
}

FtpDaemon::FtpDaemon(Options options) : options_(std::move(options)) {
  EXPECT_TRUE(folder_.isValid());
  EXPECT_TRUE(QDir().mkpath(Folder()));
  WriteFile(CertificateFile(), keys_.CertificatePem());
  WritePrivateFile(At(QStringLiteral("key.pem")), keys_.KeyPem());
  WritePrivateFile(At(QStringLiteral("both.pem")), keys_.KeyPem() + keys_.CertificatePem());
  for (int attempt = 0; attempt < kMostStarts && port_ == 0; ++attempt) {
    // Another test can take the port in between.
    port_ = FreePort();
    Start();
  }
  EXPECT_NE(port_, 0) << Log().toStdString();
}

FtpDaemon::~FtpDaemon() {
  process_.terminate();
  if (!process_.waitForFinished(kLongestStart)) {
    process_.kill();
    process_.waitForFinished(kLongestStart);
  }
}

QString FtpDaemon::Machine() const {
  return QStringLiteral("127.0.0.1:%1").arg(port_);
}

QString FtpDaemon::User() const {
  return options_.program == Options::Program::Vsftpd ? QStringLiteral("anonymous") : QStringLiteral("joe");
}

QString FtpDaemon::ClientFolder() const {
  return options_.program == Options::Program::PyFtpd ? QStringLiteral("/") : Folder();
}

void FtpDaemon::Start() {
  const QString configuration = At(QStringLiteral("configuration"));
  QString program;
  QStringList arguments;
  QStringList lines;
  switch (options_.program) {
    case Options::Program::Vsftpd:
      lines = VsftpdLines();
      program = ProgramFile(QStringLiteral("usr/sbin/vsftpd"));
      arguments = QStringList{configuration};
      break;
    case Options::Program::ProFtpd:
      lines = ProFtpdLines();
      program = ProgramFile(QStringLiteral("usr/sbin/proftpd"));
      arguments =
          QStringList{QStringLiteral("-n"), QStringLiteral("-q"), QStringLiteral("-c"), configuration};
      break;
    case Options::Program::PyFtpd:
      lines = PyFtpdLines();
      // Debian's own: another one that comes first in the path has other modules.
      program = QStringLiteral("/usr/bin/python3");
      arguments = QStringList{configuration};
      break;
  }
  lines.append(options_.configuration);
  WritePrivateFile(configuration, lines.join(u'\n').toUtf8() + '\n');
  QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
  environment.insert(QStringLiteral("PYTHONPATH"),
                     ProgramFile(QStringLiteral("usr/lib/python3/dist-packages")));
  process_.setProcessEnvironment(environment);
  // A started program ends with the test, also where that is killed.
  process_.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGTERM); });
  // A server would wait at a pipe that is full.
  process_.setProcessChannelMode(QProcess::MergedChannels);
  process_.setStandardOutputFile(At(QStringLiteral("output")), QIODevice::Append);
  process_.start(program, arguments);
  QElapsedTimer clock;
  clock.start();
  while (process_.state() != QProcess::NotRunning && clock.elapsed() < kLongestStart) {
    process_.waitForFinished(20);
    if (ListeningAddresses(process_.processId()).contains(Machine())) {
      return;
    }
  }
  process_.kill();
  process_.waitForFinished(kLongestStart);
  port_ = 0;
}

QByteArray FtpDaemon::Log() const {
  return ContentOf(At(QStringLiteral("output")));
}

QStringList FtpDaemon::VsftpdLines() const {
  QStringList lines{QStringLiteral("listen=YES"), QStringLiteral("listen_address=127.0.0.1"),
                    QStringLiteral("listen_port=%1").arg(port_), QStringLiteral("background=NO"),
                    QStringLiteral("run_as_launching_user=YES"), QStringLiteral("seccomp_sandbox=NO"),
                    // Its own log-on of users needs files of the machine.
                    QStringLiteral("local_enable=NO"), QStringLiteral("anonymous_enable=YES"),
                    QStringLiteral("ftp_username=") + OwnUser(), QStringLiteral("anon_root=") + Folder(),
                    QStringLiteral("secure_chroot_dir=") + Folder(),
                    QStringLiteral("allow_writeable_chroot=YES"), QStringLiteral("write_enable=YES"),
                    QStringLiteral("anon_upload_enable=YES"), QStringLiteral("anon_mkdir_write_enable=YES"),
                    QStringLiteral("anon_other_write_enable=YES"), QStringLiteral("anon_umask=022"),
                    QStringLiteral("anon_world_readable_only=NO"), QStringLiteral("xferlog_enable=NO")};
  if (IsOverTls()) {
    lines << QStringLiteral("ssl_enable=YES") << QStringLiteral("allow_anon_ssl=YES")
          << QStringLiteral("ssl_ciphers=HIGH") << QStringLiteral("rsa_cert_file=") + CertificateFile()
          << QStringLiteral("rsa_private_key_file=") + At(QStringLiteral("key.pem"))
          << QStringLiteral("require_ssl_reuse=") + (options_.tls == Options::Tls::ExplicitWithReuse
                                                         ? QStringLiteral("YES")
                                                         : QStringLiteral("NO"));
  }
  return lines;
}

QStringList FtpDaemon::ProFtpdLines() const {
  crypt_data data{};
  const QByteArray secret = ::crypt_r(Password().toLatin1().constData(), "$1$test$", &data);
  const QString users = At(QStringLiteral("users"));
  WritePrivateFile(users, User().toLatin1() + ':' + secret + ':' + QByteArray::number(::getuid()) + ':' +
                              QByteArray::number(::getgid()) + "::" + QFile::encodeName(Folder()) +
                              ":/bin/sh\n");
  QStringList lines{
      QStringLiteral("ModulePath ") + ProgramFile(QStringLiteral("usr/lib/proftpd")),
      QStringLiteral("LoadModule mod_tls.c"),
      QStringLiteral("ServerName test"),
      QStringLiteral("ServerType standalone"),
      QStringLiteral("DefaultAddress 127.0.0.1"),
      // Without it, it listens at all addresses.
      QStringLiteral("SocketBindTight on"),
      QStringLiteral("Port %1").arg(port_),
      QStringLiteral("UseIPv6 off"),
      QStringLiteral("UseReverseDNS off"),
      QStringLiteral("User ") + OwnUser(),
      QStringLiteral("Group ") + OwnGroup(),
      QStringLiteral("RootLogin on"),
      QStringLiteral("PidFile ") + At(QStringLiteral("pid")),
      QStringLiteral("ScoreboardFile none"),
      QStringLiteral("SystemLog ") + At(QStringLiteral("log")),
      QStringLiteral("TransferLog none"),
      QStringLiteral("WtmpLog off"),
      QStringLiteral("AuthPAM off"),
      QStringLiteral("AuthOrder mod_auth_file.c"),
      QStringLiteral("AuthUserFile ") + users,
      QStringLiteral("RequireValidShell off"),
      QStringLiteral("DelayEngine off"),
      QStringLiteral("AllowOverwrite on"),
      QStringLiteral("AllowStoreRestart on"),
      QStringLiteral("TimesGMT on"),
  };
  if (IsOverTls()) {
    lines << QStringLiteral("TLSEngine on") << QStringLiteral("TLSLog ") + At(QStringLiteral("tls"))
          << QStringLiteral("TLSECCertificateFile ") + CertificateFile()
          << QStringLiteral("TLSECCertificateKeyFile ") + At(QStringLiteral("key.pem"))
          << QStringLiteral("TLSRequired on");
    if (options_.tls == Options::Tls::Explicit) {
      lines << QStringLiteral("TLSProtocol TLSv1.2") << QStringLiteral("TLSOptions NoSessionReuseRequired");
    } else {
      lines << QStringLiteral("TLSProtocol TLSv1.2 TLSv1.3");
    }
  }
  return lines;
}

QStringList FtpDaemon::PyFtpdLines() const {
  const QString handler = IsOverTls() ? QStringLiteral("TLS_FTPHandler") : QStringLiteral("FTPHandler");
  QStringList lines{
      QStringLiteral("from pyftpdlib.authorizers import DummyAuthorizer"),
      QStringLiteral("from pyftpdlib.handlers import ") + handler,
      QStringLiteral("from pyftpdlib.servers import FTPServer"),
      QStringLiteral("users = DummyAuthorizer()"),
      QStringLiteral("users.add_user('%1', '%2', '%3', perm='elradfmwMT')").arg(User(), Password(), Folder()),
      handler + QStringLiteral(".authorizer = users")};
  if (IsOverTls()) {
    lines << handler + QStringLiteral(".certfile = '%1'").arg(At(QStringLiteral("both.pem")))
          << handler + QStringLiteral(".tls_control_required = True")
          << handler + QStringLiteral(".tls_data_required = True");
  }
  lines << QStringLiteral("FTPServer(('127.0.0.1', %1), %2).serve_forever()").arg(port_).arg(handler);
  return lines;
}

}  // namespace trevane::test

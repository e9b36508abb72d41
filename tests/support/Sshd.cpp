#include "tests/support/Sshd.h"

#include "tests/support/Listening.h"
#include "tests/support/TestFiles.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QRegularExpression>

#include <gtest/gtest.h>

#include <csignal>

#include <pwd.h>
#include <sys/prctl.h>
#include <unistd.h>

namespace trevane::test {
namespace {

/// Milliseconds; the sanitizers and a full machine are slow.
constexpr int kLongestStart = 20'000;
constexpr int kMostStarts = 10;

QString Servers() {
  return qEnvironmentVariable("TREVANE_SSH_SERVERS");
}

/// A started program ends with the test, also where that is killed.
void EndWithTest(QProcess& process) {
  process.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGTERM); });
}

}  // namespace

bool Sshd::IsAvailable() {
  return !Servers().isEmpty() && QFile::exists(Program(QStringLiteral("usr/sbin/sshd")));
}

QString Sshd::Program(const QString& path) {
  return Servers() + u'/' + path;
}

Sshd::Options Sshd::OldAlgorithms() {
  Options options;
  options.hostKeys = QStringList{QStringLiteral("rsa")};
  options.configuration = QStringList{QStringLiteral("HostKeyAlgorithms ssh-rsa"),
                                      QStringLiteral("KexAlgorithms diffie-hellman-group14-sha1"),
                                      QStringLiteral("Ciphers aes128-cbc"), QStringLiteral("MACs hmac-sha1")};
  return options;
}

void Sshd::Run(const QString& path, const QStringList& arguments) {
  QProcess process;
  EndWithTest(process);
  process.setProcessChannelMode(QProcess::MergedChannels);
  process.start(Program(path), arguments);
  EXPECT_TRUE(process.waitForFinished(kLongestStart)) << path.toStdString();
  EXPECT_EQ(process.exitCode(), 0) << process.readAll().toStdString();
}

void Sshd::MakeKey(const QString& path, const QString& type, const QString& passphrase) {
  QStringList arguments{QStringLiteral("-q"),   QStringLiteral("-t"), type,
                        QStringLiteral("-N"),   passphrase,           QStringLiteral("-C"),
                        QStringLiteral("test"), QStringLiteral("-f"), path};
  if (type == QStringLiteral("rsa")) {
    // The shortest that is taken is made in no time.
    arguments << QStringLiteral("-b") << QStringLiteral("1024");
  }
  if (!passphrase.isEmpty()) {
    // The fewest rounds: a test does not guess passphrases.
    arguments << QStringLiteral("-a") << QStringLiteral("1");
  }
  Run(QStringLiteral("usr/bin/ssh-keygen"), arguments);
}

Sshd::Sshd(const Options& options) {
  EXPECT_TRUE(folder_.isValid());
  for (const QString& type : options.hostKeys) {
    MakeKey(At(QStringLiteral("host_") + type), type);
  }
  MakeKey(KeyFile(), QStringLiteral("ed25519"));
  Authorize(KeyFile() + QStringLiteral(".pub"));
  for (int attempt = 0; attempt < kMostStarts && port_ == 0; ++attempt) {
    // Another test can take the port in between.
    port_ = FreePort();
    WriteConfiguration(options);
    Start();
  }
  EXPECT_NE(port_, 0) << log_.toStdString();
}

Sshd::~Sshd() {
  process_.terminate();
  if (!process_.waitForFinished(kLongestStart)) {
    process_.kill();
    process_.waitForFinished(kLongestStart);
  }
}

void Sshd::WriteConfiguration(const Options& options) {
  QStringList lines{QStringLiteral("Port %1").arg(port_),
                    QStringLiteral("ListenAddress 127.0.0.1"),
                    QStringLiteral("PidFile none"),
                    QStringLiteral("UsePAM no"),
                    QStringLiteral("StrictModes no"),
                    QStringLiteral("PermitRootLogin yes"),
                    QStringLiteral("PasswordAuthentication no"),
                    QStringLiteral("KbdInteractiveAuthentication no"),
                    QStringLiteral("AllowTcpForwarding no"),
                    QStringLiteral("UseDNS no"),
                    QStringLiteral("MaxStartups 100"),
                    QStringLiteral("AuthorizedKeysFile ") + At(QStringLiteral("authorized_keys")),
                    QStringLiteral("Subsystem sftp ") + options.subsystem};
  for (const QString& type : options.hostKeys) {
    lines.append(QStringLiteral("HostKey ") + At(QStringLiteral("host_") + type));
  }
  lines.append(options.configuration);
  WriteFile(At(QStringLiteral("sshd_config")), lines.join(u'\n').toUtf8() + '\n');
}

void Sshd::Start() {
  EndWithTest(process_);
  process_.setProcessChannelMode(QProcess::MergedChannels);
  process_.start(
      Program(QStringLiteral("usr/sbin/sshd")),
      {QStringLiteral("-D"), QStringLiteral("-e"), QStringLiteral("-f"), At(QStringLiteral("sshd_config"))});
  QElapsedTimer clock;
  clock.start();
  while (process_.state() != QProcess::NotRunning && clock.elapsed() < kLongestStart) {
    process_.waitForReadyRead(100);
    if (Log().contains("Server listening on 127.0.0.1")) {
      return;
    }
  }
  process_.kill();
  process_.waitForFinished(kLongestStart);
  port_ = 0;
}

QByteArray Sshd::Log() {
  process_.waitForReadyRead(0);
  log_ += process_.readAll();
  return log_;
}

QString Sshd::Machine() const {
  return QStringLiteral("127.0.0.1:%1").arg(port_);
}

QString Sshd::User() const {
  const passwd* const user = ::getpwuid(::getuid());
  return user == nullptr ? QString() : QFile::decodeName(user->pw_name);
}

QByteArray Sshd::HostKey(const QString& type) const {
  const QByteArrayList words = ContentOf(At(QStringLiteral("host_%1.pub").arg(type))).trimmed().split(' ');
  return words.size() < 2 ? QByteArray() : words[0] + ' ' + words[1];
}

void Sshd::Authorize(const QString& publicKeyFile) {
  QFile file(At(QStringLiteral("authorized_keys")));
  EXPECT_TRUE(file.open(QIODevice::Append));
  file.write(ContentOf(publicKeyFile));
}

SshPlace Sshd::Place() const {
  SshPlace place;
  place.knownHosts = At(QStringLiteral("known_hosts"));
  QByteArray known;
  for (const QString& name : QDir(folder_.path()).entryList({QStringLiteral("host_*.pub")})) {
    const QByteArrayList words = ContentOf(At(name)).trimmed().split(' ');
    known += "[127.0.0.1]:" + QByteArray::number(port_) + ' ' + words.value(0) + ' ' + words.value(1) + '\n';
  }
  WriteFile(place.knownHosts, known);
  place.keyFiles = QStringList{KeyFile()};
  place.userName = User();
  return place;
}

}  // namespace trevane::test

#include "bench/engine/providers/sftp/OtherClients.h"

#include "bench/engine/providers/sftp/FarServers.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QStandardPaths>

#include <algorithm>
#include <cstdio>

namespace trevane::bench {
namespace {

constexpr int kLongest = 600'000;  // milliseconds

std::optional<double> SecondsOf(const QString& program, const QStringList& arguments, const QString& input) {
  QProcess process;
  process.setProcessChannelMode(QProcess::MergedChannels);
  QElapsedTimer clock;
  clock.start();
  process.start(program, arguments);
  process.write(input.toUtf8());
  process.closeWriteChannel();
  if (!process.waitForFinished(kLongest) || process.exitCode() != 0) {
    std::fprintf(stderr, "%s has failed: %s\n", qPrintable(program), process.readAll().constData());
    return std::nullopt;
  }
  return static_cast<double>(clock.nsecsElapsed()) / 1e9;
}

std::optional<double> Without(const std::optional<double>& connecting, const std::optional<double>& all) {
  return connecting && all ? std::optional(std::max(*all - *connecting, 0.0)) : std::nullopt;
}

}  // namespace

OtherClients::OtherClients(const FarServers& servers)
    : servers_(servers), lftp_(QStandardPaths::findExecutable(QStringLiteral("lftp"))) {
  if (lftp_.isEmpty()) {
    std::puts("lftp is not installed: its figures are left out.");
  }
}

std::optional<double> OtherClients::RunSftp(quint16 port, const QString& commands) const {
  return SecondsOf(test::Sshd::Program(QStringLiteral("usr/bin/sftp")),
                   {QStringLiteral("-q"), QStringLiteral("-F"), QStringLiteral("none"), QStringLiteral("-P"),
                    QString::number(port), QStringLiteral("-i"), servers_.KeyFile(), QStringLiteral("-o"),
                    QStringLiteral("UserKnownHostsFile=") + servers_.KnownHosts(), QStringLiteral("-b"),
                    QStringLiteral("-"), QStringLiteral("127.0.0.1")},
                   commands + u'\n');
}

std::optional<double> OtherClients::RunLftp(quint16 port, const QString& commands) const {
  if (lftp_.isEmpty()) {
    return std::nullopt;
  }
  const QString ssh =
      QStringLiteral("%1 -a -x -F none -i %2 -o UserKnownHostsFile=%3")
          .arg(test::Sshd::Program(QStringLiteral("usr/bin/ssh")), servers_.KeyFile(), servers_.KnownHosts());
  return SecondsOf(
      lftp_,
      {QStringLiteral("-c"), QStringLiteral("set cmd:fail-exit yes; set sftp:connect-program \"%1\"; "
                                            "open -u %2,none sftp://127.0.0.1:%3; %4")
                                 .arg(ssh, qEnvironmentVariable("USER", QStringLiteral("root")))
                                 .arg(port)
                                 .arg(commands)},
      {});
}

std::optional<double> OtherClients::Sftp(quint16 port, const QString& commands) const {
  return Without(RunSftp(port, QStringLiteral("pwd")), RunSftp(port, commands));
}

std::optional<double> OtherClients::Lftp(quint16 port, const QString& commands) const {
  return Without(RunLftp(port, QStringLiteral("cls -d /")), RunLftp(port, commands));
}

}  // namespace trevane::bench

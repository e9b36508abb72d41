#include "bench/engine/providers/ftp/OtherFtpClients.h"

#include "bench/engine/providers/ftp/FtpLine.h"

#include <QElapsedTimer>
#include <QProcess>

#include <algorithm>
#include <cstdio>

namespace trevane::bench {
namespace {

constexpr int kLongest = 600'000;  // milliseconds

std::optional<double> SecondsOf(const QString& program, const QStringList& arguments) {
  QProcess process;
  process.setProcessChannelMode(QProcess::MergedChannels);
  QElapsedTimer clock;
  clock.start();
  process.start(program, arguments);
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

QStringList OtherFtpClients::CurlArguments(quint16 port, const QString& name) const {
  return {QStringLiteral("-q"), QStringLiteral("-sS"), QStringLiteral("-u"),
          line_.Daemon().User() + u':' + line_.Daemon().Password(),
          QStringLiteral("ftp://127.0.0.1:%1/%2").arg(port).arg(name)};
}

std::optional<double> OtherFtpClients::Curl(quint16 port, const QString& name,
                                            const QStringList& more) const {
  const QString program = test::FtpDaemon::ProgramFile(QStringLiteral("usr/bin/curl"));
  const std::optional<double> connecting =
      SecondsOf(program, CurlArguments(port, {}) + QStringList{QStringLiteral("-I")});
  return Without(connecting, SecondsOf(program, CurlArguments(port, name) + more));
}

std::optional<double> OtherFtpClients::Put(quint16 port, const QString& file, const QString& name) const {
  return Curl(port, name, {QStringLiteral("-T"), file});
}

std::optional<double> OtherFtpClients::Get(quint16 port, const QString& name, const QString& file) const {
  return Curl(port, name, {QStringLiteral("-o"), file});
}

std::optional<double> OtherFtpClients::RunLftp(quint16 port, const QString& commands) const {
  return SecondsOf(
      test::FtpDaemon::ProgramFile(QStringLiteral("usr/bin/lftp")),
      {QStringLiteral("--norc"), QStringLiteral("-c"),
       QStringLiteral("set cmd:fail-exit yes; set ftp:ssl-allow no; open -u %1,%2 ftp://127.0.0.1:%3; %4")
           .arg(line_.Daemon().User(), line_.Daemon().Password())
           .arg(port)
           .arg(commands)});
}

std::optional<double> OtherFtpClients::Lftp(quint16 port, const QString& commands) const {
  return Without(RunLftp(port, QStringLiteral("quote NOOP")), RunLftp(port, commands));
}

}  // namespace trevane::bench

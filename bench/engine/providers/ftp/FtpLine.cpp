#include "bench/engine/providers/ftp/FtpLine.h"

#include "engine/providers/ftp/FtpFileSystem.h"
#include "tests/support/Listening.h"
#include "tests/support/ftp/TestFtpConnector.h"

#include <cstdlib>

namespace trevane::bench {
namespace {

// Below those that the system gives to others.
constexpr int kFirstPassive = 24000;
constexpr int kLastPassive = 24399;
constexpr int kShift = 1000;

QStringList PassivePorts(FtpLine::Program program) {
  if (program == FtpLine::Program::ProFtpd) {
    return {QStringLiteral("PassivePorts %1 %2").arg(kFirstPassive).arg(kLastPassive)};
  }
  return {QStringLiteral("pasv_min_port=%1").arg(kFirstPassive),
          QStringLiteral("pasv_max_port=%1").arg(kLastPassive)};
}

}  // namespace

FtpLine::FtpLine(Program program)
    : daemon_({.program = program, .configuration = PassivePorts(program)}), far_(test::FreePort()) {
  // Half of the round trip each way.
  proxy_.start(QStringLiteral(TREVANE_DELAY_PROXY),
               {QStringLiteral("--delay-ms"), QString::number(kRoundTrip * 1000 / 2),
                QStringLiteral("--ftp-map"), QStringLiteral("%1:%2").arg(far_).arg(Near()),
                QStringLiteral("--passive"), QStringLiteral("%1-%2").arg(kFirstPassive).arg(kLastPassive),
                QStringLiteral("--passive-shift"), QString::number(kShift)});
  if (!proxy_.waitForReadyRead(20'000)) {
    std::abort();
  }
}

FtpLine::~FtpLine() {
  proxy_.terminate();
  proxy_.waitForFinished(20'000);
}

FtpSettings FtpLine::Settings(quint16 port) const {
  FtpSettings settings;
  settings.host = QStringLiteral("127.0.0.1");
  settings.port = port;
  settings.user = daemon_.User();
  return settings;
}

std::unique_ptr<CurlDialogue> FtpLine::Connect(quint16 port) const {
  return std::make_unique<CurlDialogue>(Settings(port), LogOn(), nullptr);
}

std::shared_ptr<FileSystem> FtpLine::Open(quint16 port) const {
  return OpenFtpFileSystem(std::make_unique<test::TestFtpConnector>(Settings(port), LogOn()), Settings(port),
                           nullptr);
}

}  // namespace trevane::bench

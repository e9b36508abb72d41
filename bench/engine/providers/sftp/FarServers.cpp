#include "bench/engine/providers/sftp/FarServers.h"

#include "tests/support/Listening.h"

#include <QDir>
#include <QFile>

#include <cstdlib>

namespace trevane::bench {
namespace {

test::SshdOptions WithServerProgram() {
  test::SshdOptions options;
  options.subsystem = test::Sshd::Program(QStringLiteral("usr/lib/openssh/sftp-server"));
  return options;
}

}  // namespace

FarServers::FarServers() : first_(WithServerProgram()), second_(WithServerProgram()) {
  qputenv("HOME", QFile::encodeName(home_.path()));
  qunsetenv("SSH_AUTH_SOCK");
  QDir(home_.path()).mkdir(QStringLiteral(".ssh"));
  QFile::copy(first_.KeyFile(), KeyFile());
  second_.Authorize(first_.KeyFile() + QStringLiteral(".pub"));

  far_[0] = test::FreePort();
  far_[1] = test::FreePort();
  // Half of the round trip each way.
  QStringList arguments{QStringLiteral("--delay-ms"), QString::number(kRoundTrip * 1000 / 2)};
  QFile known(KnownHosts());
  if (!known.open(QIODevice::WriteOnly)) {
    std::abort();
  }
  for (int i = 0; i < 2; ++i) {
    arguments << QStringLiteral("--map") << QStringLiteral("%1:%2").arg(Far(i)).arg(Near(i));
    for (const quint16 port : {Near(i), Far(i)}) {
      known.write("[127.0.0.1]:" + QByteArray::number(port) + ' ' +
                  (i == 0 ? first_ : second_).HostKey(QStringLiteral("ed25519")) + '\n');
    }
  }
  proxy_.start(QStringLiteral(TREVANE_DELAY_PROXY), arguments);
  if (!proxy_.waitForReadyRead(20'000)) {
    std::abort();
  }
}

FarServers::~FarServers() {
  proxy_.terminate();
  proxy_.waitForFinished(20'000);
}

}  // namespace trevane::bench

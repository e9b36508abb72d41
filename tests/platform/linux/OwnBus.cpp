#include "tests/platform/linux/OwnBus.h"

#include <QFile>
#include <QIODevice>
#include <QStandardPaths>
#include <QStringList>

#include <gtest/gtest.h>

#include <csignal>

#include <sys/prctl.h>

namespace trevane::test {

OwnBus::OwnBus() {
  const QString program = QStandardPaths::findExecutable(QStringLiteral("dbus-daemon"));
  if (program.isEmpty()) {
    return;
  }
  QFile config(folder_.filePath(QStringLiteral("bus.conf")));
  EXPECT_TRUE(config.open(QIODevice::WriteOnly));
  config.write(
      "<busconfig><type>session</type><listen>unix:path=" + folder_.filePath(QStringLiteral("bus")).toUtf8() +
      "</listen><policy context=\"default\"><allow send_destination=\"*\" "
      "eavesdrop=\"true\"/><allow eavesdrop=\"true\"/><allow own=\"*\"/>"
      "</policy></busconfig>");
  config.close();
  daemon_.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
  daemon_.start(program, {QStringLiteral("--config-file=") + config.fileName(), QStringLiteral("--nofork"),
                          QStringLiteral("--print-address")});
  EXPECT_TRUE(daemon_.waitForReadyRead());
  address_ = QString::fromUtf8(daemon_.readLine()).trimmed();
}

OwnBus::~OwnBus() {
  End();
}

void OwnBus::End() {
  daemon_.kill();
  daemon_.waitForFinished();
}

}  // namespace trevane::test

#include "platform/linux/SessionBus.h"

#include <QFileInfo>

namespace trevane::sessionbus {

QString Address() {
  const QString given = qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS");
  if (!given.isEmpty()) {
    return given;
  }
  const QString folder = qEnvironmentVariable("XDG_RUNTIME_DIR");
  const QString socket = folder + QStringLiteral("/bus");
  return !folder.isEmpty() && QFileInfo::exists(socket) ? QStringLiteral("unix:path=") + socket : QString();
}

}  // namespace trevane::sessionbus

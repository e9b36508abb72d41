#include "resources/Resources.h"

#include <QFile>

// Q_INIT_RESOURCE does not work inside a namespace.
static void InitIcons() {
  Q_INIT_RESOURCE(trevane_icons);
}

namespace trevane {

void InitResources() {
  static const bool done = [] {
    InitIcons();
    return true;
  }();
  Q_UNUSED(done)
}

QString IconFile(const QString& imageKey, int size) {
  return QStringLiteral(":/trevane/icons/%1-%2.png").arg(imageKey.toLower()).arg(size);
}

QIcon Icon(const QString& imageKey) {
  InitResources();
  QIcon icon;
  for (const int size : {16, 24, 32, 48, 64, 128, 256}) {
    const QString file = IconFile(imageKey, size);
    if (QFile::exists(file)) {
      icon.addFile(file, QSize(size, size));
    }
  }
  return icon;
}

}  // namespace trevane

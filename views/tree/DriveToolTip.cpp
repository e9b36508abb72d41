#include "views/tree/DriveToolTip.h"

#include "base/DisplayText.h"
#include "views/addresses/DriveTable.h"

#include <QLocale>

#include <optional>

namespace trevane {

QString DriveToolTip(const DriveTable& drives, const QString& root) {
  const Volume* volume = drives.VolumeOf(root);
  if (volume == nullptr) {
    return root;
  }
  QString point = volume->rootPath;
  if (point.size() > 1 && point.endsWith(u'/')) {
    point.chop(1);
  }
  QString text = QStringLiteral("Mounted at %1").arg(DisplayText(point));
  if (const std::optional<VolumeSpace> space = drives.SpaceOf(*volume)) {
    const auto shown = [](qint64 bytes) {
      return QLocale().formattedDataSize(bytes, 1, QLocale::DataSizeTraditionalFormat);
    };
    text += QStringLiteral("\n%1 free of %2").arg(shown(space->free), shown(space->total));
  }
  return text;
}

}  // namespace trevane

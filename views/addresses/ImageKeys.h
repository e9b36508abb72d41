#pragma once

#include "views/addresses/NodeTags.h"

#include <QString>

/// Keys of the pictures in the image list.
namespace trevane {

namespace imagekey {
inline const QString kWorkspace = QStringLiteral("WORKSPACE");
inline const QString kMyCom = QStringLiteral("MYCOM");
inline const QString kController = QStringLiteral("CONTROLLER");
/// A controller whose connection is in error.
inline const QString kErrController = QStringLiteral("ERRCONTROLLER");
inline const QString kFDisk = QStringLiteral("FDISK");
inline const QString kHdd = QStringLiteral("HDD");
inline const QString kCdrom = QStringLiteral("CDROM");
inline const QString kRemote = QStringLiteral("REMOTE");
inline const QString kRamDisk = QStringLiteral("RAMDISK");
inline const QString kQuestion = QStringLiteral("QUESTION");
inline const QString kFolderClosed = QStringLiteral("F-CLOSE");
inline const QString kFolderOpen = QStringLiteral("F-OPEN");
/// A file for which the system supplies no icon.
inline const QString kDefaultFile = QStringLiteral("RCFile");
/// Header images of the sorted column.
inline const QString kAscend = QStringLiteral("ASCEND");
inline const QString kDescend = QStringLiteral("DESCEND");
}  // namespace imagekey

/// The key of the system's icon of that index.
[[nodiscard]] inline QString SystemIconKey(qint32 index) {
  return QStringLiteral("iIcon:") + QString::number(index);
}

/// How drives of a kind are shown in the tree.
struct DriveLook {
  /// Empty for a drive that gets no node.
  QString imageKey;
  qint32 kindBit = 0;
};

/// By drive type (platform/Volumes.h); a type beyond those is shown as unknown.
[[nodiscard]] DriveLook LookOfDrive(qint32 driveType);

}  // namespace trevane

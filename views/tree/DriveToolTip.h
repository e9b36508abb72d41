#pragma once

#include <QString>

namespace trevane {

class DriveTable;

/// The mount point of a drive and its free space, in two lines; one line if the space is
/// unknown, and only the root for a drive that is gone.
[[nodiscard]] QString DriveToolTip(const DriveTable& drives, const QString& root);

}  // namespace trevane

#pragma once

#include <QString>

namespace trevane {

class DriveTable;

/// Where a drive is mounted and how much room is left on it, in two lines; one line where the room is
/// unknown, and only the root for a drive that is gone.
[[nodiscard]] QString DriveToolTip(const DriveTable& drives, const QString& root);

}  // namespace trevane

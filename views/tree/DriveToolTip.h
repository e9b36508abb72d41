#pragma once

#include <QString>

namespace trevane {

class DriveTable;

/// Where a drive is mounted and how much room is left on it, in two lines; one where the system does not say
/// how much, and its root alone for a drive that is gone.
[[nodiscard]] QString DriveToolTip(const DriveTable& drives, const QString& root);

}  // namespace trevane

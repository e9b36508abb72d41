#pragma once

#include "platform/Volumes.h"

#include <QString>

#include <vector>

namespace trevane {

/// The address of a file of the operating system, given by its absolute path without "." and ".." in it:
/// below the drive whose folder is the longest beginning of the path, or below the network drive of the share
/// that it begins with. Empty when no drive holds it, and for an empty path.
///
/// Where "/" separates folders, a "\" is part of a name and appears as the character U+F05C that the
/// local-file provider carries it under.
[[nodiscard]] QString AddressOfLocalFile(const std::vector<Volume>& volumes, const QString& path);

}  // namespace trevane

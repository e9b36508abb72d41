#pragma once

#include <QString>

namespace trevane {

class FileAccess;

/// The folder at `address` has an item of exactly that name, or could not be asked.
[[nodiscard]] bool MayHold(const FileAccess& files, const QString& address, const QString& name);

}  // namespace trevane

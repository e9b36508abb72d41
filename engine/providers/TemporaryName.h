#pragma once

#include <QString>

namespace trevane {

/// A fresh name for something that is being built: ".trevane-", six random characters, ".tmp".
[[nodiscard]] QString MakeTemporaryName();

/// The name of something that is being built, or was when its program was killed.
[[nodiscard]] bool IsTemporaryName(const QString& name);

}  // namespace trevane

#pragma once

#include <QString>

namespace trevane {

/// Whether a file or folder can have this name: it is not empty, "." or "..", and holds no "/", "\" or NUL.
[[nodiscard]] bool IsValidItemName(const QString& name);

/// The text for a name that is not valid.
[[nodiscard]] QString InvalidItemNameText(const QString& name);

/// Fails with error::kInvalidName for a name that is not valid.
void RequireItemName(const QString& name);

}  // namespace trevane

#pragma once

#include <QString>

namespace trevane {

/// The name under which a file of a controller is kept on this computer: its own one with its extension, as
/// far as every system and every program can use it. What they cannot use becomes "_"; a very long name is
/// shortened before its extension. Never empty, "." or "..", and without any separator.
[[nodiscard]] QString SafeFileName(const QString& name);

}  // namespace trevane

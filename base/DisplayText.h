#pragma once

#include <QString>

namespace trevane {

/// A name as it is shown, on one line: line ends and other control characters are replaced by their pictures,
/// private-use characters by those that they carry. Shared with `name` when it has none.
[[nodiscard]] QString DisplayText(const QString& name);

}  // namespace trevane

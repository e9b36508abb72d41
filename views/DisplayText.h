#pragma once

#include <QString>

namespace trevane {

/// A name as it is shown, on one line: line ends and other control characters are replaced by their pictures.
/// Shared with `name` when it has none.
[[nodiscard]] QString DisplayText(const QString& name);

/// A text for a tooltip that is shown as it stands, even when it looks like mark-up.
[[nodiscard]] QString PlainToolTip(const QString& text);

}  // namespace trevane

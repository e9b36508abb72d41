#pragma once

#include <QIcon>

namespace trevane {

/// The icon as it looks where nothing is selected: styles tint the picture of a selected entry with the
/// colour behind it, which hides it. `opacity` between 0 and 1 fades it.
[[nodiscard]] QIcon PlainIcon(const QIcon& icon, double opacity = 1);

}  // namespace trevane

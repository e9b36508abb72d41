#pragma once

#include <QString>

namespace trevane {

/// A text with names in it as it is shown. Characters that file systems forbid are carried in names as
/// private-use characters, for which no font has a picture: U+F05C represents "\\". Shared with `text`
/// when it has none. The result is for reading only and names no file.
[[nodiscard]] QString WithReadableNames(const QString& text);

/// The other way round: in `typed`, which was made from a readable `name`, the characters that `name` carries
/// become what they are there again.
[[nodiscard]] QString WithCarriersOf(const QString& name, const QString& typed);

/// A text for a tooltip that is shown as it is, even when it looks like mark-up, in lines of at most
/// kToolTipLine characters: long names have no blanks to break them at.
[[nodiscard]] QString PlainToolTip(const QString& text);

inline constexpr int kToolTipLine = 80;

}  // namespace trevane

#pragma once

#include <QString>

namespace trevane {

/// Words that another computer sent, as people can read them: lines end as the sender ended them, and nothing
/// else in them acts on the text around. Control characters are replaced by their pictures; those that turn
/// the direction of reading round, or cannot be seen at all, by U+FFFD. Blanks at both ends,
/// and all but one of several blank lines, are left out. At most `longest` characters, the last of which is
/// then an ellipsis.
[[nodiscard]] QString ForeignText(const QString& text, qsizetype longest);

/// As well, on one line.
[[nodiscard]] QString ForeignLine(const QString& text, qsizetype longest);

}  // namespace trevane

#pragma once

#include <QString>

#include <array>

namespace trevane {

/// The program takes at most one argument.
using ArgumentBuffer = std::array<QString, 1>;

/// Fills the buffer from the raw command line, the text after the program's own path, and returns how many
/// arguments there are: 0 or 1. Enclosing quotes are removed, blanks inside them kept; whatever follows the
/// first argument is ignored.
[[nodiscard]] qint16 ParseCommandLine(const QString& text, ArgumentBuffer& arguments);

}  // namespace trevane

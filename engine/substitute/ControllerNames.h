#pragma once

#include <QString>
#include <QStringList>

namespace trevane {

/// A requested controller name without the characters that an address or a section name cannot hold: "[",
/// "]",
/// "/", "\", control characters and line ends; blanks and ";" in front and blanks at the end are removed,
/// too. Empty when nothing usable is left.
[[nodiscard]] QString CleanControllerName(const QString& requested);

/// The name of a new controller: the requested one, cleaned; when that is "My Computer" or in use (compared
/// without regard to case) with " (2)", or the next number that is free, behind it; when it is empty, the
/// last part of the provider's name with a number.
[[nodiscard]] QString ChooseControllerName(const QString& requested, const QString& provider,
                                           const QStringList& used);

}  // namespace trevane

#pragma once

#include <QString>
#include <QStringView>

#include <vector>

namespace trevane {

/// The one lower-casing of the program: keys, comparisons of addresses and the order of the list are all made
/// with it, so that they never disagree. Each code point is mapped on its own (no mapping makes a text
/// longer, none depends on the locale or on neighbours); lone surrogates, which carry undecodable bytes of
/// file names, stay as they are.
[[nodiscard]] QString LowerCase(const QString& text);

/// Appends the code units of LowerCase(text).
void AppendLowerCase(QStringView text, std::vector<char16_t>& units);

/// LowerCase(left) == LowerCase(right), without making the texts.
[[nodiscard]] bool EqualIgnoringCase(QStringView left, QStringView right) noexcept;

/// Negative, zero or positive as LowerCase(left) is before, at or after LowerCase(right) in the order of
/// UTF-16 code units, without making the texts.
[[nodiscard]] int CompareIgnoringCase(QStringView left, QStringView right) noexcept;

/// LowerCase(text) begins with LowerCase(prefix).
[[nodiscard]] bool StartsWithIgnoringCase(QStringView text, QStringView prefix) noexcept;

/// Equal for texts that EqualIgnoringCase calls equal.
[[nodiscard]] size_t HashIgnoringCase(QStringView text, size_t seed = 0) noexcept;

}  // namespace trevane

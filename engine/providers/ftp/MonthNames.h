#pragma once

#include <QByteArrayView>

namespace trevane::ftp {

/// The month that a word names, 1 to 12, in one of many languages, without regard to case; 0 for any other
/// word. The encoding does not matter for Latin letters; Russian is known in UTF-8 and in the usual
/// single-byte encodings.
[[nodiscard]] int MonthOf(QByteArrayView word);

}  // namespace trevane::ftp

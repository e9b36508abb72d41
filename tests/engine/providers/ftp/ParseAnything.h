#pragma once

#include <QByteArray>

namespace trevane::ftp::test {

/// Gives the bytes to every reader of listings. Returns what is wrong with the outcome, and nothing where all
/// is well: a name that no item has, more items than lines, two outcomes of the same bytes. Any bytes will
/// do: for tests with a corpus and for a fuzzer.
[[nodiscard]] QByteArray ParseAnything(const QByteArray& bytes);

}  // namespace trevane::ftp::test

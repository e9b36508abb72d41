#pragma once

#include <QByteArray>

namespace trevane::sftp::test {

/// Gives the bytes to the stream as a server's, and each packet to every parser. Returns the bytes of all
/// names, texts and contents that were read. Any bytes will do: for tests with a corpus and for a fuzzer.
[[nodiscard]] qsizetype ParseAnything(const QByteArray& bytes);

}  // namespace trevane::sftp::test

#pragma once

#include <QByteArray>

namespace trevane::sftp::test {

/// Uses every operation of the file system against a server whose answers are these bytes. The answer to each
/// request begins with a byte: a third of its values leave the usual answer, the others are a kind of answer
/// (the right id, then so many of the next bytes as one more byte tells) or bytes that are no packet. When no
/// byte is left all answers are the usual ones. Any bytes will do.
void ListenToAnything(const QByteArray& bytes);

}  // namespace trevane::sftp::test

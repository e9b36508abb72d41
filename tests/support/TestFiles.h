#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace trevane::test {

/// Writes a file, with the folders above it; a failure fails the test.
void WriteFile(const QString& path, const QByteArray& content);
/// The whole content, or "<none>" when the file cannot be read.
[[nodiscard]] QByteArray ContentOf(const QString& path);
/// The names of all entries of a folder, hidden ones included, in order.
[[nodiscard]] QStringList EntriesOf(const QString& folder);

}  // namespace trevane::test

#pragma once

#include <QString>
#include <QStringList>

/// Paths and names as the object tree and every provider take them.
namespace trevane::providerpath {

/// A letter and a colon.
[[nodiscard]] bool IsDriveName(const QString& piece);

/// The names of a path. "\" and "/" separate alike; separators in front and one at the end are ignored. Fails
/// with error::kInvalidName for an empty name inside, "." and "..".
[[nodiscard]] QStringList Split(const QString& path);

/// Whether the path begins with "\\", the prefix of a server and a share.
[[nodiscard]] bool IsShare(const QString& path);

/// The form of paths in error texts.
[[nodiscard]] QString Join(const QStringList& pieces);

/// `folder` and `name` with one separator between them.
[[nodiscard]] QString Child(const QString& folder, const QString& name);

/// The path for a text that a person typed and that does not begin at the top: it is below `start`, the
/// folder of a log-on, for which "~" and "." stand, too.
[[nodiscard]] QString BelowStart(const QString& start, const QString& text);

}  // namespace trevane::providerpath

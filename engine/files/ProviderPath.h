#pragma once

#include <QString>
#include <QStringList>

/// Paths and names as the object tree and every provider take them.
namespace trevane::providerpath {

/// A letter and a colon.
[[nodiscard]] bool IsDriveName(const QString& piece);

/// The names of a path. "\" and "/" separate alike; separators in front and one at the end mean nothing.
/// Fails with error::kInvalidName for an empty name inside, and for "." and "..".
[[nodiscard]] QStringList Split(const QString& path);

/// Begins with "\\", in front of the names of a server and a share.
[[nodiscard]] bool IsShare(const QString& path);

/// The form in which paths stand in error texts.
[[nodiscard]] QString Join(const QStringList& pieces);

/// `folder` and `name` with one separator between them.
[[nodiscard]] QString Child(const QString& folder, const QString& name);

/// Two lists of pieces name the same place by their letters alone, or `inner` lies below `outer`.
[[nodiscard]] bool IsSameOrBelow(const QStringList& outer, const QStringList& inner, Qt::CaseSensitivity cs);

}  // namespace trevane::providerpath

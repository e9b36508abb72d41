#pragma once

#include <QString>
#include <QStringList>

/// What every provider does with the paths it is given.
namespace trevane::providerpath {

/// A letter and a colon.
[[nodiscard]] bool IsDriveName(const QString& piece);

/// Not empty, "." or "..", and without "/", "\" and NUL.
[[nodiscard]] bool IsValidName(const QString& name);

/// The names of a path, split at "\" and "/"; empty pieces (leading and doubled separators) are dropped.
/// Fails with error::kInvalidName when a piece is no valid name.
[[nodiscard]] QStringList Split(const QString& path);

/// The form in which paths stand in error texts.
[[nodiscard]] QString Join(const QStringList& pieces);

/// `folder` and `name` with one separator between them.
[[nodiscard]] QString Child(const QString& folder, const QString& name);

/// Two lists of pieces name the same place by their letters alone, or `inner` lies below `outer`.
[[nodiscard]] bool IsSameOrBelow(const QStringList& outer, const QStringList& inner, Qt::CaseSensitivity cs);

}  // namespace trevane::providerpath

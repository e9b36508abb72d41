#pragma once

#include <QString>
#include <QStringList>
#include <QStringView>

/// Paths and names as the object tree takes them from its callers and from listings.
namespace trevane::filepath {

/// Not empty, not "." or "..", and without "/", "\" and NUL.
[[nodiscard]] bool IsName(QStringView name) noexcept;

/// Fails with error::kInvalidName for what is no name.
void RequireName(const QString& name);

/// The names of a path. "/" and "\" separate alike; separators in front and one at the end mean nothing.
/// Fails with error::kInvalidName for an empty name inside, "." and "..".
[[nodiscard]] QStringList Split(const QString& path);

/// `name` in `folder`, where the empty folder is the top.
[[nodiscard]] QString Join(const QString& folder, const QString& name);

/// A letter and a colon.
[[nodiscard]] bool IsDriveName(QStringView name) noexcept;

}  // namespace trevane::filepath

#pragma once

#include <QString>
#include <QStringList>

namespace trevane {
class Volumes;
}

namespace trevane::local {

/// A path of the provider, led back to a drive and a path of the system.
struct WindowsPath {
  /// The provider's form with its drive in front, for error texts; empty for the top.
  QString text;
  /// "C:" or "\\server\share"; empty for the top.
  QString drive;
  /// Literal, without a limit to its length; that of a drive or a share ends with "\", no other does.
  QString root;
  QString whole;
  QStringList names;

  [[nodiscard]] bool IsTop() const { return drive.isEmpty(); }
  [[nodiscard]] bool IsShare() const { return drive.startsWith(u'\\'); }
  [[nodiscard]] bool IsTopOrDrive() const { return names.isEmpty(); }
  [[nodiscard]] QString Parent() const;
  [[nodiscard]] QString ParentText() const;
  /// What programs know the item by, without the prefix that lifts the limits.
  [[nodiscard]] QString Plain() const;
};

/// Fails with error::kNotFound when there is no such drive and with error::kInvalidName. Whether a server or
/// its share is there is not asked.
[[nodiscard]] WindowsPath ResolvePath(const Volumes& volumes, const QString& path);

/// As ResolvePath for an item within a drive: fails with `refusal` for the top and for a drive.
[[nodiscard]] WindowsPath ResolveItem(const Volumes& volumes, const QString& path, qint32 refusal);

/// `folder` and a name with one "\" between them.
[[nodiscard]] QString Below(const QString& folder, const QString& name);

/// A literal path and those of all folders above it, the root of the drive or the share last.
[[nodiscard]] QStringList PathsUpwards(const QString& path);

/// Refuses a name that Windows would not let anybody reach again: one with a character that it keeps for
/// itself, one that ends with a dot or a blank, and those of devices, with any extension. Fails with
/// error::kInvalidName. Source: "Naming Files, Paths, and Namespaces" of the Windows API documentation.
void RequireNewName(const QString& name, const QString& text);

/// Whether a search for the name would find others: "*" and "?", and "<", ">" and "\"", which stand for those
/// two and the dot in searches of old. No item has such a name. Source: "FsRtlIsNameInExpression" of the
/// Windows Driver Kit documentation.
[[nodiscard]] bool IsPattern(const QString& name);

/// Fails for an error of the system at `path`. What is missing on a drive whose own root cannot be found is
/// its medium, and on such a share the share.
[[noreturn]] void FailAt(quint32 code, const WindowsPath& path);

}  // namespace trevane::local

#pragma once

#include <QString>
#include <QStringList>

namespace trevane {
class Volumes;
}

namespace trevane::local {

/// A path of the provider, resolved to a drive and a path of the system.
struct WindowsPath {
  /// The provider's form with its drive in front, for error texts; empty for the top.
  QString text;
  /// "C:" or "\\server\share"; empty for the top.
  QString drive;
  /// Literal and of any length; only that of a drive or a share ends with "\".
  QString root;
  QString whole;
  QStringList names;

  [[nodiscard]] bool IsTop() const { return drive.isEmpty(); }
  [[nodiscard]] bool IsShare() const { return drive.startsWith(u'\\'); }
  [[nodiscard]] bool IsTopOrDrive() const { return names.isEmpty(); }
  [[nodiscard]] QString Parent() const;
  [[nodiscard]] QString ParentText() const;
  /// The path for other programs, without the prefix for long paths.
  [[nodiscard]] QString Plain() const;
};

/// Fails with error::kNotFound when there is no such drive and with error::kInvalidName. Servers and shares
/// are not looked up.
[[nodiscard]] WindowsPath ResolvePath(const Volumes& volumes, const QString& path);

/// As ResolvePath for an item within a drive: fails with `refusal` for the top and for a drive.
[[nodiscard]] WindowsPath ResolveItem(const Volumes& volumes, const QString& path, qint32 refusal);

/// `folder` and a name with one "\" between them.
[[nodiscard]] QString Below(const QString& folder, const QString& name);

/// A literal path and those of all folders above it, the root of the drive or the share last.
[[nodiscard]] QStringList PathsUpwards(const QString& path);

/// Refuses names that Windows could not open again: names with a reserved character, with a dot or a blank at
/// the end, and names of devices, with any extension. Fails with error::kInvalidName. Source: "Naming Files,
/// Paths, and Namespaces" of the Windows API documentation.
void RequireNewName(const QString& name, const QString& text);

/// Whether a search would take the name for a pattern: it contains "*" or "?", or "<", ">" or "\"", the old
/// forms of those two and of the dot. No item has such a name. Source: "FsRtlIsNameInExpression" of the
/// Windows Driver Kit documentation.
[[nodiscard]] bool IsPattern(const QString& name);

/// Fails for an error of the system at `path`. If the root of the drive cannot be found either, its medium or
/// share is missing.
[[noreturn]] void FailAt(quint32 code, const WindowsPath& path);

}  // namespace trevane::local

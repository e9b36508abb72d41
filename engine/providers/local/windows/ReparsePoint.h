#pragma once

#include <QByteArray>
#include <QString>

namespace trevane::local {

/// The data of a symbolic link or a junction as the file system stores it. Source: REPARSE_DATA_BUFFER in the
/// documentation of the Windows Driver Kit.
struct ReparsePoint {
  QByteArray data;

  /// A mounted folder: the target of its junction is a volume.
  [[nodiscard]] bool LeadsToVolume() const;
  /// The target of a symbolic link, as CreateSymbolicLink takes it; otherwise empty.
  [[nodiscard]] QString SymbolicTarget() const;
};

/// Of the item itself; without data when it has none or may not be read.
[[nodiscard]] ReparsePoint ReadReparsePoint(const QString& path);

/// Creates a symbolic link at an unused path: 0, or an error of the system.
[[nodiscard]] quint32 MakeSymbolicLink(const QString& path, const QString& target, bool isFolder);

/// Creates a link with the same data at an unused path: 0, or an error of the system. Leaves nothing behind
/// when it fails.
[[nodiscard]] quint32 MakeReparsePoint(const QString& path, const ReparsePoint& point, bool isFolder);

}  // namespace trevane::local

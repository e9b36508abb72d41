#pragma once

#include <QByteArray>
#include <QString>

namespace trevane::local {

/// What a symbolic link or a junction says, as the file system keeps it. Source: REPARSE_DATA_BUFFER in the
/// documentation of the Windows Driver Kit.
struct ReparsePoint {
  QByteArray data;

  /// A mounted folder: the target of its junction is a volume.
  [[nodiscard]] bool LeadsToVolume() const;
  /// Where a symbolic link leads, as CreateSymbolicLink takes it; empty for what is none.
  [[nodiscard]] QString SymbolicTarget() const;
};

/// Of the item itself; without data when it has none or may not be read.
[[nodiscard]] ReparsePoint ReadReparsePoint(const QString& path);

/// Makes a link that says the same at a path where nothing stands: 0, or an error of the system. What was
/// made is gone again when it fails.
[[nodiscard]] quint32 MakeReparsePoint(const QString& path, const ReparsePoint& point, bool isFolder);

}  // namespace trevane::local

#pragma once

#include <QByteArray>

#include <vector>

namespace trevane {

/// One line of the kernel's table of mounts.
struct Mount {
  int id = 0;
  int parent = 0;
  /// "major:minor" of the file system.
  QByteArray device;
  /// The folder of the file system that is mounted here.
  QByteArray root;
  QByteArray point;
  QByteArray type;
  QByteArray source;
};

/// The lines of a mountinfo table (proc(5)), with its octal escapes decoded. Lines that are none are left
/// out.
[[nodiscard]] std::vector<Mount> ParseMountTable(const QByteArray& table);

/// Those that can be reached: not covered by another mount on the same folder or on one above it.
[[nodiscard]] std::vector<Mount> VisibleMounts(const std::vector<Mount>& mounts);

/// True when `path` is `folder` or lies below it.
[[nodiscard]] bool IsAtOrBelow(const QByteArray& path, const QByteArray& folder);

}  // namespace trevane

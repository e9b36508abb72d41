#pragma once

#include "engine/providers/local/linux/FileDescriptor.h"

#include <QByteArray>
#include <QString>

#include <vector>

namespace trevane {
class Volumes;
}

namespace trevane::local {

/// What an *at call of the operating system takes: it works however long the path is.
struct Location {
  FileDescriptor holder;
  int folder = -1;
  QByteArray name;
};

/// A path of the provider, led back to a drive and names on the disk.
struct NativePath {
  /// The provider's form with its drive in front, for error texts; empty for the top.
  QString text;
  /// "C:"; empty for the top.
  QString drive;
  /// Ends with "/".
  QByteArray root;
  /// Of the volume, 0 when unknown.
  quint64 device = 0;
  std::vector<QByteArray> names;

  [[nodiscard]] bool IsTop() const { return drive.isEmpty(); }
  [[nodiscard]] bool IsTopOrDrive() const { return names.empty(); }
  /// The whole path as the operating system writes it, however long.
  [[nodiscard]] QByteArray Whole() const;
  /// The text of the folder that holds the item.
  [[nodiscard]] QString ParentText() const;
  [[nodiscard]] NativePath Parent() const;
};

/// Fails with error::kNotFound when there is no such drive and with error::kInvalidName.
[[nodiscard]] NativePath ResolvePath(const Volumes& volumes, const QString& path);

/// ResolvePath for one path after the other: the items of a folder share all but their names, which is most
/// of the work.
class PathResolver {
 public:
  [[nodiscard]] NativePath Resolve(const Volumes& volumes, const QString& path);

 private:
  [[nodiscard]] bool IsDriveAsBefore(const Volumes& volumes) const;

  /// As it was given, and as it was resolved; empty when nothing is known.
  QString folder_;
  NativePath native_;
  std::size_t drive_ = 0;
  QString driveRoot_;
};

/// Opens what is needed to name the item in one call. Not for the top. Fails with error::kNotFound when the
/// way to the item does not exist, with error::kDeviceNotReady when the drive's root is gone or is no longer
/// the volume that it was when the drives were last asked for.
[[nodiscard]] Location Locate(const NativePath& path);

/// The folder itself, opened for *at calls only. Fails as Locate.
[[nodiscard]] FileDescriptor OpenForNames(const NativePath& folder);

/// Fails for an errno that opening or asking for `path` itself gave: what is missing at the root of a drive
/// is its medium.
[[noreturn]] void FailOpen(int code, const NativePath& path);

}  // namespace trevane::local

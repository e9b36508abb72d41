#pragma once

#include "platform/linux/FileDescriptor.h"

#include <QByteArray>
#include <QString>

#include <vector>

namespace trevane {
class Volumes;
}

namespace trevane::local {

/// The arguments of an *at call, for paths of any length.
struct Location {
  FileDescriptor holder;
  int folder = -1;
  QByteArray name;
};

/// A path of the provider, resolved to a drive and names on the disk.
struct NativePath {
  /// The provider's form with its drive in front, for error texts; empty for the top.
  QString text;
  /// "C:"; empty for the top.
  QString drive;
  /// Ends with "/".
  QByteArray root;
  /// The device of the volume, 0 when unknown.
  quint64 device = 0;
  std::vector<QByteArray> names;

  [[nodiscard]] bool IsTop() const { return drive.isEmpty(); }
  [[nodiscard]] bool IsTopOrDrive() const { return names.empty(); }
  /// The whole path in the form of the operating system, of any length.
  [[nodiscard]] QByteArray Whole() const;
  /// The text of the folder that holds the item.
  [[nodiscard]] QString ParentText() const;
  [[nodiscard]] NativePath Parent() const;
};

/// Fails with error::kNotFound when there is no such drive and with error::kInvalidName.
[[nodiscard]] NativePath ResolvePath(const Volumes& volumes, const QString& path);

/// ResolvePath for many paths: it remembers the last folder, which is most of the work for its items.
class PathResolver {
 public:
  [[nodiscard]] NativePath Resolve(const Volumes& volumes, const QString& path);

 private:
  [[nodiscard]] bool IsDriveAsBefore(const Volumes& volumes) const;

  /// The last folder as it was given and as it was resolved; empty when there is none.
  QString folder_;
  NativePath native_;
  std::size_t drive_ = 0;
  QString driveRoot_;
};

/// Opens the folders needed to name the item in one call. Not for the top. Fails with error::kNotFound when
/// the path to the item does not exist, with error::kDeviceNotReady when the root of the drive is missing or
/// another volume has replaced it since the drives were last listed.
[[nodiscard]] Location Locate(const NativePath& path);

/// The folder itself, opened for *at calls only. Fails as Locate.
[[nodiscard]] FileDescriptor OpenForNames(const NativePath& folder);

/// Fails for an errno of a call on `path` itself: a missing root of a drive means a missing medium.
[[noreturn]] void FailOpen(int code, const NativePath& path);

}  // namespace trevane::local

#pragma once

#include <QString>

#include <functional>
#include <optional>
#include <vector>

namespace trevane {

/// Drive kinds, as GetDriveType of the Windows API numbers them.
namespace drivetype {
inline constexpr qint32 kUnknown = 0;
inline constexpr qint32 kNoRoot = 1;
inline constexpr qint32 kRemovable = 2;
inline constexpr qint32 kFixed = 3;
inline constexpr qint32 kRemote = 4;
inline constexpr qint32 kCdrom = 5;
inline constexpr qint32 kRamDisk = 6;
}  // namespace drivetype

/// One drive.
struct Volume {
  /// Letter and colon, "C:".
  QString name;
  /// The folder of the operating system that the drive represents, ending with its separator: "/",
  /// "/media/usb/" or "C:\".
  QString rootPath;
  qint32 driveType = drivetype::kUnknown;
  /// The file system that was there when the system was asked, as the root path's own device number: the
  /// major one shifted up by 32 bits, and the minor one. 0 where that is not known; then nothing is compared.
  quint64 device = 0;
  /// For a network drive of Windows, the folder of another machine that it represents: "\\server\share"
  /// without a separator at its end. Empty for all others.
  QString share = {};
  /// Files that a program of this computer provides (FUSE): it may block like a network.
  bool byProgram = false;

  [[nodiscard]] friend bool operator==(const Volume&, const Volume&) = default;
};

/// Bytes.
struct VolumeSpace {
  /// The space that this user may still use.
  qint64 free = 0;
  qint64 total = 0;
};

/// The drives of the machine. They change only in Refresh, so that all readers in between see the same
/// drives.
class Volumes {
 public:
  virtual ~Volumes() = default;

  /// Asks the system again. False when it answers nothing or names no drive at all: what was current stays.
  virtual bool Refresh() = 0;

  /// In the order of their letters. Before the first Refresh it is empty.
  [[nodiscard]] virtual const std::vector<Volume>& Current() const = 0;

  /// Asks the system for the space of a volume when it is called, which may be on any thread and after this
  /// object is gone. The answer is empty if unknown, and for network or FUSE volumes.
  using SpaceQuery = std::function<std::optional<VolumeSpace>()>;
  /// The default knows nothing.
  [[nodiscard]] virtual SpaceQuery QueryOfSpace(const Volume& volume) const {
    static_cast<void>(volume);
    return [] { return std::optional<VolumeSpace>(); };
  }
};

}  // namespace trevane

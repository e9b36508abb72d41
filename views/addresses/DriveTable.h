#pragma once

#include "platform/Volumes.h"
#include "views/addresses/DriveSpaces.h"

#include <QString>

#include <optional>
#include <vector>

namespace trevane {

/// One local drive, as the tree and the list show it.
struct DriveInfo {
  /// Letter and colon, "C:".
  QString Root;
  /// The text shown for it: the same.
  QString Text;
  /// Index of the drive's node in the tree, 0 while it has none. Set when the node is added. As wide as the
  /// tree's own indexes, which pass 32767 in large trees.
  qint32 NodeIndex = 0;
  /// One of trevane::drivetype.
  qint32 DriveType = 0;
  /// Set when the node is added; empty for a drive without a node.
  QString ImageKey;
};

/// The drives that the tree and the list are made of. `volumes` outlives the table.
class DriveTable {
 public:
  explicit DriveTable(Volumes& volumes) : volumes_(volumes) {}
  DriveTable(const DriveTable&) = delete;
  DriveTable& operator=(const DriveTable&) = delete;

  /// Asks the system for its drives. `Root`, `Text` and `DriveType` are set anew; the other members of a
  /// record stay with its position. When the system reports no drives the table stays as it was.
  void RefreshDrives();

  [[nodiscard]] const std::vector<DriveInfo>& Drives() const noexcept { return drives_; }
  /// For the node index and the image key; fails with error::kOutOfRange.
  [[nodiscard]] DriveInfo& Drive(int index);

  /// Of the drive with that root, as the system knew it when it was last asked; null when there is none.
  [[nodiscard]] const Volume* VolumeOf(const QString& root) const;
  /// As Volumes::QueryOfSpace, without ever waiting for a drive that may not answer: see DriveSpaces.
  [[nodiscard]] std::optional<VolumeSpace> SpaceOf(const Volume& volume) const {
    return spaces_.SpaceOf(volumes_, volume);
  }

  /// The address of an absolute path of the operating system without "." and ".." in it: see
  /// AddressOfLocalFile. Empty when no drive holds it.
  [[nodiscard]] QString AddressOf(const QString& localFile) const;

  /// The table's upper bound: the number of drives minus one, -1 when there is none.
  [[nodiscard]] int DriveCount() const noexcept { return static_cast<int>(drives_.size()) - 1; }

 private:
  Volumes& volumes_;
  std::vector<DriveInfo> drives_;
  mutable DriveSpaces spaces_;
};

}  // namespace trevane

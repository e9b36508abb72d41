#include "views/addresses/DriveTable.h"

#include "base/RunTimeError.h"
#include "views/addresses/LocalFileAddress.h"

#include <algorithm>

namespace trevane {

void DriveTable::RefreshDrives() {
  if (!volumes_.Refresh()) {
    return;
  }
  const std::vector<Volume>& current = volumes_.Current();
  drives_.resize(current.size());
  for (size_t i = 0; i < current.size(); ++i) {
    drives_[i].Root = current[i].name;
    drives_[i].Text = current[i].name;
    drives_[i].DriveType = current[i].driveType;
  }
}

const Volume* DriveTable::VolumeOf(const QString& root) const {
  const auto& current = volumes_.Current();
  const auto found = std::find_if(current.begin(), current.end(),
                                  [&root](const Volume& volume) { return volume.name == root; });
  return found == current.end() ? nullptr : &*found;
}

QString DriveTable::AddressOf(const QString& localFile) const {
  return AddressOfLocalFile(volumes_.Current(), localFile);
}

DriveInfo& DriveTable::Drive(int index) {
  if (index < 0 || index > DriveCount()) {
    throw RunTimeError(error::kOutOfRange, QStringLiteral("No drive at position %1.").arg(index));
  }
  return drives_[static_cast<size_t>(index)];
}

}  // namespace trevane

#include "platform/SystemVolumes.h"

#include <utility>
#include <vector>

#include <windows.h>

namespace trevane {

SystemVolumes::SystemVolumes(QString systemRoot) : systemRoot_(std::move(systemRoot)) {}

bool SystemVolumes::Refresh() {
  const DWORD size = GetLogicalDriveStringsA(0, nullptr);
  std::vector<char> names(size + 1, '\0');
  if (size == 0 || GetLogicalDriveStringsA(size, names.data()) >= size)
    return false;
  std::vector<Volume> volumes;
  // "A:\", NUL, "C:\", NUL, NUL.
  for (const char* name = names.data(); *name != '\0'; name += qstrlen(name) + 1) {
    const QString root = QString::fromLatin1(name);
    volumes.push_back({root.left(2), root, static_cast<qint32>(GetDriveTypeA(name)), 0});
  }
  if (volumes.empty())
    return false;
  current_ = std::move(volumes);
  return true;
}

std::optional<VolumeSpace> SystemVolumes::SpaceOf(const Volume& volume) const {
  if (volume.driveType == drivetype::kRemote) {
    return std::nullopt;
  }
  // A drive without a medium is no matter for a box of the system's.
  DWORD before = 0;
  SetThreadErrorMode(SEM_FAILCRITICALERRORS, &before);
  ULARGE_INTEGER free{};
  ULARGE_INTEGER total{};
  const bool isKnown =
      GetDiskFreeSpaceExA(volume.rootPath.toLatin1().constData(), &free, &total, nullptr) != FALSE;
  SetThreadErrorMode(before, nullptr);
  if (!isKnown) {
    return std::nullopt;
  }
  return VolumeSpace{static_cast<qint64>(free.QuadPart), static_cast<qint64>(total.QuadPart)};
}

}  // namespace trevane

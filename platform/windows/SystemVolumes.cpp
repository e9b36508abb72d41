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

}  // namespace trevane

#include "platform/SystemVolumes.h"

#include "platform/windows/WindowsText.h"

#include <string>
#include <utility>
#include <vector>

#include <windows.h>

#include <winnetwk.h>

namespace trevane {
namespace {

/// Also of one whose server cannot be reached now: nobody is asked but this machine.
QString ShareOf(const QString& drive) {
  DWORD size = 0;
  if (WNetGetConnectionW(windowstext::Wide(drive), nullptr, &size) != ERROR_MORE_DATA) {
    return {};
  }
  std::wstring share(size, L'\0');
  if (WNetGetConnectionW(windowstext::Wide(drive), share.data(), &size) != NO_ERROR) {
    return {};
  }
  QString text = windowstext::FromWide(share.c_str());
  while (text.endsWith(u'\\')) {
    text.chop(1);
  }
  return text;
}

}  // namespace

SystemVolumes::SystemVolumes(QString systemRoot) : systemRoot_(std::move(systemRoot)) {}

bool SystemVolumes::Refresh() {
  const DWORD size = GetLogicalDriveStringsA(0, nullptr);
  std::vector<char> names(size + 1, '\0');
  if (size == 0 || GetLogicalDriveStringsA(size, names.data()) >= size) {
    return false;
  }
  std::vector<Volume> volumes;
  // "A:\", NUL, "C:\", NUL, NUL.
  for (const char* name = names.data(); *name != '\0'; name += qstrlen(name) + 1) {
    const QString root = QString::fromLatin1(name);
    Volume volume{root.left(2), root, static_cast<qint32>(GetDriveTypeA(name)), 0};
    if (volume.driveType == drivetype::kRemote) {
      volume.share = ShareOf(volume.name);
    }
    volumes.push_back(std::move(volume));
  }
  if (volumes.empty()) {
    return false;
  }
  current_ = std::move(volumes);
  return true;
}

Volumes::SpaceQuery SystemVolumes::QueryOfSpace(const Volume& volume) const {
  if (volume.driveType == drivetype::kRemote) {
    return Volumes::QueryOfSpace(volume);
  }
  return [path = volume.rootPath.toLatin1()]() -> std::optional<VolumeSpace> {
    // The system shows no error box for a drive without a medium.
    DWORD before = 0;
    SetThreadErrorMode(SEM_FAILCRITICALERRORS, &before);
    ULARGE_INTEGER free{};
    ULARGE_INTEGER total{};
    const bool isKnown = GetDiskFreeSpaceExA(path.constData(), &free, &total, nullptr) != FALSE;
    SetThreadErrorMode(before, nullptr);
    if (!isKnown) {
      return std::nullopt;
    }
    return VolumeSpace{static_cast<qint64>(free.QuadPart), static_cast<qint64>(total.QuadPart)};
  };
}

}  // namespace trevane

#include "engine/providers/windows/ReparsePoint.h"

#include "engine/providers/windows/ItemStatus.h"
#include "platform/windows/WindowsText.h"

#include <cstring>

#include <windows.h>

#include <winioctl.h>

namespace trevane::local {

using windowstext::Wide;

namespace {

constexpr DWORD kLargest = 16 * 1024;  // MAXIMUM_REPARSE_DATA_BUFFER_SIZE
// Tag, length and reserved; then four 16-bit offsets and lengths, and the names of a junction.
constexpr qsizetype kHeaderBytes = 8;
constexpr qsizetype kJunctionNamesAt = kHeaderBytes + 8;

quint16 WordAt(const QByteArray& data, qsizetype at) {
  quint16 word = 0;
  std::memcpy(&word, data.constData() + at, sizeof word);
  return word;
}

}  // namespace

bool ReparsePoint::LeadsToVolume() const {
  if (data.size() < kJunctionNamesAt) {
    return false;
  }
  const qsizetype begin = kJunctionNamesAt + WordAt(data, kHeaderBytes);
  const qsizetype length = WordAt(data, kHeaderBytes + 2);
  if (begin + length > data.size()) {
    return false;
  }
  QString target(length / 2, Qt::Uninitialized);
  std::memcpy(target.data(), data.constData() + begin, static_cast<size_t>(length / 2 * 2));
  return target.startsWith(QLatin1StringView("\\??\\Volume{"), Qt::CaseInsensitive);
}

ReparsePoint ReadReparsePoint(const QString& path) {
  ReparsePoint point;
  const FileHandle item = OpenItem(path, FILE_READ_ATTRIBUTES);
  QByteArray buffer(kLargest, '\0');
  DWORD got = 0;
  if (item.IsOpen() && DeviceIoControl(item.Get(), FSCTL_GET_REPARSE_POINT, nullptr, 0, buffer.data(),
                                       kLargest, &got, nullptr) != FALSE) {
    point.data = buffer.first(static_cast<qsizetype>(got));
  }
  return point;
}

quint32 MakeReparsePoint(const QString& path, const ReparsePoint& point, bool isFolder) {
  if (isFolder) {
    if (CreateDirectoryW(Wide(path), nullptr) == FALSE) {
      return GetLastError();
    }
  } else {
    const FileHandle made(CreateFileW(Wide(path), GENERIC_WRITE, 0, nullptr, CREATE_NEW, 0, nullptr));
    if (!made.IsOpen()) {
      return GetLastError();
    }
  }
  DWORD code = 0;
  {
    const FileHandle item = OpenItem(path, GENERIC_WRITE);
    DWORD got = 0;
    QByteArray data = point.data;
    if (!item.IsOpen() ||
        DeviceIoControl(item.Get(), FSCTL_SET_REPARSE_POINT, data.data(), static_cast<DWORD>(data.size()),
                        nullptr, 0, &got, nullptr) == FALSE) {
      code = GetLastError();
    }
  }
  if (code != 0) {
    isFolder ? RemoveDirectoryW(Wide(path)) : DeleteFileW(Wide(path));
  }
  return code;
}

}  // namespace trevane::local

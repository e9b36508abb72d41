#include "engine/providers/local/windows/ReparsePoint.h"

#include "engine/providers/local/windows/ItemStatus.h"
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
// A symbolic link has flags in front of its names.
constexpr qsizetype kLinkNamesAt = kJunctionNamesAt + 4;

quint16 WordAt(const QByteArray& data, qsizetype at) {
  quint16 word = 0;
  std::memcpy(&word, data.constData() + at, sizeof word);
  return word;
}

quint32 TagOf(const QByteArray& data) {
  quint32 tag = 0;
  std::memcpy(&tag, data.constData(), sizeof tag);
  return tag;
}

/// The name whose offset and length are at `at`; empty when they point outside the data.
QString NameAt(const QByteArray& data, qsizetype at, qsizetype namesAt) {
  if (data.size() < namesAt) {
    return {};
  }
  const qsizetype begin = namesAt + WordAt(data, at);
  const qsizetype length = WordAt(data, at + 2);
  if (begin + length > data.size()) {
    return {};
  }
  QString name(length / 2, Qt::Uninitialized);
  std::memcpy(name.data(), data.constData() + begin, static_cast<size_t>(length / 2 * 2));
  return name;
}

}  // namespace

bool ReparsePoint::LeadsToVolume() const {
  return NameAt(data, kHeaderBytes, kJunctionNamesAt)
      .startsWith(QLatin1StringView("\\??\\Volume{"), Qt::CaseInsensitive);
}

QString ReparsePoint::SymbolicTarget() const {
  if (data.size() < kLinkNamesAt || TagOf(data) != IO_REPARSE_TAG_SYMLINK) {
    return {};
  }
  // The name for display is the one that the link was created with.
  const QString shown = NameAt(data, kHeaderBytes + 4, kLinkNamesAt);
  if (!shown.isEmpty()) {
    return shown;
  }
  const QString target = NameAt(data, kHeaderBytes, kLinkNamesAt);
  if (target.startsWith(QLatin1StringView("\\??\\UNC\\"))) {
    return u'\\' + target.sliced(7);
  }
  return target.startsWith(QLatin1StringView("\\??\\")) ? target.sliced(4) : target;
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

quint32 MakeSymbolicLink(const QString& path, const QString& target, bool isFolder) {
  // In developer mode the system allows symbolic links without a privilege, but only to calls with this flag.
  constexpr DWORD kWithoutTheRight = 2;  // SYMBOLIC_LINK_FLAG_ALLOW_UNPRIVILEGED_CREATE
  const DWORD flags = isFolder ? SYMBOLIC_LINK_FLAG_DIRECTORY : 0;
  if (CreateSymbolicLinkW(Wide(path), Wide(target), flags | kWithoutTheRight) == FALSE) {
    const DWORD code = GetLastError();
    if (code != ERROR_INVALID_PARAMETER) {
      return code;
    }
    if (CreateSymbolicLinkW(Wide(path), Wide(target), flags) == FALSE) {
      return GetLastError();
    }
  }
  // Some systems report success and make nothing.
  return GetFileAttributesW(Wide(path)) != INVALID_FILE_ATTRIBUTES ? 0 : ERROR_NOT_SUPPORTED;
}

quint32 MakeReparsePoint(const QString& path, const ReparsePoint& point, bool isFolder) {
  if (const QString target = point.SymbolicTarget(); !target.isEmpty()) {
    return MakeSymbolicLink(path, target, isFolder);
  }
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

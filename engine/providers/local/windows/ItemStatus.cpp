#include "engine/providers/local/windows/ItemStatus.h"

#include "engine/files/ProviderError.h"
#include "engine/providers/local/windows/ReparsePoint.h"
#include "engine/providers/local/windows/Win32Errors.h"
#include "platform/windows/WindowsText.h"

#include <cstring>

namespace trevane::local {

using windowstext::FromWide;
using windowstext::Wide;

namespace {

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
constexpr DWORD kShownAttributes = FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM |
                                   FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_ARCHIVE;

constexpr DWORD kMarks =
    FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_ARCHIVE;

/// Reported where there is no number or it does not fit. Source: FILE_INTERNAL_INFORMATION in the
/// documentation of the Windows Driver Kit.
constexpr quint64 kNoNumber = ~quint64{0};

qint64 Join(DWORD high, DWORD low) {
  return static_cast<qint64>((static_cast<quint64>(high) << 32) | low);
}

/// A FILETIME counts 100 nanoseconds from the year 1601; 0 is a time that is not kept.
constexpr qint64 kTo1970 = 11644473600000;

Date DateOf(const FILETIME& time) {
  const qint64 ticks = Join(time.dwHighDateTime, time.dwLowDateTime);
  if (ticks == 0) {
    return {};
  }
  return Date{ticks / 10000 - kTo1970};
}

FILETIME TimeOf(const Date& date) {
  const auto ticks = static_cast<quint64>((date.msecs + kTo1970) * 10000);
  return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}

}  // namespace

ItemStatus StatusFrom(const WIN32_FIND_DATAW& found) {
  ItemStatus status;
  status.attributes = found.dwFileAttributes;
  status.tag = (found.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 ? found.dwReserved0 : 0;
  status.size = Join(found.nFileSizeHigh, found.nFileSizeLow);
  status.created = found.ftCreationTime;
  status.accessed = found.ftLastAccessTime;
  status.modified = found.ftLastWriteTime;
  return status;
}

DWORD SearchFor(const QString& path, WIN32_FIND_DATAW& found) {
  const HANDLE search =
      FindFirstFileExW(Wide(path), FindExInfoStandard, &found, FindExSearchNameMatch, nullptr, 0);
  if (search == INVALID_HANDLE_VALUE) {
    return GetLastError();
  }
  FindClose(search);
  const QString asked = path.mid(path.lastIndexOf(u'\\') + 1);
  const auto isAsked = [&asked](const wchar_t* name) {
    return asked.compare(FromWide(name), Qt::CaseInsensitive) == 0;
  };
  return isAsked(found.cFileName) || isAsked(found.cAlternateFileName) ? 0 : kOtherName;
}

DWORD StatusAt(const QString& path, ItemStatus& status) {
  WIN32_FILE_ATTRIBUTE_DATA data{};
  if (GetFileAttributesExW(Wide(path), GetFileExInfoStandard, &data) == FALSE) {
    const DWORD code = GetLastError();
    // A file that is opened exclusively (the page file) can only be found through its folder.
    if (code != ERROR_SHARING_VIOLATION) {
      return code == 0 ? ERROR_GEN_FAILURE : code;
    }
    data.dwFileAttributes = FILE_ATTRIBUTE_REPARSE_POINT;
  }
  if ((data.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) {
    WIN32_FIND_DATAW found{};
    const DWORD code = SearchFor(path, found);
    if (code == 0) {
      status = StatusFrom(found);
      return 0;
    }
    if (code != kOtherName) {
      return code;
    }
    // Without its tag it counts as a link.
  }
  status.attributes = data.dwFileAttributes;
  status.tag = 0;
  status.size = Join(data.nFileSizeHigh, data.nFileSizeLow);
  status.created = data.ftCreationTime;
  status.accessed = data.ftLastAccessTime;
  status.modified = data.ftLastWriteTime;
  return 0;
}

FileTraits TraitsOf(const QString& path, const ItemStatus& status) {
  FileTraits traits;
  DWORD attributes = status.attributes;
  traits.created = DateOf(status.created);
  traits.modified = DateOf(status.modified);
  if (status.IsLink()) {
    BY_HANDLE_FILE_INFORMATION target{};
    const FileHandle opened = OpenItem(path, FILE_READ_ATTRIBUTES, 0);
    if (!opened.IsOpen() || GetFileInformationByHandle(opened.Get(), &target) == FALSE) {
      return {};
    }
    attributes = target.dwFileAttributes;
    traits.created = DateOf(target.ftCreationTime);
    traits.modified = DateOf(target.ftLastWriteTime);
  }
  traits.marks = static_cast<qint32>(attributes & kMarks);
  return traits;
}

void GiveTraits(const QString& path, const FileTraits& traits) {
  if (traits.created.IsPresent() || traits.modified.IsPresent()) {
    const FileHandle item = OpenItem(path, FILE_WRITE_ATTRIBUTES);
    const FILETIME created = TimeOf(traits.created);
    const FILETIME modified = TimeOf(traits.modified);
    if (item.IsOpen()) {
      SetFileTime(item.Get(), traits.created.IsPresent() ? &created : nullptr, nullptr,
                  traits.modified.IsPresent() ? &modified : nullptr);
    }
  }
  if (traits.marks) {
    const DWORD marks = static_cast<DWORD>(*traits.marks) & kMarks;
    SetFileAttributesW(Wide(path), marks == 0 ? FILE_ATTRIBUTE_NORMAL : marks);
  }
}

std::optional<ItemStatus> StatusIfThere(const QString& path, const QString& text) {
  ItemStatus status;
  const DWORD code = StatusAt(path, status);
  if (code == 0) {
    return status;
  }
  if (NumberOfWin32(code) != error::kNotFound) {
    FailWin32(code, text);
  }
  return std::nullopt;
}

FileHandle OpenItem(const QString& path, DWORD access, DWORD flags) {
  return FileHandle(CreateFileW(Wide(path), access, kShareAll, nullptr, OPEN_EXISTING,
                                FILE_FLAG_BACKUP_SEMANTICS | flags, nullptr));
}

std::optional<FileIdentity> IdentityOf(HANDLE handle) {
  if (handle == INVALID_HANDLE_VALUE) {
    return std::nullopt;
  }
  // On file systems with numbers of 128 bits those of 64 are not sure to be unique. Both halves count; on
  // most file systems one of them is 0.
  FILE_ID_INFO whole{};
  if (GetFileInformationByHandleEx(handle, FileIdInfo, &whole, sizeof whole) != FALSE) {
    quint64 low = 0;
    quint64 high = 0;
    std::memcpy(&low, whole.FileId.Identifier, sizeof low);
    std::memcpy(&high, whole.FileId.Identifier + sizeof low, sizeof high);
    constexpr quint64 kSpread = 0x9E3779B97F4A7C15;  // any odd number keeps high halves distinct
    if ((low != 0 || high != 0) && (low & high) != kNoNumber) {
      return FileIdentity{whole.VolumeSerialNumber, low ^ (high * kSpread)};
    }
    return std::nullopt;
  }
  BY_HANDLE_FILE_INFORMATION information{};
  if (GetFileInformationByHandle(handle, &information) == FALSE) {
    return std::nullopt;
  }
  const auto file = static_cast<quint64>(Join(information.nFileIndexHigh, information.nFileIndexLow));
  // Some servers have no numbers.
  if (file == 0 || file == kNoNumber) {
    return std::nullopt;
  }
  return FileIdentity{information.dwVolumeSerialNumber, file};
}

std::optional<FileIdentity> IdentityAt(const QString& path) {
  return IdentityOf(OpenItem(path, FILE_READ_ATTRIBUTES).Get());
}

DWORD HoldFolder(const QString& path, FileHandle& folder) {
  FileHandle opened(CreateFileW(Wide(path), FILE_LIST_DIRECTORY, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT,
                                nullptr));
  if (!opened.IsOpen()) {
    return GetLastError();
  }
  FILE_ATTRIBUTE_TAG_INFO information{};
  if (GetFileInformationByHandleEx(opened.Get(), FileAttributeTagInfo, &information, sizeof information) !=
      FALSE) {
    ItemStatus status;
    status.attributes = information.FileAttributes;
    status.tag =
        (information.FileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 ? information.ReparseTag : 0;
    if (!status.IsFolder()) {
      return ERROR_DIRECTORY;
    }
  }
  folder = std::move(opened);
  return 0;
}

bool IsMountPoint(const QString& path, const ItemStatus& status) {
  return status.tag == IO_REPARSE_TAG_MOUNT_POINT && ReadReparsePoint(path).LeadsToVolume();
}

FileEntry MakeEntry(QString name, const QString& path, const ItemStatus& status) {
  FileEntry entry;
  entry.name = std::move(name);
  entry.attributes = static_cast<qint32>(status.attributes & kShownAttributes);
  entry.size = (status.attributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? 0 : status.size;
  entry.created = DateOf(status.created);
  entry.accessed = DateOf(status.accessed);
  entry.modified = DateOf(status.modified);
  if (!status.IsLink()) {
    return entry;
  }
  entry.attributes |= attribute::kLink;
  BY_HANDLE_FILE_INFORMATION target{};
  const FileHandle opened = OpenItem(path, FILE_READ_ATTRIBUTES, 0);
  if (!opened.IsOpen()) {
    entry.leadsNowhere = NumberOfWin32(GetLastError()) == error::kNotFound;
    return entry;
  }
  if (GetFileInformationByHandle(opened.Get(), &target) != FALSE) {
    const bool isFolder = (target.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    entry.size = isFolder ? 0 : Join(target.nFileSizeHigh, target.nFileSizeLow);
    entry.created = DateOf(target.ftCreationTime);
    entry.accessed = DateOf(target.ftLastAccessTime);
    entry.modified = DateOf(target.ftLastWriteTime);
  }
  return entry;
}

}  // namespace trevane::local

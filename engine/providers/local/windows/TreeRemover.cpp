#include "engine/providers/local/windows/TreeRemover.h"

#include "engine/files/ProviderError.h"
#include "engine/providers/local/windows/FolderReader.h"
#include "engine/providers/local/windows/Win32Errors.h"
#include "platform/windows/WindowsText.h"

#include <functional>
#include <utility>
#include <vector>

namespace trevane::local {

using windowstext::FromWide;
using windowstext::Wide;

namespace {

struct Item {
  QString name;
  ItemStatus status;
};

struct Level {
  QString path;
  QString text;
  ItemStatus status;
  std::vector<Item> items;
  size_t next = 0;
  FileHandle held{};
};

bool IsGone(DWORD code) {
  return NumberOfWin32(code) == error::kNotFound;
}

void RemoveItem(const QString& path, const QString& text, const ItemStatus& status) {
  const DWORD code = RemoveOne(path, status);
  if (code != 0 && !IsGone(code)) {
    FailWin32(code, text);
  }
}

Level Enter(const QString& path, const QString& text, const ItemStatus& status) {
  Level level{path, text, status, {}, 0, {}};
  DWORD code = HoldFolder(path, level.held);
  if (code == ERROR_DIRECTORY) {
    Fail(providererror::kChanged, text);
  }
  if (code != 0) {
    if (!IsGone(code)) {
      FailWin32(code, text);
    }
    return level;
  }
  code = EachItem(path, [&level](const WIN32_FIND_DATAW& found) {
    level.items.push_back({FromWide(found.cFileName), StatusFrom(found)});
  });
  if (code != 0 && !IsGone(code)) {
    FailWin32(code, text);
  }
  return level;
}

/// What SetFileInformationByHandle takes of the attributes.
constexpr DWORD kSettable = FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM |
                            FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_NOT_CONTENT_INDEXED;
/// FILE_INFO_BY_HANDLE_CLASS, a value that the compiler's headers show for no version of the system.
constexpr auto kDispositionEx = static_cast<FILE_INFO_BY_HANDLE_CLASS>(21);

bool IsUnknownToTheSystem(DWORD code) {
  return code == ERROR_INVALID_PARAMETER || code == ERROR_NOT_SUPPORTED || code == ERROR_INVALID_FUNCTION ||
         code == ERROR_CALL_NOT_IMPLEMENTED;
}

/// The mark belongs to the file and not to one name of it: that of its other names must outlast this one.
DWORD RemoveReadOnly(const QString& path, const ItemStatus& status, const std::function<DWORD()>& remove) {
  const FileHandle item = OpenItem(path, DELETE | FILE_WRITE_ATTRIBUTES);
  if (!item.IsOpen()) {
    return GetLastError();
  }
  FILE_DISPOSITION_INFO_EX past{FILE_DISPOSITION_FLAG_DELETE | FILE_DISPOSITION_FLAG_POSIX_SEMANTICS |
                                FILE_DISPOSITION_FLAG_IGNORE_READONLY_ATTRIBUTE};
  if (SetFileInformationByHandle(item.Get(), kDispositionEx, &past, sizeof past) != FALSE) {
    return 0;
  }
  if (const DWORD code = GetLastError(); !IsUnknownToTheSystem(code)) {
    return code;
  }
  // File systems that cannot pass over the mark have it taken away and, where something is left, put back.
  const auto mark = [&item](DWORD attributes) {
    FILE_BASIC_INFO basic{};
    basic.FileAttributes = attributes == 0 ? FILE_ATTRIBUTE_NORMAL : attributes;
    return SetFileInformationByHandle(item.Get(), FileBasicInfo, &basic, sizeof basic) != FALSE;
  };
  if (!mark(status.attributes & kSettable & ~static_cast<DWORD>(FILE_ATTRIBUTE_READONLY))) {
    return GetLastError();
  }
  const DWORD code = remove();
  BY_HANDLE_FILE_INFORMATION left{};
  if (code != 0 || (GetFileInformationByHandle(item.Get(), &left) != FALSE && left.nNumberOfLinks > 0)) {
    mark(status.attributes & kSettable);
  }
  return code;
}

}  // namespace

DWORD RemoveOne(const QString& path, const ItemStatus& status) {
  const bool isDirectory = (status.attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
  const auto remove = [&]() -> DWORD {
    return (isDirectory ? RemoveDirectoryW(Wide(path)) : DeleteFileW(Wide(path))) != FALSE ? 0
                                                                                           : GetLastError();
  };
  DWORD code = remove();
  if (code == ERROR_ACCESS_DENIED && status.IsReadOnly()) {
    code = RemoveReadOnly(path, status, remove);
  }
  // Somebody who looked at a deleted item just now, an indexer for one, keeps its name for a moment.
  for (int i = 0; i < 10 && isDirectory && code == ERROR_DIR_NOT_EMPTY; ++i) {
    bool isEmpty = true;
    if (EachItem(path, [&isEmpty](const WIN32_FIND_DATAW&) { isEmpty = false; }) != 0 || !isEmpty) {
      break;
    }
    Sleep(20);
    code = remove();
  }
  return code;
}

void RemoveTree(const QString& path, const QString& text, const ItemObserver& observer) {
  ItemStatus status;
  if (const DWORD code = StatusAt(path, status); code != 0) {
    FailWin32(code, text);
  }
  if (IsMountPoint(path, status)) {
    Fail(providererror::kBusy, text);
  }
  if (!status.IsFolder()) {
    RemoveItem(path, text, status);
    return;
  }
  std::vector<Level> levels;
  levels.push_back(Enter(path, text, status));
  while (!levels.empty()) {
    Level& level = levels.back();
    if (level.next == level.items.size()) {
      level.held.Close();
      RemoveItem(level.path, level.text, level.status);
      levels.pop_back();
      continue;
    }
    const Item& item = level.items[level.next++];
    if (observer && !observer(item.name)) {
      Fail(error::kCancelled, level.text);
    }
    const QString itemPath = Below(level.path, item.name);
    const QString itemText = level.text + u'\\' + item.name;
    if (IsMountPoint(itemPath, item.status)) {
      Fail(providererror::kBusy, itemText);
    }
    if (item.status.IsFolder()) {
      levels.push_back(Enter(itemPath, itemText, item.status));
    } else {
      RemoveItem(itemPath, itemText, item.status);
    }
  }
}

}  // namespace trevane::local

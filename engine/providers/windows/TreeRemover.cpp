#include "engine/providers/windows/TreeRemover.h"

#include "engine/providers/ProviderError.h"
#include "engine/providers/windows/FolderReader.h"
#include "engine/providers/windows/Win32Errors.h"
#include "platform/windows/WindowsText.h"

#include <utility>
#include <vector>

namespace trevane::local {

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
};

bool IsGone(DWORD code) {
  return NumberOfWin32(code) == error::kNotFound;
}

void RequireUnchanged(const QString& path, const QString& text, const SourceStamps& stamps) {
  ItemStatus now;
  if (const DWORD code = StatusAt(path, now); code != 0) {
    FailWin32(code, text);
  }
  const auto stamp = stamps.constFind(path);
  if (stamp == stamps.constEnd() || stamp->size != now.size ||
      CompareFileTime(&stamp->modified, &now.modified) != 0) {
    Fail(providererror::kChanged, text);
  }
}

void RemoveItem(const QString& path, const QString& text, const ItemStatus& status,
                const SourceStamps* stamps) {
  if (stamps != nullptr && !status.IsFolder() && !status.IsLink()) {
    RequireUnchanged(path, text, *stamps);
  }
  const DWORD code = RemoveOne(path, status);
  if (code != 0 && !IsGone(code)) {
    FailWin32(code, text);
  }
}

Level Enter(const QString& path, const QString& text, const ItemStatus& status) {
  Level level{path, text, status, {}, 0};
  const DWORD code = EachItem(path, [&level](const WIN32_FIND_DATAW& found) {
    level.items.push_back({FromWide(found.cFileName), StatusFrom(found)});
  });
  if (code != 0 && !IsGone(code)) {
    FailWin32(code, text);
  }
  return level;
}

}  // namespace

DWORD RemoveOne(const QString& path, const ItemStatus& status) {
  const bool isDirectory = (status.attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
  const auto remove = [&] {
    return (isDirectory ? RemoveDirectoryW(Wide(path)) : DeleteFileW(Wide(path))) != FALSE ? 0
                                                                                           : GetLastError();
  };
  DWORD code = remove();
  if (code == ERROR_ACCESS_DENIED && status.IsReadOnly()) {
    const DWORD without = status.attributes & ~static_cast<DWORD>(FILE_ATTRIBUTE_READONLY);
    if (SetFileAttributesW(Wide(path), without == 0 ? FILE_ATTRIBUTE_NORMAL : without) != FALSE) {
      code = remove();
      if (code != 0) {
        SetFileAttributesW(Wide(path), status.attributes);
      }
    }
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

void RemoveTree(const QString& path, const QString& text, const ItemObserver& observer,
                const SourceStamps* stamps) {
  ItemStatus status;
  if (const DWORD code = StatusAt(path, status); code != 0) {
    FailWin32(code, text);
  }
  if (IsMountPoint(path, status)) {
    Fail(providererror::kBusy, text);
  }
  if (!status.IsFolder()) {
    RemoveItem(path, text, status, stamps);
    return;
  }
  std::vector<Level> levels;
  levels.push_back(Enter(path, text, status));
  while (!levels.empty()) {
    Level& level = levels.back();
    if (level.next == level.items.size()) {
      RemoveItem(level.path, level.text, level.status, nullptr);
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
      RemoveItem(itemPath, itemText, item.status, stamps);
    }
  }
}

}  // namespace trevane::local

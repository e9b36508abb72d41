#include "engine/providers/local/windows/TreeRemover.h"

#include "engine/files/ProviderError.h"
#include "engine/files/TreeRemoval.h"
#include "engine/providers/local/windows/EachItem.h"
#include "engine/providers/local/windows/Win32Errors.h"
#include "platform/windows/WindowsText.h"

#include <algorithm>
#include <functional>
#include <utility>
#include <vector>

namespace trevane::local {

using windowstext::FromWide;
using windowstext::Wide;

namespace {

bool IsGone(DWORD code) {
  return NumberOfWin32(code) == error::kNotFound;
}

/// The folders below a path, for RemoveTree. None of them can be moved while it is held.
class HeldPathTree {
 public:
  struct Item {
    QString name;
    ItemStatus status;
    bool isMountPoint = false;
  };

  HeldPathTree(QString folder, QString text) {
    levels_.push_back({std::move(folder), std::move(text), {}, false});
  }

  [[nodiscard]] Item MakeItem(QString name, const ItemStatus& status) const {
    const bool isMountPoint = local::IsMountPoint(Below(levels_.back().path, name), status);
    return {std::move(name), status, isMountPoint};
  }

  [[nodiscard]] static bool IsFolder(const Item& item) { return item.status.IsFolder() || item.isMountPoint; }
  [[nodiscard]] static QString NameOf(const Item& item) { return item.name; }
  [[nodiscard]] QString Text() const { return levels_.back().text; }
  [[nodiscard]] QString TextOf(const Item& item) const { return levels_.back().text + u'\\' + item.name; }
  [[nodiscard]] bool IsMountPoint() const { return levels_.back().isMountPoint; }
  void Leave() { levels_.pop_back(); }

  [[nodiscard]] std::vector<Item> List() const {
    std::vector<Item> items;
    const DWORD code = EachItem(levels_.back().path, [&](const WIN32_FIND_DATAW& found) {
      items.push_back(MakeItem(FromWide(found.cFileName), StatusFrom(found)));
    });
    if (code != 0 && !IsGone(code)) {
      FailWin32(code, Text());
    }
    return items;
  }

  [[nodiscard]] bool Enter(const Item& item) {
    Level level{Below(levels_.back().path, item.name), TextOf(item), {}, item.isMountPoint};
    const DWORD code = item.isMountPoint ? 0 : HoldFolder(level.path, level.held);
    if (code == ERROR_DIRECTORY) {
      Fail(providererror::kChanged, level.text);
    }
    if (code != 0 && !IsGone(code)) {
      FailWin32(code, level.text);
    }
    if (code == 0) {
      levels_.push_back(std::move(level));
    }
    return code == 0;
  }

  void Remove(const Item& item) const {
    const DWORD code = RemoveOne(Below(levels_.back().path, item.name), item.status);
    if (code != 0 && !IsGone(code)) {
      FailWin32(code, TextOf(item));
    }
  }

 private:
  struct Level {
    QString path;
    QString text;
    FileHandle held;
    bool isMountPoint = false;
  };

  std::vector<Level> levels_;
};

/// The attributes that SetFileInformationByHandle accepts.
constexpr DWORD kSettable = FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM |
                            FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_NOT_CONTENT_INDEXED;
/// A value of FILE_INFO_BY_HANDLE_CLASS that the compiler's headers lack.
constexpr auto kDispositionEx = static_cast<FILE_INFO_BY_HANDLE_CLASS>(21);

bool IsUnknownToTheSystem(DWORD code) {
  return code == ERROR_INVALID_PARAMETER || code == ERROR_NOT_SUPPORTED || code == ERROR_INVALID_FUNCTION ||
         code == ERROR_CALL_NOT_IMPLEMENTED;
}

/// The attribute belongs to the file and not to one name of it: the other names must stay read-only.
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
  // On file systems that cannot ignore the attribute it is cleared, and set again if the file still exists.
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
  // A deleted item keeps its name for a moment while another program, such as an indexer, has it open.
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
  const qsizetype at = path.lastIndexOf(u'\\');
  HeldPathTree tree(path.first(at), text.first(std::max<qsizetype>(text.lastIndexOf(u'\\'), 0)));
  trevane::RemoveTree(tree, tree.MakeItem(path.sliced(at + 1), status), observer);
}

}  // namespace trevane::local

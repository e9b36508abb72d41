#include "engine/providers/local/windows/TreeCopier.h"

#include "engine/files/ProviderError.h"
#include "engine/files/TemporaryName.h"
#include "engine/providers/local/windows/EachItem.h"
#include "engine/providers/local/windows/Leftovers.h"
#include "engine/providers/local/windows/ReparsePoint.h"
#include "engine/providers/local/windows/Win32Errors.h"
#include "platform/windows/WindowsText.h"

#include <algorithm>

namespace trevane::local {

using windowstext::FromWide;
using windowstext::Wide;

namespace {

constexpr DWORD kKeptAttributes = FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM |
                                  FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_NOT_CONTENT_INDEXED;

Place Beside(const Place& to, const QString& name) {
  return {Below(to.path.left(to.path.lastIndexOf(u'\\')), name), to.text};
}

QString NameOf(const QString& path) {
  return path.mid(path.lastIndexOf(u'\\') + 1);
}

/// Attributes that the file system does not support are left out.
void CopyFolderAttributes(const QString& path, const ItemStatus& source) {
  {
    const FileHandle folder = OpenItem(path, FILE_WRITE_ATTRIBUTES);
    if (folder.IsOpen()) {
      SetFileTime(folder.Get(), &source.created, &source.accessed, &source.modified);
    }
  }
  const DWORD kept = source.attributes & kKeptAttributes;
  SetFileAttributesW(Wide(path), kept == 0 ? FILE_ATTRIBUTE_NORMAL : kept);
}

void RemoveQuietly(const QString& path) {
  ItemStatus status;
  if (StatusAt(path, status) == 0) {
    static_cast<void>(RemoveOne(path, status));
  }
}

}  // namespace

Place Place::Child(const QString& name) const {
  return {Below(path, name), text + u'\\' + name};
}

void RequireReplaceable(const ItemStatus& source, const ItemStatus& existing, const QString& text) {
  if (source.IsFolder() != existing.IsFolder()) {
    Fail(error::kExists, QStringLiteral("An item of another kind has that name"), text);
  }
  if (!existing.IsFolder() && !existing.IsLink() && existing.IsReadOnly()) {
    Fail(error::kAccessDenied, text);
  }
}

DWORD RenameItem(const QString& from, const QString& to, bool replace, bool durable) {
  const DWORD flags =
      (replace ? MOVEFILE_REPLACE_EXISTING : 0UL) | (replace || durable ? MOVEFILE_WRITE_THROUGH : 0UL);
  const bool wasBuilt = IsTemporaryName(NameOf(from));
  for (DWORD pause = 10;; pause *= 2) {
    if (MoveFileExW(Wide(from), Wide(to), flags) != FALSE) {
      return 0;
    }
    const DWORD code = GetLastError();
    const bool isHeld =
        code == ERROR_ACCESS_DENIED || code == ERROR_SHARING_VIOLATION || code == ERROR_LOCK_VIOLATION;
    if (!wasBuilt || !isHeld || pause > 640) {
      return code == 0 ? ERROR_GEN_FAILURE : code;
    }
    Sleep(pause);
  }
}

DWORD RenameOverEmptyFolder(const QString& from, const QString& to) {
  if (RemoveDirectoryW(Wide(to)) == FALSE) {
    return GetLastError();
  }
  const DWORD code = RenameItem(from, to, false, true);
  if (code != 0) {
    CreateDirectoryW(Wide(to), nullptr);
  }
  return code;
}

DWORD FlushFile(const QString& path, const ItemStatus& status) {
  // A flush needs write access.
  if (status.IsReadOnly()) {
    SetFileAttributesW(Wide(path), FILE_ATTRIBUTE_NORMAL);
  }
  DWORD code = 0;
  {
    const FileHandle file = OpenItem(path, GENERIC_WRITE);
    if (!file.IsOpen() || FlushFileBuffers(file.Get()) == FALSE) {
      code = GetLastError();
    }
  }
  if (status.IsReadOnly()) {
    SetFileAttributesW(Wide(path), status.attributes & kKeptAttributes);
  }
  return code;
}

std::vector<FileIdentity> FoldersUpwards(const QString& folder) {
  std::vector<FileIdentity> identities;
  QString whole;
  {
    const FileHandle opened = OpenItem(folder, FILE_READ_ATTRIBUTES, 0);
    if (!opened.IsOpen()) {
      return {};
    }
    whole = windowstext::FinalPath(opened.Get());
  }
  // Without a final path the given one is used.
  if (whole.isEmpty()) {
    whole = folder;
  }
  for (const QString& at : PathsUpwards(whole)) {
    const auto identity = IdentityAt(at);
    // A folder that may not be asked is left out.
    if (identity) {
      identities.push_back(*identity);
    }
  }
  return identities;
}

void TreeCopier::CopyOne(const Place& from, const ItemStatus& source, const Place& to) {
  if (source.IsLink()) {
    const ReparsePoint point = ReadReparsePoint(from.path);
    const DWORD code =
        point.data.isEmpty()
            ? static_cast<DWORD>(ERROR_ACCESS_DENIED)
            : MakeReparsePoint(to.path, point, (source.attributes & FILE_ATTRIBUTE_DIRECTORY) != 0);
    if (code != 0) {
      FailWin32(code, to.text);
    }
    return;
  }
  if (CopyFileExW(Wide(from.path), Wide(to.path), nullptr, nullptr, nullptr, COPY_FILE_FAIL_IF_EXISTS) ==
      FALSE) {
    const DWORD code = GetLastError();
    if (code != ERROR_FILE_EXISTS && code != ERROR_ALREADY_EXISTS) {
      RemoveQuietly(to.path);
    }
    FailWin32(code, NumberOfWin32(code) == error::kNotFound ? from.text : to.text);
  }
  ItemStatus copy;
  const DWORD code = StatusAt(to.path, copy);
  // A file that became shorter meanwhile is not a valid copy: it may match neither the old nor the new
  // content, and unwritten space at its end would look like content.
  ItemStatus now = source;
  if (code == 0 && StatusAt(from.path, now) != 0) {
    now = source;  // deleted since: the copy is whole
  }
  const qint64 whole = std::min(copy.size, now.size);
  if (code != 0 || whole < source.size) {
    RemoveQuietly(to.path);
    if (code != 0) {
      FailWin32(code, to.text);
    }
    Fail(providererror::kChanged,
         QStringLiteral("Only %1 of %2 bytes could be read").arg(whole).arg(source.size), from.text);
  }
}

void TreeCopier::PutItem(const Place& from, const ItemStatus& source, const Place& to, bool fresh,
                         bool replace) {
  RequireNewName(NameOf(to.path), to.text);
  if (fresh) {
    CopyOne(from, source, to);
    return;
  }
  const std::optional<ItemStatus> existing = StatusIfThere(to.path, to.text);
  if (existing) {
    if (!replace) {
      Fail(error::kExists, to.text);
    }
    RefusePut(to);
    RequireReplaceable(source, *existing, to.text);
  }
  Place made;
  MakeUnderTemporaryName([&](const QString& name) {
    made = Beside(to, name);
    try {
      CopyOne(from, source, made);
      return true;
    } catch (const RunTimeError& failure) {
      if (failure.Number() != error::kExists) {
        throw;
      }
      return false;
    }
  });
  if (const DWORD code = RenameItem(made.path, to.path, existing.has_value()); code != 0) {
    RemoveQuietly(made.path);
    FailWin32(code, to.text);
  }
  if (!levels_.empty()) {
    NotePut(levels_.back(), to.path);
  }
}

void TreeCopier::RefusePut(const Place& to) const {
  if (levels_.empty()) {
    return;
  }
  const Level& level = levels_.back();
  const auto own = IdentityAt(to.path);
  if (own ? level.put.count({own->volume, own->file}) != 0
          : level.putNames.contains(NameOf(to.path).toLower())) {
    Fail(error::kExists, QStringLiteral("Two names of the source are one name here"), to.text);
  }
}

void TreeCopier::NotePut(Level& level, const QString& path) {
  if (const auto own = IdentityAt(path)) {
    level.put.insert({own->volume, own->file});
  } else {
    level.putNames.insert(NameOf(path).toLower());
  }
}

void TreeCopier::EnterLevel(const Place& from, const ItemStatus& source, const Place& to, bool replace) {
  Level level{from, source, std::nullopt, to, to.path, {}, 0, false, false, {}, {}};
  level.fresh = !levels_.empty() && levels_.back().fresh;
  const auto create = [&level] {
    return CreateDirectoryW(Wide(level.to.path), nullptr) != FALSE ? 0 : GetLastError();
  };
  DWORD code = 0;
  if (level.fresh) {
    RequireNewName(NameOf(to.path), to.text);
    code = create();
  } else if (const auto existing = StatusIfThere(to.path, to.text); existing) {
    if (!replace) {
      Fail(error::kExists, to.text);
    }
    RefusePut(to);
    RequireReplaceable(source, *existing, to.text);
    const auto own = IdentityAt(from.path);
    if (own && own == IdentityAt(to.path)) {
      Fail(error::kInvalidParameter, QStringLiteral("The source and the destination are the same item"),
           to.text);
    }
    if (leftovers_ != nullptr) {
      SearchLeftovers(to.path, to.text, *leftovers_);
    }
  } else {
    RequireNewName(NameOf(to.path), to.text);
    level.fresh = true;
    level.isTemporary = true;
    MakeUnderTemporaryName([&](const QString& name) {
      level.to.path = Beside(to, name).path;
      code = create();
      return code != ERROR_ALREADY_EXISTS && code != ERROR_FILE_EXISTS;
    });
  }
  if (code != 0) {
    FailWin32(code, to.text);
  }
  // A volume may be mounted below itself, or contain the destination under another name.
  const auto own = IdentityOf(OpenItem(from.path, FILE_READ_ATTRIBUTES, 0).Get());
  const bool isHere = own && std::any_of(levels_.begin(), levels_.end(),
                                         [&own](const Level& above) { return above.identity == own; });
  level.identity = own;
  levels_.push_back(std::move(level));
  Level& entered = levels_.back();
  if (own && std::find(above_.begin(), above_.end(), *own) != above_.end()) {
    Fail(error::kInvalidParameter, QStringLiteral("The destination lies inside the source"), to.text);
  }
  if (isHere) {
    Fail(providererror::kLinkLoop, from.text);
  }
  code = EachItem(from.path, [&entered](const WIN32_FIND_DATAW& found) {
    entered.items.push_back({FromWide(found.cFileName), StatusFrom(found)});
  });
  // The empty root of a mounted volume has no items at all.
  if (code != 0 && code != ERROR_FILE_NOT_FOUND) {
    FailWin32(code, from.text);
  }
}

void TreeCopier::CopyNext(Level& level, bool replace) {
  const Item item = level.items[level.next++];
  if (observer_ && !observer_(item.name)) {
    Fail(error::kCancelled, level.from.Child(item.name).text);
  }
  const Place from = level.from.Child(item.name);
  const Place to = level.to.Child(item.name);
  const bool isMountPoint = IsMountPoint(from.path, item.status);
  if (item.status.IsFolder() || isMountPoint) {
    ItemStatus folder = item.status;
    folder.tag = 0;
    EnterLevel(from, folder, to, replace);
  } else {
    PutItem(from, item.status, to, level.fresh, replace);
  }
}

void TreeCopier::LeaveLevel() {
  const Level& level = levels_.back();
  if (level.fresh) {
    CopyFolderAttributes(level.to.path, level.source);
  }
  if (level.isTemporary) {
    if (const DWORD code = RenameItem(level.to.path, level.finalPath, false); code != 0) {
      FailWin32(code, level.to.text);
    }
  }
  const QString done = level.finalPath;
  levels_.pop_back();
  if (!levels_.empty() && !levels_.back().fresh) {
    NotePut(levels_.back(), done);
  }
}

void TreeCopier::DropTemporary() {
  const auto built =
      std::find_if(levels_.begin(), levels_.end(), [](const Level& l) { return l.isTemporary; });
  if (built != levels_.end()) {
    try {
      RemoveTree(built->to.path, built->to.text);
    } catch (const RunTimeError&) {
      // The copy is left under its temporary name; the first failure is the one to report.
    }
  }
  levels_.clear();
}

void TreeCopier::CopyFolder(const Place& from, const ItemStatus& source, const Place& to, bool replace) {
  above_ = FoldersUpwards(to.path.left(to.path.lastIndexOf(u'\\') + 1));
  try {
    EnterLevel(from, source, to, replace);
    while (!levels_.empty()) {
      if (levels_.back().next < levels_.back().items.size()) {
        CopyNext(levels_.back(), replace);
      } else {
        LeaveLevel();
      }
    }
  } catch (const RunTimeError&) {
    DropTemporary();
    throw;
  }
}

void TreeCopier::Copy(const Place& from, const ItemStatus& source, const Place& to, bool replace) {
  if (source.IsFolder()) {
    CopyFolder(from, source, to, replace);
  } else {
    PutItem(from, source, to, false, replace);
  }
}

}  // namespace trevane::local

#include "engine/providers/local/windows/TreeCopier.h"

#include "engine/files/ProviderError.h"
#include "engine/files/TemporaryName.h"
#include "engine/files/TreeCopy.h"
#include "engine/providers/local/windows/EachItem.h"
#include "engine/providers/local/windows/Leftovers.h"
#include "engine/providers/local/windows/ReparsePoint.h"
#include "engine/providers/local/windows/TreeRemover.h"
#include "engine/providers/local/windows/Win32Errors.h"
#include "platform/windows/WindowsText.h"

#include <algorithm>
#include <exception>
#include <optional>
#include <vector>

namespace trevane::local {

using windowstext::FromWide;
using windowstext::Wide;

namespace {

constexpr DWORD kKeptAttributes = FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM |
                                  FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_NOT_CONTENT_INDEXED;

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

/// What the system calls while it copies a file.
struct CopyWatch {
  const CopyProgress& progress;
  qint64 reported = 0;
  std::exception_ptr failure = {};

  static DWORD CALLBACK Report(LARGE_INTEGER size, LARGE_INTEGER done, LARGE_INTEGER /*streamSize*/,
                               LARGE_INTEGER /*streamDone*/, DWORD /*stream*/, DWORD /*reason*/,
                               HANDLE /*source*/, HANDLE /*target*/, LPVOID data) {
    // Small enough that a copy to a slow disk can be ended.
    constexpr qint64 kReported = 1024 * 1024;
    auto& watch = *static_cast<CopyWatch*>(data);
    if (done.QuadPart - watch.reported < kReported) {
      return PROGRESS_CONTINUE;
    }
    watch.reported = done.QuadPart;
    // No exception may cross the system.
    try {
      return watch.progress(done.QuadPart, size.QuadPart) ? PROGRESS_CONTINUE : PROGRESS_CANCEL;
    } catch (...) {
      watch.failure = std::current_exception();
      return PROGRESS_CANCEL;
    }
  }
};

/// Copies a file or a link.
void CopyOne(const Place& from, const ItemStatus& source, const Place& to, const CopyProgress& progress) {
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
  CopyWatch watch{progress};
  if (CopyFileExW(Wide(from.path), Wide(to.path), progress ? &CopyWatch::Report : nullptr, &watch, nullptr,
                  COPY_FILE_FAIL_IF_EXISTS) == FALSE) {
    const DWORD code = GetLastError();
    if (code == ERROR_REQUEST_ABORTED) {
      RemoveQuietly(to.path);
      if (watch.failure) {
        std::rethrow_exception(watch.failure);
      }
      Fail(error::kCancelled, from.text);
    }
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

/// The folder that an item is in.
Place FolderOf(const Place& item) {
  return {item.path.first(item.path.lastIndexOf(u'\\')),
          item.text.first(std::max<qsizetype>(item.text.lastIndexOf(u'\\'), 0))};
}

/// The folders of two paths, for CopyTree.
class PathPair {
 public:
  using Name = QString;
  using Status = ItemStatus;

  struct Item {
    QString name;
    ItemStatus status;
    bool isMountPoint = false;
  };

  PathPair(const Place& from, const Place& to, LeftoverLog& leftovers) : leftovers_(leftovers) {
    from_.push_back({from, {}, std::nullopt});
    to_.push_back(to);
  }

  [[nodiscard]] static QString TextFromName(const QString& name) { return name; }
  [[nodiscard]] static QString NameFromText(const QString& text) { return text; }
  [[nodiscard]] static QString NameOf(const Item& item) { return item.name; }
  [[nodiscard]] static bool IsFolder(const Item& item) { return item.status.IsFolder() || item.isMountPoint; }
  // Both would have to be opened.
  [[nodiscard]] static std::optional<FileIdentity> IdentityOf(const Item& /*item*/) { return std::nullopt; }
  [[nodiscard]] static std::optional<FileIdentity> IdentityOf(const ItemStatus& /*existing*/) {
    return std::nullopt;
  }
  [[nodiscard]] QString SourceTextOf(const Item& item) const { return Source().Child(item.name).text; }
  [[nodiscard]] QString Text() const { return to_.back().text; }
  [[nodiscard]] QString TextOf(const QString& name) const { return to_.back().Child(name).text; }

  [[nodiscard]] std::vector<Item> List() const {
    std::vector<Item> items;
    const DWORD code = EachItem(Source().path, [&items](const WIN32_FIND_DATAW& found) {
      items.push_back({FromWide(found.cFileName), StatusFrom(found), false});
    });
    // The empty root of a mounted volume has no items at all.
    if (code != 0 && code != ERROR_FILE_NOT_FOUND) {
      FailWin32(code, Source().text);
    }
    return items;
  }

  void Examine(Item& item, bool /*withIdentity*/) const {
    item.isMountPoint = local::IsMountPoint(Source().Child(item.name).path, item.status);
  }

  [[nodiscard]] std::optional<FileIdentity> EnterSource(const Item& item) {
    const Place folder = Source().Child(item.name);
    // Of the mounted volume for a mount point.
    const auto own = local::IdentityOf(OpenItem(folder.path, FILE_READ_ATTRIBUTES, 0).Get());
    // A volume may be mounted below itself.
    if (own && std::any_of(from_.begin(), from_.end(),
                           [&own](const SourceLevel& above) { return above.identity == own; })) {
      Fail(providererror::kLinkLoop, folder.text);
    }
    from_.push_back({folder, item.status, own});
    return own;
  }

  void LeaveSource() { from_.pop_back(); }

  [[nodiscard]] std::optional<ItemStatus> Find(const QString& name) const {
    const Place item = to_.back().Child(name);
    return StatusIfThere(item.path, item.text);
  }

  [[nodiscard]] std::optional<FileIdentity> IdentityAt(const QString& name) const {
    return local::IdentityAt(to_.back().Child(name).path);
  }

  void RequireReplaceable(const Item& source, const ItemStatus& existing, const QString& name) const {
    local::RequireReplaceable(IsFolder(source), existing, TextOf(name));
  }

  void MakeFolder(const QString& name, const QString& madeName) const {
    RequireNewName(name, TextOf(name));
    if (CreateDirectoryW(Wide(to_.back().Child(madeName).path), nullptr) == FALSE) {
      const DWORD code = GetLastError();
      FailWin32(code, TextOf(name));
    }
  }

  /// A rename may change the identity of a new folder (FAT).
  [[nodiscard]] std::optional<FileIdentity> EnterDestination(const QString& name, const QString& madeName,
                                                             bool isNew) {
    const Place& folder = to_.back();
    to_.push_back({folder.Child(madeName).path, folder.Child(name).text});
    return isNew ? std::nullopt : local::IdentityAt(to_.back().path);
  }

  void LeaveDestination() { to_.pop_back(); }

  [[nodiscard]] std::vector<FileIdentity> FoldersAbove() const {
    return FoldersUpwards(to_.back().path + u'\\');
  }

  [[nodiscard]] static bool HasTemporaryNames() { return true; }
  void SearchLeftovers() const { local::SearchLeftovers(to_.back().path, Text(), leftovers_); }

  void Rename(const QString& from, const QString& to, bool replace) const {
    const Place& folder = to_.back();
    if (const DWORD code = RenameItem(folder.Child(from).path, folder.Child(to).path, replace); code != 0) {
      FailWin32(code, TextOf(to));
    }
  }

  void RemoveUnfinished(const QString& name) const {
    const Place item = to_.back().Child(name);
    try {
      RemoveTree(item.path, item.text);
    } catch (const RunTimeError&) {
      // It is left under its temporary name.
    }
  }

  void RequireCopyable(const Item& /*item*/, const QString& name) const {
    RequireNewName(name, TextOf(name));
  }

  void CopyContent(const Item& item, const QString& name, const QString& madeName, bool /*replaces*/,
                   const CopyProgress& progress) const {
    CopyOne(Source().Child(item.name), item.status, {to_.back().Child(madeName).path, TextOf(name)},
            progress);
  }

  void CopyAttributes() const { CopyFolderAttributes(to_.back().path, from_.back().status); }

 private:
  struct SourceLevel {
    Place place;
    ItemStatus status;
    std::optional<FileIdentity> identity;
  };

  [[nodiscard]] const Place& Source() const { return from_.back().place; }

  LeftoverLog& leftovers_;
  std::vector<SourceLevel> from_;
  std::vector<Place> to_;
};

}  // namespace

Place Place::Child(const QString& name) const {
  return {Below(path, name), text + u'\\' + name};
}

void RequireReplaceable(bool sourceIsFolder, const ItemStatus& existing, const QString& text) {
  if (sourceIsFolder != existing.IsFolder()) {
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

void TreeCopier::Copy(const Place& from, const ItemStatus& source, const Place& to, bool replace,
                      const ItemObserver& observer) {
  PathPair folders(FolderOf(from), FolderOf(to), leftovers_);
  CopyTree(folders, PathPair::Item{NameOf(from.path), source, false}, NameOf(to.path), replace, observer);
}

}  // namespace trevane::local

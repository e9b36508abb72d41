#pragma once

#include "engine/files/FileSystem.h"
#include "engine/providers/local/windows/WindowsPath.h"

#include <optional>

#include <windows.h>

namespace trevane::local {

/// Owns a handle of CreateFile.
class FileHandle {
 public:
  FileHandle() = default;
  explicit FileHandle(HANDLE handle) noexcept : handle_(handle) {}
  FileHandle(FileHandle&& other) noexcept : handle_(other.Release()) {}
  FileHandle& operator=(FileHandle&& other) noexcept {
    if (this != &other) {
      Close();
      handle_ = other.Release();
    }
    return *this;
  }
  ~FileHandle() { Close(); }

  [[nodiscard]] HANDLE Get() const noexcept { return handle_; }
  [[nodiscard]] bool IsOpen() const noexcept { return handle_ != INVALID_HANDLE_VALUE; }
  /// False when the system only now reports that content could not be kept.
  bool Close() noexcept { return !IsOpen() || CloseHandle(Release()) != FALSE; }

 private:
  HANDLE Release() noexcept {
    const HANDLE handle = handle_;
    handle_ = INVALID_HANDLE_VALUE;
    return handle;
  }

  HANDLE handle_ = INVALID_HANDLE_VALUE;
};

/// The bit of a tag that says that the item stands for another one. Source: "Reparse Point Tags" of the
/// Windows API documentation.
inline constexpr DWORD kNameSurrogate = 0x20000000;

/// What is known of one item, by itself: links are not followed.
struct ItemStatus {
  DWORD attributes = 0;
  /// Of a reparse point; 0 for what is none.
  DWORD tag = 0;
  qint64 size = 0;
  FILETIME created{};
  FILETIME accessed{};
  FILETIME modified{};

  /// A symbolic link or a junction. Other reparse points (files of a cloud, deduplicated ones) are what they
  /// stand for. One that does not say what it is counts as a link: it is never gone through.
  [[nodiscard]] bool IsLink() const {
    return (tag & kNameSurrogate) != 0 || ((attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 && tag == 0);
  }
  /// A folder of its own, not a link to one.
  [[nodiscard]] bool IsFolder() const { return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0 && !IsLink(); }
  [[nodiscard]] bool IsReadOnly() const { return (attributes & FILE_ATTRIBUTE_READONLY) != 0; }
};

[[nodiscard]] ItemStatus StatusFrom(const WIN32_FIND_DATAW& found);

/// What the search of its folder says of one item: 0, or an error of the system. A search finds an item also
/// by a name that is not quite its own, "dotty" for "dotty.": that is kOtherName, with nothing found. Its
/// short name is its own.
inline constexpr DWORD kOtherName = ERROR_NO_MATCH;
[[nodiscard]] DWORD SearchFor(const QString& path, WIN32_FIND_DATAW& found);

/// 0, or an error of the system. `path` is a literal one.
[[nodiscard]] DWORD StatusAt(const QString& path, ItemStatus& status);

/// What a copy of an item keeps; of a link that of its target, nothing where that cannot be asked.
[[nodiscard]] FileTraits TraitsOf(const QString& path, const ItemStatus& status);

/// What cannot be set (a file system without such times) is left as it is.
void GiveTraits(const QString& path, const FileTraits& traits);

/// Nothing when there is no such item; fails when it cannot be asked.
[[nodiscard]] std::optional<ItemStatus> StatusIfThere(const QString& path, const QString& text);

/// For asking about an item itself or for working on it; folders can be opened as well.
[[nodiscard]] FileHandle OpenItem(const QString& path, DWORD access,
                                  DWORD flags = FILE_FLAG_OPEN_REPARSE_POINT);

/// Of something open: volume and file; nothing when the file system does not tell.
[[nodiscard]] std::optional<FileIdentity> IdentityOf(HANDLE handle);
/// Of an item itself.
[[nodiscard]] std::optional<FileIdentity> IdentityAt(const QString& path);

/// Opens a folder so that nobody can rename it, delete it or put a link in its place while it is open: what
/// was found in it stays below the path that it was found by. 0, or an error of the system: ERROR_DIRECTORY
/// for what is no folder of its own.
[[nodiscard]] DWORD HoldFolder(const QString& path, FileHandle& folder);

/// A folder that a whole volume is mounted at.
[[nodiscard]] bool IsMountPoint(const QString& path, const ItemStatus& status);

/// The entry for an item; of a link to a file the size and times are those of its target.
[[nodiscard]] FileEntry MakeEntry(QString name, const QString& path, const ItemStatus& status);

}  // namespace trevane::local

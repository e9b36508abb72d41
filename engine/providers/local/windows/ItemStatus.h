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
  /// False when the system reports only now that content could not be stored.
  bool Close() noexcept { return !IsOpen() || CloseHandle(Release()) != FALSE; }

 private:
  HANDLE Release() noexcept {
    const HANDLE handle = handle_;
    handle_ = INVALID_HANDLE_VALUE;
    return handle;
  }

  HANDLE handle_ = INVALID_HANDLE_VALUE;
};

/// The bit of a tag that marks an item as a representative of another one. Source: "Reparse Point Tags" of
/// the Windows API documentation.
inline constexpr DWORD kNameSurrogate = 0x20000000;

/// The status of one item itself; links are not followed.
struct ItemStatus {
  DWORD attributes = 0;
  /// Of a reparse point, otherwise 0.
  DWORD tag = 0;
  qint64 size = 0;
  FILETIME created{};
  FILETIME accessed{};
  FILETIME modified{};

  /// A symbolic link or a junction. Other reparse points (files of a cloud, deduplicated ones) are files and
  /// folders. One without a tag counts as a link: it is never followed.
  [[nodiscard]] bool IsLink() const {
    return (tag & kNameSurrogate) != 0 || ((attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 && tag == 0);
  }
  /// A folder, not a link to one.
  [[nodiscard]] bool IsFolder() const { return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0 && !IsLink(); }
  [[nodiscard]] bool IsReadOnly() const { return (attributes & FILE_ATTRIBUTE_READONLY) != 0; }
};

[[nodiscard]] ItemStatus StatusFrom(const WIN32_FIND_DATAW& found);

/// Searches a folder for one item: 0, or an error of the system. A search also accepts similar names, "dotty"
/// for "dotty.": the result is kOtherName then, with nothing found. The short name of an item is accepted.
inline constexpr DWORD kOtherName = ERROR_NO_MATCH;
[[nodiscard]] DWORD SearchFor(const QString& path, WIN32_FIND_DATAW& found);

/// 0, or an error of the system. `path` is a literal one.
[[nodiscard]] DWORD StatusAt(const QString& path, ItemStatus& status);

/// The traits that a copy of an item keeps; of a link those of its target, nothing where they cannot be asked
/// for.
[[nodiscard]] FileTraits TraitsOf(const QString& path, const ItemStatus& status);

/// Traits that the file system does not support are left out.
void GiveTraits(const QString& path, const FileTraits& traits);

/// The status of an item, nothing when it is missing. Fails when it cannot be asked.
[[nodiscard]] std::optional<ItemStatus> StatusIfThere(const QString& path, const QString& text);

/// Opens an item itself; folders can be opened as well.
[[nodiscard]] FileHandle OpenItem(const QString& path, DWORD access,
                                  DWORD flags = FILE_FLAG_OPEN_REPARSE_POINT);

/// Of an open item; nothing when the file system has none.
[[nodiscard]] std::optional<FileIdentity> IdentityOf(HANDLE handle);
/// Of an item itself.
[[nodiscard]] std::optional<FileIdentity> IdentityAt(const QString& path);

/// Opens a folder so that nobody can rename, delete or replace it while it is open: the paths of its items
/// stay valid. 0, or an error of the system: ERROR_DIRECTORY for a file or a link.
[[nodiscard]] DWORD HoldFolder(const QString& path, FileHandle& folder);

/// Whether a volume is mounted at the folder.
[[nodiscard]] bool IsMountPoint(const QString& path, const ItemStatus& status);

/// The entry for an item; a link to a file has the size and times of its target.
[[nodiscard]] FileEntry MakeEntry(QString name, const QString& path, const ItemStatus& status);

}  // namespace trevane::local

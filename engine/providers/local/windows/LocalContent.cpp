#include "engine/files/ProviderError.h"
#include "engine/files/TemporaryName.h"
#include "engine/providers/local/LocalFileSystem.h"
#include "engine/providers/local/windows/EachItem.h"
#include "engine/providers/local/windows/ItemStatus.h"
#include "engine/providers/local/windows/Leftovers.h"
#include "engine/providers/local/windows/LocalNative.h"
#include "engine/providers/local/windows/TreeCopier.h"
#include "engine/providers/local/windows/Win32Errors.h"

#include <algorithm>
#include <new>
#include <optional>
#include <vector>

#include <aclapi.h>

// A member of LocalFileSystem has this name, too.
#undef CreateFile

namespace trevane {

using local::FailAt;
using local::FileHandle;
using local::ItemStatus;
using local::ResolveItem;
using local::ResolvePath;
using local::WindowsPath;
using windowstext::FromWide;
using windowstext::Wide;

namespace {

constexpr qint64 kMostInOneCall = 64 * 1024 * 1024;

/// The path that content is written to, after all links were followed.
QString TargetOf(const WindowsPath& path, const ItemStatus& status) {
  if (!status.IsLink()) {
    return path.whole;
  }
  const FileHandle file = local::OpenItem(path.whole, FILE_READ_ATTRIBUTES, 0);
  const QString target = file.IsOpen() ? windowstext::FinalPath(file.Get()) : QString();
  if (target.isEmpty()) {
    FailAt(GetLastError(), path);
  }
  return target;
}

DWORD WriteAll(HANDLE file, const QByteArray& content) {
  for (qint64 at = 0; at < content.size();) {
    DWORD written = 0;
    const auto size = static_cast<DWORD>(std::min<qint64>(content.size() - at, kMostInOneCall));
    if (WriteFile(file, content.constData() + at, size, &written, nullptr) == FALSE) {
      return GetLastError();
    }
    if (written == 0) {
      return ERROR_DISK_FULL;
    }
    at += written;
  }
  return 0;
}

/// Copies the permissions of the old file. If they were not inherited from the folder, the new ones are not
/// either.
void CopyPermissions(const QString& from, const QString& to) {
  PACL rights = nullptr;
  PSECURITY_DESCRIPTOR descriptor = nullptr;
  auto* source = const_cast<wchar_t*>(Wide(from));
  auto* target = const_cast<wchar_t*>(Wide(to));
  if (GetNamedSecurityInfoW(source, SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr, nullptr, &rights,
                            nullptr, &descriptor) == ERROR_SUCCESS) {
    SECURITY_DESCRIPTOR_CONTROL control = 0;
    DWORD revision = 0;
    const bool ofItsOwn = GetSecurityDescriptorControl(descriptor, &control, &revision) != FALSE &&
                          (control & SE_DACL_PROTECTED) != 0;
    SetNamedSecurityInfoW(target, SE_FILE_OBJECT,
                          DACL_SECURITY_INFORMATION | (ofItsOwn ? PROTECTED_DACL_SECURITY_INFORMATION : 0UL),
                          nullptr, nullptr, rights, nullptr);
    LocalFree(descriptor);
  }
}

/// Copies the creation time and the attributes of the old file.
void CopyMarks(const QString& to, const ItemStatus& old) {
  const FileHandle file = local::OpenItem(to, FILE_WRITE_ATTRIBUTES);
  if (file.IsOpen()) {
    SetFileTime(file.Get(), &old.created, nullptr, nullptr);
  }
  SetFileAttributesW(Wide(to), (old.attributes & (FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM |
                                                  FILE_ATTRIBUTE_NOT_CONTENT_INDEXED)) |
                                   FILE_ATTRIBUTE_ARCHIVE);
}

FileHandle MakeTemporary(const QString& folder, QString& path, const WindowsPath& native) {
  FileHandle made;
  MakeUnderTemporaryName([&](const QString& name) {
    path = local::Below(folder, name);
    made = FileHandle(CreateFileW(Wide(path), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr,
                                  CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
    const DWORD code = made.IsOpen() ? 0 : GetLastError();
    if (code != 0 && code != ERROR_FILE_EXISTS && code != ERROR_ALREADY_EXISTS) {
      FailAt(code, native);
    }
    return code == 0;
  });
  return made;
}

/// Deletes the file even if it is read-only, or if the copied permissions do not let its owner delete it.
void DropTemporary(const QString& path) {
  if (DeleteFileW(Wide(path)) != FALSE || GetLastError() != ERROR_ACCESS_DENIED) {
    return;
  }
  SetFileAttributesW(Wide(path), FILE_ATTRIBUTE_NORMAL);
  if (DeleteFileW(Wide(path)) != FALSE) {
    return;
  }
  ACL none{};
  if (InitializeAcl(&none, sizeof none, ACL_REVISION) != FALSE) {
    SetNamedSecurityInfoW(const_cast<wchar_t*>(Wide(path)), SE_FILE_OBJECT,
                          DACL_SECURITY_INFORMATION | UNPROTECTED_DACL_SECURITY_INFORMATION, nullptr, nullptr,
                          &none, nullptr);
  }
  DeleteFileW(Wide(path));
}

/// Only the item that was seen before (`old`) is replaced, not one that appeared meanwhile.
FileStamp PutInPlace(const WindowsPath& native, const QString& target, const ItemStatus* old,
                     const QByteArray& content, const FileTraits& traits) {
  QString temporary;
  FileHandle file = MakeTemporary(target.left(target.lastIndexOf(u'\\') + 1), temporary, native);
  // Set before the content is written: whoever could not read the old content must not read the new one.
  if (old != nullptr) {
    CopyPermissions(target, temporary);
  }
  DWORD code = WriteAll(file.Get(), content);
  // A rename may reach the disk before the content does, so a replacement is flushed first. For a new file
  // the caller calls Flush.
  if (code == 0 && old != nullptr && FlushFileBuffers(file.Get()) == FALSE) {
    code = GetLastError();
  }
  if (!file.Close() && code == 0) {
    code = GetLastError();
  }
  if (code == 0 && old != nullptr) {
    CopyMarks(temporary, *old);
  } else if (code == 0) {
    local::GiveTraits(temporary, traits);
  }
  // Asked while nobody else knows its name.
  ItemStatus made;
  if (code == 0) {
    code = local::StatusAt(temporary, made);
  }
  const auto identity = code == 0 ? local::IdentityAt(temporary) : std::nullopt;
  if (code == 0) {
    code = local::RenameItem(temporary, target, old != nullptr);
  }
  if (code != 0) {
    DropTemporary(temporary);
    FailAt(code, native);
  }
  return {identity, made.size, local::MakeEntry(QString(), target, made).modified};
}

DWORD FlushTree(const QString& path, const ItemStatus& status) {
  if (status.IsLink()) {
    return 0;
  }
  if (!status.IsFolder()) {
    const DWORD code = local::FlushFile(path, status);
    // A file that may only be read was not written here.
    return code == ERROR_ACCESS_DENIED || code == ERROR_SHARING_VIOLATION ? 0 : code;
  }
  DWORD failure = 0;
  std::vector<QString> folders{path};
  while (!folders.empty() && failure == 0) {
    const QString folder = folders.back();
    folders.pop_back();
    const DWORD code = local::EachItem(folder, [&](const WIN32_FIND_DATAW& found) {
      const ItemStatus item = local::StatusFrom(found);
      const QString itemPath = local::Below(folder, FromWide(found.cFileName));
      if (item.IsFolder()) {
        folders.push_back(itemPath);
      } else if (failure == 0) {
        failure = FlushTree(itemPath, item);
      }
    });
    failure = failure == 0 && code != ERROR_FILE_NOT_FOUND ? code : failure;
  }
  return failure;
}

}  // namespace

QByteArray LocalFileSystem::Read(const QString& path) {
  const WindowsPath native = ResolveItem(volumes_, path, error::kAccessDenied);
  const DWORD attributes = GetFileAttributesW(Wide(native.whole));
  if (attributes == INVALID_FILE_ATTRIBUTES) {
    FailAt(GetLastError(), native);
  }
  if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
    Fail(error::kAccessDenied, native.text);
  }
  const FileHandle file(CreateFileW(Wide(native.whole), GENERIC_READ,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                    OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
  LARGE_INTEGER expected{};
  if (!file.IsOpen() || GetFileSizeEx(file.Get(), &expected) == FALSE) {
    FailAt(GetLastError(), native);
  }
  try {
    // One byte more, so that the end is found without growing.
    QByteArray content(static_cast<qsizetype>(expected.QuadPart) + 1, Qt::Uninitialized);
    qsizetype size = 0;
    for (;;) {
      if (size == content.size()) {
        content.resize(std::max<qsizetype>(4096, size * 2));
      }
      DWORD got = 0;
      const auto room = static_cast<DWORD>(std::min<qint64>(content.size() - size, kMostInOneCall));
      if (ReadFile(file.Get(), content.data() + size, room, &got, nullptr) == FALSE) {
        FailAt(GetLastError(), native);
      }
      if (got == 0) {
        break;
      }
      size += got;
    }
    content.truncate(size);
    return content;
  } catch (const std::bad_alloc&) {
    FailAt(ERROR_NOT_ENOUGH_MEMORY, native);
  }
}

void LocalFileSystem::Write(const QString& path, const QByteArray& content) {
  const WindowsPath native = ResolveItem(volumes_, path, error::kAccessDenied);
  local::SearchLeftovers(native.Parent(), native.ParentText(), native_->leftovers);
  ItemStatus status;
  const DWORD code = local::StatusAt(native.whole, status);
  if (code != 0) {
    if (local::NumberOfWin32(code) != error::kNotFound) {
      FailAt(code, native);
    }
    local::RequireNewName(native.names.last(), native.text);
    PutInPlace(native, native.whole, nullptr, content, {});
    return;
  }
  const QString target = TargetOf(native, status);
  if (status.IsLink()) {
    if (const DWORD failure = local::StatusAt(target, status); failure != 0) {
      FailAt(failure, native);
    }
  }
  if (status.IsFolder() || status.IsReadOnly()) {
    Fail(error::kAccessDenied, native.text);
  }
  PutInPlace(native, target, &status, content, {});
}

std::optional<FileStamp> LocalFileSystem::WriteNew(const QString& path, const QByteArray& content,
                                                   const FileTraits& traits) {
  const WindowsPath native = ResolveItem(volumes_, path, error::kExists);
  local::RequireNewName(native.names.last(), native.text);
  local::SearchLeftovers(native.Parent(), native.ParentText(), native_->leftovers);
  return PutInPlace(native, native.whole, nullptr, content, traits);
}

FileTraits LocalFileSystem::Traits(const QString& path) {
  const WindowsPath native = ResolvePath(volumes_, path);
  if (native.IsTopOrDrive()) {
    return {};
  }
  ItemStatus status;
  if (const DWORD code = local::StatusAt(native.whole, status); code != 0) {
    FailAt(code, native);
  }
  return local::TraitsOf(native.whole, status);
}

void LocalFileSystem::SetTraits(const QString& path, const FileTraits& traits) {
  const WindowsPath native = ResolveItem(volumes_, path, error::kAccessDenied);
  ItemStatus status;
  if (const DWORD code = local::StatusAt(native.whole, status); code != 0) {
    FailAt(code, native);
  }
  if (status.IsLink()) {
    Fail(error::kAccessDenied, native.text);
  }
  local::GiveTraits(native.whole, traits);
}

void LocalFileSystem::Flush(const QString& path) {
  const WindowsPath native = ResolvePath(volumes_, path);
  if (native.IsTop()) {
    return;
  }
  ItemStatus status;
  DWORD code = local::StatusAt(native.whole, status);
  if (code == 0) {
    code = FlushTree(native.whole, status);
  }
  if (code != 0) {
    FailAt(code, native);
  }
}

void LocalFileSystem::CreateFile(const QString& path) {
  const WindowsPath native = ResolveItem(volumes_, path, error::kExists);
  local::RequireNewName(native.names.last(), native.text);
  const FileHandle file(CreateFileW(Wide(native.whole), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_NEW,
                                    FILE_ATTRIBUTE_NORMAL, nullptr));
  if (!file.IsOpen()) {
    const DWORD code = GetLastError();
    // Some file systems report an existing folder like this.
    if (code == ERROR_ACCESS_DENIED && GetFileAttributesW(Wide(native.whole)) != INVALID_FILE_ATTRIBUTES) {
      Fail(error::kExists, native.text);
    }
    FailAt(code, native);
  }
}

void LocalFileSystem::CreateFolder(const QString& path) {
  const WindowsPath native = ResolveItem(volumes_, path, error::kExists);
  local::RequireNewName(native.names.last(), native.text);
  if (CreateDirectoryW(Wide(native.whole), nullptr) == FALSE) {
    FailAt(GetLastError(), native);
  }
}

}  // namespace trevane

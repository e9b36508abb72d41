#include "engine/providers/local/windows/FileSink.h"

#include "engine/files/ProviderError.h"
#include "engine/files/TemporaryName.h"
#include "engine/providers/local/windows/TreeCopier.h"
#include "engine/providers/local/windows/Win32Errors.h"
#include "platform/windows/WindowsText.h"

#include <algorithm>
#include <utility>

#include <aclapi.h>

namespace trevane::local {

using windowstext::FromWide;
using windowstext::Wide;

namespace {

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

/// A rename may change the identity of a file (FAT): then size and date show that it is the same.
bool IsSame(const ItemStatus& made, const ItemStatus& now) {
  return made.size == now.size && CompareFileTime(&made.modified, &now.modified) == 0 && !now.IsFolder() &&
         !now.IsLink();
}

}  // namespace

FileSink::FileSink(WindowsPath path, QString target, const std::optional<ItemStatus>& old,
                   const SinkRequest& request)
    : path_(std::move(path)), target_(std::move(target)), old_(old), request_(request) {
  if (old_) {
    oldIdentity_ = IdentityAt(target_);
  }
  MakeTemporary();
  if (old_) {
    CopyPermissions();
  }
  // A volume without that much room refuses now instead of in the middle.
  FILE_ALLOCATION_INFO room{};
  room.AllocationSize.QuadPart = request_.expectedSize;
  if (request_.expectedSize > 0 &&
      SetFileInformationByHandle(file_.Get(), FileAllocationInfo, &room, sizeof room) == FALSE) {
    if (const DWORD code = GetLastError(); NumberOfWin32(code) == error::kDiskFull) {
      file_.Close();
      DropTemporary(temporary_);
      FailAt(code, path_);
    }
  }
}

FileSink::~FileSink() {
  file_.Close();
  if (!temporary_.isEmpty()) {
    DropTemporary(temporary_);
  }
}

void FileSink::MakeTemporary() {
  const QString folder = target_.left(target_.lastIndexOf(u'\\') + 1);
  MakeUnderTemporaryName([&](const QString& name) {
    temporary_ = Below(folder, name);
    file_ = FileHandle(CreateFileW(Wide(temporary_), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_DELETE,
                                   nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
    const DWORD code = file_.IsOpen() ? 0 : GetLastError();
    if (code != 0 && code != ERROR_FILE_EXISTS && code != ERROR_ALREADY_EXISTS) {
      FailAt(code, path_);
    }
    return code == 0;
  });
}

void FileSink::CopyPermissions() {
  PACL rights = nullptr;
  PSECURITY_DESCRIPTOR descriptor = nullptr;
  auto* source = const_cast<wchar_t*>(Wide(target_));
  auto* target = const_cast<wchar_t*>(Wide(temporary_));
  if (GetNamedSecurityInfoW(source, SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr, nullptr, &rights,
                            nullptr, &descriptor) == ERROR_SUCCESS) {
    SECURITY_DESCRIPTOR_CONTROL control = 0;
    DWORD revision = 0;
    // If they were not inherited from the folder, the new ones are not either.
    const bool ofItsOwn = GetSecurityDescriptorControl(descriptor, &control, &revision) != FALSE &&
                          (control & SE_DACL_PROTECTED) != 0;
    SetNamedSecurityInfoW(target, SE_FILE_OBJECT,
                          DACL_SECURITY_INFORMATION | (ofItsOwn ? PROTECTED_DACL_SECURITY_INFORMATION : 0UL),
                          nullptr, nullptr, rights, nullptr);
    LocalFree(descriptor);
  }
}

void FileSink::CopyMarks() {
  if (const FileHandle file = OpenItem(temporary_, FILE_WRITE_ATTRIBUTES); file.IsOpen()) {
    SetFileTime(file.Get(), &old_->created, nullptr, nullptr);
  }
  FileTraits date;
  date.modified = request_.traits.modified;
  GiveTraits(temporary_, date);
  SetFileAttributesW(Wide(temporary_), (old_->attributes & (FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM |
                                                            FILE_ATTRIBUTE_NOT_CONTENT_INDEXED)) |
                                           FILE_ATTRIBUTE_ARCHIVE);
}

std::optional<QString> FileSink::TemporaryName() const {
  return temporary_.mid(temporary_.lastIndexOf(u'\\') + 1);
}

void FileSink::Write(const QByteArray& piece) {
  constexpr qint64 kMostInOneCall = 64 * 1024 * 1024;
  for (qint64 at = 0; at < piece.size();) {
    DWORD written = 0;
    const auto size = static_cast<DWORD>(std::min<qint64>(piece.size() - at, kMostInOneCall));
    if (WriteFile(file_.Get(), piece.constData() + at, size, &written, nullptr) == FALSE) {
      FailAt(GetLastError(), path_);
    }
    if (written == 0) {
      FailAt(ERROR_DISK_FULL, path_);
    }
    at += written;
  }
}

void FileSink::RequireOld() {
  ItemStatus now;
  const DWORD code = StatusAt(target_, now);
  if (code != 0 && NumberOfWin32(code) != error::kNotFound) {
    FailAt(code, path_);
  }
  if (code != 0) {
    old_.reset();
  } else if (now.IsFolder() || now.IsLink() || IdentityAt(target_) != oldIdentity_) {
    Fail(providererror::kChanged, path_.text);
  }
}

SeenItem FileSink::Commit() {
  // A rename may reach the disk before the content does, so a replacement is flushed first. For a new file
  // the caller calls Flush.
  if (old_ && FlushFileBuffers(file_.Get()) == FALSE) {
    FailAt(GetLastError(), path_);
  }
  if (!file_.Close()) {
    FailAt(GetLastError(), path_);
  }
  if (old_) {
    CopyMarks();
    RequireOld();
  } else {
    GiveTraits(temporary_, request_.traits);
  }
  // Asked while nobody else knows its name.
  ItemStatus made;
  if (const DWORD code = StatusAt(temporary_, made); code != 0) {
    FailAt(code, path_);
  }
  const std::optional<FileIdentity> identity = IdentityAt(temporary_);
  if (const DWORD code = RenameItem(temporary_, target_, old_.has_value()); code != 0) {
    FailAt(code, path_);
  }
  temporary_.clear();
  return RequirePlaced(made, identity);
}

SeenItem FileSink::RequirePlaced(const ItemStatus& made, const std::optional<FileIdentity>& identity) {
  ItemStatus now;
  const DWORD code = StatusAt(target_, now);
  if (code != 0 && NumberOfWin32(code) != error::kNotFound) {
    FailAt(code, path_);
  }
  SeenItem placed;
  placed.identity = code == 0 ? IdentityAt(target_) : std::nullopt;
  const bool isThat = identity && placed.identity == identity && now.size == made.size;
  if (code != 0 || (!isThat && !IsSame(made, now))) {
    Fail(providererror::kChanged, path_.text);
  }
  // The file system decides on the letter case of the name.
  WIN32_FIND_DATAW found{};
  const bool isFound = SearchFor(target_, found) == 0;
  placed.entry = MakeEntry(isFound ? FromWide(found.cFileName) : target_.mid(target_.lastIndexOf(u'\\') + 1),
                           target_, now);
  return placed;
}

}  // namespace trevane::local

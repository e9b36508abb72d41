#include "engine/files/ProviderError.h"
#include "engine/providers/local/LocalFileSystem.h"
#include "engine/providers/local/windows/EachItem.h"
#include "engine/providers/local/windows/FileSink.h"
#include "engine/providers/local/windows/FileSource.h"
#include "engine/providers/local/windows/ItemStatus.h"
#include "engine/providers/local/windows/Leftovers.h"
#include "engine/providers/local/windows/LocalNative.h"
#include "engine/providers/local/windows/TreeCopier.h"
#include "engine/providers/local/windows/Win32Errors.h"

#include <memory>
#include <optional>
#include <vector>

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

std::unique_ptr<ContentSource> LocalFileSystem::OpenSource(const QString& path, qint64 offset) {
  return local::FileSource::Open(ResolveItem(volumes_, path, error::kAccessDenied), offset);
}

std::unique_ptr<ContentSink> LocalFileSystem::OpenSink(const QString& path, const SinkRequest& request) {
  const bool isNew = request.mode == SinkRequest::Mode::New;
  const WindowsPath native = ResolveItem(volumes_, path, isNew ? error::kExists : error::kAccessDenied);
  ItemStatus status;
  const DWORD code = isNew ? static_cast<DWORD>(ERROR_FILE_NOT_FOUND) : local::StatusAt(native.whole, status);
  if (code != 0) {
    if (local::NumberOfWin32(code) != error::kNotFound) {
      FailAt(code, native);
    }
    local::RequireNewName(native.names.last(), native.text);
    local::SearchLeftovers(native.Parent(), native.ParentText(), native_->leftovers);
    return std::make_unique<local::FileSink>(native, native.whole, std::nullopt, request);
  }
  local::SearchLeftovers(native.Parent(), native.ParentText(), native_->leftovers);
  const QString target = TargetOf(native, status);
  if (status.IsLink()) {
    if (const DWORD failure = local::StatusAt(target, status); failure != 0) {
      FailAt(failure, native);
    }
  }
  if (status.IsFolder() || status.IsReadOnly()) {
    Fail(error::kAccessDenied, native.text);
  }
  return std::make_unique<local::FileSink>(native, target, status, request);
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

#include "engine/files/BatchedListing.h"
#include "engine/files/ProviderError.h"
#include "engine/providers/local/LocalFileSystem.h"
#include "engine/providers/local/windows/EachItem.h"
#include "engine/providers/local/windows/ItemStatus.h"
#include "engine/providers/local/windows/LocalNative.h"
#include "engine/providers/local/windows/ReparsePoint.h"
#include "engine/providers/local/windows/TreeCopier.h"
#include "engine/providers/local/windows/Win32Errors.h"
#include "platform/Volumes.h"

namespace trevane {

using local::FailAt;
using local::ResolveItem;
using local::ResolvePath;
using local::WindowsPath;
using windowstext::FromWide;
using windowstext::Wide;

LocalFileSystem::LocalFileSystem(Volumes& volumes, Opener opener, ShellIcons* icons)
    : volumes_(volumes), opener_(std::move(opener)), icons_(icons), native_(std::make_unique<Native>()) {
  // A drive without a medium is reported by our own message, not by one of the system.
  SetErrorMode(GetErrorMode() | SEM_FAILCRITICALERRORS);
}

LocalFileSystem::~LocalFileSystem() = default;

FileSystemCapabilities LocalFileSystem::Capabilities() const {
  return {.topHoldsDrives = true,
          .shares = true,
          .caseSensitive = false,
          .identity = true,
          .identitySpace = QStringLiteral("local"),
          .execute = opener_ != nullptr};
}

namespace {

FileEntry EntryOf(const WindowsPath& folder, const WIN32_FIND_DATAW& found) {
  const local::ItemStatus status = local::StatusFrom(found);
  QString name = FromWide(found.cFileName);
  const QString whole = status.IsLink() ? local::Below(folder.whole, name) : QString();
  return local::MakeEntry(std::move(name), whole, status);
}

/// Fails for an error of the system while the folder was read.
void RequireListed(DWORD code, const WindowsPath& path) {
  if (code == 0) {
    return;
  }
  const DWORD attributes = GetFileAttributesW(Wide(path.whole));
  if (attributes != INVALID_FILE_ATTRIBUTES) {
    if ((attributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
      Fail(providererror::kNotAFolder, path.text);
    }
    // The root of an empty volume does not even contain ".".
    if (code == ERROR_FILE_NOT_FOUND && path.names.isEmpty()) {
      return;
    }
  }
  FailAt(code, path);
}

}  // namespace

Listing LocalFileSystem::List(const QString& folder) {
  const WindowsPath path = ResolvePath(volumes_, folder);
  if (path.IsTop()) {
    return Drives();
  }
  Listing listing;
  RequireListed(
      local::EachItem(path.whole,
                      [&](const WIN32_FIND_DATAW& found) { listing.push_back(EntryOf(path, found)); }),
      path);
  return listing;
}

void LocalFileSystem::ListInBatches(const QString& folder, const ListingReceiver& receive) {
  const WindowsPath path = ResolvePath(volumes_, folder);
  if (path.IsTop()) {
    static_cast<void>(receive(Drives()));
    return;
  }
  BatchedListing batches(receive);
  bool isEnded = false;
  RequireListed(local::EachItem(path.whole,
                                [&](const WIN32_FIND_DATAW& found) {
                                  isEnded = !batches.Add(EntryOf(path, found));
                                  return !isEnded;
                                }),
                path);
  if (!isEnded) {
    batches.Finish();
  }
}

std::optional<QString> LocalFileSystem::ReadLink(const QString& path) {
  const WindowsPath native = ResolvePath(volumes_, path);
  if (native.IsTopOrDrive()) {
    return std::nullopt;
  }
  local::ItemStatus status;
  if (const DWORD code = local::StatusAt(native.whole, status); code != 0) {
    FailAt(code, native);
  }
  // A junction has no text that could be given to another place.
  if (!status.IsLink() || status.tag != IO_REPARSE_TAG_SYMLINK) {
    return std::nullopt;
  }
  const QString target = local::ReadReparsePoint(native.whole).SymbolicTarget();
  if (target.isEmpty()) {
    FailAt(ERROR_ACCESS_DENIED, native);
  }
  return target;
}

void LocalFileSystem::CreateLink(const QString& path, const QString& target) {
  const WindowsPath native = ResolveItem(volumes_, path, error::kExists);
  local::RequireNewName(native.names.last(), native.text);
  QString text = target;
  text.replace(u'/', u'\\');
  if (text.isEmpty() || text.contains(QChar(u'\0'))) {
    Fail(error::kInvalidName, native.text);
  }
  // The system keeps links to folders and to files apart. A target that is missing counts as a file.
  const bool isAbsolute = text.startsWith(u'\\') || text.mid(1, 1) == u":";
  const DWORD attributes = GetFileAttributesW(Wide(isAbsolute ? text : local::Below(native.Parent(), text)));
  const bool isFolder = attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
  if (const DWORD code = local::MakeSymbolicLink(native.whole, text, isFolder); code != 0) {
    FailAt(code, native);
  }
}

FileEntry LocalFileSystem::Stat(const QString& path) {
  std::optional<FileEntry> entry = Find(path);
  if (!entry) {
    FailAt(ERROR_FILE_NOT_FOUND, ResolvePath(volumes_, path));
  }
  return *std::move(entry);
}

std::optional<FileEntry> LocalFileSystem::Find(const QString& path) {
  const WindowsPath native = ResolvePath(volumes_, path);
  if (native.IsTopOrDrive()) {
    if (native.IsShare() && GetFileAttributesW(Wide(native.root)) == INVALID_FILE_ATTRIBUTES) {
      FailAt(GetLastError(), native);
    }
    return DriveEntry(native.drive.mid(native.drive.lastIndexOf(u'\\') + 1));
  }
  WIN32_FIND_DATAW found{};
  DWORD code = ERROR_INVALID_NAME;
  if (!local::IsPattern(native.names.last())) {
    code = local::SearchFor(native.whole, found);
    // A search does not report clearly that the path leads through a file.
    if (code != 0 && GetFileAttributesW(Wide(native.whole)) == INVALID_FILE_ATTRIBUTES) {
      code = GetLastError();
    }
  }
  // The items of a folder that may not be listed can still be asked for, and so can items that a search
  // confuses with others.
  if (local::ItemStatus status; (code == ERROR_ACCESS_DENIED || code == local::kOtherName) &&
                                local::StatusAt(native.whole, status) == 0) {
    return local::MakeEntry(native.names.last(), native.whole, status);
  }
  if (code == 0) {
    return local::MakeEntry(FromWide(found.cFileName), native.whole, local::StatusFrom(found));
  }
  if (local::NumberOfWin32(code) == error::kNotFound &&
      GetFileAttributesW(Wide(native.root)) != INVALID_FILE_ATTRIBUTES) {
    return std::nullopt;
  }
  FailAt(code, native);
}

std::optional<FileIdentity> LocalFileSystem::Identity(const QString& path) {
  const WindowsPath native = ResolvePath(volumes_, path);
  if (native.IsTop()) {
    return std::nullopt;
  }
  const local::FileHandle item = local::OpenItem(native.whole, FILE_READ_ATTRIBUTES);
  if (!item.IsOpen()) {
    FailAt(GetLastError(), native);
  }
  return local::IdentityOf(item.Get());
}

std::vector<FileIdentity> LocalFileSystem::FolderIdentities(const QString& folder) {
  const WindowsPath native = ResolvePath(volumes_, folder);
  if (native.IsTop()) {
    return {};
  }
  return local::FoldersUpwards(native.whole);
}

Variant LocalFileSystem::Execute(const QString& path, const QString& command, const Variant& parameter) {
  if (!command.isEmpty() || !opener_) {
    return FileSystem::Execute(path, command, parameter);
  }
  const WindowsPath native = ResolvePath(volumes_, path);
  if (native.IsTop()) {
    Fail(error::kNotSupported, path);
  }
  if (GetFileAttributesW(Wide(native.whole)) == INVALID_FILE_ATTRIBUTES) {
    FailAt(GetLastError(), native);
  }
  opener_(native.Plain());
  return {};
}

}  // namespace trevane

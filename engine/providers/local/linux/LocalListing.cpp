#include "base/NameCodec.h"
#include "engine/files/BatchedListing.h"
#include "engine/files/ProviderError.h"
#include "engine/providers/local/LocalFileSystem.h"
#include "engine/providers/local/linux/ErrnoTable.h"
#include "engine/providers/local/linux/FileStatus.h"
#include "engine/providers/local/linux/FolderReader.h"
#include "engine/providers/local/linux/LocalNative.h"
#include "engine/providers/local/linux/NativeName.h"
#include "engine/providers/local/linux/NativePath.h"
#include "platform/Volumes.h"
#include "platform/linux/FileDescriptor.h"
#include "platform/linux/SystemCalls.h"

#include <cerrno>
#include <utility>

#include <dirent.h>
#include <fcntl.h>

namespace trevane {

using local::FailOpen;
using local::FileDescriptor;
using local::Locate;
using local::Location;
using local::NativePath;

namespace {

// For an item that may not be asked about, for instance another user's private mount.
FileEntry EntryOfName(QString name, unsigned char type) {
  FileEntry entry;
  entry.attributes = attribute::kReadOnly;
  switch (type) {
    case DT_DIR:
      entry.attributes |= attribute::kFolder;
      break;
    case DT_REG:
    case DT_UNKNOWN:
      entry.attributes |= attribute::kArchive;
      entry.size = -1;
      break;
    case DT_LNK:
      entry.attributes |= attribute::kLink;
      break;
    default:
      entry.attributes |= attribute::kDevice;
      break;
  }
  if (name.startsWith(u'.')) {
    entry.attributes |= attribute::kHidden;
  }
  entry.name = std::move(name);
  return entry;
}

// Reserves room for the names, guessed from the size of the folder.
std::size_t LikelyCount(const struct statx& folder) {
  constexpr std::size_t kBytesPerName = 32;
  constexpr std::size_t kMost = 1 << 17;
  return std::min<std::size_t>(static_cast<std::size_t>(folder.stx_size) / kBytesPerName, kMost);
}

}  // namespace

namespace {

/// Calls `take(FileEntry&&, bool isKnown)` for each child of an open folder; false ends the reading.
template <typename Take>
void EachEntry(const FileDescriptor& opened, const local::Credentials& user, const local::TextOf& text,
               const Take& takeEntry) {
  local::MountStates mounts;
  int failure = 0;
  bool anyKnown = false;
  const auto take = [&](const char* name, std::size_t length, unsigned char type) {
    struct statx status {};
    const int code = local::StatusAt(opened.Get(), name, status);
    if (code == ENOENT) {
      return true;
    }
    QString shown = local::FromNativeName(QByteArrayView(name, static_cast<qsizetype>(length)));
    if (code == 0) {
      anyKnown = true;
      return takeEntry(local::MakeEntry(std::move(shown), opened.Get(), name, status, user, mounts), true);
    }
    failure = code;
    return takeEntry(EntryOfName(std::move(shown), type), anyKnown);
  };
  const int code = local::FolderReader::Each(opened.Get(), take);
  // Without search permission only names could be listed: the folder is refused as a whole.
  if (code != 0 || (failure != 0 && !anyKnown)) {
    local::FailErrno(code != 0 ? code : failure, text());
  }
}

}  // namespace

Listing local::ListFolder(const FileDescriptor& opened, const Credentials& user, const TextOf& text) {
  Listing listing;
  struct statx own {};
  if (StatusOf(opened.Get(), own) == 0) {
    listing.reserve(LikelyCount(own));
  }
  EachEntry(opened, user, text, [&listing](FileEntry&& entry, bool) {
    listing.push_back(std::move(entry));
    return true;
  });
  return listing;
}

void local::ListFolderInBatches(const FileDescriptor& opened, const Credentials& user, const TextOf& text,
                                const ListingReceiver& receive) {
  BatchedListing batches(receive);
  bool isEnded = false;
  // While no item could be asked about, the folder may still be refused.
  Listing unknown;
  EachEntry(opened, user, text, [&](FileEntry&& entry, bool isKnown) {
    if (!isKnown) {
      unknown.push_back(std::move(entry));
      return true;
    }
    for (FileEntry& held : std::exchange(unknown, {})) {
      isEnded = isEnded || !batches.Add(std::move(held));
    }
    isEnded = isEnded || !batches.Add(std::move(entry));
    return !isEnded;
  });
  if (!isEnded) {
    batches.Finish();
  }
}

LocalFileSystem::LocalFileSystem(Volumes& volumes, Opener opener, ShellIcons* icons)
    : volumes_(volumes), opener_(std::move(opener)), icons_(icons), native_(std::make_unique<Native>()) {}

LocalFileSystem::~LocalFileSystem() = default;

FileSystemCapabilities LocalFileSystem::Capabilities() const {
  return {.topHoldsDrives = true,
          .caseSensitive = true,
          .identity = true,
          .identitySpace = QStringLiteral("local"),
          .execute = opener_ != nullptr};
}

FileDescriptor LocalFileSystem::Native::OpenForListing(const NativePath& path) {
  const Location location = Locate(path);
  FileDescriptor opened = local::OpenAt(location.folder, location.name.constData(),
                                        O_RDONLY | O_DIRECTORY | O_NONBLOCK | O_NOCTTY);
  struct statx own {};
  if (!opened.IsOpen()) {
    const int code = errno;
    if (code == ENOTDIR && local::StatusAt(location.folder, location.name.constData(), own) == 0) {
      Fail(providererror::kNotAFolder, path.text);
    }
    FailOpen(code, path);
  }
  return opened;
}

Listing LocalFileSystem::List(const QString& folder) {
  const NativePath path = native_->paths.Resolve(volumes_, folder);
  if (path.IsTop()) {
    return Drives();
  }
  return local::ListFolder(Native::OpenForListing(path), native_->user, [&path] { return path.text; });
}

void LocalFileSystem::ListInBatches(const QString& folder, const ListingReceiver& receive) {
  const NativePath path = native_->paths.Resolve(volumes_, folder);
  if (path.IsTop()) {
    static_cast<void>(receive(Drives()));
    return;
  }
  local::ListFolderInBatches(
      Native::OpenForListing(path), native_->user, [&path] { return path.text; }, receive);
}

FileEntry LocalFileSystem::Stat(const QString& path) {
  std::optional<FileEntry> entry = Find(path);
  if (!entry) {
    Fail(error::kNotFound, native_->paths.Resolve(volumes_, path).text);
  }
  return *std::move(entry);
}

std::optional<FileEntry> LocalFileSystem::Find(const QString& path) {
  const NativePath native = native_->paths.Resolve(volumes_, path);
  if (native.IsTopOrDrive()) {
    return DriveEntry(native.drive);
  }
  const Location location = Locate(native);
  struct statx status {};
  const int code = local::StatusAt(location.folder, location.name.constData(), status);
  if (code != 0) {
    if (local::NumberOfErrno(code) == error::kNotFound) {
      return std::nullopt;
    }
    FailOpen(code, native);
  }
  // MakeEntry needs the name to find hidden items, and the whole path to follow a link.
  FileEntry entry = local::MakeEntry(local::FromNativeName(native.names.back()), location.folder,
                                     location.name.constData(), status, native_->user, native_->Mounts());
  if (native.names.back().startsWith('.')) {
    entry.attributes |= attribute::kHidden;
  }
  return entry;
}

std::optional<FileIdentity> LocalFileSystem::Identity(const QString& path) {
  const NativePath native = native_->paths.Resolve(volumes_, path);
  if (native.IsTop()) {
    return std::nullopt;
  }
  const Location location = Locate(native);
  struct statx status {};
  const int code = local::StatusAt(location.folder, location.name.constData(), status);
  if (code != 0) {
    FailOpen(code, native);
  }
  return FileIdentity{local::DeviceOf(status), status.stx_ino};
}

Variant LocalFileSystem::Execute(const QString& path, const QString& command, const Variant& parameter) {
  if (!command.isEmpty() || !opener_) {
    return FileSystem::Execute(path, command, parameter);
  }
  const NativePath native = native_->paths.Resolve(volumes_, path);
  if (native.IsTop()) {
    Fail(error::kNotSupported, path);
  }
  const Location location = Locate(native);
  struct statx status {};
  if (const int code = local::StatusAt(location.folder, location.name.constData(), status, true); code != 0) {
    FailOpen(code, native);
  }
  opener_(DecodeBytes(native.Whole()));
  return {};
}

}  // namespace trevane

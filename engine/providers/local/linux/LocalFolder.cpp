#include "engine/providers/local/linux/LocalFolder.h"

#include "engine/files/ProviderError.h"
#include "engine/files/ProviderPath.h"
#include "engine/model/ContentSteps.h"
#include "engine/providers/local/linux/ErrnoTable.h"
#include "engine/providers/local/linux/FileContent.h"
#include "engine/providers/local/linux/FileSink.h"
#include "engine/providers/local/linux/FileSource.h"
#include "engine/providers/local/linux/FileStatus.h"
#include "engine/providers/local/linux/Leftovers.h"
#include "engine/providers/local/linux/LocalNative.h"
#include "engine/providers/local/linux/NativeName.h"
#include "engine/providers/local/linux/NativePath.h"
#include "platform/linux/SystemCalls.h"

#include <cerrno>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

namespace trevane {

using local::FailErrno;
using local::FileDescriptor;

namespace {

constexpr int kOpenLevels = 32;

}  // namespace

LocalFileSystem::Folder::Folder(Native& native, FileDescriptor fd, QString path)
    : native_(native), path_(std::move(path)), fd_(std::move(fd)) {}

LocalFileSystem::Folder::Folder(std::shared_ptr<Folder> above, QByteArray name, FileDescriptor fd)
    : native_(above->native_), above_(std::move(above)), name_(std::move(name)), fd_(std::move(fd)) {}

LocalFileSystem::Folder::~Folder() {
  if (above_ && above_->below_ == this) {
    above_->OpenFromBelow();
    above_->below_ = nullptr;
  }
}

void LocalFileSystem::Folder::OpenFromBelow() {
  if (fd_.IsOpen() || below_ == nullptr || !below_->fd_.IsOpen()) {
    return;
  }
  FileDescriptor opened = local::OpenAt(below_->fd_.Get(), "..", O_PATH | O_DIRECTORY);
  struct statx status {};
  if (opened.IsOpen() && local::StatusOf(opened.Get(), status) == 0 && local::IsSameItem(status, status_)) {
    fd_ = std::move(opened);
  }
}

int LocalFileSystem::Folder::Fd() {
  OpenFromBelow();
  if (!fd_.IsOpen()) {
    Fail(providererror::kChanged, Path());
  }
  return fd_.Get();
}

std::optional<FileIdentity> LocalFileSystem::Folder::KnownIdentity() const {
  struct statx status = status_;
  // Of the first one nothing was asked; it stays open.
  if (!above_ && local::StatusOf(fd_.Get(), status) != 0) {
    return std::nullopt;
  }
  return FileIdentity{local::DeviceOf(status), status.stx_ino};
}

QString LocalFileSystem::Folder::Path() const {
  QStringList pieces;
  const Folder* first = this;
  for (; first->above_; first = first->above_.get()) {
    pieces.prepend(local::FromNativeName(first->name_));
  }
  pieces.prepend(first->path_);
  return pieces.join(u'\\');
}

QString LocalFileSystem::Folder::TextOf(const QString& name) const {
  return providerpath::Child(Path(), name);
}

QByteArray LocalFileSystem::Folder::NativeName(const QString& name) const {
  // The text has the name only: the whole path costs more than the call.
  return local::ToNativeName(name, name);
}

bool LocalFileSystem::Folder::IsMountPoint(const QByteArray& name, const struct statx& status) {
  if ((status.stx_attributes_mask & STATX_ATTR_MOUNT_ROOT) != 0) {
    return (status.stx_attributes & STATX_ATTR_MOUNT_ROOT) != 0;
  }
  const FileDescriptor opened = local::OpenAt(Fd(), name.constData(), O_PATH | O_DIRECTORY | O_NOFOLLOW);
  // When in doubt it is one.
  return !opened.IsOpen() || local::IsMountPoint(status, opened.Get());
}

void LocalFileSystem::Folder::RequireInPlace() {
  if (!above_) {
    return;
  }
  struct statx status {};
  if (local::StatusAt(above_->Fd(), name_.constData(), status) != 0 || !local::IsSameItem(status, status_)) {
    Fail(providererror::kChanged, Path());
  }
}

void LocalFileSystem::Folder::SearchLeftovers() {
  if (!std::exchange(searched_, true)) {
    local::SearchLeftovers(
        Fd(), [this] { return Path(); }, native_.user, native_.leftovers);
  }
}

std::shared_ptr<HeldFolder> LocalFileSystem::Folder::Enter(const QString& name) {
  const QByteArray native = NativeName(name);
  // Without O_PATH a link would fail with another error, and a folder that may not be read could not be
  // opened.
  FileDescriptor opened = local::OpenAt(Fd(), native.constData(), O_PATH | O_DIRECTORY | O_NOFOLLOW);
  if (!opened.IsOpen()) {
    const int code = errno;
    if (code == ENOTDIR || code == ELOOP) {
      Fail(providererror::kNotAFolder, TextOf(name));
    }
    FailErrno(code, TextOf(name));
  }
  std::shared_ptr<Folder> entered(new Folder(shared_from_this(), native, std::move(opened)));
  if (const int code = local::StatusOf(entered->fd_.Get(), entered->status_); code != 0) {
    FailErrno(code, TextOf(name));
  }
  below_ = entered.get();
  // The first stays open: it could not be opened again from below.
  Folder* level = entered.get();
  for (int i = 0; i < kOpenLevels && level->above_; ++i) {
    level = level->above_.get();
  }
  if (level->above_) {
    level->fd_.Close();
  }
  return entered;
}

Listing LocalFileSystem::Folder::List() {
  return local::ListFolder(OpenForListing(), native_.user, [this] { return Path(); });
}

void LocalFileSystem::Folder::ListInBatches(const ListingReceiver& receive) {
  local::ListFolderInBatches(
      OpenForListing(), native_.user, [this] { return Path(); }, receive);
}

FileDescriptor LocalFileSystem::Folder::OpenForListing() {
  FileDescriptor opened = local::OpenAt(Fd(), ".", O_RDONLY | O_DIRECTORY | O_NONBLOCK);
  if (!opened.IsOpen()) {
    FailErrno(errno, Path());
  }
  return opened;
}

std::optional<SeenItem> LocalFileSystem::Folder::Find(const QString& name) {
  const QByteArray native = NativeName(name);
  struct statx status {};
  if (const int code = local::StatusAt(Fd(), native.constData(), status); code != 0) {
    if (local::NumberOfErrno(code) == error::kNotFound) {
      return std::nullopt;
    }
    FailErrno(code, TextOf(name));
  }
  SeenItem seen = local::MakeSeen(
      local::MakeEntry(name, Fd(), native.constData(), status, native_.user, native_.Mounts()), status);
  if (S_ISDIR(status.stx_mode)) {
    seen.isMountPoint = IsMountPoint(native, status);
  }
  return seen;
}

std::unique_ptr<ContentSource> LocalFileSystem::Folder::OpenSource(const QString& name, qint64 offset) {
  return local::FileSource::Open(Fd(), NativeName(name), offset,
                                 [self = shared_from_this(), name] { return self->TextOf(name); });
}

std::unique_ptr<ContentSink> LocalFileSystem::Folder::OpenSink(const QString& name,
                                                               const SinkRequest& request,
                                                               const std::optional<SeenItem>& seen) {
  RequireInPlace();
  SearchLeftovers();
  const local::TextOf text = [self = shared_from_this(), name] { return self->TextOf(name); };
  // Opened once more, since this folder may be closed before the content is complete.
  local::FilePlace place;
  place.holder = local::OpenAt(Fd(), ".", O_PATH | O_DIRECTORY);
  if (!place.holder.IsOpen()) {
    FailErrno(errno, text());
  }
  place.folder = place.holder.Get();
  place.name = NativeName(name);
  if (seen) {
    place.exists = true;
    if (const int code = local::StatusAt(place.folder, place.name.constData(), place.status); code != 0) {
      FailErrno(code, text());
    }
    if (FileIdentity{local::DeviceOf(place.status), place.status.stx_ino} != seen->identity) {
      Fail(providererror::kChanged, text());
    }
    // No link has this identity: from here on it is that very file.
    local::RequireWritable(place, native_.user, text);
  }
  return std::make_unique<local::FileSink>(
      std::move(place), request,
      local::FileSink::Parts{native_.user, text, [self = shared_from_this()] { self->RequireInPlace(); }});
}

std::vector<ReadResult> LocalFileSystem::Folder::ReadMany(const QStringList& names) {
  return ReadOneByOne(names, [this](const QString& name) {
    return local::FileSource::Open(Fd(), NativeName(name), 0, [this, &name] { return TextOf(name); });
  });
}

std::vector<WriteResult> LocalFileSystem::Folder::WriteMany(const std::vector<NewContent>& files) {
  bool isChecked = false;
  return WriteOneByOne(files, [&](const NewContent& file) -> std::unique_ptr<ContentSink> {
    if (file.request.mode == SinkRequest::Mode::Replace) {
      return OpenInBatch(file);
    }
    if (!std::exchange(isChecked, true)) {
      RequireInPlace();
      SearchLeftovers();
    }
    // This folder stays open as long as each of the sinks.
    local::FilePlace place;
    place.folder = Fd();
    place.name = NativeName(file.name);
    // Each is checked for once more before it has its name.
    return std::make_unique<local::FileSink>(
        std::move(place), file.request,
        local::FileSink::Parts{native_.user, [this, &file] { return TextOf(file.name); },
                               [this] { RequireInPlace(); }});
  });
}

bool LocalFileSystem::Folder::SeesArrivals() {
  return local::IsOnOwnDisk(Fd());
}

std::optional<QString> LocalFileSystem::Folder::ReadLink(const QString& name) {
  return local::ReadLinkText(Fd(), NativeName(name), [&] { return TextOf(name); });
}

void LocalFileSystem::Folder::CreateLink(const QString& name, const QString& target) {
  RequireInPlace();
  SearchLeftovers();
  local::MakeLink(Fd(), NativeName(name), target, [&] { return TextOf(name); });
}

FileTraits LocalFileSystem::Folder::Traits(const QString& name) {
  return local::ReadTraits(Fd(), NativeName(name), [&] { return TextOf(name); });
}

void LocalFileSystem::Folder::SetTraits(const QString& name, const FileTraits& traits) {
  RequireInPlace();
  local::WriteTraits(Fd(), NativeName(name), traits, [&] { return TextOf(name); });
}

void LocalFileSystem::Folder::CreateFolder(const QString& name, bool closed) {
  RequireInPlace();
  SearchLeftovers();
  if (::mkdirat(Fd(), NativeName(name).constData(), closed ? 0700 : 0777) != 0) {
    FailErrno(errno, TextOf(name));
  }
}

void LocalFileSystem::Folder::RemoveAlone(const QString& name, const SeenItem& seen) {
  RequireInPlace();
  const std::optional<SeenItem> now = Find(name);
  if (!now) {
    Fail(error::kNotFound, TextOf(name));
  }
  if (!seen.IsStill(*now)) {
    Fail(providererror::kChanged, TextOf(name));
  }
  const bool isFolder = now->entry.IsFolder() && !now->entry.IsLink();
  if (::unlinkat(Fd(), NativeName(name).constData(), isFolder ? AT_REMOVEDIR : 0) != 0) {
    FailErrno(errno == EEXIST ? ENOTEMPTY : errno, TextOf(name));
  }
}

void LocalFileSystem::Folder::Flush(const QString& name) {
  local::FlushItem(Fd(), NativeName(name), [&] { return TextOf(name); });
}

std::shared_ptr<HeldFolder> LocalFileSystem::Hold(const QString& folder) {
  const local::NativePath native = native_->paths.Resolve(volumes_, folder);
  if (native.IsTop()) {
    return FileSystem::Hold(folder);
  }
  return std::make_shared<Folder>(*native_, local::OpenForNames(native), native.text);
}

}  // namespace trevane

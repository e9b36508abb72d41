#include "engine/files/ProviderError.h"
#include "engine/providers/local/LocalFileSystem.h"
#include "engine/providers/local/linux/ErrnoTable.h"
#include "engine/providers/local/linux/FileContent.h"
#include "engine/providers/local/linux/FileSink.h"
#include "engine/providers/local/linux/FileSource.h"
#include "engine/providers/local/linux/FileStatus.h"
#include "engine/providers/local/linux/Leftovers.h"
#include "engine/providers/local/linux/LocalNative.h"
#include "engine/providers/local/linux/NativeName.h"
#include "engine/providers/local/linux/NativePath.h"
#include "platform/linux/FileDescriptor.h"
#include "platform/linux/SystemCalls.h"

#include <array>
#include <cerrno>
#include <utility>

#include <fcntl.h>
#include <limits.h>
#include <unistd.h>

namespace trevane {

using local::FailErrno;
using local::FailOpen;
using local::FileDescriptor;
using local::FilePlace;
using local::Locate;
using local::Location;
using local::NativePath;

namespace {

constexpr int kMostLinks = 40;

local::TextOf TextOf(const NativePath& path) {
  return [&path] { return path.text; };
}

FilePlace PlaceOf(const NativePath& path) {
  FilePlace place;
  place.holder = local::OpenForNames(path.Parent());
  place.folder = place.holder.Get();
  place.name = path.names.back();
  return place;
}

// The folder and the name of a file after all links were followed. For a link to a missing file they are
// those of the target.
FilePlace FollowLinks(const NativePath& path) {
  FilePlace place = PlaceOf(path);
  for (int i = 0; i < kMostLinks; ++i) {
    const int code = local::StatusAt(place.folder, place.name.constData(), place.status);
    if (code == ENOENT) {
      return place;
    }
    if (code != 0) {
      FailErrno(code, path.text);
    }
    if (!S_ISLNK(place.status.stx_mode)) {
      place.exists = true;
      return place;
    }
    std::array<char, PATH_MAX> buffer{};
    const ssize_t length = ::readlinkat(place.folder, place.name.constData(), buffer.data(), buffer.size());
    if (length <= 0) {
      FailErrno(length < 0 ? errno : ENOENT, path.text);
    }
    QByteArray target(buffer.data(), length);
    const qsizetype slash = target.lastIndexOf('/');
    if (slash >= 0) {
      const QByteArray folder = slash == 0 ? QByteArray("/") : target.first(slash);
      FileDescriptor next = local::OpenAt(place.folder, folder.constData(), O_PATH | O_DIRECTORY);
      if (!next.IsOpen()) {
        FailErrno(errno, path.text);
      }
      place.holder = std::move(next);
      place.folder = place.holder.Get();
      target = target.sliced(slash + 1);
    }
    if (target.isEmpty() || target == "." || target == "..") {
      Fail(error::kAccessDenied, path.text);  // only a folder ends like this
    }
    place.name = target;
  }
  Fail(providererror::kLinkLoop, path.text);
}

void MakeFolder(const NativePath& native, const QString& path, mode_t mode) {
  if (native.IsTopOrDrive()) {
    Fail(error::kExists, native.text.isEmpty() ? path : native.text);
  }
  const Location location = Locate(native);
  if (::mkdirat(location.folder, location.name.constData(), mode) != 0) {
    FailErrno(errno, native.text);
  }
}

}  // namespace

std::unique_ptr<ContentSource> LocalFileSystem::OpenSource(const QString& path, qint64 offset) {
  const NativePath native = native_->paths.Resolve(volumes_, path);
  if (native.IsTopOrDrive()) {
    Fail(error::kAccessDenied, native.text.isEmpty() ? path : native.text);
  }
  const Location location = Locate(native);
  return local::FileSource::Open(location.folder, location.name, offset,
                                 [text = native.text] { return text; });
}

std::unique_ptr<ContentSink> LocalFileSystem::OpenSink(const QString& path, const SinkRequest& request) {
  const NativePath native = native_->paths.Resolve(volumes_, path);
  const bool isNew = request.mode == SinkRequest::Mode::New;
  if (native.IsTopOrDrive()) {
    Fail(isNew ? error::kExists : error::kAccessDenied, native.text.isEmpty() ? path : native.text);
  }
  FilePlace place = isNew ? PlaceOf(native) : FollowLinks(native);
  local::SearchLeftovers(
      place.folder, [&] { return native.ParentText(); }, native_->user, native_->leftovers);
  local::RequireWritable(place, native_->user, TextOf(native));
  return std::make_unique<local::FileSink>(
      std::move(place), request,
      local::FileSink::Parts{native_->user, [text = native.text] { return text; }});
}

std::optional<QString> LocalFileSystem::ReadLink(const QString& path) {
  const NativePath native = native_->paths.Resolve(volumes_, path);
  if (native.IsTopOrDrive()) {
    return std::nullopt;
  }
  const Location location = Locate(native);
  return local::ReadLinkText(location.folder, location.name, TextOf(native));
}

void LocalFileSystem::CreateLink(const QString& path, const QString& target) {
  const NativePath native = native_->paths.Resolve(volumes_, path);
  if (native.IsTopOrDrive()) {
    Fail(error::kExists, native.text.isEmpty() ? path : native.text);
  }
  const Location location = Locate(native);
  local::MakeLink(location.folder, location.name, target, TextOf(native));
}

FileTraits LocalFileSystem::Traits(const QString& path) {
  const NativePath native = native_->paths.Resolve(volumes_, path);
  if (native.IsTop()) {
    return {};
  }
  const Location location = Locate(native);
  if (struct statx status{}; native.IsTopOrDrive()) {
    if (const int code = local::StatusAt(location.folder, location.name.constData(), status, true);
        code != 0) {
      FailOpen(code, native);
    }
  }
  return local::ReadTraits(location.folder, location.name, TextOf(native));
}

void LocalFileSystem::SetTraits(const QString& path, const FileTraits& traits) {
  const NativePath native = native_->paths.Resolve(volumes_, path);
  if (native.IsTopOrDrive()) {
    Fail(error::kAccessDenied, native.text.isEmpty() ? path : native.text);
  }
  const Location location = Locate(native);
  local::WriteTraits(location.folder, location.name, traits, TextOf(native));
}

void LocalFileSystem::Flush(const QString& path) {
  const NativePath native = native_->paths.Resolve(volumes_, path);
  if (native.IsTop()) {
    return;
  }
  if (native.IsTopOrDrive()) {
    local::FlushItem(local::OpenForNames(native).Get(), ".", TextOf(native));
    return;
  }
  const FilePlace place = PlaceOf(native);
  local::FlushItem(place.folder, place.name, TextOf(native));
}

void LocalFileSystem::CreateFile(const QString& path) {
  const NativePath native = native_->paths.Resolve(volumes_, path);
  if (native.IsTopOrDrive()) {
    Fail(error::kExists, native.text.isEmpty() ? path : native.text);
  }
  const Location location = Locate(native);
  FileDescriptor file = local::OpenAt(location.folder, location.name.constData(),
                                      O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, 0666);
  if (!file.IsOpen() || file.Close() != 0) {
    FailErrno(errno, native.text);
  }
}

void LocalFileSystem::CreateFolder(const QString& path) {
  MakeFolder(native_->paths.Resolve(volumes_, path), path, 0777);
}

void LocalFileSystem::CreateClosedFolder(const QString& path) {
  MakeFolder(native_->paths.Resolve(volumes_, path), path, 0700);
}

}  // namespace trevane

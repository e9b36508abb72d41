#include "engine/providers/LocalFileSystem.h"
#include "engine/providers/ProviderError.h"
#include "engine/providers/TemporaryName.h"
#include "engine/providers/linux/ErrnoTable.h"
#include "engine/providers/linux/FileCopier.h"
#include "engine/providers/linux/FileDescriptor.h"
#include "engine/providers/linux/FileStatus.h"
#include "engine/providers/linux/LocalNative.h"
#include "engine/providers/linux/NativeName.h"
#include "engine/providers/linux/NativePath.h"
#include "engine/providers/linux/TreeCopier.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <new>

#include <fcntl.h>
#include <limits.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace trevane {

using local::FailErrno;
using local::FailOpen;
using local::FileDescriptor;
using local::Locate;
using local::Location;
using local::NativePath;

namespace {

constexpr int kMostLinks = 40;
constexpr int kNameTries = 100;

// The folder and the name where a file really stands, behind the links that lead to it.
struct FilePlace {
  FileDescriptor folder;
  QByteArray name;
  bool exists = false;
  struct statx status {};
};

// A link that leads nowhere yet ends at the place where its target would be.
FilePlace FollowLinks(const NativePath& path) {
  FilePlace place{local::OpenForNames(path.Parent()), path.names.back()};
  for (int i = 0; i < kMostLinks; ++i) {
    const int code = local::StatusAt(place.folder.Get(), place.name.constData(), place.status);
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
    const ssize_t length =
        ::readlinkat(place.folder.Get(), place.name.constData(), buffer.data(), buffer.size());
    if (length <= 0) {
      FailErrno(length < 0 ? errno : ENOENT, path.text);
    }
    QByteArray target(buffer.data(), length);
    const qsizetype slash = target.lastIndexOf('/');
    if (slash >= 0) {
      const QByteArray folder = slash == 0 ? QByteArray("/") : target.first(slash);
      FileDescriptor next(::openat(place.folder.Get(), folder.constData(), O_PATH | O_DIRECTORY | O_CLOEXEC));
      if (!next.IsOpen()) {
        FailErrno(errno, path.text);
      }
      place.folder = std::move(next);
      target = target.sliced(slash + 1);
    }
    if (target.isEmpty() || target == "." || target == "..") {
      Fail(error::kAccessDenied, path.text);  // such a link leads to a folder
    }
    place.name = target;
  }
  Fail(providererror::kLinkLoop, path.text);
}

// The new file takes over who may do what with the old one.
int TakeOverRights(int from, int to, const struct statx& old, const local::Credentials& user) {
  std::array<char, 4096> names{};
  const ssize_t length = ::flistxattr(from, names.data(), names.size());
  QByteArray value;
  for (ssize_t at = 0; at < length;) {
    const char* name = names.data() + at;
    at += static_cast<ssize_t>(std::strlen(name)) + 1;
    value.resize(XATTR_SIZE_MAX);
    const ssize_t size = ::fgetxattr(from, name, value.data(), static_cast<std::size_t>(value.size()));
    if (size >= 0) {
      (void)::fsetxattr(to, name, value.constData(), static_cast<std::size_t>(size), 0);
    }
  }
  mode_t mode = old.stx_mode & 07777;
  const uid_t owner = user.user == 0 ? old.stx_uid : static_cast<uid_t>(-1);
  if (::fchown(to, owner, old.stx_gid) != 0 || (user.user != 0 && old.stx_uid != user.user)) {
    mode &= ~static_cast<mode_t>(S_ISUID | S_ISGID);
  }
  return ::fchmod(to, mode) == 0 || errno == EPERM || errno == EOPNOTSUPP ? 0 : errno;
}

FileDescriptor MakeTemporary(const FilePlace& place, QByteArray& name, const QString& text) {
  for (int i = 0;; ++i) {
    name = MakeTemporaryName().toLatin1();
    FileDescriptor made(::openat(place.folder.Get(), name.constData(),
                                 O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                                 place.exists ? 0600 : 0666));
    if (made.IsOpen()) {
      return made;
    }
    if (errno != EEXIST || i >= kNameTries) {
      FailErrno(errno, text);
    }
  }
}

// 0, or an errno.
int Fill(FileDescriptor& file, const QByteArray& content, const FilePlace& place,
         const local::Credentials& user) {
  if (const int code = local::WriteAll(file.Get(), content.constData(), content.size()); code != 0) {
    return code;
  }
  if (place.exists) {
    const FileDescriptor old(::openat(place.folder.Get(), place.name.constData(),
                                      O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    // A file that may be written but not read has no attributes to hand on but its mode.
    if (const int code = TakeOverRights(old.Get(), file.Get(), place.status, user); code != 0) {
      return code;
    }
  }
  // A rename may reach the disk before the content does: the old content has to outlast that. Where there was
  // none, Flush is the caller's to ask for.
  if (place.exists && ::fsync(file.Get()) != 0) {
    return errno;
  }
  return file.Close() == 0 ? 0 : errno;
}

// Only what was seen there before may give way, not what another program has put there meanwhile.
void PutInPlace(const FilePlace& place, const QByteArray& content, const local::Credentials& user,
                const QString& text) {
  QByteArray temporary;
  FileDescriptor file = MakeTemporary(place, temporary, text);
  int code = Fill(file, content, place, user);
  if (code == 0) {
    code = local::RenameItem(place.folder.Get(), temporary, place.folder.Get(), place.name, place.exists);
  }
  if (code != 0) {
    ::unlinkat(place.folder.Get(), temporary.constData(), 0);
    FailErrno(code, text);
  }
}

}  // namespace

QByteArray LocalFileSystem::Read(const QString& path) {
  const NativePath native = native_->paths.Resolve(volumes_, path);
  if (native.IsTopOrDrive()) {
    Fail(error::kAccessDenied, native.text.isEmpty() ? path : native.text);
  }
  const Location location = Locate(native);
  struct statx status {};
  if (const int code = local::StatusAt(location.folder, location.name.constData(), status, true); code != 0) {
    FailOpen(code, native);
  }
  // Asked before it is opened: opening alone does something to a device, and waits at a pipe.
  if (!S_ISREG(status.stx_mode)) {
    Fail(error::kAccessDenied, native.text);
  }
  const FileDescriptor file(
      ::openat(location.folder, location.name.constData(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  if (!file.IsOpen()) {
    FailOpen(errno, native);
  }
  if (const int code = local::StatusOf(file.Get(), status); code != 0 || !S_ISREG(status.stx_mode)) {
    Fail(providererror::kChanged, native.text);
  }
  try {
    // One byte more shows the end without growing; files of the kernel say 0 and hold something.
    QByteArray content(static_cast<qsizetype>(status.stx_size) + 1, Qt::Uninitialized);
    qsizetype size = 0;
    for (;;) {
      if (size == content.size()) {
        content.resize(std::max<qsizetype>(4096, size * 2));
      }
      const ssize_t got =
          ::read(file.Get(), content.data() + size, static_cast<std::size_t>(content.size() - size));
      if (got < 0 && errno != EINTR) {
        FailErrno(errno, native.text);
      }
      if (got == 0) {
        break;
      }
      size += std::max<ssize_t>(got, 0);
    }
    content.truncate(size);
    return content;
  } catch (const std::bad_alloc&) {
    FailErrno(ENOMEM, native.text);
  }
}

void LocalFileSystem::Write(const QString& path, const QByteArray& content) {
  const NativePath native = native_->paths.Resolve(volumes_, path);
  if (native.IsTopOrDrive()) {
    Fail(error::kAccessDenied, native.text.isEmpty() ? path : native.text);
  }
  const FilePlace place = FollowLinks(native);
  if (place.exists) {
    const bool immutable = (place.status.stx_attributes & STATX_ATTR_IMMUTABLE) != 0;
    if (!S_ISREG(place.status.stx_mode) || immutable ||
        !local::CanWriteItem(place.status, place.folder.Get(), place.name.constData(), native_->user)) {
      Fail(error::kAccessDenied, native.text);
    }
  }
  PutInPlace(place, content, native_->user, native.text);
}

void LocalFileSystem::WriteNew(const QString& path, const QByteArray& content) {
  const NativePath native = native_->paths.Resolve(volumes_, path);
  if (native.IsTopOrDrive()) {
    Fail(error::kExists, native.text.isEmpty() ? path : native.text);
  }
  const FilePlace place{local::OpenForNames(native.Parent()), native.names.back()};
  PutInPlace(place, content, native_->user, native.text);
}

void LocalFileSystem::Flush(const QString& path) {
  const NativePath native = native_->paths.Resolve(volumes_, path);
  if (native.IsTop()) {
    return;
  }
  const Location location = Locate(native);
  struct statx status {};
  if (const int code = local::StatusAt(location.folder, location.name.constData(), status); code != 0) {
    FailOpen(code, native);
  }
  if (S_ISREG(status.stx_mode)) {
    const FileDescriptor file(::openat(location.folder, location.name.constData(),
                                       O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    if (!file.IsOpen() || ::fsync(file.Get()) != 0) {
      FailErrno(errno, native.text);
    }
  }
  // The names as well: of a file the folder that holds it, of a folder all that is in it.
  const NativePath folder = native.IsTopOrDrive() || S_ISDIR(status.stx_mode) ? native : native.Parent();
  const Location place = Locate(folder);
  const FileDescriptor opened(
      ::openat(place.folder, place.name.constData(), O_RDONLY | O_DIRECTORY | O_NONBLOCK | O_CLOEXEC));
  if (!opened.IsOpen()) {
    FailErrno(errno, native.text);
  }
  const bool alone = S_ISREG(status.stx_mode) && ::fsync(opened.Get()) == 0;
  if (!alone && ::syncfs(opened.Get()) != 0) {
    FailErrno(errno, native.text);
  }
}

void LocalFileSystem::CreateFile(const QString& path) {
  const NativePath native = native_->paths.Resolve(volumes_, path);
  if (native.IsTopOrDrive()) {
    Fail(error::kExists, native.text.isEmpty() ? path : native.text);
  }
  const Location location = Locate(native);
  FileDescriptor file(::openat(location.folder, location.name.constData(),
                               O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666));
  if (!file.IsOpen() || file.Close() != 0) {
    FailErrno(errno, native.text);
  }
}

void LocalFileSystem::CreateFolder(const QString& path) {
  const NativePath native = native_->paths.Resolve(volumes_, path);
  if (native.IsTopOrDrive()) {
    Fail(error::kExists, native.text.isEmpty() ? path : native.text);
  }
  const Location location = Locate(native);
  if (::mkdirat(location.folder, location.name.constData(), 0777) != 0) {
    FailErrno(errno, native.text);
  }
}

}  // namespace trevane

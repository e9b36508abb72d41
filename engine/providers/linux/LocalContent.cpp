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
#include "engine/providers/linux/SystemCalls.h"
#include "engine/providers/linux/TreeCopier.h"

#include <QtEndian>

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
constexpr quint32 kPermissionBits = 0777;
constexpr quint32 kGroupBits = 0070;
constexpr char kAccessList[] = "system.posix_acl_access";
constexpr char kCapabilities[] = "security.capability";

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
      FileDescriptor next = local::OpenAt(place.folder.Get(), folder.constData(), O_PATH | O_DIRECTORY);
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

// The new file takes over who may do what with the old one, but none of what lets a program run as somebody
// else: that was given to the old content.
int TakeOverRights(int from, int to, const struct statx& old, const local::Credentials& user) {
  std::array<char, 4096> names{};
  const ssize_t length = ::flistxattr(from, names.data(), names.size());
  QByteArray value;
  for (ssize_t at = 0; at < length;) {
    const char* name = names.data() + at;
    at += static_cast<ssize_t>(std::strlen(name)) + 1;
    if (std::strcmp(name, kCapabilities) == 0) {
      continue;
    }
    value.resize(XATTR_SIZE_MAX);
    const ssize_t size = ::fgetxattr(from, name, value.data(), static_cast<std::size_t>(value.size()));
    if (size >= 0) {
      (void)::fsetxattr(to, name, value.constData(), static_cast<std::size_t>(size), 0);
    }
  }
  const uid_t owner = user.user == 0 ? old.stx_uid : static_cast<uid_t>(-1);
  // A file system without owners has nobody to keep it for.
  (void)!::fchown(to, owner, old.stx_gid);
  const mode_t mode = old.stx_mode & 07777 & ~static_cast<mode_t>(S_ISUID | S_ISGID);
  return ::fchmod(to, mode) == 0 || errno == EPERM || errno == EOPNOTSUPP ? 0 : errno;
}

// 0, or an errno. `kept` are bits besides the permissions.
int SetPermissions(int fd, quint32 permissions, mode_t kept = 0) {
  // One that the folder has handed down would let others in by the bits that are meant for the group.
  (void)::fremovexattr(fd, kAccessList);
  const bool isSet = ::fchmod(fd, static_cast<mode_t>(permissions & kPermissionBits) | kept) == 0;
  return isSet || errno == EPERM || errno == EOPNOTSUPP ? 0 : errno;
}

// The bits for the group show the most that an access control list gives to anybody. Where there is a list,
// this is what it gives to the group itself. Source: acl(5), and posix_acl_xattr.h of the kernel.
quint32 GroupBits(int fd, quint32 shown) {
  constexpr std::size_t kHeader = 4;
  struct Entry {
    quint16 tag;
    quint16 permissions;
    quint32 id;
  };
  constexpr quint16 kGroupObject = 0x04;
  std::array<char, kHeader + 1024 * sizeof(Entry)> list{};
  const ssize_t size = ::fgetxattr(fd, kAccessList, list.data(), list.size());
  if (size < 0) {
    return errno == ERANGE ? 0 : shown;
  }
  for (std::size_t at = kHeader; at + sizeof(Entry) <= static_cast<std::size_t>(size); at += sizeof(Entry)) {
    Entry entry{};
    std::memcpy(&entry, list.data() + at, sizeof entry);
    if (qFromLittleEndian(entry.tag) == kGroupObject) {
      return shown & (quint32{qFromLittleEndian(entry.permissions)} << 3);
    }
  }
  return shown;
}

FileDescriptor MakeTemporary(const FilePlace& place, bool isClosed, QByteArray& name, const QString& text) {
  for (int i = 0;; ++i) {
    name = MakeTemporaryName().toLatin1();
    FileDescriptor made = local::OpenAt(place.folder.Get(), name.constData(),
                                        O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, isClosed ? 0600 : 0666);
    if (made.IsOpen()) {
      return made;
    }
    if (errno != EEXIST || i >= kNameTries) {
      FailErrno(errno, text);
    }
  }
}

// 0, or an errno.
int Fill(FileDescriptor& file, const QByteArray& content, const FilePlace& place, const FileTraits& traits,
         const local::Credentials& user) {
  if (const int code = local::WriteAll(file.Get(), content.constData(), content.size()); code != 0) {
    return code;
  }
  if (place.exists) {
    const FileDescriptor old = local::OpenAt(place.folder.Get(), place.name.constData(),
                                             O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY);
    // A file that may be written but not read has no attributes to hand on but its mode.
    if (const int code = TakeOverRights(old.Get(), file.Get(), place.status, user); code != 0) {
      return code;
    }
  } else if (traits.permissions) {
    if (const int code = SetPermissions(file.Get(), *traits.permissions); code != 0) {
      return code;
    }
  }
  // A rename may reach the disk before the content does: the old content has to outlast that. Where there was
  // none, Flush is the caller's to ask for.
  if (place.exists && local::Flush(file.Get()) != 0) {
    return errno;
  }
  return file.Close() == 0 ? 0 : errno;
}

// Only what was seen there before may give way, not what another program has put there meanwhile.
FileStamp PutInPlace(const FilePlace& place, const QByteArray& content, const FileTraits& traits,
                     const local::Credentials& user, const QString& text) {
  QByteArray temporary;
  FileDescriptor file = MakeTemporary(place, place.exists || traits.permissions, temporary, text);
  int code = Fill(file, content, place, traits, user);
  // While it has a name that nobody else knows.
  struct statx made {};
  if (code == 0) {
    code = local::StatusAt(place.folder.Get(), temporary.constData(), made);
  }
  if (code == 0) {
    code = local::RenameItem(place.folder.Get(), temporary, place.folder.Get(), place.name, place.exists);
  }
  if (code != 0) {
    ::unlinkat(place.folder.Get(), temporary.constData(), 0);
    FailErrno(code, text);
  }
  return {FileIdentity{local::DeviceOf(made), made.stx_ino}, static_cast<qint64>(made.stx_size),
          local::ToDate(made.stx_mtime)};
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
  const FileDescriptor file =
      local::OpenAt(location.folder, location.name.constData(), O_RDONLY | O_NONBLOCK | O_NOCTTY);
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
  PutInPlace(place, content, {}, native_->user, native.text);
}

std::optional<FileStamp> LocalFileSystem::WriteNew(const QString& path, const QByteArray& content,
                                                   const FileTraits& traits) {
  const NativePath native = native_->paths.Resolve(volumes_, path);
  if (native.IsTopOrDrive()) {
    Fail(error::kExists, native.text.isEmpty() ? path : native.text);
  }
  const FilePlace place{local::OpenForNames(native.Parent()), native.names.back()};
  return PutInPlace(place, content, traits, native_->user, native.text);
}

FileTraits LocalFileSystem::Traits(const QString& path) {
  const NativePath native = native_->paths.Resolve(volumes_, path);
  if (native.IsTop()) {
    return {};
  }
  const Location location = Locate(native);
  struct statx status {};
  if (const int code = local::StatusAt(location.folder, location.name.constData(), status, true); code != 0) {
    FailOpen(code, native);
  }
  if (!S_ISREG(status.stx_mode) && !S_ISDIR(status.stx_mode)) {
    return {};
  }
  FileTraits traits;
  traits.permissions = status.stx_mode & kPermissionBits;
  const quint32 group = *traits.permissions & kGroupBits;
  if (group != 0) {
    const FileDescriptor opened =
        local::OpenAt(location.folder, location.name.constData(), O_RDONLY | O_NONBLOCK | O_NOCTTY);
    // What may not be opened may not be copied either.
    if (opened.IsOpen()) {
      *traits.permissions = (*traits.permissions & ~kGroupBits) | GroupBits(opened.Get(), group);
    }
  }
  return traits;
}

void LocalFileSystem::SetTraits(const QString& path, const FileTraits& traits) {
  const NativePath native = native_->paths.Resolve(volumes_, path);
  if (native.IsTopOrDrive()) {
    Fail(error::kAccessDenied, native.text.isEmpty() ? path : native.text);
  }
  if (!traits.permissions) {
    return;
  }
  const Location location = Locate(native);
  struct statx status {};
  if (const int code = local::StatusAt(location.folder, location.name.constData(), status); code != 0) {
    FailOpen(code, native);
  }
  if (!S_ISREG(status.stx_mode) && !S_ISDIR(status.stx_mode)) {
    Fail(error::kAccessDenied, native.text);
  }
  const FileDescriptor opened = local::OpenAt(location.folder, location.name.constData(),
                                              O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY);
  if (!opened.IsOpen()) {
    FailOpen(errno, native);
  }
  // Of a folder they say whose the files in it are, and who may delete them.
  const mode_t kept = S_ISDIR(status.stx_mode) ? status.stx_mode & (S_ISGID | S_ISVTX) : 0;
  if (const int code = SetPermissions(opened.Get(), *traits.permissions, kept); code != 0) {
    FailErrno(code, native.text);
  }
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
    const FileDescriptor file = local::OpenAt(location.folder, location.name.constData(),
                                              O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY);
    if (!file.IsOpen() || local::Flush(file.Get()) != 0) {
      FailErrno(errno, native.text);
    }
  }
  // The names as well: of a file the folder that holds it, of a folder all that is in it.
  const NativePath folder = native.IsTopOrDrive() || S_ISDIR(status.stx_mode) ? native : native.Parent();
  const Location place = Locate(folder);
  const FileDescriptor opened =
      local::OpenAt(place.folder, place.name.constData(), O_RDONLY | O_DIRECTORY | O_NONBLOCK);
  if (!opened.IsOpen()) {
    FailErrno(errno, native.text);
  }
  const bool alone = S_ISREG(status.stx_mode) && local::Flush(opened.Get()) == 0;
  if (!alone && local::FlushVolume(opened.Get()) != 0) {
    FailErrno(errno, native.text);
  }
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

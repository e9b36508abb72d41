#include "engine/providers/local/linux/FileContent.h"

#include "engine/files/ProviderError.h"
#include "engine/files/TemporaryName.h"
#include "engine/providers/local/linux/ErrnoTable.h"
#include "engine/providers/local/linux/FileCopier.h"
#include "engine/providers/local/linux/TreeCopier.h"
#include "platform/linux/SystemCalls.h"

#include <QtEndian>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <new>

#include <fcntl.h>
#include <limits.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace trevane::local {

namespace {

constexpr quint32 kPermissionBits = 0777;
constexpr quint32 kGroupBits = 0070;
constexpr char kAccessList[] = "system.posix_acl_access";
constexpr char kCapabilities[] = "security.capability";

// Copies the permissions of the old file, but not those that let a program run as another user: they were
// granted to the old content.
int CopyPermissions(int from, int to, const struct statx& old, const Credentials& user) {
  (void)CopyExtendedAttributes(from, to, kCapabilities);
  const uid_t owner = user.user == 0 ? old.stx_uid : static_cast<uid_t>(-1);
  // Fails on a file system without owners.
  (void)!::fchown(to, owner, old.stx_gid);
  const mode_t mode = old.stx_mode & 07777 & ~static_cast<mode_t>(S_ISUID | S_ISGID);
  return ::fchmod(to, mode) == 0 || IsRefusedAttribute(errno) ? 0 : errno;
}

// 0, or an errno. `kept` are bits besides the permissions.
int SetPermissions(int fd, quint32 permissions, mode_t kept = 0) {
  // An access control list that was inherited from the folder would grant others the bits meant for the
  // group.
  (void)::fremovexattr(fd, kAccessList);
  const bool isSet = ::fchmod(fd, static_cast<mode_t>(permissions & kPermissionBits) | kept) == 0;
  return isSet || IsRefusedAttribute(errno) ? 0 : errno;
}

// With an access control list the group bits of the mode are the most that the list grants to anybody.
// Returns what it grants to the group itself. Source: acl(5), and posix_acl_xattr.h of the kernel.
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

FileDescriptor MakeTemporary(const FilePlace& place, bool isClosed, QByteArray& name, const TextOf& text) {
  FileDescriptor made;
  const QString free = MakeUnderTemporaryName([&](const QString& tried) {
    made = OpenAt(place.folder, tried.toLatin1().constData(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW,
                  isClosed ? 0600 : 0666);
    if (!made.IsOpen() && errno != EEXIST) {
      FailErrno(errno, text());
    }
    return made.IsOpen();
  });
  name = free.toLatin1();
  return made;
}

// 0, or an errno.
int Fill(FileDescriptor& file, const QByteArray& content, const FilePlace& place, const FileTraits& traits,
         const Credentials& user) {
  if (const int code = WriteAll(file.Get(), content.constData(), content.size()); code != 0) {
    return code;
  }
  if (place.exists) {
    const FileDescriptor old =
        OpenAt(place.folder, place.name.constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY);
    // Of a file that may be written but not read only the mode can be copied.
    if (const int code = CopyPermissions(old.Get(), file.Get(), place.status, user); code != 0) {
      return code;
    }
  } else if (traits.permissions) {
    if (const int code = SetPermissions(file.Get(), *traits.permissions); code != 0) {
      return code;
    }
  }
  // A rename may reach the disk before the content does, so a replacement is flushed first. For a new file
  // the caller calls Flush.
  if (place.exists && Flush(file.Get()) != 0) {
    return errno;
  }
  return file.Close() == 0 ? 0 : errno;
}

}  // namespace

FileStamp PutInPlace(const FilePlace& place, const QByteArray& content, const FileTraits& traits,
                     const Credentials& user, const TextOf& text) {
  QByteArray temporary;
  FileDescriptor file = MakeTemporary(place, place.exists || traits.permissions, temporary, text);
  int code = Fill(file, content, place, traits, user);
  // Asked while nobody else knows its name.
  struct statx made {};
  if (code == 0) {
    code = StatusAt(place.folder, temporary.constData(), made);
  }
  if (code == 0) {
    code = RenameItem(place.folder, temporary, place.folder, place.name, place.exists);
  }
  if (code != 0) {
    ::unlinkat(place.folder, temporary.constData(), 0);
    FailErrno(code, text());
  }
  return FileStamp{FileIdentity{DeviceOf(made), made.stx_ino}, static_cast<qint64>(made.stx_size),
                   ToDate(made.stx_mtime)};
}

void RequireWritable(const FilePlace& place, const Credentials& user, const TextOf& text) {
  if (!place.exists) {
    return;
  }
  const bool immutable = (place.status.stx_attributes & STATX_ATTR_IMMUTABLE) != 0;
  if (!S_ISREG(place.status.stx_mode) || immutable ||
      !CanWriteItem(place.status, place.folder, place.name.constData(), user)) {
    Fail(error::kAccessDenied, text());
  }
}

QByteArray ReadContent(int folder, const QByteArray& name, const TextOf& text) {
  struct statx status {};
  if (const int code = StatusAt(folder, name.constData(), status, true); code != 0) {
    FailErrno(code, text());
  }
  // Checked before opening, which may affect a device and waits at a pipe.
  if (!S_ISREG(status.stx_mode)) {
    Fail(error::kAccessDenied, text());
  }
  const FileDescriptor file = OpenAt(folder, name.constData(), O_RDONLY | O_NONBLOCK | O_NOCTTY);
  if (!file.IsOpen()) {
    FailErrno(errno, text());
  }
  if (const int code = StatusOf(file.Get(), status); code != 0 || !S_ISREG(status.stx_mode)) {
    Fail(providererror::kChanged, text());
  }
  try {
    // One byte more, so that the end is found without growing. Files of the kernel have size 0 but hold data.
    QByteArray content(static_cast<qsizetype>(status.stx_size) + 1, Qt::Uninitialized);
    qsizetype size = 0;
    for (;;) {
      if (size == content.size()) {
        content.resize(std::max<qsizetype>(4096, size * 2));
      }
      const ssize_t got =
          ::read(file.Get(), content.data() + size, static_cast<std::size_t>(content.size() - size));
      if (got < 0 && errno != EINTR) {
        FailErrno(errno, text());
      }
      if (got == 0) {
        break;
      }
      size += std::max<ssize_t>(got, 0);
    }
    content.truncate(size);
    return content;
  } catch (const std::bad_alloc&) {
    FailErrno(ENOMEM, text());
  }
}

FileTraits ReadTraits(int folder, const QByteArray& name, const TextOf& text) {
  struct statx status {};
  if (const int code = StatusAt(folder, name.constData(), status, true); code != 0) {
    FailErrno(code, text());
  }
  if (!S_ISREG(status.stx_mode) && !S_ISDIR(status.stx_mode)) {
    return {};
  }
  FileTraits traits;
  traits.permissions = status.stx_mode & kPermissionBits;
  const quint32 group = *traits.permissions & kGroupBits;
  if (group != 0) {
    const FileDescriptor opened = OpenAt(folder, name.constData(), O_RDONLY | O_NONBLOCK | O_NOCTTY);
    // A file that may not be opened cannot be copied either.
    if (opened.IsOpen()) {
      *traits.permissions = (*traits.permissions & ~kGroupBits) | GroupBits(opened.Get(), group);
    }
  }
  return traits;
}

void WriteTraits(int folder, const QByteArray& name, const FileTraits& traits, const TextOf& text) {
  if (!traits.permissions) {
    return;
  }
  struct statx status {};
  if (const int code = StatusAt(folder, name.constData(), status); code != 0) {
    FailErrno(code, text());
  }
  if (!S_ISREG(status.stx_mode) && !S_ISDIR(status.stx_mode)) {
    Fail(error::kAccessDenied, text());
  }
  const FileDescriptor opened =
      OpenAt(folder, name.constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY);
  if (!opened.IsOpen()) {
    FailErrno(errno, text());
  }
  // For a folder these bits decide the group of new files and who may delete them.
  const mode_t kept = S_ISDIR(status.stx_mode) ? status.stx_mode & (S_ISGID | S_ISVTX) : 0;
  if (const int code = SetPermissions(opened.Get(), *traits.permissions, kept); code != 0) {
    FailErrno(code, text());
  }
}

void FlushItem(int folder, const QByteArray& name, const TextOf& text) {
  struct statx status {};
  if (const int code = StatusAt(folder, name.constData(), status); code != 0) {
    FailErrno(code, text());
  }
  if (S_ISREG(status.stx_mode)) {
    const FileDescriptor file =
        OpenAt(folder, name.constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY);
    if (!file.IsOpen() || Flush(file.Get()) != 0) {
      FailErrno(errno, text());
    }
  }
  // The names as well: for a file the folder that holds it, for a folder everything in it.
  const char* holder = S_ISDIR(status.stx_mode) ? name.constData() : ".";
  const FileDescriptor opened = OpenAt(folder, holder, O_RDONLY | O_DIRECTORY | O_NONBLOCK);
  if (!opened.IsOpen()) {
    FailErrno(errno, text());
  }
  // Some file systems flush only as a whole.
  const bool alone = !S_ISDIR(status.stx_mode) && Flush(opened.Get()) == 0;
  if (!alone && FlushVolume(opened.Get()) != 0) {
    FailErrno(errno, text());
  }
  if (!S_ISDIR(status.stx_mode)) {
    return;
  }
  // The name of a mount point is on another volume than its contents.
  const FileDescriptor above = OpenAt(folder, ".", O_RDONLY | O_DIRECTORY | O_NONBLOCK);
  if (above.IsOpen() && Flush(above.Get()) != 0 && FlushVolume(above.Get()) != 0) {
    FailErrno(errno, text());
  }
}

}  // namespace trevane::local

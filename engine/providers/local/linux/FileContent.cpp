#include "engine/providers/local/linux/FileContent.h"

#include "engine/files/ProviderError.h"
#include "engine/providers/local/linux/ErrnoTable.h"
#include "engine/providers/local/linux/FileCopier.h"
#include "engine/providers/local/linux/NativeName.h"
#include "platform/linux/SystemCalls.h"

#include <QtEndian>

#include <array>
#include <cerrno>
#include <cstring>

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

// Milliseconds count upwards also before 1970.
timespec TimeOf(const Date& date) {
  qint64 seconds = date.msecs / 1000;
  qint64 rest = date.msecs % 1000;
  if (rest < 0) {
    rest += 1000;
    --seconds;
  }
  return {static_cast<time_t>(seconds), static_cast<long>(rest * 1'000'000)};
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

}  // namespace

int CopyPermissions(int from, int to, const struct statx& old, const Credentials& user) {
  (void)CopyExtendedAttributes(from, to, kCapabilities);
  const uid_t owner = user.user == 0 ? old.stx_uid : static_cast<uid_t>(-1);
  // Fails on a file system without owners.
  (void)!::fchown(to, owner, old.stx_gid);
  const mode_t mode = old.stx_mode & 07777 & ~static_cast<mode_t>(S_ISUID | S_ISGID);
  return ::fchmod(to, mode) == 0 || IsRefusedAttribute(errno) ? 0 : errno;
}

int SetPermissions(int fd, quint32 permissions, mode_t kept) {
  // An access control list that was inherited from the folder would grant others the bits meant for the
  // group.
  (void)::fremovexattr(fd, kAccessList);
  const bool isSet = ::fchmod(fd, static_cast<mode_t>(permissions & kPermissionBits) | kept) == 0;
  return isSet || IsRefusedAttribute(errno) ? 0 : errno;
}

int SetModified(int fd, const Date& modified) {
  if (!modified.IsPresent()) {
    return 0;
  }
  const std::array<timespec, 2> times{timespec{0, UTIME_OMIT}, TimeOf(modified)};
  return ::futimens(fd, times.data()) == 0 || IsRefusedAttribute(errno) ? 0 : errno;
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

std::optional<QString> ReadLinkText(int folder, const QByteArray& name, const TextOf& text) {
  std::array<char, PATH_MAX + 1> target{};
  const ssize_t length =
      Repeated([&] { return ::readlinkat(folder, name.constData(), target.data(), target.size()); });
  if (length >= 0) {
    return FromNativeName(QByteArrayView(target.data(), length));
  }
  if (errno == EINVAL) {
    return std::nullopt;
  }
  FailErrno(errno, text());
}

void MakeLink(int folder, const QByteArray& name, const QString& target, const TextOf& text) {
  QString separated = target;
  separated.replace(u'\\', u'/');
  const QByteArray native = ToNativeName(separated, text());
  if (native.isEmpty() || native.contains('\0')) {
    Fail(error::kInvalidName, text());
  }
  if (::symlinkat(native.constData(), folder, name.constData()) != 0) {
    FailErrno(errno == EPERM ? EOPNOTSUPP : errno, text());
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
  FileDescriptor opened;
  if ((status.stx_mode & kGroupBits) != 0) {
    // A file that may not be opened cannot be copied either.
    opened = OpenAt(folder, name.constData(), O_RDONLY | O_NONBLOCK | O_NOCTTY);
  }
  return TraitsOf(status, opened.Get());
}

FileTraits TraitsOf(const struct statx& status, int opened) {
  FileTraits traits;
  traits.modified = ToDate(status.stx_mtime);
  traits.permissions = status.stx_mode & kPermissionBits;
  const quint32 group = *traits.permissions & kGroupBits;
  if (group != 0 && opened >= 0) {
    *traits.permissions = (*traits.permissions & ~kGroupBits) | GroupBits(opened, group);
  }
  return traits;
}

void WriteTraits(int folder, const QByteArray& name, const FileTraits& traits, const TextOf& text) {
  if (!traits.permissions && !traits.modified.IsPresent()) {
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
  int code = 0;
  if (traits.permissions) {
    // For a folder these bits decide the group of new files and who may delete them.
    const mode_t kept = S_ISDIR(status.stx_mode) ? status.stx_mode & (S_ISGID | S_ISVTX) : 0;
    code = SetPermissions(opened.Get(), *traits.permissions, kept);
  }
  if (code == 0) {
    code = SetModified(opened.Get(), traits.modified);
  }
  if (code != 0) {
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

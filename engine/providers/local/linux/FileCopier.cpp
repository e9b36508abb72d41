#include "engine/providers/local/linux/FileCopier.h"

#include "engine/files/ProviderError.h"
#include "engine/providers/local/linux/ErrnoTable.h"
#include "platform/linux/FileDescriptor.h"
#include "platform/linux/SystemCalls.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <limits>

#include <fcntl.h>
#include <limits.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace trevane::local {
namespace {

// For smaller files a read and a write cost less than asking the file system to copy.
constexpr qint64 kSmall = 128 * 1024;
constexpr qint64 kBuffer = 1024 * 1024;
constexpr qint64 kToTheEnd = std::numeric_limits<qint64>::max();

bool IsUnsupported(int code) {
  return code == EOPNOTSUPP || code == ENOSYS || code == EINVAL || code == EXDEV || code == ENOTTY ||
         code == EBADF || code == EPERM || code == ETXTBSY;
}

timespec ToTimespec(const struct statx_timestamp& time) {
  return {static_cast<time_t>(time.tv_sec), static_cast<long>(time.tv_nsec)};
}

std::array<timespec, 2> TimesOf(const struct statx& status) {
  return {ToTimespec(status.stx_atime), ToTimespec(status.stx_mtime)};
}

int SizeOf(int fd, qint64& size) {
  struct statx now {};
  const int code = StatusOf(fd, now);
  size = static_cast<qint64>(now.stx_size);
  return code;
}

}  // namespace

bool IsRefusedAttribute(int code) {
  return code == EPERM || code == EOPNOTSUPP || code == ENOSYS;
}

int CopyExtendedAttributes(int from, int to, const char* except) {
  std::array<char, 4096> small{};
  QByteArray names;
  ssize_t length = ::flistxattr(from, small.data(), small.size());
  if (length < 0 && errno == EOPNOTSUPP) {
    return EOPNOTSUPP;
  }
  if (length < 0 && errno == ERANGE) {
    names.resize(XATTR_LIST_MAX);
    length = ::flistxattr(from, names.data(), static_cast<std::size_t>(names.size()));
  } else if (length > 0) {
    names = QByteArray(small.data(), length);
  }
  QByteArray value;
  for (ssize_t at = 0; at < length;) {
    const char* name = names.constData() + at;
    at += static_cast<ssize_t>(std::strlen(name)) + 1;
    if (except != nullptr && std::strcmp(name, except) == 0) {
      continue;
    }
    value.resize(XATTR_SIZE_MAX);
    const ssize_t size = ::fgetxattr(from, name, value.data(), static_cast<std::size_t>(value.size()));
    // Some attributes only the kernel or the super-user may set, and not every file system supports all of
    // them.
    if (size >= 0) {
      (void)::fsetxattr(to, name, value.constData(), static_cast<std::size_t>(size), 0);
    }
  }
  return 0;
}

void FileCopier::CopyFile(const ChainItem& from, const ChainItem& to, const char* madeName, bool flush,
                          const CopyProgress& progress) {
  // Does not wait in case a pipe took the place of the file.
  const FileDescriptor in = OpenAt(from.Fd(), from.Name(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY);
  if (!in.IsOpen()) {
    const int code = errno;
    if (code == ELOOP) {
      Fail(providererror::kChanged, from.Text());
    }
    FailErrno(code, from.Text());
  }
  struct statx status {};
  if (const int code = StatusOf(in.Get(), status); code != 0) {
    FailErrno(code, from.Text());
  }
  if (!S_ISREG(status.stx_mode)) {
    Fail(providererror::kChanged, from.Text());
  }
  FileDescriptor out = OpenAt(to.Fd(), madeName, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, 0600);
  if (!out.IsOpen()) {
    FailErrno(errno, to.Text());
  }
  try {
    bool readFailed = false;
    qint64 copied = 0;
    progress_ = progress ? &progress : nullptr;
    size_ = static_cast<qint64>(status.stx_size);
    isCancelled_ = false;
    if (const int code = CopyContent(in.Get(), out.Get(), status, copied, readFailed); code != 0) {
      if (isCancelled_) {
        Fail(error::kCancelled, from.Text());
      }
      FailErrno(code, readFailed ? from.Text() : to.Text());
    }
    // The copy may match neither the old nor the new content.
    if (const auto expected = static_cast<qint64>(status.stx_size); copied < expected) {
      Fail(providererror::kChanged,
           QStringLiteral("Only %1 of %2 bytes could be read").arg(copied).arg(expected), from.Text());
    }
    if (const int code = CopyAttributes(in.Get(), out.Get(), status); code != 0) {
      FailErrno(code, to.Text());
    }
    if (flush && Flush(out.Get()) != 0 && !IsUnsupported(errno)) {
      FailErrno(errno, to.Text());
    }
    if (out.Close() != 0) {
      FailErrno(errno, to.Text());
    }
  } catch (const RunTimeError&) {
    ::unlinkat(to.Fd(), madeName, 0);
    throw;
  }
}

void FileCopier::CopyLink(const ChainItem& from, const ChainItem& to, const char* madeName) {
  struct statx status {};
  if (const int code = StatusAt(from.Fd(), from.Name(), status); code != 0) {
    FailErrno(code, from.Text());
  }
  std::array<char, PATH_MAX + 1> target{};
  const ssize_t length = ::readlinkat(from.Fd(), from.Name(), target.data(), target.size() - 1);
  if (length < 0) {
    const int code = errno;
    if (code == EINVAL) {
      Fail(providererror::kChanged, from.Text());  // no link any more
    }
    FailErrno(code, from.Text());
  }
  if (::symlinkat(target.data(), to.Fd(), madeName) != 0) {
    FailErrno(errno == EPERM ? EOPNOTSUPP : errno, to.Text());
  }
  // The owner and times of a link matter little: failing to set them is no failure.
  if (user_.user == 0) {
    (void)!::fchownat(to.Fd(), madeName, status.stx_uid, status.stx_gid, AT_SYMLINK_NOFOLLOW);
  }
  (void)::utimensat(to.Fd(), madeName, TimesOf(status).data(), AT_SYMLINK_NOFOLLOW);
}

bool FileCopier::IsGoingOn(qint64 copied) {
  isCancelled_ = progress_ != nullptr && !(*progress_)(copied, std::max(copied, size_));
  return !isCancelled_;
}

int FileCopier::CopyContent(int from, int to, const struct statx& status, qint64& copied, bool& readFailed) {
  const auto size = static_cast<qint64>(status.stx_size);
  if (size > kSmall && canClone_) {
    if (::ioctl(to, FICLONE, from) == 0) {
      return SizeOf(to, copied);
    }
    if (!IsUnsupported(errno)) {
      return errno;
    }
    canClone_ = false;
  }
  if (size > 0 && static_cast<qint64>(status.stx_blocks) * 512 < size) {
    return CopySparse(from, to, size, copied, readFailed);
  }
  // To the end and not to the size: files of the kernel have size 0, and a log may have grown.
  return size > kSmall ? CopyRange(from, to, 0, kToTheEnd, copied, readFailed)
                       : CopyByHand(from, to, 0, kToTheEnd, copied, readFailed);
}

int FileCopier::CopySparse(int from, int to, qint64 size, qint64& copied, bool& readFailed) {
  qint64 at = 0;
  while (at < size) {
    const off_t data = ::lseek(from, at, SEEK_DATA);
    if (data < 0 && errno == ENXIO) {
      break;  // nothing but a hole up to the end
    }
    if (data < 0) {
      // The file system cannot tell: all of it is data.
      copied = at;
      return CopyRange(from, to, at, kToTheEnd, copied, readFailed);
    }
    off_t hole = ::lseek(from, data, SEEK_HOLE);
    if (hole < 0) {
      hole = size;
    }
    copied = data;
    if (const int code = CopyRange(from, to, data, hole - data, copied, readFailed); code != 0) {
      return code;
    }
    if (copied < hole) {
      return 0;  // it has become shorter meanwhile
    }
    at = hole;
  }
  // The last hole. Whatever was copied beyond the old size is kept.
  struct statx written {};
  if (const int code = StatusOf(to, written); code != 0) {
    return code;
  }
  if (static_cast<qint64>(written.stx_size) < size && ::ftruncate(to, size) != 0) {
    return errno;
  }
  // The end of a file that has become shorter looks like a hole.
  readFailed = true;
  return SizeOf(from, copied);
}

int FileCopier::CopyRange(int from, int to, qint64 offset, qint64 length, qint64& copied, bool& readFailed) {
  // Small enough that a copy to a slow disk can be ended.
  constexpr qint64 kReported = 4 * 1024 * 1024;
  constexpr qint64 kUnreported = 1LL << 30;
  const qint64 atOnce = progress_ != nullptr ? kReported : kUnreported;
  while (canCopyRange_ && length > 0) {
    off_t in = offset;
    off_t out = offset;
    const ssize_t done =
        ::copy_file_range(from, &in, to, &out, static_cast<std::size_t>(std::min(length, atOnce)), 0);
    if (done < 0 && errno == EINTR) {
      continue;
    }
    if (done < 0 && !IsUnsupported(errno)) {
      return errno;
    }
    if (done < 0) {
      canCopyRange_ = false;
      break;
    }
    if (done == 0) {
      break;  // the end, or a file whose end only reading shows
    }
    offset += done;
    length -= done;
    copied += done;
    if (!IsGoingOn(copied)) {
      return ECANCELED;
    }
  }
  return length > 0 ? CopyByHand(from, to, offset, length, copied, readFailed) : 0;
}

int FileCopier::CopyByHand(int from, int to, qint64 offset, qint64 length, qint64& copied, bool& readFailed) {
  if (!buffer_) {
    // Cleared, it would cost more than a small file.
    buffer_ = std::make_unique_for_overwrite<char[]>(kBuffer);
  }
  while (length > 0) {
    const auto wanted = static_cast<std::size_t>(std::min<qint64>(length, kBuffer));
    const ssize_t got = ::pread(from, buffer_.get(), wanted, offset);
    if (got < 0 && errno == EINTR) {
      continue;
    }
    if (got < 0) {
      readFailed = true;
      return errno;
    }
    if (got == 0) {
      return 0;
    }
    for (ssize_t put = 0; put < got;) {
      const ssize_t part =
          ::pwrite(to, buffer_.get() + put, static_cast<std::size_t>(got - put), offset + put);
      if (part < 0 && errno != EINTR) {
        return errno;
      }
      if (part == 0) {
        return EIO;
      }
      put += std::max<ssize_t>(part, 0);
    }
    offset += got;
    length -= got;
    copied += got;
    // A small file is reported by its name only.
    if (std::max(size_, copied) > kSmall && !IsGoingOn(copied)) {
      return ECANCELED;
    }
  }
  return 0;
}

int FileCopier::CopyAttributes(int from, int to, const struct statx& status) {
  if (hasExtendedAttributes_) {
    hasExtendedAttributes_ = CopyExtendedAttributes(from, to) == 0;
  }
  mode_t mode = status.stx_mode & 07777;
  // Only the super-user can change the owner. A copy with another owner must not run as the new one.
  if (user_.user == 0 || status.stx_gid != ::getegid() || status.stx_uid != user_.user) {
    const uid_t owner = user_.user == 0 ? status.stx_uid : static_cast<uid_t>(-1);
    const bool given = ::fchown(to, owner, status.stx_gid) == 0;
    if (!given || (user_.user != 0 && status.stx_uid != user_.user)) {
      mode &= ~static_cast<mode_t>(S_ISUID | S_ISGID);
    }
  }
  if (::fchmod(to, mode) != 0 && !IsRefusedAttribute(errno)) {
    return errno;
  }
  if (::futimens(to, TimesOf(status).data()) != 0 && !IsRefusedAttribute(errno)) {
    return errno;
  }
  return 0;
}

}  // namespace trevane::local

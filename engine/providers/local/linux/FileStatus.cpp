#include "engine/providers/local/linux/FileStatus.h"

#include "platform/linux/FileDescriptor.h"
#include "platform/linux/SystemCalls.h"

#include <algorithm>
#include <array>
#include <cerrno>

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/statfs.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace trevane::local {
namespace {

constexpr unsigned kWanted = STATX_BASIC_STATS | STATX_BTIME;

}  // namespace

Date ToDate(const struct statx_timestamp& time) {
  // Nanoseconds count upwards also before 1970.
  return {static_cast<qint64>(time.tv_sec) * 1000 + time.tv_nsec / 1000000};
}

Credentials Credentials::Current() {
  Credentials current;
  current.user = ::geteuid();
  const int count = ::getgroups(0, nullptr);
  if (count > 0) {
    current.groups.resize(static_cast<std::size_t>(count));
    const int got = ::getgroups(count, current.groups.data());
    current.groups.resize(static_cast<std::size_t>(std::max(got, 0)));
  }
  current.groups.push_back(::getegid());
  return current;
}

bool CanWrite(mode_t mode, uid_t owner, gid_t group, const Credentials& user) {
  if (user.user == 0) {
    return true;
  }
  if (owner == user.user) {
    return (mode & S_IWUSR) != 0;
  }
  if (std::find(user.groups.begin(), user.groups.end(), group) != user.groups.end()) {
    return (mode & S_IWGRP) != 0;
  }
  return (mode & S_IWOTH) != 0;
}

bool CanWriteItem(const struct statx& status, int folder, const char* name, const Credentials& user) {
  if (CanWrite(status.stx_mode, status.stx_uid, status.stx_gid, user)) {
    return true;
  }
  // The group bits are the most that a list grants to anybody but the owner and all others.
  if (status.stx_uid == user.user || (status.stx_mode & S_IWGRP) == 0) {
    return false;
  }
  return ::faccessat(folder, name, W_OK, AT_EACCESS) == 0;
}

int StatusAt(int folder, const char* name, struct statx& status, bool followLink) {
  const int flags = AT_NO_AUTOMOUNT | (followLink ? 0 : AT_SYMLINK_NOFOLLOW);
  return Repeated([&] { return ::statx(folder, name, flags, kWanted, &status); }) == 0 ? 0 : errno;
}

int StatusOf(int fd, struct statx& status) {
  return Repeated([&] { return ::statx(fd, "", AT_EMPTY_PATH, kWanted, &status); }) == 0 ? 0 : errno;
}

bool IsSameItem(const struct statx& a, const struct statx& b) {
  return a.stx_ino == b.stx_ino && DeviceOf(a) == DeviceOf(b);
}

quint64 DeviceOf(const struct statx& status) {
  return (static_cast<quint64>(status.stx_dev_major) << 32) | status.stx_dev_minor;
}

bool IsMountPoint(const struct statx& status, int folder) {
  if ((status.stx_attributes_mask & STATX_ATTR_MOUNT_ROOT) != 0) {
    return (status.stx_attributes & STATX_ATTR_MOUNT_ROOT) != 0;
  }
  struct statx above {};
  // When in doubt it is one.
  return StatusAt(folder, "..", above) != 0 || DeviceOf(above) != DeviceOf(status);
}

bool IsOnOwnDisk(int folder) {
  struct statfs answer {};
  if (Repeated([&] { return ::fstatfs(folder, &answer); }) != 0) {
    return false;
  }
  constexpr std::array<quint32, 6> kOwn{EXT4_SUPER_MAGIC, XFS_SUPER_MAGIC,       BTRFS_SUPER_MAGIC,
                                        F2FS_SUPER_MAGIC, OVERLAYFS_SUPER_MAGIC, TMPFS_MAGIC};
  return std::ranges::find(kOwn, static_cast<quint32>(answer.f_type)) != kOwn.end();
}

bool MountStates::IsReadOnly(const struct statx& status, int folder, const char* name) {
  const quint64 device = DeviceOf(status);
  for (const State& state : known_) {
    if (state.device == device) {
      return state.readOnly;
    }
  }
  const FileDescriptor opened = OpenAt(folder, name, O_PATH);
  struct statfs answer {};
  const bool readOnly = opened.IsOpen() && Repeated([&] { return ::fstatfs(opened.Get(), &answer); }) == 0 &&
                        (static_cast<unsigned long>(answer.f_flags) & ST_RDONLY) != 0;
  known_.push_back({device, readOnly});
  return readOnly;
}

FileEntry MakeEntry(QString shownName, int folder, const char* name, const struct statx& own,
                    const Credentials& user, MountStates& mounts) {
  FileEntry entry;
  entry.name = std::move(shownName);
  const struct statx* shown = &own;
  struct statx target {};
  if (S_ISLNK(own.stx_mode)) {
    entry.attributes |= attribute::kLink;
    // A link whose target is missing or may not be looked at is shown with its own data.
    const int code = StatusAt(folder, name, target, true);
    if (code == 0) {
      shown = &target;
    }
    entry.leadsNowhere = code == ENOENT || code == ENOTDIR;
  }
  switch (KindOf(*shown)) {
    case S_IFDIR:
      entry.attributes |= attribute::kFolder;
      break;
    case S_IFREG:
    case S_IFLNK:
      entry.attributes |= attribute::kArchive;
      entry.size = static_cast<qint64>(shown->stx_size);
      break;
    default:
      entry.attributes |= attribute::kDevice;
      break;
  }
  if (name[0] == '.') {
    entry.attributes |= attribute::kHidden;
  }
  // The mode of a link has no meaning.
  const bool immutable = (shown->stx_attributes & STATX_ATTR_IMMUTABLE) != 0;
  const bool modeForbids = !S_ISLNK(shown->stx_mode) && !CanWriteItem(*shown, folder, name, user);
  if (immutable || modeForbids || mounts.IsReadOnly(*shown, folder, name)) {
    entry.attributes |= attribute::kReadOnly;
  }
  entry.modified = ToDate(shown->stx_mtime);
  entry.accessed = ToDate(shown->stx_atime);
  if ((shown->stx_mask & STATX_BTIME) != 0) {
    entry.created = ToDate(shown->stx_btime);
  }
  return entry;
}

SeenItem MakeSeen(FileEntry entry, const struct statx& status) {
  return {std::move(entry), FileIdentity{DeviceOf(status), status.stx_ino},
          static_cast<qint64>(status.stx_ctime.tv_sec) * 1'000'000'000 + status.stx_ctime.tv_nsec};
}

}  // namespace trevane::local

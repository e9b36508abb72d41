#pragma once

#include "engine/files/FileSystem.h"

#include <vector>

#include <sys/stat.h>

namespace trevane::local {

/// The user and groups of this program, to decide what it may write.
struct Credentials {
  uid_t user = 0;
  std::vector<gid_t> groups;

  [[nodiscard]] static Credentials Current();
};

/// By mode and owner alone; the super-user can write everything. Access control lists count only as far as
/// the mode shows them.
[[nodiscard]] bool CanWrite(mode_t mode, uid_t owner, gid_t group, const Credentials& user);

/// As CanWrite for the item `name` in `folder` with that status. Where the mode forbids it, the system is
/// asked if an access control list may allow it, which shows in the mode as a writable group: the ordinary
/// files of other users cost no call.
[[nodiscard]] bool CanWriteItem(const struct statx& status, int folder, const char* name,
                                const Credentials& user);

/// One statx call for all that an entry needs: 0, or an errno.
[[nodiscard]] int StatusAt(int folder, const char* name, struct statx& status, bool followLink = false);
/// Of an open item.
[[nodiscard]] int StatusOf(int fd, struct statx& status);

[[nodiscard]] bool IsSameItem(const struct statx& a, const struct statx& b);
[[nodiscard]] quint64 DeviceOf(const struct statx& status);
[[nodiscard]] Date ToDate(const struct statx_timestamp& time);
/// `folder` is the open folder with that status. With kernels that do not mark mount points (before 5.8) they
/// are recognized by a device other than that of the folder above.
[[nodiscard]] bool IsMountPoint(const struct statx& status, int folder);
/// Whether an open folder is on a disk, or in the memory, of this computer: a kind of file system that has no
/// server behind it. False for a kind that is not known.
[[nodiscard]] bool IsOnOwnDisk(int folder);
[[nodiscard]] inline mode_t KindOf(const struct statx& status) {
  return status.stx_mode & S_IFMT;
}

/// Whether a whole file system is mounted read-only, asked once for each device.
class MountStates {
 public:
  /// `folder` and `name` lead to an item on the device of `status`.
  [[nodiscard]] bool IsReadOnly(const struct statx& status, int folder, const char* name);
  /// What is known without asking of the device of `status`.
  void Remember(const struct statx& status, bool readOnly) { known_.push_back({DeviceOf(status), readOnly}); }

 private:
  struct State {
    quint64 device;
    bool readOnly;
  };
  std::vector<State> known_;
};

/// The entry for the item `name` in `folder` with the status `own`. One more call is made for links only.
[[nodiscard]] FileEntry MakeEntry(QString shownName, int folder, const char* name, const struct statx& own,
                                  const Credentials& user, MountStates& mounts);

/// The entry with the identity and the state stamp of the item.
[[nodiscard]] SeenItem MakeSeen(FileEntry entry, const struct statx& status);

}  // namespace trevane::local

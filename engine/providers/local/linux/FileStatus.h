#pragma once

#include "engine/files/FileSystem.h"

#include <vector>

#include <sys/stat.h>

namespace trevane::local {

/// Who this program runs as, for the question what it may write.
struct Credentials {
  uid_t user = 0;
  std::vector<gid_t> groups;

  [[nodiscard]] static Credentials Current();
};

/// By mode and owner alone; the super-user can write everything. Access control lists are seen only as far as
/// the mode shows them.
[[nodiscard]] bool CanWrite(mode_t mode, uid_t owner, gid_t group, const Credentials& user);

/// As CanWrite for the item `name` in `folder` that `status` tells of, and where the mode says no the system
/// is asked if an access control list can say otherwise: one with such an entry shows in the mode as a group
/// that may write, so that other people's ordinary files cost no call.
[[nodiscard]] bool CanWriteItem(const struct statx& status, int folder, const char* name,
                                const Credentials& user);

/// One statx call for all that an entry needs: 0, or an errno.
[[nodiscard]] int StatusAt(int folder, const char* name, struct statx& status, bool followLink = false);
/// Of something open.
[[nodiscard]] int StatusOf(int fd, struct statx& status);

[[nodiscard]] bool IsSameItem(const struct statx& a, const struct statx& b);
[[nodiscard]] quint64 DeviceOf(const struct statx& status);
[[nodiscard]] Date ToDate(const struct statx_timestamp& time);
/// `folder` is the open folder that `status` tells of. A kernel that does not mark mount points (before 5.8)
/// has them known by their device, which is not that of the folder above.
[[nodiscard]] bool IsMountPoint(const struct statx& status, int folder);
[[nodiscard]] inline mode_t KindOf(const struct statx& status) {
  return status.stx_mode & S_IFMT;
}

/// Whether a whole file system is mounted read-only, asked once a device while it lives.
class MountStates {
 public:
  /// `folder` and `name` lead to something on the device of `status`.
  [[nodiscard]] bool IsReadOnly(const struct statx& status, int folder, const char* name);

 private:
  struct State {
    quint64 device;
    bool readOnly;
  };
  std::vector<State> known_;
};

/// The entry for an item that `own` tells of, found as `name` in `folder`; asks once more for links only.
[[nodiscard]] FileEntry MakeEntry(QString shownName, int folder, const char* name, const struct statx& own,
                                  const Credentials& user, MountStates& mounts);

}  // namespace trevane::local

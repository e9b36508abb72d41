#pragma once

#include "engine/providers/linux/FileStatus.h"

#include <set>
#include <utility>

#include <time.h>

namespace trevane::local {

/// Tells what another program changed in a source since a move of it began: that was perhaps not copied. It
/// goes by the clock of this machine, which local file systems stamp their files with.
class ChangeGuard {
 public:
  /// Waits for the next tick (some milliseconds): changes are stamped with the time of the last one, so that
  /// without it a change just after the beginning would look like one before it.
  ChangeGuard() {
    ::clock_gettime(CLOCK_REALTIME, &start_);
    timespec tick{};
    // Bounded, in case the clock is set back meanwhile.
    for (int i = 0; i < 40; ++i) {
      if (::clock_gettime(CLOCK_REALTIME_COARSE, &tick) != 0 || IsLater(tick.tv_sec, tick.tv_nsec)) {
        break;
      }
      const timespec pause{0, 500000};
      ::nanosleep(&pause, nullptr);
    }
  }

  [[nodiscard]] bool IsChanged(const struct statx& item) const {
    return IsLater(item.stx_mtime.tv_sec, item.stx_mtime.tv_nsec) ||
           (IsLater(item.stx_ctime.tv_sec, item.stx_ctime.tv_nsec) && unlinked_.count(KeyOf(item)) == 0);
  }

  /// To be called for what is deleted: it changes the state of the other names of the same file.
  void NoteDeleted(const struct statx& item) {
    if (item.stx_nlink > 1) {
      unlinked_.insert(KeyOf(item));
    }
  }

 private:
  using Key = std::pair<quint64, quint64>;

  [[nodiscard]] static Key KeyOf(const struct statx& item) { return {DeviceOf(item), item.stx_ino}; }
  [[nodiscard]] bool IsLater(qint64 seconds, qint64 nanoseconds) const {
    return seconds > start_.tv_sec || (seconds == start_.tv_sec && nanoseconds > start_.tv_nsec);
  }

  timespec start_{};
  std::set<Key> unlinked_;
};

}  // namespace trevane::local

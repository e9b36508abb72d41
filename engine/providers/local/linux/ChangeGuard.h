#pragma once

#include "engine/providers/local/linux/FileStatus.h"

#include <map>
#include <set>
#include <utility>

#include <time.h>

namespace trevane::local {

/// Tells what another program changed in a source since a move of it began: that was perhaps not copied. It
/// goes by the clock of this machine, which local file systems stamp their files with; what bears a time that
/// is still to come must bear the same when it is looked at again.
class ChangeGuard {
 public:
  /// Waits for the next tick (some milliseconds): changes are stamped with the time of the last one, so that
  /// without it a change just after the beginning would look like one before it.
  ChangeGuard() {
    ::clock_gettime(CLOCK_REALTIME, &start_);
    timespec pause{};
    if (::clock_getres(CLOCK_REALTIME_COARSE, &pause) != 0) {
      return;
    }
    timespec tick{};
    // Once is enough, but on a busy machine the tick may come late. Bounded, in case the clock is set back.
    for (int i = 0; i < 100; ++i) {
      if (::clock_gettime(CLOCK_REALTIME_COARSE, &tick) != 0 || IsLater(tick.tv_sec, tick.tv_nsec)) {
        break;
      }
      ::nanosleep(&pause, nullptr);
    }
  }

  [[nodiscard]] bool IsChanged(const struct statx& item) const {
    const bool modifiedLater = IsLater(item.stx_mtime.tv_sec, item.stx_mtime.tv_nsec);
    const bool changedLater = IsLater(item.stx_ctime.tv_sec, item.stx_ctime.tv_nsec);
    if (!modifiedLater && !changedLater) {
      return false;
    }
    const auto noted = ahead_.find(KeyOf(item));
    const bool sameContent = noted != ahead_.end() && IsSameTime(noted->second.modified, item.stx_mtime) &&
                             noted->second.size == item.stx_size;
    const bool sameState = (noted != ahead_.end() && IsSameTime(noted->second.changed, item.stx_ctime)) ||
                           unlinked_.count(KeyOf(item)) != 0;
    return (modifiedLater && !sameContent) || (changedLater && !sameState);
  }

  /// To be called with what a source was before it is copied. Only those that bear a time that is still to
  /// come are remembered: a change from here on cannot bear it.
  void NoteCopied(const struct statx& item) {
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    if (IsAfter(item.stx_mtime, now) || IsAfter(item.stx_ctime, now)) {
      ahead_.insert_or_assign(KeyOf(item), Stamp{item.stx_mtime, item.stx_ctime, item.stx_size});
    }
  }

  /// To be called for what is deleted: it changes the state of the other names of the same file.
  void NoteDeleted(const struct statx& item) {
    if (item.stx_nlink > 1) {
      unlinked_.insert(KeyOf(item));
    }
  }

 private:
  using Key = std::pair<quint64, quint64>;
  struct Stamp {
    struct statx_timestamp modified;
    struct statx_timestamp changed;
    quint64 size;
  };

  [[nodiscard]] static Key KeyOf(const struct statx& item) { return {DeviceOf(item), item.stx_ino}; }
  [[nodiscard]] static bool IsSameTime(const struct statx_timestamp& a, const struct statx_timestamp& b) {
    return a.tv_sec == b.tv_sec && a.tv_nsec == b.tv_nsec;
  }
  [[nodiscard]] static bool IsAfter(const struct statx_timestamp& time, const timespec& now) {
    return time.tv_sec > now.tv_sec || (time.tv_sec == now.tv_sec && time.tv_nsec > now.tv_nsec);
  }
  [[nodiscard]] bool IsLater(qint64 seconds, qint64 nanoseconds) const {
    return seconds > start_.tv_sec || (seconds == start_.tv_sec && nanoseconds > start_.tv_nsec);
  }

  timespec start_{};
  std::set<Key> unlinked_;
  std::map<Key, Stamp> ahead_;
};

}  // namespace trevane::local

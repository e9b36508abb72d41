#pragma once

#include "engine/model/FileEntry.h"

#include <QString>

#include <optional>

namespace trevane {

/// Two paths with equal identities are one item.
struct FileIdentity {
  quint64 volume = 0;
  quint64 file = 0;
  /// Where a file system has no numbers: the server's key and the canonical path there.
  QString text = {};
  friend bool operator==(const FileIdentity&, const FileIdentity&) = default;
  friend bool operator<(const FileIdentity& left, const FileIdentity& right) {
    if (left.volume != right.volume) {
      return left.volume < right.volume;
    }
    return left.file != right.file ? left.file < right.file : left.text < right.text;
  }
};

/// Whether two dates can be the same one. Where they differ by less than `dateStep`, in milliseconds, nothing
/// is known: they can.
[[nodiscard]] inline bool IsSameDate(Date left, Date right, qint64 dateStep) noexcept {
  if (left == right) {
    return true;
  }
  const bool known = left.IsPresent() && right.IsPresent();
  return known && (left.msecs < right.msecs ? right.msecs - left.msecs : left.msecs - right.msecs) < dateStep;
}

/// An item as it was at one moment.
struct SeenItem {
  FileEntry entry;
  /// Nothing when the file system has none.
  std::optional<FileIdentity> identity;
  /// Changes with every change of the item; nothing when the file system has none.
  std::optional<qint64> stateStamp = std::nullopt;
  /// A folder at which a drive is mounted.
  bool isMountPoint = false;

  /// Whether `now` is the same item of the same kind, with the same size and date if it is a file. Dates that
  /// differ by less than `dateStep` are the same.
  [[nodiscard]] bool IsStill(const SeenItem& now, qint64 dateStep = 0) const;
};

}  // namespace trevane

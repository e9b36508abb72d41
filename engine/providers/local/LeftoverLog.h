#pragma once

#include "engine/files/FileSystem.h"
#include "engine/model/Leftover.h"

#include <QSet>

#include <chrono>
#include <map>
#include <utility>
#include <vector>

namespace trevane {

/// Remembers which folders were searched for leftovers and what was found there.
class LeftoverLog {
 public:
  /// A leftover is removed only when it has not been touched for that many hours.
  static constexpr std::chrono::hours kOldEnough{24};

  /// Returns true once an hour for each folder.
  [[nodiscard]] bool IsDue(const FileIdentity& folder) {
    const auto now = std::chrono::steady_clock::now();
    const auto [known, isNew] = searched_.try_emplace({folder.volume, folder.file}, now);
    if (!isNew && now - known->second < std::chrono::hours(1)) {
      return false;
    }
    known->second = now;
    return true;
  }

  /// Each path is reported once, and once more when it has been removed.
  void Add(const QString& path, bool removed) {
    const qsizetype before = reported_.size();
    reported_.insert(path);
    if (removed) {
      reported_.remove(path);
    }
    if (removed || reported_.size() != before) {
      found_.push_back({path, removed});
    }
  }

  [[nodiscard]] std::vector<Leftover> Take() { return std::exchange(found_, {}); }

 private:
  std::map<std::pair<quint64, quint64>, std::chrono::steady_clock::time_point> searched_;
  QSet<QString> reported_;
  std::vector<Leftover> found_;
};

}  // namespace trevane

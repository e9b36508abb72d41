#pragma once

#include "engine/files/FileSystem.h"
#include "engine/model/Leftover.h"

#include <QSet>

#include <chrono>
#include <map>
#include <utility>
#include <vector>

namespace trevane {

/// Which folders were searched for leftovers and what was found there, for a file system that searches each
/// folder that it writes to.
class LeftoverLog {
 public:
  /// Not before that many hours have passed since it was built or touched is something taken away.
  static constexpr std::chrono::hours kOldEnough{24};

  /// True once an hour for each folder.
  [[nodiscard]] bool IsDue(const FileIdentity& folder) {
    const auto now = std::chrono::steady_clock::now();
    const auto [known, isNew] = searched_.try_emplace({folder.volume, folder.file}, now);
    if (!isNew && now - known->second < std::chrono::hours(1)) {
      return false;
    }
    known->second = now;
    return true;
  }

  /// Each path is told once, and once more when it has been taken away.
  void Add(const QString& path, bool removed) {
    const qsizetype before = told_.size();
    told_.insert(path);
    if (removed) {
      told_.remove(path);
    }
    if (removed || told_.size() != before) {
      found_.push_back({path, removed});
    }
  }

  [[nodiscard]] std::vector<Leftover> Take() { return std::exchange(found_, {}); }

 private:
  std::map<std::pair<quint64, quint64>, std::chrono::steady_clock::time_point> searched_;
  QSet<QString> told_;
  std::vector<Leftover> found_;
};

}  // namespace trevane

#pragma once

#include <QString>

#include <mutex>
#include <utility>
#include <vector>

namespace trevane::ftp {

/// The temporary items of one controller that could not be removed when they were given up, by their paths.
/// It outlives the connections: the next one removes them. Any thread's.
class AbandonedItems final {
 public:
  void Add(const QString& path) {
    const std::lock_guard lock(mutex_);
    paths_.push_back(path);
  }
  /// All of them; none are left.
  [[nodiscard]] std::vector<QString> Take() {
    const std::lock_guard lock(mutex_);
    return std::exchange(paths_, {});
  }
  [[nodiscard]] bool IsEmpty() const {
    const std::lock_guard lock(mutex_);
    return paths_.empty();
  }

 private:
  mutable std::mutex mutex_;
  std::vector<QString> paths_;
};

}  // namespace trevane::ftp

#pragma once

#include <QString>

#include <memory>

namespace trevane {

/// A lock between programs, also between copies of this one. The system gives it up when the process ends,
/// however that ends. Held twice by one process, too, it is held once.
class HeldLock final {
 public:
  /// Makes the lock file for this user alone, where there is none, in a folder that exists. Null when
  /// somebody holds the lock, or when it cannot be made.
  [[nodiscard]] static std::unique_ptr<HeldLock> Take(const QString& path);
  /// Lets go; the file stays.
  ~HeldLock();
  HeldLock(const HeldLock&) = delete;
  HeldLock& operator=(const HeldLock&) = delete;

  /// The file goes with the lock when this is destroyed.
  void RemoveAtEnd() noexcept { removes_ = true; }

 private:
  HeldLock(const QString& path, qintptr handle) : path_(path), handle_(handle) {}

  QString path_;
  qintptr handle_;
  bool removes_ = false;
};

}  // namespace trevane

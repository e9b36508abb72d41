#pragma once

#include <QString>

namespace trevane {

/// Tells whether this is the only running instance of one installed copy of the program, for this user. The
/// system gives the claim up when the process ends, however it ends.
class SingleInstance final {
 public:
  /// `programFolder` names the copy; folders that are the same place are the same copy. `lockFolder` is where
  /// the lock is kept: by default a folder of the user's own that nobody else can write.
  explicit SingleInstance(const QString& programFolder, const QString& lockFolder = {});
  ~SingleInstance();
  SingleInstance(const SingleInstance&) = delete;
  SingleInstance& operator=(const SingleInstance&) = delete;

  /// False only when another instance holds the claim: a lock that cannot be made keeps nobody from starting.
  [[nodiscard]] bool IsFirst() const { return isFirst_; }

 private:
  bool isFirst_ = true;
  /// The descriptor that holds the claim; -1 when there is none.
  qintptr handle_ = -1;
};

}  // namespace trevane

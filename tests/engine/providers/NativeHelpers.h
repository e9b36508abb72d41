#pragma once

#include "engine/providers/LocalFileSystem.h"
#include "tests/support/FakeVolumes.h"

#include <QByteArray>
#include <QString>
#include <QTemporaryDir>

#include <functional>
#include <vector>

namespace trevane::test {

/// A temporary folder that is drive C: of a local file system, for what only the operating system can do.
class LocalWorld {
 public:
  /// `parent` empty is the system's folder for temporary files.
  explicit LocalWorld(const QString& parent = {});
  ~LocalWorld();
  LocalWorld(const LocalWorld&) = delete;
  LocalWorld& operator=(const LocalWorld&) = delete;

  LocalFileSystem& Files() { return files_; }
  FakeVolumes& Drives() { return volumes_; }
  [[nodiscard]] QString Root() const { return folder_.path() + u'/'; }
  /// The system's path for one below C:, in bytes.
  [[nodiscard]] QByteArray Native(const char* below) const;

 private:
  QTemporaryDir folder_;
  FakeVolumes volumes_;
  LocalFileSystem files_;
};

/// How a child process that ran `work` ended.
enum class ChildEnd { Finished, Failed, Killed, CannotTrace };

/// Runs `work` in a child process that is killed at its `call`th stop at a system call (entry and return both
/// count, from 1). Finished when it came to its end before.
[[nodiscard]] ChildEnd RunKilledAt(int call, const std::function<void()>& work);

/// Runs `work` in a child process and `interrupt` here while the child stands at its `call`th stop.
[[nodiscard]] ChildEnd RunInterruptedAt(int call, const std::function<void()>& work,
                                        const std::function<void()>& interrupt);

/// How many system calls `work` makes, seen from outside; -1 when it cannot be traced.
[[nodiscard]] int CountSystemCalls(const std::function<void()>& work);

/// The numbers of the system calls that `work` makes, in order; empty when it cannot be traced.
[[nodiscard]] std::vector<long> SystemCallsOf(const std::function<void()>& work);

/// Runs `work` in a child process of a user without rights; answers the error number it failed with, 0 when
/// it did not. Only the super-user can ask for this.
[[nodiscard]] qint32 ErrorAsNobody(const std::function<void()>& work);

}  // namespace trevane::test

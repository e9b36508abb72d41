#pragma once

#include <QByteArray>

#include <functional>

namespace trevane::test {

/// System calls that this test program defines itself, so that a test can interrupt them or act right before
/// them.
struct InterruptedCalls {
  /// Every second openat, statx, fsync and syncfs fails with EINTR.
  bool interrupt = false;
  int interruptions = 0;
  /// By how much statx reports the times of an item too early.
  std::function<qint64(const QByteArray& name)> secondsAgo;
  /// Before content is read (copy_file_range, pread), and written (write) to the open file.
  std::function<void()> beforeReading;
  std::function<void(int fd)> beforeWriting;
  /// The errno that fchmod fails with; 0 when it succeeds.
  int modeRefusal = 0;
};

[[nodiscard]] InterruptedCalls& Calls();

/// Resets all of it.
class CallsReset {
 public:
  CallsReset() = default;
  ~CallsReset() { Calls() = {}; }
  CallsReset(const CallsReset&) = delete;
  CallsReset& operator=(const CallsReset&) = delete;
};

}  // namespace trevane::test

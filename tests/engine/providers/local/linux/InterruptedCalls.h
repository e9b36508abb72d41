#pragma once

#include <QByteArray>

#include <functional>

namespace trevane::test {

/// The calls of the system that this test program makes itself instead of leaving them to the library, so
/// that a test can have them interrupted or can act right before them.
struct InterruptedCalls {
  /// Every second openat, statx, fsync and syncfs fails with EINTR.
  bool interrupt = false;
  int interruptions = 0;
  /// How far in the past the times lie that statx answers for an item, beside those it has.
  std::function<qint64(const QByteArray& name)> secondsAgo;
  /// Before content is read (copy_file_range, pread), and written (write) to the open file.
  std::function<void()> beforeReading;
  std::function<void(int fd)> beforeWriting;
  /// The errno that fchmod fails with; 0: it does its work.
  int modeRefusal = 0;
};

[[nodiscard]] InterruptedCalls& Calls();

/// Leaves nothing of it behind.
class CallsReset {
 public:
  CallsReset() = default;
  ~CallsReset() { Calls() = {}; }
  CallsReset(const CallsReset&) = delete;
  CallsReset& operator=(const CallsReset&) = delete;
};

}  // namespace trevane::test

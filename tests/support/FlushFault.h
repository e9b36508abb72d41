#pragma once

#include <functional>

namespace trevane::test {

/// How often this process has flushed a file to the disk. Counted wherever FlushFault.cpp is linked in; on
/// Linux only.
[[nodiscard]] int FlushCount();

/// While it lives every flush, or only the first `times`, fails with this error number, as it does where a
/// disk turns out to be full only then.
class FailingFlush {
 public:
  static constexpr int kEach = -1;

  explicit FailingFlush(int code, int times = kEach);
  ~FailingFlush();
  FailingFlush(const FailingFlush&) = delete;
  FailingFlush& operator=(const FailingFlush&) = delete;
};

/// While it lives `look` sees, before each flush, the file that is to be flushed.
class WatchedFlush {
 public:
  explicit WatchedFlush(std::function<void(int file)> look);
  ~WatchedFlush();
  WatchedFlush(const WatchedFlush&) = delete;
  WatchedFlush& operator=(const WatchedFlush&) = delete;
};

}  // namespace trevane::test

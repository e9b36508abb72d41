#include "tests/support/FlushFault.h"

#include <atomic>
#include <cerrno>
#include <utility>

#include <sys/syscall.h>
#include <unistd.h>

namespace trevane::test {
namespace {

std::atomic<int> flushes{0};
std::atomic<int> failure{0};
/// How many are to fail yet; below zero is all.
std::atomic<int> failing{0};
std::function<void(int)> watcher;

int Flush(long call, int fd) {
  ++flushes;
  if (watcher) {
    watcher(fd);
  }
  if (failing != 0) {
    failing -= failing > 0 ? 1 : 0;
    errno = failure;
    return -1;
  }
  return static_cast<int>(::syscall(call, fd));
}

}  // namespace

int FlushCount() {
  return flushes;
}

FailingFlush::FailingFlush(int code, int times) {
  failure = code;
  failing = times;
}

FailingFlush::~FailingFlush() {
  failing = 0;
}

WatchedFlush::WatchedFlush(std::function<void(int file)> look) {
  watcher = std::move(look);
}

WatchedFlush::~WatchedFlush() {
  watcher = nullptr;
}

}  // namespace trevane::test

// In place of the system library's own, for the program under test and for the libraries that it uses.
extern "C" int fsync(int fd) {
  return trevane::test::Flush(SYS_fsync, fd);
}

extern "C" int fdatasync(int fd) {
  return trevane::test::Flush(SYS_fdatasync, fd);
}

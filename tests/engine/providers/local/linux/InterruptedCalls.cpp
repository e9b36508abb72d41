#include "tests/engine/providers/local/linux/InterruptedCalls.h"

#include <cerrno>
#include <cstdarg>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace trevane::test {
namespace {

bool IsInterrupted() {
  static int count = 0;
  InterruptedCalls& calls = Calls();
  if (!calls.interrupt || ++count % 2 == 0) {
    return false;
  }
  ++calls.interruptions;
  errno = EINTR;
  return true;
}

}  // namespace

InterruptedCalls& Calls() {
  static InterruptedCalls calls;
  return calls;
}

}  // namespace trevane::test

using trevane::test::Calls;
using trevane::test::IsInterrupted;

extern "C" {

int openat(int folder, const char* name, int flags, ...) {
  va_list rest;
  va_start(rest, flags);
  const mode_t mode = (flags & (O_CREAT | __O_TMPFILE)) != 0 ? va_arg(rest, mode_t) : 0;
  va_end(rest);
  return IsInterrupted() ? -1 : static_cast<int>(::syscall(SYS_openat, folder, name, flags, mode));
}

int statx(int folder, const char* name, int flags, unsigned mask, struct statx* status) noexcept {
  if (IsInterrupted()) {
    return -1;
  }
  const auto answer = static_cast<int>(::syscall(SYS_statx, folder, name, flags, mask, status));
  if (const auto& ago = Calls().secondsAgo; answer == 0 && ago) {
    const qint64 seconds = ago(name);
    status->stx_mtime.tv_sec -= seconds;
    status->stx_ctime.tv_sec -= seconds;
  }
  return answer;
}

int fchmod(int fd, mode_t mode) noexcept {
  if (const int code = Calls().modeRefusal; code != 0) {
    errno = code;
    return -1;
  }
  return static_cast<int>(::syscall(SYS_fchmod, fd, mode));
}

int fsync(int fd) {
  return IsInterrupted() ? -1 : static_cast<int>(::syscall(SYS_fsync, fd));
}

int syncfs(int fd) noexcept {
  return IsInterrupted() ? -1 : static_cast<int>(::syscall(SYS_syncfs, fd));
}

ssize_t copy_file_range(int in, off64_t* at, int out, off64_t* to, size_t length, unsigned flags) {
  if (const auto& hook = Calls().beforeReading) {
    hook();
  }
  return ::syscall(SYS_copy_file_range, in, at, out, to, length, flags);
}

ssize_t pread(int fd, void* buffer, size_t length, off_t at) {
  if (const auto& hook = Calls().beforeReading) {
    hook();
  }
  return ::syscall(SYS_pread64, fd, buffer, length, at);
}

ssize_t write(int fd, const void* buffer, size_t length) {
  if (const auto& hook = Calls().beforeWriting) {
    hook(fd);
  }
  return ::syscall(SYS_write, fd, buffer, length);
}
}

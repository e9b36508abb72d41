#pragma once

#include "platform/linux/FileDescriptor.h"

#include <QtGlobal>

#include <cerrno>

#include <fcntl.h>
#include <sys/types.h>
#include <unistd.h>

namespace trevane::local {

/// Repeats a system call while signals interrupt it, as network file systems allow also for calls that a disk
/// never interrupts. For calls that may be made twice.
template <typename Call>
auto Repeated(const Call& call) -> decltype(call()) {
  for (;;) {
    const auto answer = call();
    if (answer != -1 || errno != EINTR) {
      return answer;
    }
  }
}

/// Not open, with errno set, when it fails.
[[nodiscard]] inline FileDescriptor OpenAt(int folder, const char* name, int flags, mode_t mode = 0) {
  return FileDescriptor(Repeated([&] { return ::openat(folder, name, flags | O_CLOEXEC, mode); }));
}

/// For a file or a folder. 0, or -1 with errno set.
[[nodiscard]] inline int Flush(int fd) {
  return Repeated([fd] { return ::fsync(fd); });
}

/// For the whole file system of an open item. 0, or -1 with errno set.
[[nodiscard]] inline int FlushVolume(int fd) {
  return Repeated([fd] { return ::syncfs(fd); });
}

/// 0, or the error's number. Writes on from where the file is.
[[nodiscard]] inline int WriteAll(int fd, const char* data, qint64 size) {
  while (size > 0) {
    const ssize_t put = Repeated([&] { return ::write(fd, data, static_cast<size_t>(size)); });
    if (put <= 0) {
      return put < 0 ? errno : EIO;
    }
    data += put;
    size -= put;
  }
  return 0;
}

}  // namespace trevane::local

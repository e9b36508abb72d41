#pragma once

#include "engine/providers/local/linux/FileDescriptor.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/types.h>
#include <unistd.h>

namespace trevane::local {

/// Makes a call of the system again as long as signals interrupt it: file systems behind a network or a
/// daemon let that happen also where a disk never does. For calls that may be made twice.
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

/// 0, or -1 with errno set. Of a file or a folder.
[[nodiscard]] inline int Flush(int fd) {
  return Repeated([fd] { return ::fsync(fd); });
}

/// 0, or -1 with errno set. The whole file system that holds what is open.
[[nodiscard]] inline int FlushVolume(int fd) {
  return Repeated([fd] { return ::syncfs(fd); });
}

}  // namespace trevane::local

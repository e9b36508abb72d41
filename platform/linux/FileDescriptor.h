#pragma once

#include <utility>

#include <unistd.h>

namespace trevane::local {

/// Owns an open file of the operating system.
class FileDescriptor {
 public:
  FileDescriptor() = default;
  explicit FileDescriptor(int fd) noexcept : fd_(fd) {}
  FileDescriptor(FileDescriptor&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
  FileDescriptor& operator=(FileDescriptor&& other) noexcept {
    if (this != &other) {
      Close();
      fd_ = std::exchange(other.fd_, -1);
    }
    return *this;
  }
  ~FileDescriptor() { Close(); }

  [[nodiscard]] int Get() const noexcept { return fd_; }
  [[nodiscard]] bool IsOpen() const noexcept { return fd_ >= 0; }
  /// Leaves the file open and gives it away.
  [[nodiscard]] int Release() noexcept { return std::exchange(fd_, -1); }
  /// The result of close(): some file systems report only then that content could not be stored.
  int Close() noexcept { return fd_ >= 0 ? ::close(std::exchange(fd_, -1)) : 0; }

 private:
  int fd_ = -1;
};

}  // namespace trevane::local

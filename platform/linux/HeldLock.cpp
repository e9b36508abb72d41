#include "platform/HeldLock.h"

#include "base/NameCodec.h"

#include <QByteArray>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace trevane {

std::unique_ptr<HeldLock> HeldLock::Take(const QString& path) {
  const QByteArray name = EncodeText(path);
  // Again when its holder removed the file between opening and locking.
  constexpr int kAttempts = 10;
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    const int fd =
        ::open(name.constData(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, S_IRUSR | S_IWUSR);
    if (fd < 0) {
      return nullptr;
    }
    struct stat own {};
    struct stat named {};
    if (::fstat(fd, &own) != 0 || !S_ISREG(own.st_mode) || ::flock(fd, LOCK_EX | LOCK_NB) != 0) {
      ::close(fd);
      return nullptr;
    }
    if (::lstat(name.constData(), &named) == 0 && named.st_ino == own.st_ino && named.st_dev == own.st_dev) {
      return std::unique_ptr<HeldLock>(new HeldLock(path, fd));
    }
    ::close(fd);
  }
  return nullptr;
}

HeldLock::~HeldLock() {
  if (removes_) {
    // Before it lets go: nobody else can hold it then.
    ::unlink(EncodeText(path_).constData());
  }
  ::close(static_cast<int>(handle_));
}

}  // namespace trevane

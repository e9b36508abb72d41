#include "platform/SingleInstance.h"

#include "base/NameCodec.h"

#include <QByteArrayList>
#include <QCryptographicHash>

#include <cerrno>
#include <cstdlib>
#include <memory>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace trevane {
namespace {

constexpr mode_t kOthers = S_IRWXG | S_IRWXO;

// Opens a folder that belongs to this user and that nobody else can enter; -1 when it is anything else.
int OpenOwnFolder(const QByteArray& path) {
  if (!path.startsWith('/')) {
    return -1;
  }
  const int fd = ::open(path.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
  if (fd < 0) {
    return -1;
  }
  struct stat status {};
  if (::fstat(fd, &status) == 0 && status.st_uid == ::geteuid() && (status.st_mode & kOthers) == 0) {
    return fd;
  }
  ::close(fd);
  return -1;
}

int OpenLockFolder() {
  const QByteArray user = QByteArray::number(::geteuid());
  // The run-time folder is tried by its usual name, too, so that a session without the variable finds the
  // same lock.
  for (const QByteArray& path : {qgetenv("XDG_RUNTIME_DIR"), "/run/user/" + user}) {
    const int fd = OpenOwnFolder(path);
    if (fd >= 0) {
      return fd;
    }
  }
  QByteArray temporary = qgetenv("TMPDIR");
  if (!temporary.startsWith('/')) {
    temporary = "/tmp";
  }
  const QByteArray path = temporary + "/trevane-" + user;
  ::mkdir(path.constData(), S_IRWXU);
  return OpenOwnFolder(path);
}

QByteArray LockName(const QString& programFolder) {
  const QByteArray given = EncodeText(programFolder);
  const std::unique_ptr<char, decltype(&std::free)> real(::realpath(given.constData(), nullptr), &std::free);
  const QByteArray folder = real == nullptr ? given : QByteArray(real.get());
  return "trevane-" + QCryptographicHash::hash(folder, QCryptographicHash::Sha256).toHex().first(32) +
         ".lock";
}

}  // namespace

SingleInstance::SingleInstance(const QString& programFolder, const QString& lockFolder) {
  const int folder = lockFolder.isEmpty()
                         ? OpenLockFolder()
                         : ::open(EncodeText(lockFolder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (folder < 0) {
    return;
  }
  const QByteArray name = LockName(programFolder);
  // Again when somebody cleaned the folder up between opening and locking.
  for (int attempt = 0; attempt < 10 && handle_ < 0 && isFirst_; ++attempt) {
    const int fd = ::openat(folder, name.constData(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK,
                            S_IRUSR | S_IWUSR);
    if (fd < 0) {
      break;
    }
    struct stat own {};
    struct stat named {};
    if (::fstat(fd, &own) != 0 || !S_ISREG(own.st_mode) || own.st_uid != ::geteuid()) {
      ::close(fd);
      break;
    }
    if (::flock(fd, LOCK_EX | LOCK_NB) != 0) {
      isFirst_ = errno != EWOULDBLOCK;
      ::close(fd);
      break;
    }
    if (::fstatat(folder, name.constData(), &named, AT_SYMLINK_NOFOLLOW) == 0 && named.st_ino == own.st_ino &&
        named.st_dev == own.st_dev) {
      handle_ = fd;
    } else {
      ::close(fd);
    }
  }
  ::close(folder);
}

SingleInstance::~SingleInstance() {
  if (handle_ >= 0) {
    // The file stays: were it removed, an instance that is just opening it would lock what nobody sees.
    ::close(static_cast<int>(handle_));
  }
}

}  // namespace trevane

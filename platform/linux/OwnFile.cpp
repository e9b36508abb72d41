#include "platform/OwnFile.h"

#include "base/NameCodec.h"

#include <QRandomGenerator>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace trevane::ownfile {
namespace {

constexpr int kMostLinks = 40;
const QString kNoPlainFile = QStringLiteral("It is no plain file");
const QString kTooLarge = QStringLiteral("It is larger than 16 MB");
constexpr mode_t kAnyWrite = S_IWUSR | S_IWGRP | S_IWOTH;
constexpr mode_t kPrivate = S_IRUSR | S_IWUSR;
constexpr mode_t kForAll = 0666;
constexpr mode_t kGroup = 0070;
constexpr mode_t kPermissions = 0777;

class Descriptor {
 public:
  explicit Descriptor(int fd) : fd_(fd) {}
  ~Descriptor() { Close(); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  [[nodiscard]] int Get() const { return fd_; }
  [[nodiscard]] bool IsOpen() const { return fd_ >= 0; }
  [[nodiscard]] int Release() { return std::exchange(fd_, -1); }
  bool Close() {
    const int fd = Release();
    return fd < 0 || ::close(fd) == 0;
  }

 private:
  int fd_;
};

// Repeats a call of the system that a signal has interrupted.
template <typename Call>
auto Uninterrupted(Call call) {
  auto result = call();
  while (result < 0 && errno == EINTR) {
    result = call();
  }
  return result;
}

// Empty where no file can have that path.
QByteArray SystemPath(const QString& path) {
  QByteArray bytes = EncodeText(path);
  return bytes.contains('\0') ? QByteArray() : bytes;
}

QByteArray FolderOf(const QByteArray& path) {
  const auto slash = path.lastIndexOf('/');
  if (slash < 0) {
    return QByteArrayLiteral(".");
  }
  return slash == 0 ? QByteArrayLiteral("/") : path.left(slash);
}

// The path that the links at the end of `path` lead to, which need not exist; empty when they lead nowhere.
QByteArray FollowLinks(QByteArray path) {
  for (int i = 0; i < kMostLinks; ++i) {
    std::array<char, PATH_MAX> target{};
    const ssize_t length = ::readlink(path.constData(), target.data(), target.size());
    if (length < 0) {
      return path;
    }
    const QByteArray link(target.data(), length);
    path = link.startsWith('/') ? link : FolderOf(path) + '/' + link;
  }
  return {};
}

bool WriteAll(int fd, const QByteArray& bytes, qint64 offset = 0) {
  qsizetype done = 0;
  while (done < bytes.size()) {
    const ssize_t written = Uninterrupted([&] {
      return ::pwrite(fd, bytes.constData() + done, size_t(bytes.size() - done), off_t(offset + done));
    });
    if (written < 0) {
      return false;
    }
    done += written;
  }
  return true;
}

// Asked before a file is opened: that alone wakes who waits at the other end of a pipe.
bool IsPlainFile(const QByteArray& path) {
  struct stat status {};
  errno = 0;
  return ::stat(path.constData(), &status) == 0 && S_ISREG(status.st_mode);
}

// All that an open plain file holds.
Content ReadAll(int fd) {
  Content content;
  struct stat status {};
  if (::fstat(fd, &status) != 0) {
    content.reason = qt_error_string(errno);
    return content;
  }
  if (!S_ISREG(status.st_mode)) {
    content.reason = kNoPlainFile;
    return content;
  }
  // One more than it has, so that the end of the file is seen without growing.
  QByteArray bytes(std::min(qint64{status.st_size}, kLargestFile) + 1, Qt::Uninitialized);
  qsizetype size = 0;
  while (true) {
    const ssize_t got = Uninterrupted(
        [&] { return ::pread(fd, bytes.data() + size, size_t(bytes.size() - size), off_t(size)); });
    if (got < 0) {
      content.reason = qt_error_string(errno);
      return content;
    }
    size += got;
    if (size > kLargestFile) {
      content.reason = kTooLarge;
      return content;
    }
    if (got == 0) {
      bytes.truncate(size);
      return {.state = State::Read, .bytes = std::move(bytes)};
    }
    if (size == bytes.size()) {
      bytes.resize(std::min(size * 2, kLargestFile + 1));
    }
  }
}

bool IsOpenFolder(const QByteArray& folder) {
  struct stat status {};
  return ::stat(folder.constData(), &status) == 0 && S_ISDIR(status.st_mode) &&
         (status.st_mode & kAnyWrite) != 0 &&
         ::faccessat(AT_FDCWD, folder.constData(), W_OK | X_OK, AT_EACCESS) == 0;
}

bool IsOpenFile(const QByteArray& path, const struct stat& status) {
  return S_ISREG(status.st_mode) && (status.st_mode & kAnyWrite) != 0 &&
         ::faccessat(AT_FDCWD, path.constData(), W_OK, AT_EACCESS) == 0;
}

// The system tells its mask for new files only to who sets another one, which every thread would see.
mode_t FileMask() {
  if (std::FILE* status = std::fopen("/proc/self/status", "re")) {
    std::array<char, 256> line{};
    unsigned mask = 0;
    bool found = false;
    while (!found && std::fgets(line.data(), int(line.size()), status) != nullptr) {
      found = std::sscanf(line.data(), "Umask: %o", &mask) == 1;
    }
    std::fclose(status);
    if (found) {
      return mask;
    }
  }
  const mode_t mask = ::umask(kPermissions & ~mode_t{0700});
  ::umask(mask);
  return mask;
}

// A new file in an open folder, under a name of its own and readable by this user alone, that takes the place
// of another one. It goes again when it does not.
class NewFile {
 public:
  explicit NewFile(const QByteArray& folder)
      : folder_(::open(folder.constData(), O_PATH | O_DIRECTORY | O_CLOEXEC)), file_(-1) {
    const quint32 first = QRandomGenerator::global()->generate();
    for (quint32 i = 0; i < 0xFFFF && folder_.IsOpen(); ++i) {
      name_ = "RLX" + QByteArray::number((first + i) % 0xFFFF + 1, 16).toUpper() + ".tmp";
      const int fd = Uninterrupted([this] {
        return ::openat(folder_.Get(), name_.constData(),
                        O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, kPrivate);
      });
      if (fd >= 0) {
        file_ = fd;
        return;
      }
      if (errno != EEXIST) {
        return;
      }
    }
  }
  ~NewFile() {
    if (file_ >= 0) {
      if (!placed_ && IsStillOurs()) {
        ::unlinkat(folder_.Get(), name_.constData(), 0);
      }
      ::close(file_);
    }
  }
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;

  [[nodiscard]] bool IsOpen() const { return file_ >= 0; }

  // Writes all of it to the disk, and only then lets others read it: as `old` where that is given.
  [[nodiscard]] bool Fill(const QByteArray& bytes, const struct stat* old, bool isPrivate) const {
    return WriteAll(file_, bytes) &&
           // A full disk or a broken network is often found only now. And the new content is on the disk
           // before it takes the name, so that after a crash the name holds the old or the new file, whole.
           // Which of them does not matter enough to wait for the folder, too.
           Uninterrupted([this] { return ::fsync(file_); }) == 0 && SetPermissions(old, isPrivate);
  }

  [[nodiscard]] bool PutInPlace(const QByteArray& target) {
    // In a folder that all share the name may have passed to another file.
    errno = 0;
    placed_ =
        IsStillOurs() && ::renameat(folder_.Get(), name_.constData(), AT_FDCWD, target.constData()) == 0;
    return placed_;
  }

 private:
  [[nodiscard]] bool IsStillOurs() const {
    struct stat named {};
    struct stat open {};
    return ::fstatat(folder_.Get(), name_.constData(), &named, AT_SYMLINK_NOFOLLOW) == 0 &&
           ::fstat(file_, &open) == 0 && named.st_dev == open.st_dev && named.st_ino == open.st_ino;
  }

  [[nodiscard]] bool SetPermissions(const struct stat* old, bool isPrivate) const {
    mode_t mode = isPrivate ? kPrivate : kForAll & ~FileMask();
    if (old != nullptr) {
      mode = old->st_mode & kPermissions;
      struct stat made {};
      if (::fstat(file_, &made) != 0) {
        return false;
      }
      // Only the superuser can give a file away; anybody else keeps one that is his.
      if (made.st_uid != old->st_uid && ::fchown(file_, old->st_uid, gid_t(-1)) != 0 && errno != EPERM) {
        return false;
      }
      // The permissions of one group are not for another.
      if (made.st_gid != old->st_gid && ::fchown(file_, uid_t(-1), old->st_gid) != 0) {
        mode &= ~kGroup;
      }
    }
    return ::fchmod(file_, mode) == 0;
  }

  Descriptor folder_;
  QByteArray name_;
  int file_;
  bool placed_ = false;
};

// Makes sure that `size` bytes have room, without changing what the file holds.
bool Reserve(int fd, qint64 oldSize, qint64 size) {
  if (Uninterrupted([&] { return ::fallocate(fd, FALLOC_FL_KEEP_SIZE, 0, size); }) == 0) {
    return true;
  }
  if (errno != EOPNOTSUPP && errno != ENOSYS) {
    return false;
  }
  // A file system without that call shows it by taking as many bytes behind the old ones. They stay until the
  // file gets its new length.
  const QByteArray room(std::max<qint64>(size - oldSize, 0), '\0');
  if (WriteAll(fd, room, oldSize) && Uninterrupted([&] { return ::fsync(fd); }) == 0) {
    return true;
  }
  [[maybe_unused]] const int ignored = Uninterrupted([&] { return ::ftruncate(fd, off_t(oldSize)); });
  return false;
}

Outcome LastFailure() {
  return {.done = false, .reason = qt_error_string(errno)};
}

Outcome WriteInPlace(const QByteArray& target, const QByteArray& bytes) {
  const Descriptor file(::open(target.constData(), O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY));
  if (!file.IsOpen()) {
    return LastFailure();
  }
  const Content old = ReadAll(file.Get());
  if (old.state != State::Read) {
    return {.done = false, .reason = old.reason};
  }
  const auto put = [&file](const QByteArray& content) {
    return WriteAll(file.Get(), content) &&
           Uninterrupted([&] { return ::ftruncate(file.Get(), off_t(content.size())); }) == 0 &&
           Uninterrupted([&] { return ::fsync(file.Get()); }) == 0;
  };
  if (!bytes.isEmpty() && !Reserve(file.Get(), old.bytes.size(), bytes.size())) {
    return LastFailure();
  }
  if (put(bytes)) {
    return {.done = true};
  }
  Outcome failure = LastFailure();
  if (!put(old.bytes)) {
    failure.reason += QStringLiteral("; the old content could not be put back");
  }
  return failure;
}

}  // namespace

Content Read(const QString& path) {
  const QByteArray bytes = SystemPath(path);
  if (bytes.isEmpty()) {
    return {.reason = qt_error_string(ENOENT)};
  }
  if (!IsPlainFile(bytes)) {
    if (errno == ENOENT) {
      return {.state = State::Missing};
    }
    return {.reason = errno == 0 ? kNoPlainFile : qt_error_string(errno)};
  }
  const Descriptor file(
      Uninterrupted([&] { return ::open(bytes.constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY); }));
  return file.IsOpen() ? ReadAll(file.Get()) : Content{.reason = qt_error_string(errno)};
}

bool Exists(const QString& path) {
  struct stat status {};
  const QByteArray bytes = SystemPath(path);
  return !bytes.isEmpty() && ::lstat(bytes.constData(), &status) == 0;
}

bool IsWritable(const QString& path, const ReplaceOptions& options) {
  const QByteArray target = FollowLinks(SystemPath(path));
  if (target.isEmpty()) {
    return false;
  }
  struct stat status {};
  if (::stat(target.constData(), &status) != 0) {
    return errno == ENOENT && IsOpenFolder(FolderOf(target));
  }
  return IsOpenFile(target, status) && (options.inPlaceInClosedFolder || IsOpenFolder(FolderOf(target)));
}

Outcome Replace(const QString& path, const QByteArray& bytes, const ReplaceOptions& options) {
  const QByteArray target = FollowLinks(SystemPath(path));
  struct stat old {};
  const bool existed = !target.isEmpty() && ::stat(target.constData(), &old) == 0;
  if (existed && !S_ISREG(old.st_mode)) {
    return {.done = false, .reason = kNoPlainFile};
  }
  const QByteArray folder = FolderOf(target);
  if (!IsWritable(path, options)) {
    const bool isThere = ::access(folder.constData(), F_OK) == 0;
    return {.done = false, .reason = qt_error_string(isThere ? EACCES : errno)};
  }
  if (!IsOpenFolder(folder)) {
    return WriteInPlace(target, bytes);
  }

  struct stat first {};
  struct stat own {};
  const QByteArray firstFolder = SystemPath(options.firstFolder);
  const bool isNear = !firstFolder.isEmpty() && ::stat(firstFolder.constData(), &first) == 0 &&
                      ::stat(folder.constData(), &own) == 0 && first.st_dev == own.st_dev;
  int failure = 0;
  const auto build = [&](const QByteArray& where) {
    NewFile file(where);
    const bool done = file.IsOpen() && file.Fill(bytes, existed ? &old : nullptr, options.isPrivate) &&
                      file.PutInPlace(target);
    failure = errno;
    return done;
  };
  if ((isNear && build(firstFolder)) || build(folder)) {
    return {.done = true};
  }
  // In a folder that all share, a file of another user does not give its name away.
  if (existed && options.inPlaceInClosedFolder && failure == EPERM) {
    return WriteInPlace(target, bytes);
  }
  return {.done = false, .reason = qt_error_string(failure)};
}

bool MoveOver(const QString& from, const QString& to) {
  const QByteArray source = SystemPath(from);
  const QByteArray target = SystemPath(to);
  return !source.isEmpty() && !target.isEmpty() && ::rename(source.constData(), target.constData()) == 0;
}

bool MakePrivateFolder(const QString& path) {
  const QByteArray folder = SystemPath(path);
  struct stat status {};
  if (folder.isEmpty()) {
    return false;
  }
  if (::stat(folder.constData(), &status) == 0) {
    return S_ISDIR(status.st_mode);
  }
  for (qsizetype slash = folder.indexOf('/', 1); slash > 0; slash = folder.indexOf('/', slash + 1)) {
    ::mkdir(folder.first(slash).constData(), S_IRWXU);
  }
  ::mkdir(folder.constData(), S_IRWXU);
  return ::stat(folder.constData(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool OpenForAppending(QFile& file, const QString& path) {
  const QByteArray bytes = SystemPath(path);
  if (!IsWritable(path, {.inPlaceInClosedFolder = true})) {
    return false;
  }
  Descriptor log(Uninterrupted([&] {
    return ::open(bytes.constData(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NONBLOCK | O_NOCTTY,
                  kPrivate);
  }));
  struct stat status {};
  if (!log.IsOpen() || ::fstat(log.Get(), &status) != 0 || !S_ISREG(status.st_mode) ||
      !file.open(log.Get(), QIODevice::WriteOnly | QIODevice::Append | QIODevice::Unbuffered,
                 QFileDevice::AutoCloseHandle)) {
    return false;
  }
  static_cast<void>(log.Release());
  return true;
}

}  // namespace trevane::ownfile

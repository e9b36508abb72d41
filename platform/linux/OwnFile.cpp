#include "platform/OwnFile.h"

#include "base/NameCodec.h"
#include "platform/OwnFileSteps.h"
#include "platform/linux/SystemCalls.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace trevane::ownfile {
namespace {

using local::FileDescriptor;
using local::Flush;
using local::OpenAt;
using local::Repeated;
using local::WriteAll;

constexpr int kMostLinks = 40;
constexpr mode_t kAnyWrite = S_IWUSR | S_IWGRP | S_IWOTH;
constexpr mode_t kPrivate = S_IRUSR | S_IWUSR;
constexpr mode_t kForAll = 0666;
constexpr mode_t kGroup = 0070;
constexpr mode_t kPermissions = 0777;

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

// False with errno set.
bool WriteAt(int fd, const QByteArray& bytes, qint64 offset) {
  if (::lseek(fd, offset, SEEK_SET) < 0) {
    return false;
  }
  const int code = WriteAll(fd, bytes.constData(), bytes.size());
  errno = code;
  return code == 0;
}

// Checked before opening: opening a pipe unblocks the process at its other end.
bool IsPlainFile(const QByteArray& path) {
  struct stat status {};
  errno = 0;
  return ::stat(path.constData(), &status) == 0 && S_ISREG(status.st_mode);
}

// All that an open plain file holds.
Content ReadAll(int fd) {
  struct stat status {};
  if (::fstat(fd, &status) != 0) {
    return {.reason = qt_error_string(errno)};
  }
  if (!S_ISREG(status.st_mode)) {
    return {.reason = steps::kNoPlainFile};
  }
  return steps::ReadWhole(
      status.st_size,
      [fd](char* to, qsizetype size, qsizetype offset) {
        return Repeated([&] { return ::pread(fd, to, static_cast<size_t>(size), off_t(offset)); });
      },
      [] { return qt_error_string(errno); });
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

// The mask for new files can only be read by setting another one, which every thread would see.
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
// of another one. The destructor deletes it if it was not put in place.
class NewFile {
 public:
  explicit NewFile(const QByteArray& folder)
      : folder_(::open(folder.constData(), O_PATH | O_DIRECTORY | O_CLOEXEC)) {
    if (!folder_.IsOpen()) {
      return;
    }
    steps::TryNewNames([this](const QString& name) {
      name_ = name.toLatin1();
      file_ = OpenAt(folder_.Get(), name_.constData(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, kPrivate);
      return file_.IsOpen() || errno != EEXIST;
    });
  }
  ~NewFile() {
    if (file_.IsOpen() && !placed_ && IsStillOurs()) {
      ::unlinkat(folder_.Get(), name_.constData(), 0);
    }
  }
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;

  [[nodiscard]] bool IsOpen() const { return file_.IsOpen(); }

  // Writes all of it to the disk, and only then lets others read it: as `old` where that is given.
  [[nodiscard]] bool Fill(const QByteArray& bytes, const struct stat* old, bool isPrivate) const {
    return WriteAt(file_.Get(), bytes, 0) &&
           // A full disk or a broken network is often found only now. And the new content is on the disk
           // before it takes the name, so that after a crash the name holds the old or the new file, whole.
           // Which of them does not matter enough to wait for the folder, too.
           Flush(file_.Get()) == 0 && SetPermissions(old, isPrivate);
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
           ::fstat(file_.Get(), &open) == 0 && named.st_dev == open.st_dev && named.st_ino == open.st_ino;
  }

  [[nodiscard]] bool SetPermissions(const struct stat* old, bool isPrivate) const {
    mode_t mode = isPrivate ? kPrivate : kForAll & ~FileMask();
    if (old != nullptr) {
      mode = old->st_mode & kPermissions;
      struct stat made {};
      if (::fstat(file_.Get(), &made) != 0) {
        return false;
      }
      // Only the superuser can give a file away; anybody else keeps one that is his.
      if (made.st_uid != old->st_uid && ::fchown(file_.Get(), old->st_uid, gid_t(-1)) != 0 &&
          errno != EPERM) {
        return false;
      }
      // The permissions of one group are not for another.
      if (made.st_gid != old->st_gid && ::fchown(file_.Get(), uid_t(-1), old->st_gid) != 0) {
        mode &= ~kGroup;
      }
    }
    return ::fchmod(file_.Get(), mode) == 0;
  }

  FileDescriptor folder_;
  QByteArray name_;
  FileDescriptor file_;
  bool placed_ = false;
};

// Makes sure that `size` bytes have room, without changing what the file holds.
bool ReserveSpace(int fd, qint64 oldSize, qint64 size) {
  if (Repeated([&] { return ::fallocate(fd, FALLOC_FL_KEEP_SIZE, 0, size); }) == 0) {
    return true;
  }
  if (errno != EOPNOTSUPP && errno != ENOSYS) {
    return false;
  }
  // A file system without that call shows it by taking as many bytes behind the old ones. They stay until the
  // file gets its new length.
  const QByteArray room(std::max<qint64>(size - oldSize, 0), '\0');
  if (WriteAt(fd, room, oldSize) && Flush(fd) == 0) {
    return true;
  }
  [[maybe_unused]] const int ignored = Repeated([&] { return ::ftruncate(fd, off_t(oldSize)); });
  return false;
}

// A file that is written where it is.
class FileInPlace {
 public:
  explicit FileInPlace(const QByteArray& path)
      : file_(::open(path.constData(), O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY)) {}

  [[nodiscard]] bool IsOpen() const { return file_.IsOpen(); }
  [[nodiscard]] Content Read() const { return ReadAll(file_.Get()); }
  [[nodiscard]] bool Reserve(qint64 oldSize, qint64 size) const {
    return size == 0 || ReserveSpace(file_.Get(), oldSize, size);
  }
  [[nodiscard]] bool Put(const QByteArray& content) const {
    const int fd = file_.Get();
    return WriteAt(fd, content, 0) && Repeated([&] { return ::ftruncate(fd, off_t(content.size())); }) == 0 &&
           Flush(fd) == 0;
  }
  [[nodiscard]] static QString Reason() { return qt_error_string(errno); }

 private:
  FileDescriptor file_;
};

Outcome WriteInPlace(const QByteArray& target, const QByteArray& bytes) {
  FileInPlace file(target);
  return steps::WriteInPlace(file, bytes);
}

}  // namespace

Content Read(const QString& path) {
  const QByteArray bytes = SystemPath(path);
  if (bytes.isEmpty()) {
    return {.reason = qt_error_string(ENOENT)};
  }
  if (!IsPlainFile(bytes)) {
    // Below a file there are none.
    if (errno == ENOENT || errno == ENOTDIR) {
      return {.state = State::Missing};
    }
    return {.reason = errno == 0 ? steps::kNoPlainFile : qt_error_string(errno)};
  }
  const FileDescriptor file(
      Repeated([&] { return ::open(bytes.constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY); }));
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
    return steps::Failure(steps::kNoPlainFile);
  }
  const QByteArray folder = FolderOf(target);
  if (!IsWritable(path, options)) {
    const bool isThere = ::access(folder.constData(), F_OK) == 0;
    return steps::Failure(qt_error_string(isThere ? EACCES : errno));
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
  // In a folder with the sticky bit, another user's file cannot be replaced.
  if (existed && options.inPlaceInClosedFolder && failure == EPERM) {
    return WriteInPlace(target, bytes);
  }
  return steps::Failure(qt_error_string(failure));
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

bool MakeNewPrivateFolder(const QString& path) {
  const QByteArray folder = SystemPath(path);
  return !folder.isEmpty() && ::mkdir(folder.constData(), S_IRWXU) == 0;
}

bool OpenForAppending(QFile& file, const QString& path) {
  const QByteArray bytes = SystemPath(path);
  if (!IsWritable(path, {.inPlaceInClosedFolder = true})) {
    return false;
  }
  FileDescriptor log(Repeated([&] {
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

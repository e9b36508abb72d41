#include "platform/linux/ProfileFile.h"

#include "platform/NameCodec.h"

#include <QRandomGenerator>

#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace trevane::privateprofile {
namespace {

// More is no settings file; reading it would only cost memory.
constexpr qint64 kLargestFile = 256LL * 1024 * 1024;
constexpr int kMostLinks = 40;
constexpr mode_t kAnyWrite = S_IWUSR | S_IWGRP | S_IWOTH;
constexpr char kUtf16Mark[] = "\xFF\xFE";

class Descriptor {
 public:
  explicit Descriptor(int fd) : fd_(fd) {}
  ~Descriptor() { Close(); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  [[nodiscard]] int Get() const { return fd_; }
  [[nodiscard]] bool IsOpen() const { return fd_ >= 0; }
  bool Close() {
    const int fd = fd_;
    fd_ = -1;
    return fd < 0 || ::close(fd) == 0;
  }

 private:
  int fd_;
};

QByteArray FolderOf(const QByteArray& path) {
  const auto slash = path.lastIndexOf('/');
  if (slash < 0) {
    return QByteArrayLiteral(".");
  }
  return slash == 0 ? QByteArrayLiteral("/") : path.left(slash);
}

// The path that the links at the end of `path` lead to, which need not exist.
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

// UTF-16 to UTF-8 where a lone surrogate keeps its three bytes, so that what was not changed goes back as it
// was.
QByteArray FromUtf16(const QByteArray& units) {
  QByteArray bytes;
  bytes.reserve(units.size());
  const auto unitAt = [&units](qsizetype i) {
    return static_cast<char16_t>(static_cast<unsigned char>(units[i]) |
                                 (static_cast<unsigned char>(units[i + 1]) << 8));
  };
  for (qsizetype i = 0; i + 1 < units.size(); i += 2) {
    const char16_t unit = unitAt(i);
    char32_t code = unit;
    if (QChar::isHighSurrogate(unit) && i + 3 < units.size() && QChar::isLowSurrogate(unitAt(i + 2))) {
      code = QChar::surrogateToUcs4(unit, unitAt(i + 2));
      i += 2;
    }
    if (code < 0x80) {
      bytes += static_cast<char>(code);
    } else if (code < 0x800) {
      bytes += static_cast<char>(0xC0 | (code >> 6));
      bytes += static_cast<char>(0x80 | (code & 0x3F));
    } else if (code < 0x10000) {
      bytes += static_cast<char>(0xE0 | (code >> 12));
      bytes += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
      bytes += static_cast<char>(0x80 | (code & 0x3F));
    } else {
      bytes += static_cast<char>(0xF0 | (code >> 18));
      bytes += static_cast<char>(0x80 | ((code >> 12) & 0x3F));
      bytes += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
      bytes += static_cast<char>(0x80 | (code & 0x3F));
    }
  }
  return bytes;
}

QByteArray ToUtf16(const QByteArray& bytes) {
  QByteArray units;
  units.reserve(bytes.size() * 2);
  const auto put = [&units](char16_t unit) {
    units += static_cast<char>(unit & 0xFF);
    units += static_cast<char>(unit >> 8);
  };
  const QString text = DecodeBytes(bytes);
  for (qsizetype i = 0; i < text.size(); ++i) {
    const char16_t unit = text[i].unicode();
    // Three escaped bytes in a row that spell a surrogate are one that stood alone in the file.
    const auto escaped = [&text](qsizetype at) {
      const char16_t value = at < text.size() ? text[at].unicode() : u'\0';
      return value >= 0xDC80 && value <= 0xDCFF ? value - 0xDC00 : 0;
    };
    if (unit == 0xDCED && escaped(i + 1) >= 0xA0 && escaped(i + 2) != 0) {
      put(static_cast<char16_t>(0xD000 | ((escaped(i + 1) & 0x3F) << 6) | (escaped(i + 2) & 0x3F)));
      i += 2;
    } else if (QChar::isLowSurrogate(unit) && (i == 0 || !QChar::isHighSurrogate(text[i - 1].unicode()))) {
      put(0xFFFD);
    } else {
      put(unit);
    }
  }
  return units;
}

bool WriteAll(int fd, const QByteArray& content) {
  qsizetype done = 0;
  while (done < content.size()) {
    const ssize_t written = ::write(fd, content.constData() + done, size_t(content.size() - done));
    if (written < 0) {
      if (errno == EINTR) {
        continue;
      }
      return false;
    }
    done += written;
  }
  return true;
}

}  // namespace

ProfileFile::ProfileFile(const QString& fileName) {
  const QByteArray bytes = EncodeText(fileName);
  if (bytes.isEmpty() || bytes.contains('\0')) {
    return;
  }
  path_ = FollowLinks(bytes);
  if (!path_.isEmpty()) {
    Read();
  }
}

void ProfileFile::Read() {
  Descriptor file(::open(path_.constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  if (!file.IsOpen()) {
    state_ = errno == ENOENT ? State::Missing : State::Unreadable;
    return;
  }
  struct stat status {};
  if (::fstat(file.Get(), &status) != 0 || !S_ISREG(status.st_mode) || status.st_size > kLargestFile) {
    return;
  }
  // One more than it has, so that the end of the file is seen without growing.
  QByteArray raw(qsizetype(status.st_size) + 1, Qt::Uninitialized);
  qsizetype size = 0;
  while (true) {
    if (size == raw.size()) {
      if (size > kLargestFile) {
        return;
      }
      raw.resize(size * 2);
    }
    const ssize_t got = ::read(file.Get(), raw.data() + size, size_t(raw.size() - size));
    if (got < 0) {
      if (errno == EINTR) {
        continue;
      }
      return;
    }
    if (got == 0) {
      break;
    }
    size += got;
  }
  raw.truncate(size);
  utf16_ = raw.startsWith(kUtf16Mark);
  if (utf16_) {
    oddByte_ = raw.size() % 2 == 0 ? QByteArray() : raw.right(1);
    content_ = FromUtf16(raw.mid(2));
  } else {
    content_ = raw;
  }
  state_ = State::Open;
}

bool ProfileFile::IsWritable() const {
  if (path_.isEmpty() || state_ == State::Unreadable) {
    return false;
  }
  struct stat status {};
  const QByteArray folder = FolderOf(path_);
  if (::stat(folder.constData(), &status) != 0 || (status.st_mode & kAnyWrite) == 0 ||
      ::faccessat(AT_FDCWD, folder.constData(), W_OK | X_OK, AT_EACCESS) != 0) {
    return false;
  }
  if (state_ == State::Missing) {
    return true;
  }
  return ::stat(path_.constData(), &status) == 0 && S_ISREG(status.st_mode) &&
         (status.st_mode & kAnyWrite) != 0 && ::faccessat(AT_FDCWD, path_.constData(), W_OK, AT_EACCESS) == 0;
}

bool ProfileFile::Replace(const QByteArray& content) const {
  const QByteArray folder = FolderOf(path_);
  struct stat old {};
  const bool existed = ::stat(path_.constData(), &old) == 0;
  if (path_.isEmpty() || (existed && !S_ISREG(old.st_mode))) {
    return false;
  }

  QByteArray temporary;
  int fd = -1;
  for (int attempt = 0; attempt < 100 && fd < 0; ++attempt) {
    temporary =
        folder + "/.profile-" + QByteArray::number(QRandomGenerator::global()->generate(), 16) + ".tmp";
    // A new file gets what the user's mask allows; before that of an old one is known to be set, nobody else
    // reads.
    fd = ::open(temporary.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW,
                existed ? 0600 : 0666);
    if (fd < 0 && errno != EEXIST) {
      return false;
    }
  }
  Descriptor file(fd);
  if (!file.IsOpen()) {
    return false;
  }
  bool done = true;
  if (existed) {
    if (old.st_uid != ::geteuid() || old.st_gid != ::getegid()) {
      // Only the superuser can give a file away; anybody else keeps a file that is at least his.
      [[maybe_unused]] const int ignored = ::fchown(file.Get(), old.st_uid, old.st_gid);
    }
    done = ::fchmod(file.Get(), old.st_mode & 07777) == 0;
  }
  done = done && WriteAll(file.Get(), utf16_ ? kUtf16Mark + ToUtf16(content) + oddByte_ : content);
  // The new content is on the disk before it takes the name, so that after a crash the name holds the old or
  // the new file, whole. Which of them does not matter enough to wait for the folder, too.
  done = done && ::fsync(file.Get()) == 0;
  done = file.Close() && done;
  done = done && ::rename(temporary.constData(), path_.constData()) == 0;
  if (!done) {
    ::unlink(temporary.constData());
    return false;
  }
  return true;
}

}  // namespace trevane::privateprofile

#include "engine/providers/local/linux/FileSink.h"

#include "engine/files/ProviderError.h"
#include "engine/files/TemporaryName.h"
#include "engine/providers/local/linux/ErrnoTable.h"
#include "engine/providers/local/linux/NativeName.h"
#include "engine/providers/local/linux/TreeCopier.h"
#include "platform/linux/SystemCalls.h"

#include <cerrno>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

namespace trevane::local {
namespace {

// For smaller files a call costs more than a disk that turns out to be full later.
constexpr qint64 kWorthReserving = 1024 * 1024;

}  // namespace

FileSink::FileSink(FilePlace place, const SinkRequest& request, Parts parts)
    : place_(std::move(place)), request_(request), parts_(std::move(parts)) {
  MakeTemporary();
  if (request_.expectedSize < kWorthReserving) {
    return;
  }
  if (Repeated([this] { return ::fallocate(file_.Get(), FALLOC_FL_KEEP_SIZE, 0, request_.expectedSize); }) ==
      0) {
    reserved_ = true;
  } else if (const int code = errno; code == ENOSPC || code == EDQUOT || code == EFBIG) {
    ::unlinkat(place_.folder, temporary_.constData(), 0);
    FailCode(code);
  }
}

FileSink::~FileSink() {
  file_.Close();
  if (!temporary_.isEmpty()) {
    ::unlinkat(place_.folder, temporary_.constData(), 0);
  }
}

void FileSink::FailCode(int code) const {
  FailErrno(code, parts_.text());
}

void FileSink::MakeTemporary() {
  // Closed until it is complete where it is going to have rights of its own.
  const bool isClosed = place_.exists || request_.traits.permissions;
  const QString free = MakeUnderTemporaryName([&](const QString& tried) {
    file_ = OpenAt(place_.folder, tried.toLatin1().constData(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW,
                   isClosed ? 0600 : 0666);
    if (!file_.IsOpen() && errno != EEXIST) {
      FailCode(errno);
    }
    return file_.IsOpen();
  });
  temporary_ = free.toLatin1();
}

std::optional<QString> FileSink::TemporaryName() const {
  return QString::fromLatin1(temporary_);
}

void FileSink::Write(const QByteArray& piece) {
  if (const int code = WriteAll(file_.Get(), piece.constData(), piece.size()); code != 0) {
    FailCode(code);
  }
  written_ += piece.size();
}

void FileSink::GiveTraits() {
  int code = 0;
  if (place_.exists) {
    const FileDescriptor old =
        OpenAt(place_.folder, place_.name.constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY);
    // Of a file that may be written but not read only the mode can be copied.
    code = CopyPermissions(old.Get(), file_.Get(), place_.status, parts_.user);
  } else if (request_.traits.permissions) {
    code = SetPermissions(file_.Get(), *request_.traits.permissions);
  }
  if (code == 0) {
    code = SetModified(file_.Get(), request_.traits.modified);
  }
  if (code != 0) {
    FailCode(code);
  }
}

SeenItem FileSink::Commit() {
  if (parts_.check) {
    parts_.check();
  }
  // Space that was reserved beyond the end stays with the file otherwise.
  if (reserved_ && written_ < request_.expectedSize &&
      Repeated([this] { return ::ftruncate(file_.Get(), written_); }) != 0) {
    FailCode(errno);
  }
  GiveTraits();
  // A rename may reach the disk before the content does, so a replacement is flushed first. For a new file
  // the caller calls Flush.
  if (place_.exists && Flush(file_.Get()) != 0) {
    FailCode(errno);
  }
  // Asked while nobody else knows its name.
  struct statx made {};
  if (const int code = StatusOf(file_.Get(), made); code != 0) {
    FailCode(code);
  }
  if (file_.Close() != 0) {
    FailCode(errno);
  }
  const bool replaces = place_.exists && IsOldStillThere();
  if (const int code = RenameItem(place_.folder, temporary_, place_.folder, place_.name, replaces, &made);
      code != 0) {
    FailCode(code);
  }
  temporary_.clear();
  return RequirePlaced(made);
}

bool FileSink::IsOldStillThere() const {
  struct statx now {};
  const int code = StatusAt(place_.folder, place_.name.constData(), now);
  if (code != 0 && code != ENOENT) {
    FailCode(code);
  }
  if (code == 0 && !IsSameItem(place_.status, now)) {
    Fail(providererror::kChanged, parts_.text());
  }
  return code == 0;
}

SeenItem FileSink::RequirePlaced(const struct statx& made) {
  struct statx now {};
  const char* name = place_.name.constData();
  if (const int code = StatusAt(place_.folder, name, now); code != 0 && code != ENOENT) {
    FailCode(code);
  } else if (code != 0 || !IsSameItem(made, now) || now.stx_size != made.stx_size) {
    Fail(providererror::kChanged, parts_.text());
  }
  // It was just written there.
  MountStates mounts;
  mounts.Remember(now, false);
  return MakeSeen(MakeEntry(FromNativeName(place_.name), place_.folder, name, now, parts_.user, mounts), now);
}

}  // namespace trevane::local

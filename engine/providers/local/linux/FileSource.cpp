#include "engine/providers/local/linux/FileSource.h"

#include "engine/files/ProviderError.h"
#include "engine/providers/local/linux/ErrnoTable.h"
#include "engine/providers/local/linux/FileStatus.h"
#include "platform/linux/SystemCalls.h"

#include <algorithm>
#include <cerrno>
#include <new>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

namespace trevane::local {

std::unique_ptr<FileSource> FileSource::Open(int folder, const QByteArray& name, qint64 offset, TextOf text) {
  struct statx status {};
  if (const int code = StatusAt(folder, name.constData(), status, true); code != 0) {
    FailErrno(code, text());
  }
  // Checked before opening, which may affect a device and waits at a pipe.
  if (!S_ISREG(status.stx_mode)) {
    Fail(error::kAccessDenied, text());
  }
  FileDescriptor file = OpenAt(folder, name.constData(), O_RDONLY | O_NONBLOCK | O_NOCTTY);
  if (!file.IsOpen()) {
    FailErrno(errno, text());
  }
  if (const int code = StatusOf(file.Get(), status); code != 0 || !S_ISREG(status.stx_mode)) {
    Fail(providererror::kChanged, text());
  }
  if (offset > 0 && ::lseek(file.Get(), offset, SEEK_SET) < 0) {
    FailErrno(errno, text());
  }
  const qint64 left = std::max<qint64>(static_cast<qint64>(status.stx_size) - offset, 0);
  return std::unique_ptr<FileSource>(new FileSource(std::move(file), status, left, std::move(text)));
}

std::optional<FileTraits> FileSource::Traits() {
  return TraitsOf(status_, file_.Get());
}

QByteArray FileSource::Read(qint64 most) {
  // A small file takes a small buffer. Beyond the size may be more: files of the kernel have size 0.
  constexpr qint64 kLeast = 4096;
  const qint64 wanted = std::min(most, std::max(left_, kLeast));
  try {
    QByteArray piece(static_cast<qsizetype>(wanted), Qt::Uninitialized);
    const ssize_t got =
        Repeated([&] { return ::read(file_.Get(), piece.data(), static_cast<std::size_t>(wanted)); });
    if (got < 0) {
      FailErrno(errno, text_());
    }
    piece.truncate(got);
    left_ = std::max<qint64>(left_ - got, 0);
    return piece;
  } catch (const std::bad_alloc&) {
    FailErrno(ENOMEM, text_());
  }
}

}  // namespace trevane::local

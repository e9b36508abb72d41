#include "engine/providers/local/linux/ErrnoTable.h"

#include "engine/files/ProviderError.h"

#include <cerrno>
#include <cstring>

namespace trevane::local {
namespace {

struct Row {
  int code;
  qint32 number;
};

constexpr Row kTable[] = {
    {EACCES, error::kAccessDenied},
    {EPERM, error::kAccessDenied},
    {ENOENT, error::kNotFound},
    // A path through an item that is no folder does not exist.
    {ENOTDIR, error::kNotFound},
    {EEXIST, error::kExists},
    {EISDIR, error::kAccessDenied},
    {ENOSPC, error::kDiskFull},
    {EDQUOT, error::kDiskFull},
    {ETIMEDOUT, error::kTimeOut},
    {EROFS, providererror::kWriteProtected},
    {ENAMETOOLONG, providererror::kNameTooLong},
    {ENOTEMPTY, error::kDirectoryNotEmpty},
    {EXDEV, providererror::kNotSameDevice},
    {EBUSY, providererror::kBusy},
    {ETXTBSY, error::kWin32Error + 32},
    {EAGAIN, error::kWin32Error + 32},
    {EIO, providererror::kDeviceIo},
    {EREMOTEIO, providererror::kDeviceIo},
    {ENOMEDIUM, error::kDeviceNotReady},
    {ENXIO, error::kDeviceNotReady},
    {ENODEV, error::kDeviceNotReady},
    {EINVAL, error::kInvalidParameter},
    // Reported for a name that the character set of the file system cannot hold.
    {EILSEQ, error::kInvalidName},
    {EMFILE, error::kWin32Error + 4},
    {ENFILE, error::kWin32Error + 4},
    {ENOMEM, error::kWin32Error + 8},
    {EMLINK, error::kWin32Error + 1142},
    {EFBIG, error::kWin32Error + 223},
    {EOVERFLOW, error::kWin32Error + 223},
    {ELOOP, providererror::kLinkLoop},
    {ENOSYS, error::kNotSupported},
    {EOPNOTSUPP, error::kNotSupported},
    {EINTR, error::kWin32Error + 1223},
    // The server no longer knows the handle; the item may still exist.
    {ESTALE, error::kWin32Error + 64},
    {ENOTCONN, error::kWin32Error + 64},
    {ECONNRESET, error::kWin32Error + 64},
    {ECONNABORTED, error::kWin32Error + 64},
    {EHOSTDOWN, error::kWin32Error + 53},
    {EHOSTUNREACH, error::kWin32Error + 53},
    {ENETUNREACH, error::kWin32Error + 53},
    {ECONNREFUSED, error::kWin32Error + 53},
};

}  // namespace

qint32 NumberOfErrno(int code) noexcept {
  for (const Row& row : kTable) {
    if (row.code == code) {
      return row.number;
    }
  }
  return providererror::kGeneralFailure;
}

void FailErrno(int code, const QString& path) {
  const qint32 number = NumberOfErrno(code);
  if (number == providererror::kGeneralFailure) {
    Fail(number, ErrorText(number) + QStringLiteral(" (%1)").arg(QString::fromLocal8Bit(std::strerror(code))),
         path);
  }
  Fail(number, path);
}

}  // namespace trevane::local

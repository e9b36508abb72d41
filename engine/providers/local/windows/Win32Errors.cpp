#include "engine/providers/local/windows/Win32Errors.h"

#include "engine/files/ProviderError.h"
#include "platform/windows/WindowsText.h"

#include <windows.h>

namespace trevane::local {
namespace {

// Numbers of "System Error Codes" that the compiler's headers lack.
constexpr quint32 kStoppedOnSymlink = 681;
constexpr quint32 kDiskQuotaExceeded = 1295;

struct Row {
  quint32 code;
  qint32 number;
};

// System errors with the same meaning, and those for which the program has its own number. All others keep
// their number.
constexpr Row kTable[] = {
    {ERROR_FILE_NOT_FOUND, error::kNotFound},
    {ERROR_PATH_NOT_FOUND, error::kNotFound},
    // A path through an item that is no folder does not exist.
    {ERROR_DIRECTORY, error::kNotFound},
    {ERROR_BAD_PATHNAME, error::kInvalidName},
    {ERROR_ALREADY_EXISTS, error::kExists},
    {ERROR_FILE_EXISTS, error::kExists},
    {ERROR_HANDLE_DISK_FULL, error::kDiskFull},
    {kDiskQuotaExceeded, error::kDiskFull},
    {ERROR_SEM_TIMEOUT, error::kTimeOut},
    {ERROR_TIMEOUT, error::kTimeOut},
    {ERROR_NOT_READY, error::kDeviceNotReady},
    {ERROR_NO_MEDIA_IN_DRIVE, error::kDeviceNotReady},
    {ERROR_WRONG_DISK, error::kDeviceNotReady},
    {ERROR_UNRECOGNIZED_VOLUME, error::kDeviceNotReady},
    {ERROR_DEV_NOT_EXIST, error::kDeviceNotReady},
    {ERROR_DEVICE_NOT_CONNECTED, error::kDeviceNotReady},
    {ERROR_INVALID_DRIVE, error::kDeviceNotReady},
    {ERROR_BUFFER_OVERFLOW, providererror::kNameTooLong},
    {ERROR_CANT_RESOLVE_FILENAME, providererror::kLinkLoop},
    {kStoppedOnSymlink, providererror::kLinkLoop},
    {ERROR_CRC, providererror::kDeviceIo},
    {ERROR_SECTOR_NOT_FOUND, providererror::kDeviceIo},
    {ERROR_READ_FAULT, providererror::kDeviceIo},
    {ERROR_WRITE_FAULT, providererror::kDeviceIo},
    {ERROR_PRIVILEGE_NOT_HELD, error::kAccessDenied},
    {ERROR_BUSY_DRIVE, providererror::kBusy},
    {ERROR_BUSY, providererror::kBusy},
    {ERROR_LOCK_VIOLATION, error::kWin32Error + 32},
    {ERROR_OUTOFMEMORY, error::kWin32Error + 8},
};

}  // namespace

qint32 NumberOfWin32(quint32 code) noexcept {
  for (const Row& row : kTable) {
    if (row.code == code) {
      return row.number;
    }
  }
  return code == 0 || code > 0xFFFF ? providererror::kGeneralFailure
                                    : error::kWin32Error + static_cast<qint32>(code);
}

void FailWin32(quint32 code, const QString& path) {
  const qint32 number = NumberOfWin32(code);
  const QString sentence = ErrorText(number);
  // Errors for which the program has no text get that of the system.
  if (sentence.startsWith(QStringLiteral("Error 0x"))) {
    Fail(number, windowstext::ErrorText(code), path);
  }
  Fail(number, path);
}

}  // namespace trevane::local

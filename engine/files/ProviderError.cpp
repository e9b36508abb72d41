#include "engine/files/ProviderError.h"

namespace trevane {
namespace {

struct Row {
  qint32 number;
  const char* text;
};

constexpr Row kTexts[] = {
    {error::kNotFound, "The file or folder was not found"},
    {error::kDeviceNotReady, "The device is not ready"},
    {error::kWin32Error + 1, "The file system cannot do this"},
    {error::kWin32Error + 4, "Too many files are open"},
    {error::kAccessDenied, "Access is denied"},
    {error::kWin32Error + 8, "There is not enough memory"},
    {providererror::kNotSameDevice, "The two items are not on the same drive"},
    {providererror::kWriteProtected, "The drive is write-protected"},
    {providererror::kGeneralFailure, "The file system reports a failure"},
    {error::kWin32Error + 32, "The item is in use by another program"},
    {error::kNotSupported, "This is not supported"},
    {error::kWin32Error + 53, "The network path was not found"},
    {error::kWin32Error + 64, "The connection was lost"},
    {error::kExists, "The file or folder exists already"},
    {error::kInvalidParameter, "The request is not valid"},
    {error::kDiskFull, "The disk is full"},
    {error::kTimeOut, "The time limit was exceeded"},
    {error::kInvalidName, "The name is not valid"},
    {error::kDirectoryNotEmpty, "The folder is not empty"},
    {providererror::kBusy, "The item is in use"},
    {providererror::kNameTooLong, "The name is too long"},
    {error::kWin32Error + 223, "The file is too large for the file system"},
    {providererror::kNotAFolder, "This is not a folder"},
    {providererror::kChanged, "The item was changed by another program meanwhile"},
    {providererror::kDeviceIo, "The device reports an input or output error"},
    {error::kWin32Error + 1142, "The item has too many links"},
    {error::kWin32Error + 1223, "The operation was interrupted"},
    {error::kLogonFailure, "The log-on failed"},
    {error::kWin32Error + 1816, "The quota is exceeded"},
    {providererror::kLinkLoop, "The link leads nowhere"},
};

}  // namespace

QString ErrorText(qint32 number) {
  for (const Row& row : kTexts) {
    if (row.number == number) {
      return QString::fromLatin1(row.text);
    }
  }
  return QStringLiteral("Error 0x%1").arg(static_cast<quint32>(number), 8, 16, QLatin1Char('0'));
}

RunTimeError ProviderError(qint32 number, const QString& path) {
  return {number, path.isEmpty() ? ErrorText(number) : ErrorText(number) + QStringLiteral(": ") + path};
}

void Fail(qint32 number, const QString& path) {
  throw ProviderError(number, path);
}

void Fail(qint32 number, const QString& sentence, const QString& path) {
  throw RunTimeError(number, sentence + QStringLiteral(": ") + path);
}

}  // namespace trevane

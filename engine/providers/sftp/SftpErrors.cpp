#include "engine/providers/sftp/SftpErrors.h"

#include "base/ForeignText.h"
#include "base/NameCodec.h"

namespace trevane::sftp {
namespace {

struct CodeRow {
  quint32 code;
  qint32 number;
};

// The codes above 8 are of later versions; some servers send them all the same.
constexpr CodeRow kCodes[] = {
    {status::kNoSuchFile, error::kNotFound},
    {status::kPermissionDenied, error::kAccessDenied},
    {status::kBadMessage, error::kInvalidParameter},
    {status::kNoConnection, kConnectionLost},
    {status::kConnectionLost, kConnectionLost},
    {status::kNotSupported, error::kNotSupported},
    {10, error::kNotFound},
    {11, error::kExists},
    {12, providererror::kWriteProtected},
    {13, error::kDeviceNotReady},
    {14, error::kDiskFull},
    {15, kQuotaExceeded},
    {17, error::kWin32Error + 32},
    {18, error::kDirectoryNotEmpty},
    {19, error::kNotFound},
    {20, error::kInvalidName},
    {21, providererror::kLinkLoop},
    {22, error::kAccessDenied},
    {24, error::kAccessDenied},
};

struct TextRow {
  const char* part;
  qint32 number;
};

constexpr TextRow kTexts[] = {
    {"no space left", error::kDiskFull},
    {"disk full", error::kDiskFull},
    {"disk is full", error::kDiskFull},
    {"not enough space", error::kDiskFull},
    {"quota", kQuotaExceeded},
    {"not empty", error::kDirectoryNotEmpty},
    {"already exist", error::kExists},
    {"file exists", error::kExists},
    {"permission denied", error::kAccessDenied},
    {"access is denied", error::kAccessDenied},
    {"access denied", error::kAccessDenied},
    {"not permitted", error::kAccessDenied},
    {"no such file", error::kNotFound},
    {"not found", error::kNotFound},
    {"does not exist", error::kNotFound},
    {"not a directory", error::kNotFound},
    {"is a directory", error::kAccessDenied},
    {"read-only file system", providererror::kWriteProtected},
    {"write protected", providererror::kWriteProtected},
    {"too many open files", kTooManyOpenFiles},
    {"name too long", providererror::kNameTooLong},
    {"cross-device", providererror::kNotSameDevice},
    {"invalid cross", providererror::kNotSameDevice},
    {"text file busy", error::kWin32Error + 32},
    {"being used by another", error::kWin32Error + 32},
    {"resource busy", providererror::kBusy},
    {"too many levels", providererror::kLinkLoop},
    {"too many links", error::kWin32Error + 1142},
    {"file too large", error::kWin32Error + 223},
    {"input/output error", providererror::kDeviceIo},
    {"i/o error", providererror::kDeviceIo},
    {"not supported", error::kNotSupported},
    {"not implemented", error::kNotSupported},
    {"invalid argument", error::kInvalidParameter},
};

}  // namespace

qint32 NumberOf(const StatusAnswer& answer) {
  for (const CodeRow& row : kCodes) {
    if (row.code == answer.code) {
      return row.number;
    }
  }
  const QByteArray text = answer.text.toLower();
  for (const TextRow& row : kTexts) {
    if (text.contains(row.part)) {
      return row.number;
    }
  }
  return providererror::kGeneralFailure;
}

RunTimeError StatusError(const StatusAnswer& answer, const QString& path) {
  constexpr qsizetype kLongest = 200;
  const qint32 number = NumberOf(answer);
  // "Failure" stands in the sentence already.
  const bool tellsMore = number == providererror::kGeneralFailure && !answer.text.isEmpty() &&
                         answer.text.compare("Failure", Qt::CaseInsensitive) != 0;
  if (!tellsMore) {
    return ProviderError(number, path);
  }
  const QString sentence =
      ErrorText(number) + QStringLiteral(" (%1)").arg(ForeignLine(DecodeBytes(answer.text), kLongest));
  return {number, path.isEmpty() ? sentence : sentence + QStringLiteral(": ") + path};
}

}  // namespace trevane::sftp

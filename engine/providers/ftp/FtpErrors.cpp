#include "engine/providers/ftp/FtpErrors.h"

#include "base/ForeignText.h"
#include "base/NameCodec.h"

#include <algorithm>

namespace trevane::ftp {
namespace {

constexpr qint32 kQuotaExceeded = error::kWin32Error + 1816;

struct TextRow {
  const char* part;
  qint32 number;
};

// The first part that a text contains decides.
constexpr TextRow kTexts[] = {
    {"no space", error::kDiskFull},
    {"disk full", error::kDiskFull},
    {"disk is full", error::kDiskFull},
    {"memory full", error::kDiskFull},
    {"not enough space", error::kDiskFull},
    {"insufficient", error::kDiskFull},
    {"quota", kQuotaExceeded},
    {"not empty", error::kDirectoryNotEmpty},
    {"already exist", error::kExists},
    {"file exists", error::kExists},
    {"directory exists", error::kExists},
    {"not a directory", providererror::kNotAFolder},
    {"not a folder", providererror::kNotAFolder},
    {"no such file", error::kNotFound},
    {"no such dir", error::kNotFound},
    {"no such folder", error::kNotFound},
    {"no such path", error::kNotFound},
    {"not found", error::kNotFound},
    {"cannot find", error::kNotFound},
    {"can't find", error::kNotFound},
    {"could not find", error::kNotFound},
    {"doesn't exist", error::kNotFound},
    {"does not exist", error::kNotFound},
    {"not exist", error::kNotFound},
    {"unknown file", error::kNotFound},
    {"name too long", providererror::kNameTooLong},
    {"name is too long", providererror::kNameTooLong},
    {"filename length", providererror::kNameTooLong},
    {"invalid name", error::kInvalidName},
    {"invalid file name", error::kInvalidName},
    {"invalid filename", error::kInvalidName},
    {"illegal name", error::kInvalidName},
    {"illegal file name", error::kInvalidName},
    {"illegal filename", error::kInvalidName},
    {"bad file name", error::kInvalidName},
    {"bad filename", error::kInvalidName},
    {"name not allowed", error::kInvalidName},
    {"invalid character", error::kInvalidName},
    {"read-only file system", providererror::kWriteProtected},
    {"write protected", providererror::kWriteProtected},
    {"write-protected", providererror::kWriteProtected},
    {"denied", error::kAccessDenied},
    {"not permitted", error::kAccessDenied},
    {"permission", error::kAccessDenied},
    {"no access", error::kAccessDenied},
    {"not allowed", error::kAccessDenied},
    {"forbidden", error::kAccessDenied},
    {"read-only", error::kAccessDenied},
    {"read only", error::kAccessDenied},
    {"is a directory", error::kAccessDenied},
    {"not a plain file", error::kAccessDenied},
    {"not a regular file", error::kAccessDenied},
    {"cross-device", providererror::kNotSameDevice},
    {"being used", kInUse},
    {"in use", kInUse},
    {"locked", kInUse},
    {"busy", kInUse},
    {"too many open files", error::kWin32Error + 4},
    {"too many levels", providererror::kLinkLoop},
    {"too large", error::kWin32Error + 223},
    {"i/o error", providererror::kDeviceIo},
    {"input/output", providererror::kDeviceIo},
    {"not implemented", error::kNotSupported},
    {"not supported", error::kNotSupported},
    {"unknown command", error::kNotSupported},
};

qint32 NumberOfCode(int code) {
  switch (code) {
    case 425:
      return kNoData;
    case 426:
      return kConnectionLost;
    case 450:
      return kInUse;
    case 451:
      return providererror::kDeviceIo;
    case 452:
    case 552:
      return error::kDiskFull;
    case 500:
    case 502:
    case 504:
      return error::kNotSupported;
    case 501:
    case 553:
      return error::kInvalidName;
    case 521:
      return error::kExists;
    case 530:
    case 532:
      return error::kAccessDenied;
    case 0:
      return kConnectionLost;
    default:
      return providererror::kGeneralFailure;
  }
}

/// Codes whose text does not tell more.
bool IsPlain(int code) {
  return code == 0 || code == 425 || code == 426 || code == 452 || code == 552 || code == 500 ||
         code == 502 || code == 504;
}

/// The text without the path, and without the last name where that is no common word.
QByteArray WithoutPath(const QByteArray& text, const QByteArray& path) {
  QByteArray rest = text;
  const QByteArray name = path.sliced(std::max(path.lastIndexOf('/'), path.lastIndexOf('\\')) + 1);
  for (const QByteArray& part : {path, name}) {
    if (part.contains('/') || part.contains('.') || part.contains(' ')) {
      rest.replace(part, QByteArray());
    }
  }
  return rest;
}

}  // namespace

qint32 NumberOf(const Reply& reply, const QByteArray& path) {
  if (IsPlain(reply.code)) {
    return NumberOfCode(reply.code);
  }
  const QByteArray text = WithoutPath(reply.text, path).toLower();
  for (const TextRow& row : kTexts) {
    if (text.contains(row.part)) {
      return row.number;
    }
  }
  if (reply.code == 553 && text.contains("create")) {
    // A folder that cannot be written to.
    return error::kAccessDenied;
  }
  return NumberOfCode(reply.code);
}

RunTimeError ReplyError(const Reply& reply, const QString& path) {
  return ReplyError(reply, NumberOf(reply), path);
}

RunTimeError ReplyError(const Reply& reply, qint32 number, const QString& path) {
  return ReplyError(reply, number, ErrorText(number), path);
}

RunTimeError ReplyError(const Reply& reply, qint32 number, const QString& sentence, const QString& path) {
  constexpr qsizetype kLongest = 300;
  QString text = sentence;
  if (reply.code != 0) {
    text += QStringLiteral(" (%1 %2)").arg(reply.code).arg(ForeignLine(DecodeBytes(reply.text), kLongest));
  }
  return {number, path.isEmpty() ? text : text + QStringLiteral(": ") + path};
}

RunTimeError NotRenamed(const Reply& reply, const QString& path) {
  return ReplyError(reply, providererror::kGeneralFailure,
                    QStringLiteral("The server tells that the item was renamed, but it was not"), path);
}

}  // namespace trevane::ftp

#pragma once

#include "engine/files/ProviderError.h"
#include "engine/providers/sftp/SftpAnswer.h"

#include <QString>

namespace trevane::sftp {

inline constexpr qint32 kConnectionLost = error::kWin32Error + 64;
inline constexpr qint32 kTooManyOpenFiles = error::kWin32Error + 4;
inline constexpr qint32 kQuotaExceeded = error::kWin32Error + 1816;

/// The error number for a status that is not kOk. Servers use one code for many failures: then its text
/// decides, and providererror::kGeneralFailure means that the text tells nothing either.
[[nodiscard]] qint32 NumberOf(const StatusAnswer& answer);

/// The exception for such a status; what the server says stands in it where the number tells less.
[[nodiscard]] RunTimeError StatusError(const StatusAnswer& answer, const QString& path);

}  // namespace trevane::sftp

#pragma once

#include "engine/files/ProviderError.h"
#include "engine/providers/ftp/FtpReply.h"

#include <QString>

namespace trevane::ftp {

inline constexpr qint32 kConnectionLost = error::kWin32Error + 64;
inline constexpr qint32 kInUse = error::kWin32Error + 32;

/// The error number for a reply that refuses. Servers use 550 for nearly everything: then the text decides,
/// and providererror::kGeneralFailure means that the text tells nothing either.
[[nodiscard]] qint32 NumberOf(const Reply& reply);

/// The exception for such a reply, with the server's words.
[[nodiscard]] RunTimeError ReplyError(const Reply& reply, const QString& path);
/// The same with another number.
[[nodiscard]] RunTimeError ReplyError(const Reply& reply, qint32 number, const QString& path);

}  // namespace trevane::ftp

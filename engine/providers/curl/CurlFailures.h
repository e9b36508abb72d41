#pragma once

#include "base/RunTimeError.h"
#include "engine/providers/ftp/FtpReply.h"

#include <QString>

namespace trevane::curl {

inline constexpr qint32 kLineLost = error::kWin32Error + 64;
/// The server takes no further client at present.
inline constexpr qint32 kServerBusy = error::kWin32Error + 1238;
inline constexpr qint32 kRefused = error::kWin32Error + 1225;
inline constexpr qint32 kUnknownHost = error::kWin32Error + 11001;

/// The words of a reply, for people, on one line: "530 Too many users".
[[nodiscard]] QString WordsOf(const ftp::Reply& reply);

/// A refused log-on that speaks of too many clients.
[[nodiscard]] bool SpeaksOfOtherClients(const ftp::Reply& reply);

}  // namespace trevane::curl

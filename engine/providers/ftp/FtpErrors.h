#pragma once

#include "engine/files/ProviderError.h"
#include "engine/providers/ftp/FtpReply.h"

#include <QByteArray>
#include <QString>

namespace trevane::ftp {

inline constexpr qint32 kConnectionLost = error::kWin32Error + 64;
inline constexpr qint32 kInUse = error::kWin32Error + 32;
/// A listing that nothing could be read of.
inline constexpr qint32 kUnreadable = error::kWin32Error + 13;
/// No data connection could be opened.
inline constexpr qint32 kNoData = error::kWin32Error + 1225;

/// The error number for a reply that refuses. Servers use 550 for nearly everything: then the text decides,
/// and providererror::kGeneralFailure means that the text tells nothing either. `path` is that of the item as
/// the server has it: many repeat it in their text, where it tells nothing, whatever words are in it.
[[nodiscard]] qint32 NumberOf(const Reply& reply, const QByteArray& path = {});

/// The exception for such a reply, with the server's words.
[[nodiscard]] RunTimeError ReplyError(const Reply& reply, const QString& path);
/// The same with another number.
[[nodiscard]] RunTimeError ReplyError(const Reply& reply, qint32 number, const QString& path);
/// The same with a sentence of its own, without a full stop.
[[nodiscard]] RunTimeError ReplyError(const Reply& reply, qint32 number, const QString& sentence,
                                      const QString& path);

/// Of a server that has told of a rename as done; both names stand as they stood.
[[nodiscard]] RunTimeError NotRenamed(const Reply& reply, const QString& path);

}  // namespace trevane::ftp

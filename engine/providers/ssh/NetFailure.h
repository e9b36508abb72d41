#pragma once

#include "base/RunTimeError.h"

#include <QString>
#include <QtGlobal>

namespace trevane::net {

inline constexpr qint32 kLineLost = error::kWin32Error + 64;
inline constexpr qint32 kRefused = error::kWin32Error + 1225;
inline constexpr qint32 kNetworkUnreachable = error::kWin32Error + 1231;
inline constexpr qint32 kHostUnreachable = error::kWin32Error + 1232;
inline constexpr qint32 kUnknownHost = error::kWin32Error + 11001;

/// Why a call of the network failed; the number 0 is none.
struct NetFailure {
  qint32 number = 0;
  /// A clause for people, without a full stop: "the connection was refused".
  QString reason = {};

  [[nodiscard]] explicit operator bool() const noexcept { return number != 0; }
};

/// Texts that are the same on each system.
[[nodiscard]] inline QString ReasonOf(qint32 number) {
  switch (number) {
    case kRefused:
      return QStringLiteral("The connection was refused: nothing listens there, or a firewall forbids it");
    case kNetworkUnreachable:
      return QStringLiteral("The network cannot be reached");
    case kHostUnreachable:
      return QStringLiteral("The host cannot be reached");
    case kUnknownHost:
      return QStringLiteral("The host is unknown");
    case kLineLost:
      return QStringLiteral("The connection was lost");
    case error::kTimeOut:
      return QStringLiteral("The host has not answered in time");
    default:
      return {};
  }
}

}  // namespace trevane::net

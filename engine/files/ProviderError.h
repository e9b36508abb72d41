#pragma once

#include "base/RunTimeError.h"

#include <QString>

namespace trevane {

/// Numbers that only providers raise, besides those of trevane::error.
namespace providererror {
inline constexpr qint32 kNotSameDevice = error::kWin32Error + 17;
inline constexpr qint32 kWriteProtected = error::kWin32Error + 19;
inline constexpr qint32 kGeneralFailure = error::kWin32Error + 31;
inline constexpr qint32 kBusy = error::kWin32Error + 170;
inline constexpr qint32 kNameTooLong = error::kWin32Error + 206;
/// A file where a folder is asked for.
inline constexpr qint32 kNotAFolder = error::kWin32Error + 267;
/// The item changed under the operation.
inline constexpr qint32 kChanged = error::kWin32Error + 1006;
inline constexpr qint32 kDeviceIo = error::kWin32Error + 1117;
/// A circular link.
inline constexpr qint32 kLinkLoop = error::kWin32Error + 1921;
}  // namespace providererror

/// The sentence for an error number, without a full stop.
[[nodiscard]] QString ErrorText(qint32 number);

/// The exception for `number` at `path`: "Access is denied: C:\x".
[[nodiscard]] RunTimeError ProviderError(qint32 number, const QString& path);

[[noreturn]] void Fail(qint32 number, const QString& path);
/// With another sentence than that of the number.
[[noreturn]] void Fail(qint32 number, const QString& sentence, const QString& path);

}  // namespace trevane

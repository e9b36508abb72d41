#pragma once

#include <QString>

namespace trevane::local {

/// The program's error number for one of GetLastError.
[[nodiscard]] qint32 NumberOfWin32(quint32 code) noexcept;

[[noreturn]] void FailWin32(quint32 code, const QString& path);

}  // namespace trevane::local

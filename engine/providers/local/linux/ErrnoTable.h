#pragma once

#include <QString>

namespace trevane::local {

/// The program's error number for one of errno.
[[nodiscard]] qint32 NumberOfErrno(int code) noexcept;

[[noreturn]] void FailErrno(int code, const QString& path);

}  // namespace trevane::local

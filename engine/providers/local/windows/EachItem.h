#pragma once

#include "engine/providers/local/windows/WindowsPath.h"
#include "platform/windows/WindowsText.h"

#include <type_traits>

#include <windows.h>

namespace trevane::local {

/// Calls `take(const WIN32_FIND_DATAW&)` for each item of a folder but "." and "..": 0, or an error of the
/// system. An item comes with all its data, so that no further call is needed. Where `take` returns a
/// boolean, false ends the reading.
template <typename Take>
[[nodiscard]] DWORD EachItem(const QString& folder, Take&& take) {
  WIN32_FIND_DATAW found{};
  const QString pattern = Below(folder, QStringLiteral("*"));
  const HANDLE search = FindFirstFileExW(windowstext::Wide(pattern), FindExInfoBasic, &found,
                                         FindExSearchNameMatch, nullptr, FIND_FIRST_EX_LARGE_FETCH);
  if (search == INVALID_HANDLE_VALUE) {
    return GetLastError();
  }
  do {
    const wchar_t* name = found.cFileName;
    const bool isDots = name[0] == L'.' && (name[1] == 0 || (name[1] == L'.' && name[2] == 0));
    if (!isDots) {
      const auto& item = static_cast<const WIN32_FIND_DATAW&>(found);
      if constexpr (std::is_same_v<decltype(take(item)), bool>) {
        if (!take(item)) {
          FindClose(search);
          return 0;
        }
      } else {
        take(item);
      }
    }
  } while (FindNextFileW(search, &found) != FALSE);
  const DWORD code = GetLastError();
  FindClose(search);
  return code == ERROR_NO_MORE_FILES ? 0 : code;
}

}  // namespace trevane::local

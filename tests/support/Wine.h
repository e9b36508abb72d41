#pragma once

#include <QtGlobal>

#ifdef Q_OS_WIN
#include <windows.h>
#endif

namespace trevane::test {

/// True under Wine. Source: Wine's own FAQ for developers names this export of ntdll.
inline bool RunsUnderWine() {
#ifdef Q_OS_WIN
  static const bool underWine = GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
  return underWine;
#else
  return false;
#endif
}

}  // namespace trevane::test

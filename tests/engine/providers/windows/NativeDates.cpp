#include "tests/engine/providers/windows/NativeDates.h"

#include "platform/windows/WindowsText.h"

#include <gtest/gtest.h>

#include <windows.h>

namespace trevane::test {

void SetNativeModified(const QString& native, Date modified) {
  const auto ticks = static_cast<quint64>((modified.msecs + 11644473600000) * 10000);
  const FILETIME time{static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
  const HANDLE item =
      CreateFileW(windowstext::Wide(native), FILE_WRITE_ATTRIBUTES, FILE_SHARE_READ | FILE_SHARE_WRITE,
                  nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
  ASSERT_NE(item, INVALID_HANDLE_VALUE);
  EXPECT_NE(SetFileTime(item, nullptr, &time, &time), FALSE);
  CloseHandle(item);
}

}  // namespace trevane::test

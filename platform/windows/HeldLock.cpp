#include "platform/HeldLock.h"

#include "platform/windows/WindowsText.h"

#include <QDir>

#include <windows.h>

namespace trevane {

using windowstext::Wide;

std::unique_ptr<HeldLock> HeldLock::Take(const QString& path) {
  const QString native = windowstext::LiteralPath(QDir::toNativeSeparators(path));
  // Nobody else can open it as long as it is open here.
  const HANDLE file = CreateFileW(Wide(native), GENERIC_READ | GENERIC_WRITE | DELETE, 0, nullptr,
                                  OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
  return file == INVALID_HANDLE_VALUE
             ? nullptr
             : std::unique_ptr<HeldLock>(new HeldLock(native, reinterpret_cast<qintptr>(file)));
}

HeldLock::~HeldLock() {
  const HANDLE file = reinterpret_cast<HANDLE>(handle_);
  FILE_DISPOSITION_INFO removal{};
  removal.DeleteFile = TRUE;
  const bool removed =
      removes_ && SetFileInformationByHandle(file, FileDispositionInfo, &removal, sizeof removal) != FALSE;
  CloseHandle(file);
  if (removes_ && !removed) {
    DeleteFileW(Wide(path_));
  }
}

}  // namespace trevane

#include "platform/OpenWithProgram.h"

#include "platform/windows/WindowsText.h"

#include <windows.h>

#include <shellapi.h>

namespace trevane {

using windowstext::Wide;

OpenOutcome OpenWithProgram(const QString& path) {
  QString native = path;
  native.replace(u'/', u'\\');
  if (native.contains(QChar(u'\0')) ||
      GetFileAttributesW(Wide(windowstext::LiteralPath(native))) == INVALID_FILE_ATTRIBUTES) {
    return {OpenOutcome::Code::NotFound, QStringLiteral("There is no such file.")};
  }
  const QString folder = native.left(native.lastIndexOf(u'\\') + 1);
  SHELLEXECUTEINFOW info{};
  info.cbSize = sizeof info;
  // The message is ours to show, and the call has done its work when it returns.
  info.fMask = SEE_MASK_FLAG_NO_UI | SEE_MASK_NOASYNC;
  info.lpFile = Wide(native);
  info.lpDirectory = Wide(folder);
  info.nShow = SW_SHOWNORMAL;
  if (ShellExecuteExW(&info) != FALSE)
    return {};
  const DWORD error = GetLastError();
  switch (error) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
      return {OpenOutcome::Code::NotFound, windowstext::ErrorText(error)};
    case ERROR_NO_ASSOCIATION:
      return {OpenOutcome::Code::NoProgram, windowstext::ErrorText(error)};
    default:
      return {OpenOutcome::Code::Failed, windowstext::ErrorText(error)};
  }
}

}  // namespace trevane

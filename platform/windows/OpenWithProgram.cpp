#include "platform/OpenWithProgram.h"

#include "platform/windows/WindowsText.h"

#include <memory>
#include <string>

#include <windows.h>

#include <objbase.h>
#include <shellapi.h>
#include <shlobj.h>

namespace trevane {

using windowstext::Wide;

namespace {

/// True when the system takes the path as it is: no dot or blank left out at an end, no name of a device.
bool IsTakenAsItStands(const QString& path) {
  std::wstring full(static_cast<size_t>(path.size()) + 2, L'\0');
  const DWORD length = GetFullPathNameW(Wide(path), static_cast<DWORD>(full.size()), full.data(), nullptr);
  return length < full.size() && windowstext::FromWide(full.data(), static_cast<qsizetype>(length)) == path;
}

/// The shell needs it on each thread that asks it. The window's thread has it already.
class ShellOnThisThread final {
 public:
  ShellOnThisThread() : result_(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)) {}
  ~ShellOnThisThread() {
    if (SUCCEEDED(result_)) {
      CoUninitialize();
    }
  }
  ShellOnThisThread(const ShellOnThisThread&) = delete;
  ShellOnThisThread& operator=(const ShellOnThisThread&) = delete;

 private:
  HRESULT result_;
};

}  // namespace

void SetOpenFailureListener(OpenFailureListener /*listener*/) {}

OpenOutcome OpenWithProgram(const QString& path) {
  QString native = path;
  native.replace(u'/', u'\\');
  if (native.contains(QChar(u'\0')) ||
      GetFileAttributesW(Wide(windowstext::LiteralPath(native))) == INVALID_FILE_ATTRIBUTES) {
    return {OpenOutcome::Code::NotFound, QStringLiteral("There is no such file.")};
  }
  // The shell would open another file, or none.
  if (!IsTakenAsItStands(native)) {
    return {OpenOutcome::Code::Failed, QStringLiteral("Windows cannot open a file with this name.")};
  }
  const ShellOnThisThread shell;
  // The item itself: of a name, "tool" for instance, the shell makes the program "tool.exe" beside it.
  PIDLIST_ABSOLUTE item = nullptr;
  const HRESULT parsed = SHParseDisplayName(Wide(native), nullptr, &item, 0, nullptr);
  if (FAILED(parsed)) {
    return {OpenOutcome::Code::Failed, windowstext::ErrorText(static_cast<quint32>(parsed))};
  }
  const std::unique_ptr<void, decltype(&CoTaskMemFree)> owner(item, &CoTaskMemFree);
  const QString folder = native.left(native.lastIndexOf(u'\\') + 1);
  SHELLEXECUTEINFOW info{};
  info.cbSize = sizeof info;
  // The message is ours to show, and the call has done its work when it returns.
  info.fMask = SEE_MASK_FLAG_NO_UI | SEE_MASK_NOASYNC | SEE_MASK_IDLIST;
  info.lpIDList = item;
  info.lpDirectory = Wide(folder);
  info.nShow = SW_SHOWNORMAL;
  if (ShellExecuteExW(&info) != FALSE) {
    return {};
  }
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

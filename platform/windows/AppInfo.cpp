#include "platform/AppInfo.h"

#include "platform/windows/WindowsText.h"

#include <string>

#include <windows.h>

#include <objbase.h>
#include <shellapi.h>
#include <shlobj.h>

namespace trevane::appinfo {
namespace {

QString ExecutablePath() {
  std::wstring path(MAX_PATH, L'\0');
  for (;;) {
    const DWORD length = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    if (length < path.size()) {
      return windowstext::FromWide(path.data(), static_cast<qsizetype>(length));
    }
    path.resize(path.size() * 2);
  }
}

}  // namespace

QString ProgramFolder() {
  const QString path = ExecutablePath();
  const QString folder = path.left(path.lastIndexOf(u'\\'));
  // "C:" alone would be whatever folder is current there.
  return folder.endsWith(u':') ? folder + u'\\' : folder;
}

QString ExecutableName() {
  const QString path = ExecutablePath();
  const QString name = path.mid(path.lastIndexOf(u'\\') + 1);
  const auto dot = name.lastIndexOf(u'.');
  return dot > 0 ? name.first(dot) : name;
}

std::optional<QString> CommandLine() {
  const wchar_t* text = GetCommandLineW();
  // The program's path ends at the first blank that is not between quotes.
  for (bool quoted = false; *text != L'\0' && (quoted || (*text != L' ' && *text != L'\t')); ++text) {
    if (*text == L'"') {
      quoted = !quoted;
    }
  }
  return windowstext::FromWide(text);
}

QStringList Arguments(int /*count*/, char** /*values*/) {
  QStringList arguments;
  int count = 0;
  wchar_t** values = CommandLineToArgvW(GetCommandLineW(), &count);
  for (int i = 1; values != nullptr && i < count; ++i) {
    arguments += windowstext::FromWide(values[i]);
  }
  LocalFree(values);
  return arguments;
}

QString Version() {
  return QStringLiteral(TREVANE_VERSION);
}

QString PathSeparator() {
  return QStringLiteral("\\");
}

QString UserSettingsFolder() {
  PWSTR path = nullptr;
  QString folder;
  if (SUCCEEDED(SHGetKnownFolderPath(FOLDERID_LocalAppData, KF_FLAG_DONT_VERIFY, nullptr, &path))) {
    folder = windowstext::FromWide(path) + QStringLiteral("\\Trevane");
  }
  CoTaskMemFree(path);
  return folder;
}

QString UserStateFolder() {
  return UserSettingsFolder();
}

}  // namespace trevane::appinfo

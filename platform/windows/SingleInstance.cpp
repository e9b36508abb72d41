#include "platform/SingleInstance.h"

#include "platform/windows/WindowsText.h"

#include <QCryptographicHash>

#include <vector>

#include <windows.h>

#include <sddl.h>

namespace trevane {
namespace {

using windowstext::Wide;

/// The folder itself, by whatever links and letters it was named; the text given when it cannot be asked.
QString RealFolder(const QString& folder) {
  const HANDLE handle = CreateFileW(Wide(windowstext::LiteralPath(folder)), 0,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                    OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
  if (handle == INVALID_HANDLE_VALUE) {
    return folder;
  }
  const QString path = windowstext::FinalPath(handle);
  CloseHandle(handle);
  return path.isEmpty() ? folder : path;
}

QString UserId() {
  HANDLE token = nullptr;
  if (OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token) == FALSE) {
    return {};
  }
  DWORD size = 0;
  GetTokenInformation(token, TokenUser, nullptr, 0, &size);
  std::vector<char> buffer(size);
  QString id;
  wchar_t* text = nullptr;
  if (size > 0 && GetTokenInformation(token, TokenUser, buffer.data(), size, &size) != FALSE &&
      ConvertSidToStringSidW(reinterpret_cast<TOKEN_USER*>(buffer.data())->User.Sid, &text) != FALSE) {
    id = windowstext::FromWide(text);
    LocalFree(text);
  }
  CloseHandle(token);
  return id;
}

}  // namespace

SingleInstance::SingleInstance(const QString& programFolder, const QString& lockFolder) {
  const QString key = RealFolder(programFolder).toLower() + u'\n' + UserId() + u'\n' + lockFolder.toLower();
  const QByteArray hash =
      QCryptographicHash::hash(key.toUtf8(), QCryptographicHash::Sha256).toHex().first(32);
  // One name for all sessions of the user: a remote one counts as well.
  const QString name = QStringLiteral("Global\\Trevane-") + QString::fromLatin1(hash);
  const HANDLE mutex = CreateMutexW(nullptr, FALSE, Wide(name));
  const DWORD error = GetLastError();
  if (mutex == nullptr) {
    // Only a process of the same user with more rights can have made one that may not be opened.
    isFirst_ = error != ERROR_ACCESS_DENIED;
    return;
  }
  if (error == ERROR_ALREADY_EXISTS) {
    isFirst_ = false;
    CloseHandle(mutex);
    return;
  }
  handle_ = reinterpret_cast<qintptr>(mutex);
}

SingleInstance::~SingleInstance() {
  if (handle_ != -1) {
    CloseHandle(reinterpret_cast<HANDLE>(handle_));
  }
}

}  // namespace trevane

#include "platform/windows/WindowsText.h"

#include <algorithm>
#include <cwchar>
#include <string>

#include <windows.h>

namespace trevane::windowstext {
namespace {

QString Decode(QByteArrayView bytes, DWORD flags, bool& valid) {
  valid = true;
  if (bytes.isEmpty()) {
    return QString(QLatin1StringView(""));
  }
  const int size = static_cast<int>(bytes.size());
  const int length = MultiByteToWideChar(CP_ACP, flags, bytes.data(), size, nullptr, 0);
  valid = length > 0;
  std::wstring text(static_cast<size_t>(std::max(length, 0)), L'\0');
  if (valid) {
    MultiByteToWideChar(CP_ACP, flags, bytes.data(), size, text.data(), length);
  }
  return FromWide(text.data(), static_cast<qsizetype>(text.size()));
}

std::optional<QString> ShortPath(const QString& path) {
  const QString literal = LiteralPath(path);
  const DWORD length = GetShortPathNameW(Wide(literal), nullptr, 0);
  std::wstring shortPath(length, L'\0');
  if (length == 0 || GetShortPathNameW(Wide(literal), shortPath.data(), length) >= length) {
    return std::nullopt;
  }
  shortPath.pop_back();
  return FromWide(shortPath.data(), static_cast<qsizetype>(shortPath.size()));
}

}  // namespace

QString FromWide(const wchar_t* text, qsizetype length) {
  static_assert(sizeof(wchar_t) == sizeof(QChar));
  return QString(reinterpret_cast<const QChar*>(text), length);
}

QString FromWide(const wchar_t* text) {
  return FromWide(text, static_cast<qsizetype>(std::wcslen(text)));
}

QString FinalPath(void* handle) {
  std::wstring path(0x8000, L'\0');
  const DWORD length =
      GetFinalPathNameByHandleW(handle, path.data(), static_cast<DWORD>(path.size()), FILE_NAME_NORMALIZED);
  return length < path.size() ? FromWide(path.data(), static_cast<qsizetype>(length)) : QString();
}

std::optional<QByteArray> ToAnsi(const QString& text) {
  if (text.isEmpty()) {
    return QByteArray("");
  }
  const int size = static_cast<int>(text.size());
  const int length = WideCharToMultiByte(CP_ACP, 0, Wide(text), size, nullptr, 0, nullptr, nullptr);
  if (length <= 0) {
    return std::nullopt;
  }
  QByteArray bytes(length, '\0');
  WideCharToMultiByte(CP_ACP, 0, Wide(text), size, bytes.data(), length, nullptr, nullptr);
  // Converting back detects best-fit and replacement characters.
  bool valid = false;
  const QString back = Decode(bytes, MB_ERR_INVALID_CHARS, valid);
  if (!valid || back != text) {
    return std::nullopt;
  }
  return bytes;
}

QString FromAnsi(QByteArrayView bytes) {
  bool valid = false;
  return Decode(bytes, 0, valid);
}

std::optional<QByteArray> ToAnsiPath(const QString& path) {
  if (auto bytes = ToAnsi(path)) {
    return bytes;
  }
  if (const auto shortPath = ShortPath(path)) {
    return ToAnsi(*shortPath);
  }
  // A file that does not exist yet has no short name; its folder has.
  const auto separator = path.lastIndexOf(u'\\');
  const auto folder = separator > 0 ? ShortPath(path.first(separator)) : std::nullopt;
  return folder ? ToAnsi(*folder + path.sliced(separator)) : std::nullopt;
}

QString LiteralPath(const QString& path) {
  QString native = path;
  native.replace(u'/', u'\\');
  if (native.startsWith(QLatin1StringView("\\\\?\\")) || native.startsWith(QLatin1StringView("\\\\.\\"))) {
    return native;
  }
  if (native.startsWith(QLatin1StringView("\\\\"))) {
    return QLatin1StringView("\\\\?\\UNC\\") + native.sliced(2);
  }
  if (native.size() >= 3 && native[1] == u':' && native[2] == u'\\') {
    return QLatin1StringView("\\\\?\\") + native;
  }
  return native;
}

QString ErrorText(quint32 error) {
  wchar_t* buffer = nullptr;
  const DWORD length = FormatMessageW(
      FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
      error, 0, reinterpret_cast<wchar_t*>(&buffer), 0, nullptr);
  QString text = FromWide(buffer, static_cast<qsizetype>(length)).trimmed();
  LocalFree(buffer);
  return text.isEmpty() ? QStringLiteral("System error %1.").arg(error) : text;
}

}  // namespace trevane::windowstext

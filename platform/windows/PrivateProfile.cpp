#include "platform/PrivateProfile.h"

#include "base/NameCodec.h"
#include "platform/windows/WindowsText.h"

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include <windows.h>

namespace trevane::privateprofile {
namespace {

/// A name that is looked for may be made of bytes that are no text: nothing is changed by asking for it.
std::optional<QByteArray> ToLookup(const QString& text) {
  if (GetACP() != CP_UTF8) {
    return windowstext::ToAnsi(text);
  }
  const QByteArray bytes = EncodeText(text);
  return DecodeBytes(bytes) == text ? std::optional(bytes) : std::nullopt;
}

QString FromFile(QByteArrayView bytes) {
  return GetACP() == CP_UTF8 ? DecodeBytes(bytes) : windowstext::FromAnsi(bytes);
}

/// One argument of a call: a null text is a null pointer.
class Argument {
 public:
  enum class Use { Lookup, Write };

  Argument(const QString& text, Use use)
      : isNull_(text.isNull()), bytes_(use == Use::Lookup ? ToLookup(text) : windowstext::ToAnsi(text)) {}

  /// False when the code page lacks a character of the text.
  [[nodiscard]] bool IsValid() const { return bytes_.has_value(); }
  [[nodiscard]] const char* Pointer() const { return isNull_ ? nullptr : bytes_->constData(); }

 private:
  bool isNull_;
  std::optional<QByteArray> bytes_;
};

/// The file's path as the calls take it. They look for a name without a folder among the system's own files,
/// so that it is made absolute first.
std::optional<QByteArray> FileArgument(const QString& fileName) {
  if (fileName.contains(QChar(u'\0'))) {
    return std::nullopt;
  }
  const DWORD length = GetFullPathNameW(windowstext::Wide(fileName), 0, nullptr, nullptr);
  std::wstring path(length, L'\0');
  if (length == 0 || GetFullPathNameW(windowstext::Wide(fileName), length, path.data(), nullptr) >= length) {
    return std::nullopt;
  }
  path.pop_back();
  return windowstext::ToAnsiPath(windowstext::FromWide(path.data(), static_cast<qsizetype>(path.size())));
}

/// The text of the largest length up to `limit` that cuts no character in two.
QString CutText(QByteArrayView bytes, qsizetype limit) {
  if (GetACP() == CP_UTF8) {
    return FromFile(bytes.first(CutLength(bytes, limit)));
  }
  qsizetype cut = 0;
  while (cut < bytes.size()) {
    const qsizetype next = cut + (IsDBCSLeadByte(static_cast<BYTE>(bytes[cut])) != FALSE ? 2 : 1);
    if (next > std::min(limit, bytes.size())) {
      break;
    }
    cut = next;
  }
  return FromFile(bytes.first(cut));
}

/// Bytes. Lines whose characters need more than 16 bits to count their bytes are not read back whole
/// everywhere.
constexpr qsizetype kLongestValue = 32000;

/// The default as it is answered where the call is not made or could not take it.
QString DefaultText(const QString& fallback, int size) {
  QString text = fallback.section(QChar(u'\0'), 0, 0);
  while (text.endsWith(u' ')) {
    text.chop(1);
  }
  const QByteArray bytes = EncodeText(text);
  return DecodeBytes(bytes.first(CutLength(bytes, size - 1)));
}

bool IsReadOnly(const QByteArray& file) {
  const DWORD attributes = GetFileAttributesA(file.constData());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) != 0;
}

}  // namespace

QString GetString(const QString& section, const QString& key, const QString& fallback, int size,
                  const QString& fileName) {
  const Argument sectionName(section, Argument::Use::Lookup);
  const Argument keyName(key, Argument::Use::Lookup);
  const auto file = FileArgument(fileName);
  const bool isList = section.isNull() || key.isNull();
  const qsizetype limit = std::max(size - (isList ? 2 : 1), 0);
  if (!file || !sectionName.IsValid() || !keyName.IsValid()) {
    return DefaultText(fallback, size);
  }
  // With room to spare, so that where the answer is cut is decided here.
  std::vector<char> buffer(static_cast<size_t>(std::max(size, 0)) + 16, '\0');
  const auto ask = [&](const char* standIn) {
    const DWORD count =
        GetPrivateProfileStringA(sectionName.Pointer(), keyName.Pointer(), standIn, buffer.data(),
                                 static_cast<DWORD>(buffer.size()), file->constData());
    return QByteArray(buffer.data(), static_cast<qsizetype>(count));
  };
  if (const auto standIn = windowstext::ToAnsi(fallback)) {
    return CutText(ask(standIn->constData()), limit);
  }
  // The call cannot take this default. Two calls with different defaults show whether the key exists.
  const QByteArray answer = ask("1");
  return answer == ask("2") ? CutText(answer, limit) : DefaultText(fallback, size);
}

quint32 GetInt(const QString& section, const QString& key, qint32 fallback, const QString& fileName) {
  const Argument sectionName(section, Argument::Use::Lookup);
  const Argument keyName(key, Argument::Use::Lookup);
  const auto file = FileArgument(fileName);
  if (!file || section.isNull() || key.isNull() || !sectionName.IsValid() || !keyName.IsValid()) {
    return static_cast<quint32>(fallback);
  }
  return GetPrivateProfileIntA(sectionName.Pointer(), keyName.Pointer(), fallback, file->constData());
}

bool WriteString(const QString& section, const QString& key, const QString& value, const QString& fileName) {
  const Argument sectionName(section, Argument::Use::Write);
  const Argument keyName(key, Argument::Use::Write);
  const Argument text(value, Argument::Use::Write);
  const auto file = FileArgument(fileName);
  // A text that would be written as other characters, or not be read back, is refused.
  if (!file || !sectionName.IsValid() || !keyName.IsValid() || !text.IsValid() ||
      value.toUtf8().size() > kLongestValue || IsReadOnly(*file)) {
    return false;
  }
  return WritePrivateProfileStringA(sectionName.Pointer(), keyName.Pointer(), text.Pointer(),
                                    file->constData()) != FALSE;
}

QByteArray ToUtf8(const QByteArray& bytes) {
  const bool isUtf16 = bytes.startsWith("\xFF\xFE");
  const int size = static_cast<int>(bytes.size());
  if (isUtf16 || size == 0 ||
      MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, bytes.constData(), size, nullptr, 0) > 0) {
    return bytes;
  }
  // Not GetACP: that is UTF-8 for a program whose manifest asks for it.
  DWORD codePage = 0;
  // Nor GetLocaleInfoEx, whose name for the system's own locale is not known everywhere.
  if (GetLocaleInfoW(LOCALE_SYSTEM_DEFAULT, LOCALE_IDEFAULTANSICODEPAGE | LOCALE_RETURN_NUMBER,
                     reinterpret_cast<wchar_t*>(&codePage), sizeof codePage / sizeof(wchar_t)) == 0 ||
      codePage == CP_ACP || codePage == CP_UTF8) {
    return bytes;
  }
  const int length = MultiByteToWideChar(codePage, MB_ERR_INVALID_CHARS, bytes.constData(), size, nullptr, 0);
  std::wstring text(static_cast<size_t>(std::max(length, 0)), L'\0');
  if (length <= 0 || MultiByteToWideChar(codePage, MB_ERR_INVALID_CHARS, bytes.constData(), size, text.data(),
                                         length) != length) {
    return bytes;
  }
  return windowstext::FromWide(text.data(), static_cast<qsizetype>(text.size())).toUtf8();
}

}  // namespace trevane::privateprofile

#include "platform/PrivateProfile.h"

#include "platform/windows/WindowsText.h"

#include <algorithm>
#include <array>
#include <optional>
#include <vector>

#include <windows.h>

namespace trevane::privateprofile {
namespace {

/// One argument of a call: a null text is a null pointer.
class Argument {
 public:
  explicit Argument(const QString& text) : isNull_(text.isNull()), bytes_(windowstext::ToAnsi(text)) {}

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
  const DWORD length = GetFullPathNameW(windowstext::Wide(fileName), 0, nullptr, nullptr);
  std::wstring path(length, L'\0');
  if (length == 0 || GetFullPathNameW(windowstext::Wide(fileName), length, path.data(), nullptr) >= length)
    return std::nullopt;
  path.pop_back();
  return windowstext::ToAnsiPath(QString::fromStdWString(path));
}

/// The largest length up to `limit` that cuts no character in two.
qsizetype CutLength(QByteArrayView bytes, qsizetype limit) {
  if (bytes.size() <= limit)
    return bytes.size();
  limit = std::max<qsizetype>(limit, 0);
  if (GetACP() != CP_UTF8)
    return limit;
  qsizetype cut = limit;
  while (cut > 0 && limit - cut < 4 && (static_cast<unsigned char>(bytes[cut]) & 0xC0) == 0x80)
    --cut;
  return cut;
}

/// Bytes. Lines whose characters need more than 16 bits to count their bytes are not read back whole
/// everywhere.
constexpr qsizetype kLongestValue = 32000;

bool IsReadOnly(const QByteArray& file) {
  const DWORD attributes = GetFileAttributesA(file.constData());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) != 0;
}

}  // namespace

QString GetString(const QString& section, const QString& key, const QString& fallback, int size,
                  const QString& fileName) {
  const Argument sectionName(section);
  const Argument keyName(key);
  const auto file = FileArgument(fileName);
  const bool isList = section.isNull() || key.isNull();
  const qsizetype limit = std::max(size - (isList ? 2 : 1), 0);
  const QByteArray standIn = windowstext::ToAnsi(fallback).value_or(QByteArray());
  if (!file || !sectionName.IsValid() || !keyName.IsValid())
    return windowstext::FromAnsi(QByteArrayView(standIn).first(CutLength(standIn, size - 1)));
  // With room to spare, so that where the answer is cut is decided here.
  std::vector<char> buffer(static_cast<size_t>(std::max(size, 0)) + 16, '\0');
  const DWORD count =
      GetPrivateProfileStringA(sectionName.Pointer(), keyName.Pointer(), standIn.constData(), buffer.data(),
                               static_cast<DWORD>(buffer.size()), file->constData());
  const QByteArrayView answer(buffer.data(), static_cast<qsizetype>(count));
  return windowstext::FromAnsi(answer.first(CutLength(answer, limit)));
}

quint32 GetInt(const QString& section, const QString& key, qint32 fallback, const QString& fileName) {
  const Argument sectionName(section);
  const Argument keyName(key);
  const auto file = FileArgument(fileName);
  if (!file || section.isNull() || key.isNull() || !sectionName.IsValid() || !keyName.IsValid())
    return static_cast<quint32>(fallback);
  return GetPrivateProfileIntA(sectionName.Pointer(), keyName.Pointer(), fallback, file->constData());
}

bool WriteString(const QString& section, const QString& key, const QString& value, const QString& fileName) {
  const Argument sectionName(section);
  const Argument keyName(key);
  const Argument text(value);
  const auto file = FileArgument(fileName);
  // What would arrive as other characters, or not be read back, is not written.
  if (!file || !sectionName.IsValid() || !keyName.IsValid() || !text.IsValid() ||
      value.toUtf8().size() > kLongestValue || IsReadOnly(*file))
    return false;
  return WritePrivateProfileStringA(sectionName.Pointer(), keyName.Pointer(), text.Pointer(),
                                    file->constData()) != FALSE;
}

QString MakeTempFile(const QString& folder, const QString& prefix) {
  const auto place = FileArgument(folder.isEmpty() ? QStringLiteral(".") : folder);
  const auto start = windowstext::ToAnsi(prefix.left(3));
  if (!place || !start || folder.contains(QChar(u'\0')) || start->contains('\\') || start->contains('/'))
    return {};
  std::array<char, MAX_PATH> name{};
  if (GetTempFileNameA(place->constData(), start->constData(), 0, name.data()) == 0)
    return {};
  return windowstext::FromAnsi(name.data());
}

}  // namespace trevane::privateprofile

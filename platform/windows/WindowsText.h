#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

/// Conversions of the texts that the calls of Windows take and return. Names of files are always wide; the
/// few calls that exist for the ANSI code page only get their text through ToAnsi, which loses nothing or
/// refuses.
namespace trevane::windowstext {

/// For a `const wchar_t*` argument. Valid as long as the text is neither changed nor destroyed.
[[nodiscard]] inline const wchar_t* Wide(const QString& text) {
  return reinterpret_cast<const wchar_t*>(text.utf16());
}

/// The units of a text of the system as they are. Qt's own ways from wide characters take them for text to be
/// decoded: one at the beginning that looks like a byte order mark is taken away, or turns all others round.
[[nodiscard]] QString FromWide(const wchar_t* text, qsizetype length);
[[nodiscard]] QString FromWide(const wchar_t* text);

/// The real path of an open item, links followed, in the literal form; empty when the system does not report
/// it. `handle` is one of CreateFile.
[[nodiscard]] QString FinalPath(void* handle);

/// The text in the ANSI code page (UTF-8 where the system honours the program's manifest); nothing when a
/// character would be lost on the way there and back.
[[nodiscard]] std::optional<QByteArray> ToAnsi(const QString& text);

/// Bytes that are no text in the code page become U+FFFD.
[[nodiscard]] QString FromAnsi(QByteArrayView bytes);

/// An absolute path for the ANSI calls: its short form, or that of its folder, where the code page lacks a
/// character of it. Nothing when there is none.
[[nodiscard]] std::optional<QByteArray> ToAnsiPath(const QString& path);

/// An absolute path in the form that has no limit of 260 characters and is taken literally: no "." or "..",
/// no blank or dot removed at its end, no device names. "/" becomes "\". Anything but "X:\..." and
/// "\\server\share..." comes back as it is. Source: "Naming Files, Paths, and Namespaces" of the Windows API
/// documentation.
[[nodiscard]] QString LiteralPath(const QString& path);

/// The system's own description of one of its errors, without the line end.
[[nodiscard]] QString ErrorText(quint32 error);

}  // namespace trevane::windowstext

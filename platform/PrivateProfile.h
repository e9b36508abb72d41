#pragma once

#include <QByteArray>
#include <QString>

/// Settings-style text files. On Windows these are the system's calls of (almost) the same name with the "A"
/// suffix; elsewhere a port that behaves as those are documented to. A null text (QString()) means a
/// null pointer. Texts go into the file in UTF-8, the ANSI code page that the program's manifest asks for;
/// bytes that are not valid UTF-8 come back as lone surrogates, as far as the system hands them out, and go
/// back unchanged; on Windows, whose calls would change them, a text with such is not written. Nor is one
/// there with a character that the code page lacks. Paths are the operating system's own. Source: the Windows
/// API documentation of GetPrivateProfileString, GetPrivateProfileInt and WritePrivateProfileString.
namespace trevane::privateprofile {

/// The value of `key`, cut to `size` - 1 bytes, or `fallback` without its trailing spaces. A null key lists
/// the keys of the section, a null section all section names, each name followed by a NUL; a list that does
/// not fit is cut to `size` - 2 bytes. No character is cut in two. The default also replaces the list of
/// a section or a file that is not there.
[[nodiscard]] QString GetString(const QString& section, const QString& key, const QString& fallback, int size,
                                const QString& fileName);

/// Sign and leading digits of the value modulo 2^32; 0 when it has no digits, `fallback` when there is no
/// such key.
[[nodiscard]] quint32 GetInt(const QString& section, const QString& key, qint32 fallback,
                             const QString& fileName);

/// Writes `value`; a null value deletes the key, a null key the section, a null section flushes and answers
/// false as the system's call does. False when the file cannot be written; it is unchanged then. A line that
/// is changed keeps its key, the blanks round "=" and its line end; comments survive everything.
bool WriteString(const QString& section, const QString& key, const QString& value, const QString& fileName);

/// The content of such a file in UTF-8. Older files are in the system's own ANSI code page: on Windows a
/// content that is no UTF-8 is converted from there. One that is neither stays as it is, and so does UTF-16
/// behind its mark, and on other systems every content.
[[nodiscard]] QByteArray ToUtf8(const QByteArray& bytes);

}  // namespace trevane::privateprofile

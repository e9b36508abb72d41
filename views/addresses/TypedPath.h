#pragma once

#include <QDir>
#include <QString>

namespace trevane {

/// A typed or pasted text without blanks in front and the quotes around it. A blank at its end may be part of
/// a name and stays, except behind a closing quote.
[[nodiscard]] QString WithoutQuotes(const QString& text);

/// "C:" and anything that begins so.
[[nodiscard]] bool BeginsWithDrive(QStringView path);

/// The absolute path of the operating system that a typed or pasted text means, without "." and "..": a path
/// from the root with "/", or one from a drive with "\". Quotes and blanks around it are dropped, "~" at its
/// beginning is `home`, and a "file:" URL is the file that it names on this machine. Empty when the text is
/// no such path.
[[nodiscard]] QString TypedPath(const QString& text, const QString& home = QDir::homePath());

}  // namespace trevane

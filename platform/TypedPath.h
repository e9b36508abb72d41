#pragma once

#include <QString>

/// Paths as people type and paste them: for the address box and for the root of a local controller alike.
namespace trevane::typedpath {

/// Without blanks in front, and without quotes around it. A blank at the end stays: it may be part of a name.
[[nodiscard]] QString Unquoted(const QString& text);

/// The path that a text means. Understood are quotes around it, a link that begins with "file:", "~" for the
/// user's own folder, "." and ".." (which leads no further up than the drive or the share), separators that
/// are doubled or at the end, and on Windows variables between two "%". The prefix that makes a path
/// literal ("\\?\") is dropped: paths are literal here.
///
/// A path from the root of a system whose separator is "/" keeps that separator; all others have "\". A text
/// that is no path of the system, an address for one, is only cleaned.
[[nodiscard]] QString Understand(const QString& text);

/// Begins with the two separators in front of a server and its share: "\\server\share".
[[nodiscard]] bool IsShare(const QString& path);

}  // namespace trevane::typedpath

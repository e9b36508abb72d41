#pragma once

#include <QByteArray>
#include <QString>

#include <functional>

/// Older files of ours that stay beside a newer one: with ".old" behind their names, or ".old2" to ".old9"
/// where that is taken.
namespace trevane::oldfiles {

/// Calls `use` with each of the nine names, in their order, until it answers true; false when it never does.
bool ForEachName(const QString& file, const std::function<bool(const QString& name)>& use);

/// Whether the content is in an older encoding than the one that the program writes.
[[nodiscard]] bool IsInOldEncoding(const QByteArray& content);

/// Whether the file of that name is there, and in an older encoding.
[[nodiscard]] bool IsFileInOldEncoding(const QString& name);

}  // namespace trevane::oldfiles

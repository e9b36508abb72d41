#pragma once

#include <QString>
#include <QStringList>

namespace trevane {

inline constexpr qsizetype kHistoryEntries = 5;

/// The history of a box, newest first, after `text` was used. In a history that is not full yet an equal text
/// (letter by letter) moves to the top. A full one loses its fifth entry whatever the text is, so that a text
/// that is further up in it appears twice.
[[nodiscard]] QStringList AddedToHistory(QStringList history, const QString& text);

}  // namespace trevane

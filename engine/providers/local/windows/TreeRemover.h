#pragma once

#include "engine/model/ItemObserver.h"
#include "engine/providers/local/windows/ItemStatus.h"

#include <QHash>
#include <QString>

namespace trevane::local {

/// What the files of a source were when they were copied, by their paths.
struct SourceStamp {
  qint64 size = 0;
  FILETIME modified{};
};
using SourceStamps = QHash<QString, SourceStamp>;

/// Deletes one file, link or empty folder: 0, or an error of the system. One that is marked read-only goes
/// where this user may change the mark; otherwise it keeps it.
[[nodiscard]] DWORD RemoveOne(const QString& path, const ItemStatus& status);

/// Deletes an item with everything below it. Never goes through a link, and refuses folders that a volume is
/// mounted at (providererror::kBusy). What vanishes meanwhile is no failure. With `stamps` a file that is not
/// among them or is no longer as they tell stays, and everything from there on (providererror::kChanged).
/// `observer` is told of each item within a folder.
void RemoveTree(const QString& path, const QString& text, const ItemObserver& observer = {},
                const SourceStamps* stamps = nullptr);

}  // namespace trevane::local

#pragma once

#include "engine/model/ItemObserver.h"
#include "engine/providers/local/windows/ItemStatus.h"

#include <QString>

namespace trevane::local {

/// Deletes one file, link or empty folder: 0, or an error of the system. One that is marked read-only goes
/// where this user may change the mark; otherwise it keeps it.
[[nodiscard]] DWORD RemoveOne(const QString& path, const ItemStatus& status);

/// Deletes an item with everything below it. Never goes through a link, and refuses folders that a volume is
/// mounted at (providererror::kBusy). What vanishes meanwhile is no failure. The observer is called with each
/// item within a folder.
void RemoveTree(const QString& path, const QString& text, const ItemObserver& observer = {});

}  // namespace trevane::local

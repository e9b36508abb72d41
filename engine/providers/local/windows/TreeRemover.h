#pragma once

#include "engine/model/ItemObserver.h"
#include "engine/providers/local/windows/ItemStatus.h"

#include <QString>

namespace trevane::local {

/// Deletes one file, link or empty folder: 0, or an error of the system. A read-only item is deleted if this
/// user may change the attribute; otherwise it stays read-only.
[[nodiscard]] DWORD RemoveOne(const QString& path, const ItemStatus& status);

/// Deletes an item with everything below it. Links are not followed. Mount points are refused
/// (providererror::kBusy). Items that vanish meanwhile are no failure. The observer is called with each item
/// within a folder.
void RemoveTree(const QString& path, const QString& text, const ItemObserver& observer = {});

}  // namespace trevane::local

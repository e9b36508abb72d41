#pragma once

#include "engine/model/ItemObserver.h"
#include "engine/providers/local/linux/ChangeGuard.h"
#include "engine/providers/local/linux/FolderChain.h"

#include <QByteArray>

namespace trevane::local {

/// Deletes an item of the folder that `parent` stands in, with everything below it. Never goes through a
/// link, and refuses mount points with their contents untouched (providererror::kBusy). What vanishes
/// meanwhile is no failure.
class TreeRemover {
 public:
  /// With a `guard` whatever was changed since it began stays, and everything from there on
  /// (providererror::kChanged).
  /// `observer` is told of each item within a folder.
  static void Remove(FolderChain& parent, const QByteArray& name, ChangeGuard* guard = nullptr,
                     const ItemObserver& observer = {});
};

}  // namespace trevane::local

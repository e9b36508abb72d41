#pragma once

#include "engine/model/ItemObserver.h"
#include "engine/providers/local/linux/FolderChain.h"

#include <QByteArray>

namespace trevane::local {

/// Deletes an item of the folder that `parent` stands in, with everything below it. Never goes through a
/// link, and refuses mount points with their contents untouched (providererror::kBusy). What vanishes
/// meanwhile is no failure.
class TreeRemover {
 public:
  /// The observer is called with each item within a folder.
  static void Remove(FolderChain& parent, const QByteArray& name, const ItemObserver& observer = {});
};

}  // namespace trevane::local

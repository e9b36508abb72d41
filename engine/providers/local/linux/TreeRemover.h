#pragma once

#include "engine/model/ItemObserver.h"
#include "engine/providers/local/linux/FolderChain.h"

#include <QByteArray>

namespace trevane::local {

/// Deletes an item of the current folder of `parent`, with everything below it. Links are not followed. Mount
/// points are refused (providererror::kBusy) and their contents left alone. Items that vanish meanwhile are
/// no failure.
class TreeRemover {
 public:
  /// The observer is called with each item within a folder.
  static void Remove(FolderChain& parent, const QByteArray& name, const ItemObserver& observer = {});
};

}  // namespace trevane::local

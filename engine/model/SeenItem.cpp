#include "engine/model/SeenItem.h"

namespace trevane {

bool SeenItem::IsStill(const SeenItem& now) const {
  if (identity != now.identity || entry.IsLink() != now.entry.IsLink()) {
    return false;
  }
  // Size and dates of a link are those of what it leads to.
  if (entry.IsLink()) {
    return true;
  }
  return entry.IsFolder() == now.entry.IsFolder() &&
         (entry.IsFolder() || (entry.size == now.entry.size && entry.modified == now.entry.modified));
}

}  // namespace trevane

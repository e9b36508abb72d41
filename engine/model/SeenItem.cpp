#include "engine/model/SeenItem.h"

namespace trevane {

bool SeenItem::IsStill(const SeenItem& now, qint64 dateStep) const {
  if (identity != now.identity || entry.IsLink() != now.entry.IsLink()) {
    return false;
  }
  // Size and dates of a link are those of what it leads to.
  if (entry.IsLink()) {
    return true;
  }
  return entry.IsFolder() == now.entry.IsFolder() &&
         (entry.IsFolder() ||
          (entry.size == now.entry.size && IsSameDate(entry.modified, now.entry.modified, dateStep)));
}

}  // namespace trevane

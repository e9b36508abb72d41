#include "engine/substitute/SeenNames.h"

#include <QHash>

#include <algorithm>
#include <bit>

namespace trevane {

void SeenNames::DropRepeated(Listing& entries) {
  MakeRoom(names_.size() + entries.size());
  std::erase_if(entries, [this](const FileEntry& entry) { return !Add(entry.name); });
}

bool SeenNames::Add(const QString& name) {
  const auto hash = static_cast<quint32>(qHash(name));
  const size_t mask = slots_.size() - 1;
  size_t at = hash & mask;
  while (slots_[at].name != kFree) {
    if (slots_[at].hash == hash && names_[slots_[at].name] == name) {
      return false;
    }
    at = (at + 1) & mask;
  }
  slots_[at] = {static_cast<quint32>(names_.size()), hash};
  names_.push_back(name);
  return true;
}

void SeenNames::MakeRoom(size_t names) {
  if (slots_.size() >= names * 2 && !slots_.empty()) {
    return;
  }
  // At least twice as many as before, so that many small batches do not move all names each time.
  std::vector<Slot> before(std::bit_ceil(std::max(names * 2 + 1, slots_.size() * 2)));
  before.swap(slots_);
  const size_t mask = slots_.size() - 1;
  for (const Slot& slot : before) {
    if (slot.name != kFree) {
      size_t at = slot.hash & mask;
      while (slots_[at].name != kFree) {
        at = (at + 1) & mask;
      }
      slots_[at] = slot;
    }
  }
}

}  // namespace trevane

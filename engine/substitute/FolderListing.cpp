#include "engine/substitute/FolderListing.h"

#include "base/LowerCase.h"

#include <bit>

namespace trevane {

FolderListing::FolderListing(Listing entries) : entries_(std::move(entries)) {
  slots_.assign(std::bit_ceil(entries_.size() * 2 + 1), kFree);
  const size_t mask = slots_.size() - 1;
  size_t kept = 0;
  for (size_t i = 0; i < entries_.size(); ++i) {
    size_t slot = HashIgnoringCase(entries_[i].name) & mask;
    while (slots_[slot] != kFree && entries_[slots_[slot]].name != entries_[i].name) {
      slot = (slot + 1) & mask;
    }
    if (slots_[slot] != kFree) {
      continue;
    }
    slots_[slot] = static_cast<quint32>(kept);
    if (kept != i) {
      entries_[kept] = std::move(entries_[i]);
    }
    ++kept;
  }
  entries_.resize(kept);
}

QStringList FolderListing::Names() const {
  QStringList names;
  names.reserve(static_cast<qsizetype>(entries_.size()));
  for (const FileEntry& entry : entries_) {
    names.append(entry.name);
  }
  return names;
}

std::optional<size_t> FolderListing::Find(const QString& name, Qt::CaseSensitivity nameCase) const {
  std::optional<size_t> found;
  const size_t mask = slots_.size() - 1;
  for (size_t slot = HashIgnoringCase(name) & mask; slots_[slot] != kFree; slot = (slot + 1) & mask) {
    const QString& candidate = entries_[slots_[slot]].name;
    if (candidate == name) {
      found = slots_[slot];
      break;
    }
    if (nameCase == Qt::CaseInsensitive && !found && EqualIgnoringCase(candidate, name)) {
      found = slots_[slot];
    }
  }
  return found;
}

}  // namespace trevane

#include "engine/substitute/FolderListing.h"

#include <bit>

namespace trevane {

namespace {

/// Each UTF-16 unit folded on its own, so that hash and comparison cannot disagree.
char16_t Fold(QChar character) noexcept {
  const char16_t unit = character.unicode();
  if (unit < 0x80) {
    return unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit + 32) : unit;
  }
  return character.isSurrogate() ? unit : QChar(unit).toCaseFolded().unicode();
}

size_t FoldedHash(const QString& name) noexcept {
  quint64 hash = 0xcbf29ce484222325ULL;
  for (const QChar character : name) {
    hash = (hash ^ Fold(character)) * 0x100000001b3ULL;
  }
  return static_cast<size_t>(hash ^ (hash >> 29));
}

bool EqualFolded(const QString& left, const QString& right) noexcept {
  if (left.size() != right.size()) {
    return false;
  }
  for (qsizetype i = 0; i < left.size(); ++i) {
    if (left[i] != right[i] && Fold(left[i]) != Fold(right[i])) {
      return false;
    }
  }
  return true;
}

}  // namespace

FolderListing::FolderListing(Listing entries) : entries_(std::move(entries)) {
  slots_.assign(std::bit_ceil(entries_.size() * 2 + 1), kFree);
  const size_t mask = slots_.size() - 1;
  size_t kept = 0;
  for (size_t i = 0; i < entries_.size(); ++i) {
    size_t slot = FoldedHash(entries_[i].name) & mask;
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
  for (size_t slot = FoldedHash(name) & mask; slots_[slot] != kFree; slot = (slot + 1) & mask) {
    const QString& candidate = entries_[slots_[slot]].name;
    if (candidate == name) {
      found = slots_[slot];
      break;
    }
    if (nameCase == Qt::CaseInsensitive && !found && EqualFolded(candidate, name)) {
      found = slots_[slot];
    }
  }
  return found;
}

}  // namespace trevane

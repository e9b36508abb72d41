#pragma once

#include "base/Variant.h"
#include "fileops/clsClipBrd.h"

#include <vector>

namespace trevane {

/// The clipboard set: entries in the order in which they were added, with or without a key. Keys are
/// compared without regard to case, positions count from 1.
class clsClipBrds {
 public:
  using Iterator = std::vector<clsClipBrd>::const_iterator;

  /// Adds at the end, without a key when that is empty. Fails with error::kKeyAlreadyThere.
  void Add(const clsClipBrd& entry, const QString& key);

  /// By position or by key. Fails with error::kOutOfRange or error::kNoSuchKey.
  [[nodiscard]] const clsClipBrd& Item(const Variant& index) const;
  [[nodiscard]] qint32 Count() const noexcept { return static_cast<qint32>(entries_.size()); }

  /// Removes all entries.
  void Clear();

  [[nodiscard]] Iterator begin() const noexcept { return entries_.begin(); }
  [[nodiscard]] Iterator end() const noexcept { return entries_.end(); }

 private:
  [[nodiscard]] qsizetype PositionOfKey(const QString& key) const;

  std::vector<clsClipBrd> entries_;
  /// As many as there are entries; empty for an entry without a key.
  std::vector<QString> keys_;
};

}  // namespace trevane

#pragma once

#include "engine/files/FileSystem.h"

#include <QStringList>

#include <optional>
#include <utility>
#include <vector>

namespace trevane {

/// The entries of a folder, found by position and by name. A name that comes a second time is left out.
class FolderListing {
 public:
  explicit FolderListing(Listing entries);

  [[nodiscard]] const Listing& Entries() const noexcept { return entries_; }
  [[nodiscard]] Listing TakeEntries() && noexcept { return std::move(entries_); }

  /// The names in order, sharing their text with the entries.
  [[nodiscard]] QStringList Names() const;

  /// The position of a name, in constant time. Where case does not matter an exact match is still preferred
  /// to another one.
  [[nodiscard]] std::optional<size_t> Find(const QString& name, Qt::CaseSensitivity nameCase) const;

 private:
  static constexpr quint32 kFree = 0xFFFFFFFF;

  Listing entries_;
  /// Open addressing by the hash of the name in lower case; a slot holds a position. A quarter of what a hash
  /// of texts would take.
  std::vector<quint32> slots_;
};

}  // namespace trevane

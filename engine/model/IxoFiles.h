#pragma once

#include "base/Variant.h"

#include <memory>

namespace trevane {

class IxoFile;

/// The children of a controller's top or of a folder. An object that has been handed out stays cached here
/// until it is removed or the collection is cleared; neither touches a file.
class IxoFiles {
 public:
  virtual ~IxoFiles() = default;

  /// A text selects a child by name, an integer by position from 0. Fails with error::kNotFound for a name
  /// that is not there and with error::kOutOfRange for a position that is not.
  [[nodiscard]] virtual std::shared_ptr<IxoFile> Item(const Variant& index) = 0;

  /// Releases the cached child whose IxoFile::Index is given. An index that is not cached is no error.
  virtual void Remove(const Variant& index) = 0;

  /// Releases all cached children and the folder's listing.
  virtual void Clear() = 0;
};

}  // namespace trevane

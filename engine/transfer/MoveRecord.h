#pragma once

#include "engine/files/TreeRecord.h"
#include "engine/model/IxoFile.h"

#include <memory>

namespace trevane {

/// A TreeRecord of the source of a move, a file or folder of a controller. With it a move deletes only items
/// that are verified at the destination. Every failure is a RunTimeError.
class MoveRecord {
 public:
  using Proof = TreeRecord::Proof;

  /// Remembers the item and everything below it.
  void Take(const std::shared_ptr<IxoFile>& source, const ItemObserver& observer);

  /// Fails unless the source is still as it was and all of it is at the target. Both objects have been opened
  /// after the copy ended.
  void RequireArrived(const std::shared_ptr<IxoFile>& source, const std::shared_ptr<IxoFile>& target,
                      Proof proof, const ItemObserver& observer) const;

  [[nodiscard]] bool ShowsChanges() const { return record_.ShowsChanges(); }

  /// As TreeRecord::DeleteSource; here an item that vanished is a failure.
  void DeleteSource(const std::shared_ptr<IxoFile>& source, const ItemObserver& observer);

 private:
  TreeRecord record_;
};

}  // namespace trevane

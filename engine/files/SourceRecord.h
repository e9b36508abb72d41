#pragma once

#include "engine/files/HeldFolder.h"
#include "engine/files/TreeRecord.h"

#include <QString>

namespace trevane {

/// A TreeRecord of an item of a held folder. Every failure is a RunTimeError.
class SourceRecord {
 public:
  /// Remembers the item `name` of `folder` and everything below it. Refuses mount points with
  /// providererror::kBusy. Where files have state stamps, it waits until later changes are sure to alter
  /// them.
  void Take(HeldFolder& folder, const QString& name);

  /// False when only the path identifies the recorded item.
  [[nodiscard]] bool HasIdentity() const { return record_.HasIdentity(); }

  /// Fails with providererror::kChanged unless the source is unchanged and the item `copyName` of `target` is
  /// a whole copy of it.
  void RequireArrived(HeldFolder& folder, HeldFolder& target, const QString& copyName) const;

  [[nodiscard]] bool ShowsChanges() const { return record_.ShowsChanges(); }
  /// As RequireArrived, and each content is compared: for a record that does not show changes, right before
  /// the source is deleted.
  void RequireSameContent(HeldFolder& folder, HeldFolder& target, const QString& copyName) const;

  /// As TreeRecord::DeleteSource. Items that vanished meanwhile are no failure.
  void DeleteSource(HeldFolder& folder);

 private:
  TreeRecord record_;
};

}  // namespace trevane

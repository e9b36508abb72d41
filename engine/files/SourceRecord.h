#pragma once

#include "engine/files/HeldFolder.h"

#include <QString>

#include <set>
#include <utility>
#include <vector>

namespace trevane {

/// Remembers an item and everything below it before a copy, so that a move deletes only items that are known
/// to have arrived. Every failure is a RunTimeError.
class SourceRecord {
 public:
  /// Remembers the item `name` of `folder` and everything below it. Refuses mount points with
  /// providererror::kBusy. Where files have state stamps, it waits until later changes are sure to alter
  /// them.
  void Take(HeldFolder& folder, const QString& name);

  /// False when only the path identifies the recorded item.
  [[nodiscard]] bool HasIdentity() const { return top_.seen.identity.has_value(); }

  /// Fails with providererror::kChanged unless the source is unchanged and the item `copyName` of `target` is
  /// a whole copy of it.
  void RequireArrived(HeldFolder& folder, HeldFolder& target, const QString& copyName) const;

  /// Deletes the recorded items one by one, each folder after its contents. Items that vanished meanwhile are
  /// no failure. Items that changed or appeared are kept, with the folders that hold them, and this fails.
  void DeleteSource(HeldFolder& folder);

 private:
  using Key = std::pair<quint64, quint64>;
  struct Item {
    QString name;
    SeenItem seen;
    std::vector<Item> below;
  };

  static void Take(HeldFolder& folder, Item& item, std::vector<Key>& files);
  [[nodiscard]] bool IsUnchanged(const Item& item, const SeenItem& now) const;
  void Compare(HeldFolder& folder, const Item& item, HeldFolder& target, const QString& copyName) const;
  void Delete(HeldFolder& folder, const Item& item);

  Item top_;
  /// Files that were recorded under more than one name.
  std::set<Key> shared_;
  /// Those of them of which one name was deleted, which changes the state stamp of the others.
  std::set<Key> unlinked_;
};

}  // namespace trevane

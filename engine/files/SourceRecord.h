#pragma once

#include "engine/files/HeldFolder.h"

#include <QString>

#include <set>
#include <utility>
#include <vector>

namespace trevane {

/// An item and everything below it as they were before a copy, so that a move gives up nothing but what is
/// known to have arrived. Every failure is a RunTimeError.
class SourceRecord {
 public:
  /// Remembers the item `name` of `folder` and everything below it. Refuses mount points with
  /// providererror::kBusy. Where files have state stamps it returns when a change from then on shows in them.
  void Take(HeldFolder& folder, const QString& name);

  /// False where only the path tells the recorded item from others.
  [[nodiscard]] bool HasIdentity() const { return top_.seen.identity.has_value(); }

  /// Fails with providererror::kChanged unless the source is still as it was and the item `copyName` of
  /// `target` holds all of it.
  void RequireArrived(HeldFolder& folder, HeldFolder& target, const QString& copyName) const;

  /// Deletes what was recorded item by item, folders last and empty. What vanished meanwhile is no failure;
  /// what changed or came since stays, with the folders that hold it, and this fails.
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
  /// Those of them that have lost a name by now: that changed the state of the other names.
  std::set<Key> unlinked_;
};

}  // namespace trevane

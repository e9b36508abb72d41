#pragma once

#include "engine/files/MovableTree.h"
#include "engine/model/ItemObserver.h"

#include <QString>
#include <QStringList>

#include <optional>
#include <set>
#include <vector>

namespace trevane {

/// An item and everything below it as they were before a copy. With it a move deletes only items that are
/// verified at the destination and are still the items that were copied. Depth costs no stack.
class TreeRecord {
 public:
  enum class Proof {
    /// A new copy in which links are links: items of the same kind and size are taken for it.
    NewTree,
    /// A copy in which links may have become files. An item of the same size is taken for the copy.
    Size,
    /// As Size, but something was at the destination before, so the date or the content must be the same.
    Content
  };

  /// Remembers the item `name` of the current folder of `tree` and everything below it. The observer is
  /// called with each item below; false ends this with error::kCancelled.
  void Take(MovableTree& tree, const QString& name, const ItemObserver& observer = {});

  /// The recorded item was known by more than its path, and changes of it by more than its date.
  [[nodiscard]] bool HasIdentity() const { return items_.front().identity.has_value(); }
  /// No file can have changed while its size, date and state stamp are those that were recorded. Otherwise
  /// only its content tells, which must be compared last before anything is deleted.
  [[nodiscard]] bool ShowsChanges() const { return showsChanges_; }
  [[nodiscard]] bool HasStateStamp() const { return items_.front().stateStamp.has_value(); }

  /// Fails unless `source` is as it was recorded and the item `copyName` of `target` is a whole copy of it.
  /// The observer is called as by Take.
  void RequireArrived(MovableTree& source, MovableTree& target, const QString& copyName, Proof proof,
                      const ItemObserver& observer = {}) const;

  /// Deletes the recorded items one by one, each folder after its contents. Items that vanished are no
  /// failure where the tree answers so. Items that changed or appeared are kept, with the folders that hold
  /// them, and this fails. Nothing is undone then: the observer is called, but cannot end it.
  void DeleteSource(MovableTree& tree, const ItemObserver& observer = {});

 private:
  /// Items stand in the order of the walk: a folder, then everything below it.
  struct Item {
    QString name;
    bool isFolder = false;
    bool isLink = false;
    /// Another item of the folder differs only in case: the two may have become one.
    bool hasTwin = false;
    qint64 size = 0;
    Variant modified;
    std::optional<QString> identity;
    std::optional<qint64> stateStamp;
    /// Items in this folder.
    qsizetype children = 0;
    /// The position after the last item below.
    size_t end = 0;
  };

  [[nodiscard]] static Item ItemOf(MovableTree& tree, const QString& name);
  [[nodiscard]] static bool IsWholeCopy(MovableTree& source, MovableTree& target, const Item& item,
                                        Proof proof);
  void FindShared();
  void RequireUnchanged(MovableTree& tree, const Item& item) const;
  /// Looks for an item that is to be deleted: a folder only where its files are not deleted together.
  [[nodiscard]] bool FindForRemoval(MovableTree& tree, size_t at) const;
  /// Whether the files of `folder` from `first` to `end` are deleted after one look.
  [[nodiscard]] static bool GoTogether(MovableTree& tree, size_t first, size_t end, const Item* folder);
  void RemoveUnchanged(MovableTree& tree, const Item& item);
  /// The position after the files of `folder` that follow each other from `first` on, at most one batch.
  [[nodiscard]] size_t EndOfRun(size_t first, const Item* folder) const;
  void RemoveTogether(MovableTree& tree, size_t first, size_t end) const;

  std::vector<Item> items_;
  bool showsChanges_ = true;
  /// Files that were recorded under more than one name.
  std::set<QString> shared_;
  /// Those of them of which one name was deleted, which changes the state stamp of the others.
  std::set<QString> unlinked_;
};

}  // namespace trevane

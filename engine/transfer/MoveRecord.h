#pragma once

#include "base/Variant.h"
#include "engine/model/IxoFile.h"

#include <QString>

#include <memory>
#include <optional>
#include <vector>

namespace trevane {

/// The source of a move and everything below it as they were before the copy. With it a move deletes only
/// what has been verified at the destination. Every failure is a RunTimeError.
class MoveRecord {
 public:
  enum class Proof {
    /// An item of the same size at the destination is taken for the copy.
    Size,
    /// Something was at the destination before, so the date or the content must be the same.
    Content
  };

  /// Remembers the item and everything below it.
  void Take(const std::shared_ptr<IxoFile>& source, const ItemObserver& observer);

  /// Fails unless the source is still as it was and all of it stands at the target. Both objects have been
  /// opened after the copy ended.
  void RequireArrived(const std::shared_ptr<IxoFile>& source, const std::shared_ptr<IxoFile>& target,
                      Proof proof, const ItemObserver& observer) const;

  /// Deletes what was remembered item by item, folders last and empty. Whatever changed or came since stays,
  /// and the folders that hold it, and this fails. Once the first item was deleted there is no way back: the
  /// observer is called, but cannot end the move.
  void DeleteSource(const std::shared_ptr<IxoFile>& source, const ItemObserver& observer) const;

 private:
  struct Item {
    QString name;
    bool isFolder = false;
    bool isLink = false;
    /// Another item of the folder differs only in case: the two may have become one.
    bool hasTwin = false;
    qint64 size = 0;
    Variant modified;
    std::optional<QString> identity;
    std::vector<Item> below;
  };

  static void Take(const std::shared_ptr<IxoFile>& source, Item& item, const ItemObserver& observer);
  static void RequireUnchanged(IxoFile& source, const Item& item);
  static void Compare(const std::shared_ptr<IxoFile>& source, const std::shared_ptr<IxoFile>& target,
                      const Item& item, Proof proof, const ItemObserver& observer);
  static void CompareFile(IxoFile& source, IxoFile& target, const Item& item, Proof proof);
  static void Delete(const std::shared_ptr<IxoFile>& source, const Item& item, const ItemObserver& observer);

  Item top_;
};

}  // namespace trevane

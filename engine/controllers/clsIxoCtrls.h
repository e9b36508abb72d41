#pragma once

#include "base/KeyedCollection.h"
#include "base/Variant.h"
#include "engine/controllers/clsIxoCtrl.h"

#include <memory>

namespace trevane {

/// Controllers in the order in which they were added, with keys.
using ControllerCollection = KeyedCollection<std::shared_ptr<clsIxoCtrl>>;

/// The key of a name in such a collection. The "@" keeps a name that consists of digits from being taken for
/// a position.
[[nodiscard]] inline QString ControllerKey(const QString& name) {
  return u'@' + name;
}

/// The registry of the controllers that are connected now, by `RealCtrlName`. Errors are those of
/// KeyedCollection.
class clsIxoCtrls {
 public:
  clsIxoCtrls() = default;
  clsIxoCtrls(const clsIxoCtrls&) = delete;
  clsIxoCtrls& operator=(const clsIxoCtrls&) = delete;

  void Add(const std::shared_ptr<clsIxoCtrl>& ctrl);

  /// A text is a `RealCtrlName`, a number a position from 1.
  [[nodiscard]] std::shared_ptr<clsIxoCtrl> Item(const Variant& index) const;
  [[nodiscard]] qint32 Count() const noexcept { return records_.Count(); }
  void Remove(const Variant& index);

  /// The records in order.
  [[nodiscard]] ControllerCollection::Iterator begin() const { return records_.begin(); }
  [[nodiscard]] ControllerCollection::Iterator end() const { return records_.end(); }

 private:
  ControllerCollection records_;
};

}  // namespace trevane

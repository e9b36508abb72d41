#pragma once

#include "base/Variant.h"

#include <memory>

namespace trevane {

class IxoController;

class IxoControllers {
 public:
  virtual ~IxoControllers() = default;

  /// A text selects by `Name` (without regard to case), a 16-bit or 32-bit integer by `Index`.
  [[nodiscard]] virtual std::shared_ptr<IxoController> Item(const Variant& index) = 0;

  /// Closes and forgets the controller. The index is read as by Item.
  virtual void Remove(const Variant& index) = 0;
};

}  // namespace trevane

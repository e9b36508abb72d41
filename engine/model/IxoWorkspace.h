#pragma once

#include "base/Variant.h"

#include <memory>

namespace trevane {

class IxoController;
class IxoControllers;

class IxoWorkspace {
 public:
  virtual ~IxoWorkspace() = default;

  /// The controllers that are open in this workspace.
  [[nodiscard]] virtual std::shared_ptr<IxoControllers> Controllers() = 0;

  /// The names of all providers, as an array of texts. `option` is always empty.
  [[nodiscard]] virtual Variant ProviderNames(const QString& option) = 0;

  /// Opens a controller. An empty name, or one that is taken, lets the engine choose: read
  /// IxoController::Name. A null text (QString()) is "no value". Fails when the provider is unknown or cannot
  /// connect.
  [[nodiscard]] virtual std::shared_ptr<IxoController> AddController(const QString& name,
                                                                     const QString& provider,
                                                                     const QString& machine,
                                                                     const QString& option) = 0;
};

}  // namespace trevane

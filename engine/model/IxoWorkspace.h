#pragma once

#include "base/Variant.h"
#include "engine/model/ConnectionHelp.h"
#include "engine/model/ControllerOpening.h"
#include "engine/model/ControllerRequest.h"

#include <memory>
#include <vector>

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

  /// What can be written for a controller of that provider; nothing for an unknown one. The default knows
  /// nothing.
  [[nodiscard]] virtual ConnectionHelp HelpFor(const QString& provider) {
    Q_UNUSED(provider);
    return {};
  }

  /// Opens a controller. An empty name, or one that is taken, lets the engine choose: read
  /// IxoController::Name. A null text (QString()) is "no value". Fails when the provider is unknown or cannot
  /// connect.
  [[nodiscard]] virtual std::shared_ptr<IxoController> AddController(const QString& name,
                                                                     const QString& provider,
                                                                     const QString& machine,
                                                                     const QString& option) = 0;

  /// Opens several controllers, of which each is added when it is taken. Slow ones are connected side by side
  /// meanwhile. The default opens each when it is taken.
  [[nodiscard]] virtual std::unique_ptr<ControllerOpening> OpenControllers(
      const std::vector<ControllerRequest>& requests);
};

}  // namespace trevane

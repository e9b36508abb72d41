#pragma once

#include "base/RunTimeError.h"

#include <QString>

#include <memory>
#include <optional>

namespace trevane {

class IxoController;

/// What IxoWorkspace::AddController takes.
struct ControllerRequest {
  QString name;
  QString provider;
  QString machine;
  QString option;
};

/// The controller, or why it could not be opened.
struct ControllerResult {
  std::shared_ptr<IxoController> controller;
  std::optional<RunTimeError> failure;
};

}  // namespace trevane

#pragma once

#include <QString>

namespace trevane {

/// What IxoWorkspace::AddController takes.
struct ControllerRequest {
  QString name;
  QString provider;
  QString machine;
  QString option;
  /// The folder that is opened first, for which a slow controller is asked with its connection.
  QString root = {};
};

}  // namespace trevane

#pragma once

#include <QString>

namespace trevane {

/// What a person writes to connect a controller, plain text in lines. Empty texts say nothing.
struct ConnectionHelp {
  /// One thing that could be written as machine or option.
  QString machineExample = {};
  QString optionExample = {};
  /// All that can be written there.
  QString machine = {};
  QString option = {};
};

}  // namespace trevane

#pragma once

#include "engine/controllers/clsIxoCtrls.h"

#include <memory>

namespace trevane {

/// How many controllers are remembered between runs.
inline constexpr qint32 kRememberedControllers = 8;

/// Puts the controller in front of those that are remembered, in place of one of that name, and forgets the
/// oldest beyond kRememberedControllers. One without a `CtrlName` is not remembered.
void RememberController(ControllerCollection& saved, const std::shared_ptr<clsIxoCtrl>& ctrl);

}  // namespace trevane

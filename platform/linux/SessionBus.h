#pragma once

#include <QString>

namespace trevane::sessionbus {

/// The address of the session's D-Bus; empty where there is none. One that would have to be started first is
/// not started.
[[nodiscard]] QString Address();

}  // namespace trevane::sessionbus

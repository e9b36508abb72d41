#pragma once

#include "engine/controllers/clsIxoCtrl.h"

#include <QString>

namespace trevane {

class clsProfile;

/// The two kinds of files that keep controllers; each has its own keys.
enum class ControllerFile { Settings, Workspace };

/// Reads a controller from its section: everything that the user typed to connect it.
[[nodiscard]] clsIxoCtrl ReadController(const clsProfile& profile, const QString& section,
                                        ControllerFile file);

/// Writes what ReadController reads, in the order of the table of values.
void WriteController(clsProfile& profile, const QString& section, ControllerFile file,
                     const clsIxoCtrl& controller);

}  // namespace trevane

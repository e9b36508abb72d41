#pragma once

#include "prompts/UserPrompts.h"

#include <QString>

namespace trevane {

/// Asks for a file to open or to save into. `fileName` is preset when it is not empty. Empty when the user
/// cancelled.
[[nodiscard]] QString ShowFileDialog(UserPrompts& prompts, const QString& filter, FileQuestion::Mode mode,
                                     const QString& fileName, const QString& initialFolder);

}  // namespace trevane

#pragma once

#include "engine/model/IxoControllers.h"
#include "engine/model/IxoFile.h"

#include <QString>

#include <memory>

namespace trevane {

/// Opens the root folder of the controller with that `Index`: by its whole path, and when that fails by its
/// last name inside its parent. Nothing, or a RunTimeError, when it cannot be opened. Where `root` holds both
/// separators it is split at the one whose first occurrence comes later.
[[nodiscard]] std::shared_ptr<IxoFile> OpenControllerRoot(IxoControllers& controllers, qint32 ctrlIdx,
                                                          const QString& root);

}  // namespace trevane

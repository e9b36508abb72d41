#pragma once

#include "engine/model/IxoControllers.h"
#include "engine/model/IxoFile.h"

#include <QString>

#include <memory>

namespace trevane {

/// Opens the root of the controller with that `Index`: by its whole path, and when that fails by its last
/// name inside its parent, but not after a failure that would come again, such as a time-out, a refusal, a
/// failed log-on or a cancel. When both ways fail: the RunTimeError of the first way, of the second where the
/// first yielded nothing, or nothing. Where `root` holds both separators it is split at the one whose first
/// occurrence comes later.
[[nodiscard]] std::shared_ptr<IxoFile> OpenControllerRoot(IxoControllers& controllers, qint32 ctrlIdx,
                                                          const QString& root);

}  // namespace trevane

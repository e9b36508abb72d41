#pragma once

#include "engine/controllers/clsIxoCtrls.h"

#include <QString>

#include <memory>

namespace trevane {

/// The registry's record for an address: the local-file controller's for "My Computer", otherwise the one
/// whose `RealCtrlName` is the text between the first and the second "\" of the address. Nothing when there
/// is none.
[[nodiscard]] std::shared_ptr<clsIxoCtrl> FindControllerOfAddress(const clsIxoCtrls& registry,
                                                                  const QString& address);

}  // namespace trevane

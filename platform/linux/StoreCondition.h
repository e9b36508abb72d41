#pragma once

#include "platform/SecretStore.h"

#include <QString>

namespace trevane {

/// Asks the desktop's password store on the bus at that address whether it is there and open. Blocks while
/// the bus or the store does not answer; on any thread.
[[nodiscard]] SecretStore::Condition AskStoreCondition(const QString& busAddress);

}  // namespace trevane

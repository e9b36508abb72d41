#pragma once

#include "engine/files/Provider.h"

#include <optional>

namespace trevane {

class SecretStore;

/// Controllers over SSH; nothing where the program was built without it. `store`, which may be null, outlives
/// every file system that is opened.
[[nodiscard]] std::optional<Provider> SftpProvider(SecretStore* store);

}  // namespace trevane

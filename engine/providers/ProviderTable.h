#pragma once

#include "engine/files/Provider.h"

namespace trevane {

class SecretStore;
class ShellIcons;
class Volumes;
struct RemoteContext;

/// The providers this program ships. `volumes` and `icons` (for type names; may be null) must outlive every
/// file system that is opened, and so must `remote`: with it the calls for slow drives of this machine run on
/// threads of their own. `secrets` keeps passwords; null for none.
[[nodiscard]] ProviderTable ShippedProviders(Volumes& volumes, ShellIcons* icons = nullptr,
                                             RemoteContext* remote = nullptr, SecretStore* secrets = nullptr);

}  // namespace trevane

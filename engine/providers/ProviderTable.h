#pragma once

#include "engine/files/Provider.h"

#include <QStringList>

namespace trevane {

class SecretStore;
class ShellIcons;
class Volumes;
struct RemoteContext;

/// The providers this program ships. `volumes` and `icons` (for type names; may be null) must outlive every
/// file system that is opened, and so must `remote`: with it the calls for slow drives of this machine run on
/// threads of their own. `secrets` keeps passwords; null for none. `trustFiles` hold the certificates of
/// controllers that the user trusts; the first one is added to, and none need exist.
[[nodiscard]] ProviderTable ShippedProviders(Volumes& volumes, ShellIcons* icons = nullptr,
                                             RemoteContext* remote = nullptr, SecretStore* secrets = nullptr,
                                             const QStringList& trustFiles = {});

}  // namespace trevane

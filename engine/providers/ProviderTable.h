#pragma once

#include "engine/files/Provider.h"

namespace trevane {

class ShellIcons;
class Volumes;

/// The providers this program ships. `volumes` and `icons` (for type names; may be null) must outlive every
/// file system that is opened.
[[nodiscard]] ProviderTable ShippedProviders(Volumes& volumes, ShellIcons* icons = nullptr);

}  // namespace trevane

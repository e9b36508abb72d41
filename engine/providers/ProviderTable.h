#pragma once

#include "engine/providers/FileSystem.h"

#include <QString>

#include <functional>
#include <memory>
#include <vector>

namespace trevane {

class ShellIcons;
class Volumes;

/// One line a provider: the name that AddController takes and what opens its file system (throws RunTimeError
/// when it cannot connect).
struct Provider {
  QString name;
  std::function<std::shared_ptr<FileSystem>(const FileSystemRequest&)> open;
};

using ProviderTable = std::vector<Provider>;

/// The providers this program ships. `volumes` and `icons` (for type names; may be null) must outlive every
/// file system that is opened.
[[nodiscard]] ProviderTable ShippedProviders(Volumes& volumes, ShellIcons* icons = nullptr);

}  // namespace trevane

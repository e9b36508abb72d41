#pragma once

#include "engine/files/FileSystem.h"

#include <QString>

#include <functional>
#include <memory>
#include <vector>

namespace trevane {

/// Opens a file system for a controller: the machine and option texts of IxoWorkspace::AddController.
struct FileSystemRequest {
  QString machine;
  QString option;
};

/// One provider: the name that AddController takes and the function that opens its file system. It throws
/// RunTimeError when it cannot connect.
struct Provider {
  QString name;
  std::function<std::shared_ptr<FileSystem>(const FileSystemRequest&)> open;
};

using ProviderTable = std::vector<Provider>;

}  // namespace trevane

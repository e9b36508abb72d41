#pragma once

#include "engine/files/Provider.h"
#include "engine/providers/local/LocalFileSystem.h"

#include <memory>

namespace trevane {

/// Opens a folder of another machine as a controller of its own: `request.machine` is its path as a person
/// typed it, "\\server\share\folder" on Windows, on Linux the absolute path of a folder where it is mounted.
/// The option is not used. Fails with a text that names the path when it is empty, relative, names no share
/// of its server, is missing or is no folder.
///
/// On Linux the controller is not ready (error::kDeviceNotReady) when another volume, or none, is mounted
/// there later: nothing is written into the folder below a lost mount. Any call may take long or never
/// return.
[[nodiscard]] std::shared_ptr<FileSystem> OpenShare(const FileSystemRequest& request,
                                                    LocalFileSystem::Opener opener = {});

/// What can be written for it.
[[nodiscard]] ConnectionHelp ShareHelp();

}  // namespace trevane

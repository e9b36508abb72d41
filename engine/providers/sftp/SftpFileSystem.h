#pragma once

#include "engine/files/FileSystem.h"
#include "engine/providers/sftp/SftpConnector.h"
#include "engine/providers/sftp/SftpSettings.h"

#include <memory>

namespace trevane {

class CallControl;

/// The files of a server that speaks SFTP version 3, over the channels of `connector`. Connects at once and
/// fails as SftpConnector::Connect does, or with the reason why the server does not speak SFTP. `control` may
/// be null.
[[nodiscard]] std::shared_ptr<FileSystem> OpenSftpFileSystem(std::unique_ptr<SftpConnector> connector,
                                                             const SftpSettings& settings,
                                                             std::shared_ptr<CallControl> control);

}  // namespace trevane

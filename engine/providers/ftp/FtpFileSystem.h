#pragma once

#include "engine/files/FileSystem.h"
#include "engine/providers/ftp/AbandonedItems.h"
#include "engine/providers/ftp/FtpConnector.h"
#include "engine/providers/ftp/FtpSettings.h"

#include <memory>

namespace trevane {

class CallControl;

/// The files of an FTP server, over the dialogues of `connector`. Connects at once and fails as
/// FtpConnector::Connect does, or with the reason why the folder of the settings cannot be shown. `control`
/// may be null. `abandoned` is shared by the connections of one controller; null for one that has one alone.
[[nodiscard]] std::shared_ptr<FileSystem> OpenFtpFileSystem(
    std::unique_ptr<FtpConnector> connector, const FtpSettings& settings,
    std::shared_ptr<CallControl> control, std::shared_ptr<ftp::AbandonedItems> abandoned = nullptr);

}  // namespace trevane

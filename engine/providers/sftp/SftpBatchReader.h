#pragma once

#include "engine/model/Content.h"
#include "engine/providers/sftp/SftpServer.h"

#include <QStringList>

#include <vector>

namespace trevane::sftp {

/// As FileSystem::ReadMany, with as many files open at once as the server takes.
[[nodiscard]] std::vector<ReadResult> ReadBatch(Server& server, const QStringList& paths);

}  // namespace trevane::sftp

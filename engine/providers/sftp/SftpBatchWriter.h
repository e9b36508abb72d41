#pragma once

#include "engine/model/Content.h"
#include "engine/providers/sftp/SftpServer.h"

#include <memory>
#include <vector>

namespace trevane::sftp {

/// As FileSystem::WriteMany, with as many files open at once as the server takes. Each is built under a
/// temporary name, and given its own when all of it has arrived.
[[nodiscard]] std::vector<WriteResult> WriteBatch(const std::shared_ptr<Server>& server,
                                                  const std::vector<NewContent>& files);

}  // namespace trevane::sftp

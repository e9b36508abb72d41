#pragma once

#include "engine/model/Content.h"
#include "engine/providers/ftp/FtpServer.h"

#include <QStringList>

#include <memory>
#include <vector>

namespace trevane::ftp {

/// As FileSystem::ReadMany: one listing tells the sizes of all files of a folder.
[[nodiscard]] std::vector<ReadResult> ReadBatch(const std::shared_ptr<Server>& server,
                                                const QStringList& paths);

/// As FileSystem::WriteMany: all contents are sent under temporary names; one listing shows whether they have
/// arrived and what stands where they belong; then they get their names, and one listing more shows them.
[[nodiscard]] std::vector<WriteResult> WriteBatch(const std::shared_ptr<Server>& server,
                                                  const std::vector<NewContent>& files);

}  // namespace trevane::ftp

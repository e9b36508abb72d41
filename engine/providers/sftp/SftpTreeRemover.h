#pragma once

#include "engine/model/ItemObserver.h"
#include "engine/providers/sftp/SftpServer.h"

namespace trevane::sftp {

/// As FileSystem::Remove, with many requests under way.
void RemoveTree(Server& server, const Place& top, const ItemObserver& observer);

}  // namespace trevane::sftp

#pragma once

#include "engine/model/FileTraits.h"
#include "engine/providers/sftp/SftpServer.h"

namespace trevane::sftp {

/// Modes of new folders, of which the server takes its own mask away.
constexpr quint32 kOpenFolder = 0777;
constexpr quint32 kClosedFolder = 0700;

void RequireOk(const StatusAnswer& answer, const Place& place);

/// Fails with what is wrong unless the folder was made.
void RequireMade(Server& server, const StatusAnswer& made, const Place& place);

/// As FileSystem::SetTraits, for an item that was just seen and is no link.
void SetTraitsAt(Server& server, const Place& place, const Attributes& own, const FileTraits& traits);

}  // namespace trevane::sftp

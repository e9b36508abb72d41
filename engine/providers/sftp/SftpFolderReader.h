#pragma once

#include "engine/model/Content.h"
#include "engine/providers/sftp/SftpServer.h"

namespace trevane::sftp {

/// Gives the children of a folder as FileSystem::ListInBatches does. Several requests run ahead of the one
/// that is read, and the links of a folder are followed while it is still read.
void ReadFolder(Server& server, const Place& folder, const ListingReceiver& receive);

}  // namespace trevane::sftp

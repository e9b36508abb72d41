#pragma once

#include "engine/model/Content.h"
#include "engine/providers/sftp/SftpServer.h"
#include "engine/providers/sftp/SftpSession.h"

namespace trevane::sftp {

/// Gives the children of a folder as FileSystem::ListInBatches does. Several requests run ahead of the one
/// that is read, and the links of a folder are followed while it is still read. Where `lookBehind` is given
/// it becomes a look at the folder's own path, sent after what stood there was opened and read: it shows that
/// a link has taken the folder's place before that. Not sent where opening or reading fails.
void ReadFolder(Server& server, const Place& folder, const ListingReceiver& receive,
                Request* lookBehind = nullptr);

}  // namespace trevane::sftp

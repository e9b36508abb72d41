#pragma once

#include "engine/files/Provider.h"
#include "engine/providers/network/SecretMemory.h"
#include "engine/providers/ssh/SshPlace.h"

#include <memory>

namespace trevane {

/// Opens the files of a controller over SSH: request.machine and request.option as ReadSftpSettings reads
/// them. `secrets` is the controller's own, the same for each of its connections. Any call may take long.
[[nodiscard]] std::shared_ptr<FileSystem> OpenSftp(const FileSystemRequest& request, const SshPlace& place,
                                                   std::shared_ptr<SecretMemory> secrets);

}  // namespace trevane

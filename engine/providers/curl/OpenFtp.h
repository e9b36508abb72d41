#pragma once

#include "engine/files/Provider.h"
#include "engine/providers/curl/FtpPlace.h"
#include "engine/providers/ftp/AbandonedItems.h"
#include "engine/providers/network/SecretMemory.h"

#include <memory>

namespace trevane {

/// Opens the files of a controller over FTP: request.machine and request.option as ReadFtpSettings reads
/// them. `secrets` and `abandoned` are the controller's own, the same for each of its connections. Any call
/// may take long.
[[nodiscard]] std::shared_ptr<FileSystem> OpenFtp(const FileSystemRequest& request, const FtpPlace& place,
                                                  std::shared_ptr<SecretMemory> secrets,
                                                  std::shared_ptr<ftp::AbandonedItems> abandoned);

}  // namespace trevane

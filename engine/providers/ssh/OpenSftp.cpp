#include "engine/providers/ssh/OpenSftp.h"

#include "engine/providers/sftp/SftpFileSystem.h"
#include "engine/providers/sftp/SftpSettings.h"
#include "engine/providers/ssh/SshConnector.h"

#include <utility>

namespace trevane {

std::shared_ptr<FileSystem> OpenSftp(const FileSystemRequest& request, const SshPlace& place,
                                     std::shared_ptr<SecretMemory> secrets) {
  const SftpSettings settings = ReadSftpSettings(request.machine, request.option, place.userName);
  return OpenSftpFileSystem(
      std::make_unique<SshConnector>(settings, place, std::move(secrets), request.control), settings,
      request.control);
}

}  // namespace trevane

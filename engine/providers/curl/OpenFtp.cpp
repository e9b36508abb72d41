#include "engine/providers/curl/OpenFtp.h"

#include "engine/providers/curl/CurlConnector.h"
#include "engine/providers/ftp/FtpFileSystem.h"
#include "engine/providers/ftp/FtpSettings.h"

#include <utility>

namespace trevane {

std::shared_ptr<FileSystem> OpenFtp(const FileSystemRequest& request, const FtpPlace& place,
                                    std::shared_ptr<SecretMemory> secrets) {
  const FtpSettings settings = ReadFtpSettings(request.machine, request.option);
  return OpenFtpFileSystem(
      std::make_unique<CurlConnector>(settings, place, std::move(secrets), request.control), settings,
      request.control);
}

}  // namespace trevane

#include "engine/providers/curl/OpenFtp.h"

#include "base/RunTimeError.h"
#include "engine/providers/curl/CurlConnector.h"
#include "engine/providers/ftp/FtpFileSystem.h"
#include "engine/providers/ftp/FtpSettings.h"

#include <utility>

#include <curl/curl.h>

namespace trevane {
namespace {

/// libcurl 7.87 and 7.88 wait in vain for such data connections: the user learns why at once.
void RequireKnownToWork(const FtpSettings& settings) {
  constexpr unsigned int kBroken = 0x075700;
  constexpr unsigned int kMended = 0x080000;
  const curl_version_info_data* const library = curl_version_info(CURLVERSION_NOW);
  const bool isBroken = library->version_num >= kBroken && library->version_num < kMended;
  if (isBroken && settings.active && settings.tls != FtpSettings::Tls::Off) {
    throw RunTimeError(error::kNotSupported,
                       QStringLiteral("Active=Yes cannot be used over TLS: libcurl %1 cannot do it")
                           .arg(QString::fromLatin1(library->version)));
  }
}

}  // namespace

std::shared_ptr<FileSystem> OpenFtp(const FileSystemRequest& request, const FtpPlace& place,
                                    std::shared_ptr<SecretMemory> secrets,
                                    std::shared_ptr<ftp::AbandonedItems> abandoned) {
  const FtpSettings settings = ReadFtpSettings(request.machine, request.option);
  RequireKnownToWork(settings);
  return OpenFtpFileSystem(
      std::make_unique<CurlConnector>(settings, place, std::move(secrets), request.control), settings,
      request.control, std::move(abandoned));
}

}  // namespace trevane

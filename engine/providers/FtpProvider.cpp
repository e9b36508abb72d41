#include "engine/providers/FtpProvider.h"

#include "engine/providers/certificates/AcceptedCertificates.h"
#include "engine/providers/curl/OpenFtp.h"
#include "engine/providers/ftp/AbandonedItems.h"
#include "engine/providers/ftp/FtpHelp.h"
#include "engine/providers/network/SecretMemory.h"

#include <memory>
#include <utility>

namespace trevane {

Provider FtpProvider(FtpPlace place) {
  if (!place.trust.accepted) {
    place.trust.accepted = std::make_shared<AcceptedCertificates>();
  }
  Provider ftp{QStringLiteral("IxoProv.Ftp"), {}, true};
  ftp.newOpener = [place = std::move(place)]() -> Provider::Opener {
    // What is typed once opens each connection of this controller, and of no other.
    return [place, secrets = std::make_shared<SecretMemory>(),
            abandoned = std::make_shared<ftp::AbandonedItems>()](const FileSystemRequest& request) {
      return OpenFtp(request, place, secrets, abandoned);
    };
  };
  ftp.open = [newOpener = ftp.newOpener](const FileSystemRequest& request) { return newOpener()(request); };
  ftp.help = FtpHelp();
  return ftp;
}

}  // namespace trevane

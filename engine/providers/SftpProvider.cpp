#include "engine/providers/SftpProvider.h"

#include "engine/providers/network/SecretMemory.h"
#include "engine/providers/sftp/SftpHelp.h"
#include "engine/providers/ssh/OpenSftp.h"
#include "engine/providers/ssh/SshPlace.h"

#include <memory>

namespace trevane {

Provider SftpProvider(SecretStore* store) {
  Provider sftp{QStringLiteral("IxoProv.Sftp"), {}, true};
  sftp.newOpener = [place = UsersSshPlace(store)]() -> Provider::Opener {
    // What is typed once opens each connection of this controller, and of no other.
    return [place, secrets = std::make_shared<SecretMemory>()](const FileSystemRequest& request) {
      return OpenSftp(request, place, secrets);
    };
  };
  sftp.open = [newOpener = sftp.newOpener](const FileSystemRequest& request) { return newOpener()(request); };
  sftp.help = SftpHelp();
  return sftp;
}

}  // namespace trevane

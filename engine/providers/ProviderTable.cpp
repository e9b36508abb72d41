#include "engine/providers/ProviderTable.h"

#include "engine/files/ProviderError.h"
#include "engine/providers/DriveRouter.h"
#include "engine/providers/FtpProvider.h"
#include "engine/providers/SftpProvider.h"
#include "engine/providers/local/LocalFileSystem.h"
#include "engine/providers/share/OpenShare.h"
#include "platform/OpenWithProgram.h"

namespace trevane {

namespace {

void OpenLocalFile(const QString& nativePath) {
  const OpenOutcome outcome = OpenWithProgram(nativePath);
  switch (outcome.code) {
    case OpenOutcome::Code::Started:
      return;
    case OpenOutcome::Code::NotFound:
      Fail(error::kNotFound, nativePath);
    case OpenOutcome::Code::NoProgram:
      // "No application is associated with the specified file."
      throw RunTimeError(error::kWin32Error + 1155, outcome.text);
    case OpenOutcome::Code::Failed:
      throw RunTimeError(providererror::kGeneralFailure, outcome.text);
  }
}

}  // namespace

ProviderTable ShippedProviders(Volumes& volumes, ShellIcons* icons, RemoteContext* remote,
                               SecretStore* secrets, const QStringList& trustFiles) {
  const auto openLocal = [icons](Volumes& drives, const FileSystemRequest& request) {
    // The icons belong to the window's thread.
    return std::make_shared<LocalFileSystem>(drives, OpenLocalFile, request.control ? nullptr : icons);
  };
  Provider local{QStringLiteral("IxoProv.LocalFile"),
                 [openLocal, remote, &volumes](const FileSystemRequest& request) {
                   return remote == nullptr ? std::shared_ptr<FileSystem>(openLocal(volumes, request))
                                            : std::make_shared<DriveRouter>(*remote, volumes, openLocal);
                 }};
  local.help = {.machine = QStringLiteral("Not used: the drives of this computer are shown"),
                .option = QStringLiteral("Not used")};
  Provider share{QStringLiteral("IxoProv.Share"),
                 [](const FileSystemRequest& request) { return OpenShare(request, OpenLocalFile); }, true};
  share.typeName = [icons](const FileEntry& entry) { return LocalFileSystem::TypeNameOf(icons, entry); };
  share.tellsNoWriting = true;
  share.help = ShareHelp();
  const FtpPlace ftp{.trust = {.file = trustFiles.value(0), .moreFiles = trustFiles.mid(1)},
                     .store = secrets};
  return {local, share, SftpProvider(secrets), FtpProvider(ftp)};
}

}  // namespace trevane

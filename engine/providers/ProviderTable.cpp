#include "engine/providers/ProviderTable.h"

#include "engine/files/ProviderError.h"
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

ProviderTable ShippedProviders(Volumes& volumes, ShellIcons* icons) {
  return {
      {QStringLiteral("IxoProv.LocalFile"),
       [&volumes, icons](const FileSystemRequest&) {
         return std::make_shared<LocalFileSystem>(volumes, OpenLocalFile, icons);
       }},
      // Without icons: these belong to the window's thread.
      {QStringLiteral("IxoProv.Share"),
       [](const FileSystemRequest& request) { return OpenShare(request, OpenLocalFile); }, true},
  };
}

}  // namespace trevane

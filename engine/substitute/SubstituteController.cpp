#include "engine/substitute/SubstituteController.h"

#include "engine/files/ProviderPath.h"
#include "engine/model/ItemName.h"
#include "engine/substitute/FileOptions.h"
#include "engine/substitute/SubstituteFile.h"
#include "engine/substitute/SubstituteFiles.h"

namespace trevane {

SubstituteController::SubstituteController(const QString& name, qint32 index,
                                           std::shared_ptr<FileSystemSession> session)
    : name_(name), index_(index), session_(std::move(session)) {
  const auto kind = session_->Capabilities().topHoldsDrives ? SubstituteFiles::Kind::Drives
                                                            : SubstituteFiles::Kind::TopFolder;
  files_ = std::make_shared<SubstituteFiles>(session_, kind, FolderReference(QString()));
}

std::shared_ptr<IxoFiles> SubstituteController::Files() {
  return files_;
}

std::shared_ptr<IxoFile> SubstituteController::OpenFile(const QString& name, const QString& option) {
  const auto folder = ParsePathOption(option);
  if (!folder) {
    return SubstituteFile::At(session_, session_->ToPath(session_->Files().PathFromText(name)));
  }
  return SubstituteFile::At(session_, PathOf(name, *folder));
}

std::shared_ptr<IxoFile> SubstituteController::OpenKnownFolder(const QString& name, const QString& folder) {
  return SubstituteFile::KnownAt(session_, PathOf(name, folder));
}

QString SubstituteController::PathOf(const QString& name, const QString& folder) const {
  RequireItemName(name);
  QStringList pieces = providerpath::Split(folder);
  const QString start =
      providerpath::IsShare(folder) && !pieces.isEmpty() ? QStringLiteral("\\\\") : QString();
  pieces.append(name);
  return session_->ToPath(start + providerpath::Join(pieces));
}

}  // namespace trevane

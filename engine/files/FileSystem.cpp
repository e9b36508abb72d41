#include "engine/files/FileSystem.h"

#include "engine/files/PathFolder.h"
#include "engine/files/ProviderError.h"
#include "engine/files/TreeByPath.h"
#include "engine/model/ContentSteps.h"

#include <algorithm>
#include <utility>

namespace trevane {

void FileSystem::ListInBatches(const QString& folder, const ListingReceiver& receive) {
  static_cast<void>(receive(List(folder)));
}

std::vector<ReadResult> FileSystem::ReadMany(const QStringList& paths) {
  return ReadOneByOne(paths, [this](const QString& path) { return OpenSource(path); });
}

std::vector<WriteResult> FileSystem::WriteMany(const std::vector<NewContent>& files) {
  return WriteOneByOne(files, [this](const NewContent& file) { return OpenSink(file.name, file.request); });
}

std::optional<QString> FileSystem::ReadLink(const QString& path) {
  Q_UNUSED(path);
  return std::nullopt;
}

void FileSystem::CreateLink(const QString& path, const QString& target) {
  Q_UNUSED(target);
  Fail(error::kNotSupported, path);
}

bool FileSystem::HasLostLine(const QString& path) const {
  Q_UNUSED(path);
  return false;
}

void FileSystem::ForgetLearnt() {}

Variant FileSystem::Execute(const QString& path, const QString& command, const Variant& parameter) {
  Q_UNUSED(command);
  Q_UNUSED(parameter);
  Fail(error::kNotSupported, path);
}

std::optional<FileIdentity> FileSystem::Identity(const QString& path) {
  Q_UNUSED(path);
  return std::nullopt;
}

std::vector<FileIdentity> FileSystem::FolderIdentities(const QString& folder) {
  std::vector<FileIdentity> identities;
  if (folder.isEmpty() && Capabilities().identityOfPath) {
    if (const std::optional<FileIdentity> top = Identity(folder)) {
      identities.push_back(*top);
    }
  }
  for (QString path = folder; !path.isEmpty();) {
    const std::optional<FileIdentity> identity = Identity(path);
    if (!identity.has_value()) {
      return {};
    }
    identities.push_back(*identity);
    path.truncate(std::max<qsizetype>(path.lastIndexOf(u'\\'), 0));
  }
  return identities;
}

FileTraits FileSystem::Traits(const QString& path) {
  Q_UNUSED(path);
  return {};
}

void FileSystem::SetTraits(const QString& path, const FileTraits& traits) {
  Q_UNUSED(path);
  Q_UNUSED(traits);
}

void FileSystem::CreateClosedFolder(const QString& path) {
  CreateFolder(path);
}

std::shared_ptr<HeldFolder> FileSystem::Hold(const QString& folder) {
  return std::make_shared<PathFolder>(*this, folder);
}

void FileSystem::Flush(const QString& path) {
  Q_UNUSED(path);
}

FileEntry FileSystem::Stat(const QString& path) {
  std::optional<FileEntry> entry = Find(path);
  if (!entry) {
    Fail(error::kNotFound, path);
  }
  return *std::move(entry);
}

void FileSystem::CreateFile(const QString& path) {
  static_cast<void>(OpenSink(path, {})->Commit());
}

void FileSystem::Copy(const QString& from, const QString& to, bool overwrite, const ItemObserver& observer) {
  CopyTreeByPath(*this, from, to, overwrite, observer);
}

void FileSystem::Remove(const QString& path, const ItemObserver& observer) {
  RemoveTreeByPath(*this, path, observer);
}

std::vector<Leftover> FileSystem::TakeLeftovers() {
  return {};
}

QString FileSystem::PathFromText(const QString& text) {
  return text;
}

QStringList FileSystem::Details(const QString& /*path*/) {
  return {};
}

qint64 FileSystem::Idle(qint64 /*milliseconds*/) noexcept {
  return 0;
}

QString FileSystem::TypeName(const FileEntry& entry) {
  return DefaultTypeName(entry);
}

QString FileSystem::DefaultTypeName(const FileEntry& entry) {
  if (entry.IsFolder()) {
    return QStringLiteral("Folder");
  }
  const qsizetype dot = entry.name.lastIndexOf(u'.');
  if (dot <= 0 || dot + 1 == entry.name.size()) {
    return QStringLiteral("File");
  }
  return entry.name.sliced(dot + 1).toUpper() + QStringLiteral(" File");
}

}  // namespace trevane

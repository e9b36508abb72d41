#include "engine/files/FileSystem.h"

#include "engine/files/PathFolder.h"
#include "engine/files/ProviderError.h"
#include "engine/model/ContentSteps.h"

#include <algorithm>

namespace trevane {

void FileSystem::ListInBatches(const QString& folder, const ListingReceiver& receive) {
  static_cast<void>(receive(List(folder)));
}

std::unique_ptr<ContentSource> FileSystem::OpenSource(const QString& path, qint64 offset) {
  return std::make_unique<BytesSource>(Read(path), offset);
}

std::unique_ptr<ContentSink> FileSystem::OpenSink(const QString& path, const SinkRequest& request) {
  return std::make_unique<CollectingSink>([this, path, request](const QByteArray& content) {
    if (request.mode == SinkRequest::Mode::New) {
      static_cast<void>(WriteNew(path, content, request.traits));
    } else {
      Write(path, content);
    }
    return SeenItem{Stat(path), Identity(path)};
  });
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

std::optional<FileEntry> FileSystem::Find(const QString& path) {
  try {
    return Stat(path);
  } catch (const RunTimeError& failure) {
    if (failure.Number() != error::kNotFound) {
      throw;
    }
    return std::nullopt;
  }
}

std::optional<FileStamp> FileSystem::WriteNew(const QString& path, const QByteArray& content,
                                              const FileTraits& traits) {
  Q_UNUSED(traits);
  if (Find(path)) {
    Fail(error::kExists, path);
  }
  Write(path, content);
  return std::nullopt;
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

void FileSystem::RemoveAlone(const QString& path) {
  const FileEntry entry = Stat(path);
  if (entry.IsFolder() && !entry.IsLink() && !List(path).empty()) {
    Fail(error::kDirectoryNotEmpty, path);
  }
  Remove(path);
}

std::vector<Leftover> FileSystem::TakeLeftovers() {
  return {};
}

QString FileSystem::PathFromText(const QString& text) {
  return text;
}

QString FileSystem::TypeName(const FileEntry& entry) {
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

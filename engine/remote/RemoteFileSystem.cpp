#include "engine/remote/RemoteFileSystem.h"

#include "engine/remote/CallTexts.h"
#include "engine/remote/RemoteBatches.h"
#include "engine/remote/RemoteHeldFolder.h"
#include "engine/remote/RemoteSink.h"
#include "engine/remote/RemoteSource.h"

#include <utility>

namespace trevane {

using Kind = RemoteConnection::Kind;

RemoteFileSystem::RemoteFileSystem(RemoteContext& context, RemoteConnection::Opening opening)
    : connection_(std::make_shared<RemoteConnection>(context, std::move(opening))),
      capabilities_(connection_->Run(Kind::Writing, {QStringLiteral("Connecting"), QString()},
                                     [](Workbench& bench) { return bench.Files().Capabilities(); })) {}

template <class Work>
auto RemoteFileSystem::Ask(const RemoteConnection::Purpose& purpose, const Work& work) {
  return connection_->Run(Kind::Reading, purpose, [work](Workbench& bench) { return work(bench.Files()); });
}

template <class Work>
auto RemoteFileSystem::Change(const RemoteConnection::Purpose& purpose, const Work& work) {
  return connection_->Run(Kind::Writing, purpose, [work](Workbench& bench) { return work(bench.Files()); });
}

Listing RemoteFileSystem::List(const QString& folder) {
  return Ask(calltexts::Reading(folder), [folder](FileSystem& files) { return files.List(folder); });
}

void RemoteFileSystem::ListInBatches(const QString& folder, const ListingReceiver& receive) {
  remotebatches::List(*connection_, calltexts::Reading(folder), receive,
                      [folder](Workbench& bench, const ListingReceiver& receiver) {
                        bench.Files().ListInBatches(folder, receiver);
                      });
}

FileEntry RemoteFileSystem::Stat(const QString& path) {
  return Ask(calltexts::Reading(path), [path](FileSystem& files) { return files.Stat(path); });
}

std::optional<FileEntry> RemoteFileSystem::Find(const QString& path) {
  return Ask(calltexts::Reading(path), [path](FileSystem& files) { return files.Find(path); });
}

std::unique_ptr<ContentSource> RemoteFileSystem::OpenSource(const QString& path, qint64 offset) {
  return std::make_unique<RemoteSource>(connection_, path, offset, [path](Workbench& bench, qint64 from) {
    return std::shared_ptr<ContentSource>(bench.Files().OpenSource(path, from));
  });
}

std::unique_ptr<ContentSink> RemoteFileSystem::OpenSink(const QString& path, const SinkRequest& request) {
  return std::make_unique<RemoteSink>(connection_, path, [path, request](Workbench& bench) {
    return std::shared_ptr<ContentSink>(bench.Files().OpenSink(path, request));
  });
}

std::vector<ReadResult> RemoteFileSystem::ReadMany(const QStringList& paths) {
  return remotebatches::Read(
      *connection_, calltexts::Reading(paths.value(0)), paths,
      [](Workbench& bench, const QStringList& some) { return bench.Files().ReadMany(some); });
}

std::vector<WriteResult> RemoteFileSystem::WriteMany(const std::vector<NewContent>& files) {
  return remotebatches::Write(*connection_,
                              calltexts::Writing(files.empty() ? QString() : files.front().name),
                              [files](Workbench& bench) { return bench.Files().WriteMany(files); });
}

std::optional<QString> RemoteFileSystem::ReadLink(const QString& path) {
  return Ask(calltexts::Reading(path), [path](FileSystem& files) { return files.ReadLink(path); });
}

void RemoteFileSystem::CreateLink(const QString& path, const QString& target) {
  Change(calltexts::Writing(path), [path, target](FileSystem& files) { files.CreateLink(path, target); });
}

void RemoteFileSystem::ForgetLearnt() {
  if (connection_->IsConnected()) {
    connection_->Link()->Thread().Post([](Workbench& bench) {
      // Where there is no connection nothing is remembered, and nobody waits for a new one.
      FileSystem* const files = bench.FilesIfOpen();
      if (files == nullptr) {
        return;
      }
      try {
        files->ForgetLearnt();
      } catch (...) {
        // What was remembered can be wrong, but nobody is there to be told.
      }
    });
  }
}

FileTraits RemoteFileSystem::Traits(const QString& path) {
  return Ask(calltexts::Reading(path), [path](FileSystem& files) { return files.Traits(path); });
}

void RemoteFileSystem::SetTraits(const QString& path, const FileTraits& traits) {
  Change(calltexts::Writing(path), [path, traits](FileSystem& files) { files.SetTraits(path, traits); });
}

void RemoteFileSystem::Flush(const QString& path) {
  // Not repeated: a new connection knows nothing of what was written over the old one.
  Change(calltexts::Writing(path), [path](FileSystem& files) { files.Flush(path); });
}

void RemoteFileSystem::CreateFile(const QString& path) {
  Change(calltexts::Writing(path), [path](FileSystem& files) { files.CreateFile(path); });
}

void RemoteFileSystem::CreateFolder(const QString& path) {
  Change(calltexts::Writing(path), [path](FileSystem& files) { files.CreateFolder(path); });
}

void RemoteFileSystem::CreateClosedFolder(const QString& path) {
  Change(calltexts::Writing(path), [path](FileSystem& files) { files.CreateClosedFolder(path); });
}

std::shared_ptr<HeldFolder> RemoteFileSystem::Hold(const QString& folder) {
  return std::make_shared<RemoteHeldFolder>(connection_, folder);
}

void RemoteFileSystem::Copy(const QString& from, const QString& to, bool overwrite,
                            const ItemObserver& observer) {
  remotebatches::Observe(*connection_, calltexts::Of(QStringLiteral("Copying"), from), observer,
                         [from, to, overwrite](Workbench& bench, const ItemObserver& seen) {
                           bench.Files().Copy(from, to, overwrite, seen);
                         });
}

void RemoteFileSystem::Rename(const QString& from, const QString& to, bool overwrite) {
  Change(calltexts::Of(QStringLiteral("Renaming"), from),
         [from, to, overwrite](FileSystem& files) { files.Rename(from, to, overwrite); });
}

void RemoteFileSystem::Remove(const QString& path, const ItemObserver& observer) {
  remotebatches::Observe(
      *connection_, calltexts::Deleting(path), observer,
      [path](Workbench& bench, const ItemObserver& seen) { bench.Files().Remove(path, seen); });
}

void RemoteFileSystem::RemoveAlone(const QString& path) {
  Change(calltexts::Deleting(path), [path](FileSystem& files) { files.RemoveAlone(path); });
}

std::vector<Leftover> RemoteFileSystem::TakeLeftovers() {
  if (!connection_->IsConnected()) {
    return {};
  }
  return Change(calltexts::Reading(QString()), [](FileSystem& files) { return files.TakeLeftovers(); });
}

Variant RemoteFileSystem::Execute(const QString& path, const QString& command, const Variant& parameter) {
  return Change(
      calltexts::Of(QStringLiteral("Running"), path),
      [path, command, parameter](FileSystem& files) { return files.Execute(path, command, parameter); });
}

std::optional<FileIdentity> RemoteFileSystem::Identity(const QString& path) {
  return Ask(calltexts::Reading(path), [path](FileSystem& files) { return files.Identity(path); });
}

std::vector<FileIdentity> RemoteFileSystem::FolderIdentities(const QString& folder) {
  return Ask(calltexts::Reading(folder),
             [folder](FileSystem& files) { return files.FolderIdentities(folder); });
}

QStringList RemoteFileSystem::Details(const QString& path) {
  return Ask(calltexts::Reading(path), [path](FileSystem& files) { return files.Details(path); });
}

QString RemoteFileSystem::PathFromText(const QString& text) {
  return Ask(calltexts::Reading(text), [text](FileSystem& files) { return files.PathFromText(text); });
}

QString RemoteFileSystem::TypeName(const FileEntry& entry) {
  const auto& typeName = connection_->How().typeName;
  return typeName ? typeName(entry) : DefaultTypeName(entry);
}

}  // namespace trevane

#include "tests/support/ScriptedFileSystem.h"

#include "engine/files/ProviderError.h"
#include "engine/files/ProviderPath.h"
#include "engine/files/WholeFile.h"
#include "engine/model/ContentSteps.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace trevane::test {

using Identities = ScriptedOptions::Identities;

/// The sink behind is opened and ended there, too.
class ScriptedSink final : public ContentSink {
 public:
  ScriptedSink(std::shared_ptr<ScriptedServer> server, std::shared_ptr<ScriptedServer::Line> line,
               const QString& path, std::unique_ptr<ContentSink> behind)
      : server_(std::move(server)), line_(std::move(line)), path_(path), behind_(std::move(behind)) {}
  ~ScriptedSink() override {
    server_->Free([this](FileSystem&) { behind_.reset(); });
    server_->Ended();
  }

  void Write(const QByteArray& piece) override {
    server_->RoundTrip(*line_, QStringLiteral("WritePiece ") + path_,
                       [&](FileSystem&) { behind_->Write(piece); });
  }
  std::optional<QString> TemporaryName() const override {
    std::optional<QString> name;
    server_->Free([&](FileSystem&) { name = behind_->TemporaryName(); });
    return name;
  }
  SeenItem Commit() override {
    SeenItem seen;
    server_->RoundTrip(*line_, QStringLiteral("Commit ") + path_,
                       [&](FileSystem&) { seen = behind_->Commit(); });
    seen.entry = server_->Shown(seen.entry);
    if (server_->options_.identities != Identities::Numbers) {
      seen.identity = server_->IdentityOf(path_);
      seen.stateStamp.reset();
    }
    return seen;
  }

 private:
  const std::shared_ptr<ScriptedServer> server_;
  const std::shared_ptr<ScriptedServer::Line> line_;
  const QString path_;
  std::unique_ptr<ContentSink> behind_;
};

class ScriptedSource final : public ContentSource {
 public:
  ScriptedSource(std::shared_ptr<ScriptedServer> server, std::shared_ptr<ScriptedServer::Line> line,
                 const QString& path, std::unique_ptr<ContentSource> behind)
      : server_(std::move(server)), line_(std::move(line)), path_(path), behind_(std::move(behind)) {}
  ~ScriptedSource() override {
    server_->Free([this](FileSystem&) { behind_.reset(); });
    server_->Ended();
  }

  QByteArray Read(qint64 most) override {
    if (atEnd_) {
      return {};
    }
    if (next_.isEmpty()) {
      server_->Free([&](FileSystem&) { next_ = behind_->Read(most); });
    }
    if (next_.isEmpty()) {
      atEnd_ = true;
      return {};
    }
    server_->RoundTrip(*line_, QStringLiteral("ReadPiece ") + path_, [](FileSystem&) {});
    return std::exchange(next_, {});
  }

 private:
  const std::shared_ptr<ScriptedServer> server_;
  const std::shared_ptr<ScriptedServer::Line> line_;
  const QString path_;
  std::unique_ptr<ContentSource> behind_;
  QByteArray next_;
  bool atEnd_ = false;
};

ScriptedFileSystem::~ScriptedFileSystem() {
  server_->Ended();
  const std::lock_guard lock(server_->mutex_);
  --server_->liveConnections_;
}

void ScriptedFileSystem::RoundTrip(const QString& call, const std::function<void(FileSystem&)>& work) {
  server_->RoundTrip(*line_, call, work);
}

FileSystemCapabilities ScriptedFileSystem::Capabilities() const {
  FileSystemCapabilities capabilities;
  server_->Free([&](FileSystem& behind) { capabilities = behind.Capabilities(); });
  capabilities.identity = capabilities.identity && server_->options_.identities != Identities::None;
  capabilities.identityOfPath = server_->options_.identities == Identities::Texts;
  capabilities.folders = server_->options_.folders;
  capabilities.traits = server_->options_.traits;
  capabilities.dateStep = server_->options_.dateStep;
  capabilities.notice = server_->Notice();
  return capabilities;
}

Listing ScriptedFileSystem::List(const QString& folder) {
  Listing entries;
  RoundTrip(QStringLiteral("List ") + folder, [&](FileSystem& behind) { entries = behind.List(folder); });
  for (FileEntry& entry : entries) {
    entry = server_->Listed(std::move(entry));
  }
  return entries;
}

void ScriptedFileSystem::ListInBatches(const QString& folder, const ListingReceiver& receive) {
  constexpr size_t kBatch = 64;
  Listing entries = List(folder);
  int batch = 0;
  for (size_t from = 0; from == 0 || from < entries.size(); from += kBatch) {
    server_->BeforeBatch(*line_, ++batch);
    const auto first = entries.begin() + static_cast<qptrdiff>(from);
    const auto last = entries.begin() + static_cast<qptrdiff>(std::min(from + kBatch, entries.size()));
    if (!receive(Listing(std::make_move_iterator(first), std::make_move_iterator(last)))) {
      return;
    }
  }
}

std::optional<FileEntry> ScriptedFileSystem::Find(const QString& path) {
  std::optional<FileEntry> entry;
  RoundTrip(QStringLiteral("Find ") + path, [&](FileSystem& behind) { entry = behind.Find(path); });
  return entry ? std::optional(server_->Shown(*entry)) : std::nullopt;
}

FileEntry ScriptedFileSystem::Stat(const QString& path) {
  std::optional<FileEntry> entry = Find(path);
  if (!entry) {
    Fail(error::kNotFound, path);
  }
  return *std::move(entry);
}

std::unique_ptr<ContentSource> ScriptedFileSystem::OpenSource(const QString& path, qint64 offset) {
  std::unique_ptr<ContentSource> behind;
  RoundTrip(QStringLiteral("OpenSource ") + path,
            [&](FileSystem& files) { behind = files.OpenSource(path, offset); });
  return std::make_unique<ScriptedSource>(server_, line_, path, std::move(behind));
}

std::unique_ptr<ContentSink> ScriptedFileSystem::OpenSink(const QString& path, const SinkRequest& request) {
  std::unique_ptr<ContentSink> behind;
  RoundTrip(QStringLiteral("OpenSink ") + path,
            [&](FileSystem& files) { behind = files.OpenSink(path, request); });
  return std::make_unique<ScriptedSink>(server_, line_, path, std::move(behind));
}

std::vector<ReadResult> ScriptedFileSystem::ReadMany(const QStringList& paths) {
  if (!server_->options_.overlapping || paths.isEmpty()) {
    return FileSystem::ReadMany(paths);
  }
  std::vector<ReadResult> results;
  RoundTrip(QStringLiteral("OpenSource ") + paths.first(), [](FileSystem&) {});
  RoundTrip(QStringLiteral("ReadPiece ") + paths.first(),
            [&](FileSystem& behind) { results = behind.ReadMany(paths); });
  return results;
}

std::vector<WriteResult> ScriptedFileSystem::WriteMany(const std::vector<NewContent>& files) {
  if (!server_->options_.overlapping || files.empty()) {
    return FileSystem::WriteMany(files);
  }
  const QString& first = files.front().name;
  std::vector<WriteResult> results;
  RoundTrip(QStringLiteral("OpenSink ") + first, [](FileSystem&) {});
  RoundTrip(QStringLiteral("WritePiece ") + first, [](FileSystem&) {});
  RoundTrip(QStringLiteral("Commit ") + first,
            [&](FileSystem& behind) { results = behind.WriteMany(files); });
  for (size_t i = 0; i < results.size(); ++i) {
    if (results[i].item) {
      results[i].item->entry = server_->Shown(results[i].item->entry);
      if (server_->options_.identities != Identities::Numbers) {
        results[i].item->identity = server_->IdentityOf(files[i].name);
        results[i].item->stateStamp.reset();
      }
    }
  }
  return results;
}

std::optional<QString> ScriptedFileSystem::ReadLink(const QString& path) {
  std::optional<QString> target;
  RoundTrip(QStringLiteral("ReadLink ") + path, [&](FileSystem& behind) { target = behind.ReadLink(path); });
  return target;
}

void ScriptedFileSystem::CreateLink(const QString& path, const QString& target) {
  RoundTrip(QStringLiteral("CreateLink ") + path,
            [&](FileSystem& behind) { behind.CreateLink(path, target); });
}

FileTraits ScriptedFileSystem::Traits(const QString& path) {
  FileTraits traits;
  if (server_->options_.traits) {
    RoundTrip(QStringLiteral("Traits ") + path, [&](FileSystem& behind) { traits = behind.Traits(path); });
  }
  return traits;
}

void ScriptedFileSystem::SetTraits(const QString& path, const FileTraits& traits) {
  if (server_->options_.traits) {
    RoundTrip(QStringLiteral("SetTraits ") + path,
              [&](FileSystem& behind) { behind.SetTraits(path, traits); });
  }
}

void ScriptedFileSystem::CreateFile(const QString& path) {
  WriteNewFile(*this, path, {});
}

void ScriptedFileSystem::RequireFolders(const QString& path) const {
  if (!server_->options_.folders) {
    Fail(error::kNotSupported, path);
  }
}

void ScriptedFileSystem::CreateFolder(const QString& path) {
  RequireFolders(path);
  RoundTrip(QStringLiteral("CreateFolder ") + path, [&](FileSystem& behind) { behind.CreateFolder(path); });
}

void ScriptedFileSystem::Copy(const QString& from, const QString& to, bool overwrite,
                              const ItemObserver& observer) {
  struct Step {
    QString from;
    QString to;
    FileEntry entry;
  };
  if (to == from || to.startsWith(from + u'\\')) {
    Fail(error::kInvalidParameter, to);
  }
  std::vector<Step> steps = {{from, to, Stat(from)}};
  while (!steps.empty()) {
    const Step step = steps.back();
    steps.pop_back();
    if (step.from != from && observer && !observer({.name = step.entry.name})) {
      Fail(error::kCancelled, step.from);
    }
    const std::optional<FileEntry> there = Find(step.to);
    if (there && (!overwrite || there->IsFolder() != step.entry.IsFolder())) {
      Fail(error::kExists, step.to);
    }
    if (!step.entry.IsFolder()) {
      const QByteArray content = ReadFile(*this, step.from);
      if (there) {
        WriteFile(*this, step.to, content);
      } else {
        WriteNewFile(*this, step.to, content);
      }
      continue;
    }
    if (!there) {
      CreateFolder(step.to);
    }
    for (const FileEntry& entry : List(step.from)) {
      steps.push_back(
          {providerpath::Child(step.from, entry.name), providerpath::Child(step.to, entry.name), entry});
    }
  }
}

void ScriptedFileSystem::Rename(const QString& from, const QString& to, bool overwrite) {
  RoundTrip(QStringLiteral("Rename ") + from + QStringLiteral(" to ") + to,
            [&](FileSystem& behind) { behind.Rename(from, to, overwrite); });
}

void ScriptedFileSystem::Remove(const QString& path, const ItemObserver& observer) {
  struct Step {
    QString path;
    bool isEmptied = false;
  };
  const FileEntry top = Stat(path);
  std::vector<Step> steps = {{path, !top.IsFolder() || top.IsLink()}};
  while (!steps.empty()) {
    if (steps.back().isEmptied) {
      const QString next = steps.back().path;
      steps.pop_back();
      RemoveAlone(next);
      continue;
    }
    steps.back().isEmptied = true;
    const QString folder = steps.back().path;
    for (const FileEntry& entry : List(folder)) {
      if (observer && !observer({.name = entry.name})) {
        Fail(error::kCancelled, folder);
      }
      steps.push_back({providerpath::Child(folder, entry.name), !entry.IsFolder() || entry.IsLink()});
    }
  }
}

void ScriptedFileSystem::RemoveAlone(const QString& path) {
  RoundTrip(QStringLiteral("RemoveAlone ") + path, [&](FileSystem& behind) { behind.RemoveAlone(path); });
}

Variant ScriptedFileSystem::Execute(const QString& path, const QString& command, const Variant& parameter) {
  Variant answer;
  RoundTrip(QStringLiteral("Execute ") + path,
            [&](FileSystem& behind) { answer = behind.Execute(path, command, parameter); });
  return answer;
}

QStringList ScriptedFileSystem::Details(const QString& path) {
  QStringList lines;
  RoundTrip(QStringLiteral("Details ") + path, [&](FileSystem&) { lines = server_->DetailsOf(path); });
  return lines;
}

std::optional<FileIdentity> ScriptedFileSystem::Identity(const QString& path) {
  if (server_->options_.identities != Identities::Numbers) {
    return server_->IdentityOf(path);
  }
  std::optional<FileIdentity> identity;
  RoundTrip(QStringLiteral("Identity ") + path,
            [&](FileSystem& behind) { identity = behind.Identity(path); });
  return identity;
}

std::vector<FileIdentity> ScriptedFileSystem::FolderIdentities(const QString& folder) {
  if (server_->options_.identities != Identities::Numbers) {
    return FileSystem::FolderIdentities(folder);
  }
  std::vector<FileIdentity> identities;
  RoundTrip(QStringLiteral("FolderIdentities ") + folder,
            [&](FileSystem& behind) { identities = behind.FolderIdentities(folder); });
  return identities;
}

}  // namespace trevane::test

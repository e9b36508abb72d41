#include "engine/files/RootedFileSystem.h"

#include "engine/files/HeldFolder.h"
#include "engine/files/ProviderError.h"
#include "engine/files/ProviderPath.h"

#include <utility>

namespace trevane {

QString RootedFileSystem::Texts::PathOf(const QString& inner) const {
  if (inner == root_) {
    return {};
  }
  const QString start = root_ + u'\\';
  return inner.startsWith(start) ? inner.sliced(start.size()) : inner;
}

RunTimeError RootedFileSystem::Texts::Failure(const RunTimeError& failure) const {
  QString text = failure.Description();
  for (qsizetype at = text.indexOf(root_); at >= 0; at = text.indexOf(root_, at)) {
    const qsizetype end = at + root_.size();
    const bool isPath = (at == 0 || text[at - 1].isSpace()) &&
                        (end == text.size() || text[end] == u'\\' || text[end].isSpace());
    if (!isPath) {
      at = end;
    } else if (end < text.size() && text[end] == u'\\') {
      text.remove(at, root_.size() + 1);
    } else {
      text.replace(at, root_.size(), shownRoot_);
      at += shownRoot_.size();
    }
  }
  return {failure.Number(), text};
}

class RootedFileSystem::Source final : public ContentSource {
 public:
  Source(std::shared_ptr<const Texts> texts, std::unique_ptr<ContentSource> inner)
      : texts_(std::move(texts)), inner_(std::move(inner)) {}

  QByteArray Read(qint64 most) override {
    return texts_->Run([&] { return inner_->Read(most); });
  }
  [[nodiscard]] std::optional<FileTraits> Traits() override {
    return texts_->Run([&] { return inner_->Traits(); });
  }
  [[nodiscard]] bool HadWrongSize() const override { return inner_->HadWrongSize(); }

 private:
  std::shared_ptr<const Texts> texts_;
  std::unique_ptr<ContentSource> inner_;
};

class RootedFileSystem::Sink final : public ContentSink {
 public:
  Sink(std::shared_ptr<const Texts> texts, std::unique_ptr<ContentSink> inner)
      : texts_(std::move(texts)), inner_(std::move(inner)) {}

  void Write(const QByteArray& piece) override {
    texts_->Run([&] { inner_->Write(piece); });
  }
  [[nodiscard]] std::optional<QString> TemporaryName() const override { return inner_->TemporaryName(); }
  [[nodiscard]] SeenItem Commit() override {
    return texts_->Run([&] { return inner_->Commit(); });
  }

 private:
  std::shared_ptr<const Texts> texts_;
  std::unique_ptr<ContentSink> inner_;
};

namespace {

template <class Results, class Texts>
Results Shown(Results results, const Texts& texts) {
  for (auto& result : results) {
    if (result.failure) {
      result.failure.emplace(texts.Failure(*result.failure));
    }
  }
  return results;
}

}  // namespace

class RootedFileSystem::Folder final : public HeldFolder {
 public:
  Folder(std::shared_ptr<const Texts> texts, std::shared_ptr<HeldFolder> inner)
      : texts_(std::move(texts)), inner_(std::move(inner)) {}

  [[nodiscard]] QString Path() const override { return texts_->PathOf(inner_->Path()); }
  [[nodiscard]] std::optional<FileIdentity> KnownIdentity() const override { return inner_->KnownIdentity(); }
  [[nodiscard]] qint64 DateStep() const override { return inner_->DateStep(); }
  [[nodiscard]] std::shared_ptr<HeldFolder> Enter(const QString& name) override {
    return texts_->Run([&] { return std::make_shared<Folder>(texts_, inner_->Enter(name)); });
  }
  [[nodiscard]] std::shared_ptr<HeldFolder> EnterSeen(const QString& name, const SeenItem& seen) override {
    return texts_->Run([&] { return std::make_shared<Folder>(texts_, inner_->EnterSeen(name, seen)); });
  }
  [[nodiscard]] Listing List() override {
    return texts_->Run([&] { return inner_->List(); });
  }
  void ListInBatches(const ListingReceiver& receive) override {
    texts_->Run([&] { inner_->ListInBatches(receive); });
  }
  [[nodiscard]] std::optional<SeenItem> Find(const QString& name) override {
    return texts_->Run([&] { return inner_->Find(name); });
  }
  [[nodiscard]] std::unique_ptr<ContentSource> OpenSource(const QString& name, qint64 offset) override {
    return texts_->Run([&] { return std::make_unique<Source>(texts_, inner_->OpenSource(name, offset)); });
  }
  [[nodiscard]] std::unique_ptr<ContentSink> OpenSink(const QString& name, const SinkRequest& request,
                                                      const std::optional<SeenItem>& seen) override {
    return texts_->Run([&] { return std::make_unique<Sink>(texts_, inner_->OpenSink(name, request, seen)); });
  }
  [[nodiscard]] std::vector<ReadResult> ReadMany(const QStringList& names) override {
    return texts_->Run([&] { return Shown(inner_->ReadMany(names), *texts_); });
  }
  [[nodiscard]] std::vector<WriteResult> WriteMany(const std::vector<NewContent>& files) override {
    return texts_->Run([&] { return Shown(inner_->WriteMany(files), *texts_); });
  }
  [[nodiscard]] std::optional<QString> ReadLink(const QString& name) override {
    return texts_->Run([&] { return inner_->ReadLink(name); });
  }
  void CreateLink(const QString& name, const QString& target) override {
    texts_->Run([&] { inner_->CreateLink(name, target); });
  }
  [[nodiscard]] FileTraits Traits(const QString& name) override {
    return texts_->Run([&] { return inner_->Traits(name); });
  }
  void SetTraits(const QString& name, const FileTraits& traits) override {
    texts_->Run([&] { inner_->SetTraits(name, traits); });
  }
  void CreateFolder(const QString& name, bool closed) override {
    texts_->Run([&] { inner_->CreateFolder(name, closed); });
  }
  void RemoveAlone(const QString& name, const SeenItem& seen) override {
    texts_->Run([&] { inner_->RemoveAlone(name, seen); });
  }
  void RemoveMany(const std::vector<SeenItem>& items) override {
    texts_->Run([&] { inner_->RemoveMany(items); });
  }
  void Flush(const QString& name) override {
    texts_->Run([&] { inner_->Flush(name); });
  }

 private:
  std::shared_ptr<const Texts> texts_;
  std::shared_ptr<HeldFolder> inner_;
};

RootedFileSystem::RootedFileSystem(std::shared_ptr<FileSystem> inner, QString root, QString shownRoot)
    : inner_(std::move(inner)),
      root_(std::move(root)),
      texts_(std::make_shared<const Texts>(root_, std::move(shownRoot))) {}

QString RootedFileSystem::Inner(const QString& path) const {
  if (providerpath::IsShare(path)) {
    Fail(error::kNotSupported, QStringLiteral("Only paths below the root can be opened here"), path);
  }
  // Every name is checked here: none leads out.
  const QStringList names = providerpath::Split(path);
  return names.isEmpty() ? root_ : providerpath::Child(root_, providerpath::Join(names));
}

FileSystemCapabilities RootedFileSystem::Capabilities() const {
  FileSystemCapabilities can = inner_->Capabilities();
  can.topHoldsDrives = false;
  can.shares = false;
  return can;
}

Listing RootedFileSystem::List(const QString& folder) {
  return texts_->Run([&] { return inner_->List(Inner(folder)); });
}

void RootedFileSystem::ListInBatches(const QString& folder, const ListingReceiver& receive) {
  texts_->Run([&] { inner_->ListInBatches(Inner(folder), receive); });
}

FileEntry RootedFileSystem::Stat(const QString& path) {
  return texts_->Run([&] { return inner_->Stat(Inner(path)); });
}

std::optional<FileEntry> RootedFileSystem::Find(const QString& path) {
  return texts_->Run([&] { return inner_->Find(Inner(path)); });
}

std::unique_ptr<ContentSource> RootedFileSystem::OpenSource(const QString& path, qint64 offset) {
  return texts_->Run(
      [&] { return std::make_unique<Source>(texts_, inner_->OpenSource(Inner(path), offset)); });
}

std::unique_ptr<ContentSink> RootedFileSystem::OpenSink(const QString& path, const SinkRequest& request) {
  return texts_->Run([&] { return std::make_unique<Sink>(texts_, inner_->OpenSink(Inner(path), request)); });
}

std::vector<ReadResult> RootedFileSystem::ReadMany(const QStringList& paths) {
  return texts_->Run([&] {
    QStringList there;
    for (const QString& path : paths) {
      there += Inner(path);
    }
    return Shown(inner_->ReadMany(there), *texts_);
  });
}

std::vector<WriteResult> RootedFileSystem::WriteMany(const std::vector<NewContent>& files) {
  return texts_->Run([&] {
    std::vector<NewContent> there = files;
    for (NewContent& file : there) {
      file.name = Inner(file.name);
    }
    return Shown(inner_->WriteMany(there), *texts_);
  });
}

std::optional<QString> RootedFileSystem::ReadLink(const QString& path) {
  return texts_->Run([&] { return inner_->ReadLink(Inner(path)); });
}

void RootedFileSystem::CreateLink(const QString& path, const QString& target) {
  texts_->Run([&] { inner_->CreateLink(Inner(path), target); });
}

FileTraits RootedFileSystem::Traits(const QString& path) {
  return texts_->Run([&] { return inner_->Traits(Inner(path)); });
}

void RootedFileSystem::SetTraits(const QString& path, const FileTraits& traits) {
  texts_->Run([&] { inner_->SetTraits(Inner(path), traits); });
}

void RootedFileSystem::Flush(const QString& path) {
  texts_->Run([&] { inner_->Flush(Inner(path)); });
}

void RootedFileSystem::CreateFile(const QString& path) {
  texts_->Run([&] { inner_->CreateFile(Inner(path)); });
}

void RootedFileSystem::CreateFolder(const QString& path) {
  texts_->Run([&] { inner_->CreateFolder(Inner(path)); });
}

void RootedFileSystem::CreateClosedFolder(const QString& path) {
  texts_->Run([&] { inner_->CreateClosedFolder(Inner(path)); });
}

std::shared_ptr<HeldFolder> RootedFileSystem::Hold(const QString& folder) {
  return texts_->Run([&] { return std::make_shared<Folder>(texts_, inner_->Hold(Inner(folder))); });
}

void RootedFileSystem::Copy(const QString& from, const QString& to, bool overwrite,
                            const ItemObserver& observer) {
  texts_->Run([&] { inner_->Copy(Inner(from), Inner(to), overwrite, observer); });
}

void RootedFileSystem::Rename(const QString& from, const QString& to, bool overwrite) {
  texts_->Run([&] { inner_->Rename(Inner(from), Inner(to), overwrite); });
}

void RootedFileSystem::Remove(const QString& path, const ItemObserver& observer) {
  const QString there = Inner(path);
  if (there == root_) {
    Fail(error::kAccessDenied, path);
  }
  texts_->Run([&] { inner_->Remove(there, observer); });
}

void RootedFileSystem::RemoveAlone(const QString& path) {
  const QString there = Inner(path);
  if (there == root_) {
    Fail(error::kAccessDenied, path);
  }
  texts_->Run([&] { inner_->RemoveAlone(there); });
}

std::vector<Leftover> RootedFileSystem::TakeLeftovers() {
  std::vector<Leftover> leftovers = texts_->Run([&] { return inner_->TakeLeftovers(); });
  for (Leftover& leftover : leftovers) {
    leftover.path = texts_->PathOf(leftover.path);
  }
  return leftovers;
}

Variant RootedFileSystem::Execute(const QString& path, const QString& command, const Variant& parameter) {
  return texts_->Run([&] { return inner_->Execute(Inner(path), command, parameter); });
}

QStringList RootedFileSystem::Details(const QString& path) {
  return texts_->Run([&] { return inner_->Details(Inner(path)); });
}

std::optional<FileIdentity> RootedFileSystem::Identity(const QString& path) {
  return texts_->Run([&] { return inner_->Identity(Inner(path)); });
}

std::vector<FileIdentity> RootedFileSystem::FolderIdentities(const QString& folder) {
  return texts_->Run([&] { return inner_->FolderIdentities(Inner(folder)); });
}

}  // namespace trevane

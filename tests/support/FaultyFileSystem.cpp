#include "tests/support/FaultyFileSystem.h"

#include "engine/files/ProviderError.h"

#include <algorithm>

namespace trevane::test {
namespace {

bool IsLie(const std::optional<Fault>& fault) {
  return fault == Fault::Lie || fault == Fault::LieAndReckon;
}

}  // namespace

void FaultyFileSystem::Arm(int call, FaultSpan span, qint32 number, Fault fault) {
  armedAt_ = call;
  span_ = span;
  number_ = number;
  fault_ = fault;
  count_ = 0;
  faults_ = 0;
}

void FaultyFileSystem::FailAt(const QString& path) const {
  Fail(number_, path);
}

std::optional<Fault> FaultyFileSystem::Enter(FileSystemOperation operation, const QString& path,
                                             const QString& destination, const Variant& parameter) {
  calls_.push_back({operation, path, destination, parameter});
  ++count_;
  const bool wrong = armedAt_ > 0 && (span_ == FaultSpan::Once ? count_ == armedAt_ : count_ >= armedAt_);
  if (hook_) {
    // A copy, since the hook may record further calls.
    const FileSystemCall call = calls_.back();
    hook_(call);
  }
  if (!wrong) {
    return std::nullopt;
  }
  ++faults_;
  if (fault_ == Fault::Refuse) {
    FailAt(path);
  }
  return fault_;
}

void FaultyFileSystem::Change(FileSystemOperation operation, const QString& path, const QString& destination,
                              const std::function<void()>& work, const Variant& parameter) {
  const std::optional<Fault> fault = Enter(operation, path, destination, parameter);
  if (!IsLie(fault)) {
    work();
  }
  if (fault == Fault::DoAndFail) {
    FailAt(path);
  }
}

Listing FaultyFileSystem::List(const QString& folder) {
  const std::optional<Fault> fault = Enter(FileSystemOperation::List, folder);
  Listing listing = inner_->List(folder);
  if (fault == Fault::DoAndFail) {
    FailAt(folder);
  }
  return listing;
}

void FaultyFileSystem::ListInBatches(const QString& folder, const ListingReceiver& receive) {
  Listing entries = List(folder);
  if (batchSize_ == 0) {
    static_cast<void>(receive(std::move(entries)));
    return;
  }
  for (size_t given = 0;; given += batchSize_) {
    if (beforeBatch_) {
      beforeBatch_(std::min(given, entries.size()));
    }
    if (given >= entries.size()) {
      return;
    }
    const auto first = entries.begin() + static_cast<std::ptrdiff_t>(given);
    const size_t count = std::min(batchSize_, entries.size() - given);
    if (!receive(Listing(first, first + static_cast<std::ptrdiff_t>(count)))) {
      return;
    }
  }
}

std::optional<FileEntry> FaultyFileSystem::Find(const QString& path) {
  const std::optional<Fault> fault = Enter(FileSystemOperation::Stat, path);
  std::optional<FileEntry> entry = inner_->Find(path);
  if (fault == Fault::DoAndFail) {
    FailAt(path);
  }
  return entry;
}

class FaultyFileSystem::Source final : public ContentSource {
 public:
  Source(FaultyFileSystem& files, QString path, std::unique_ptr<ContentSource> inner, bool lies)
      : files_(files), path_(std::move(path)), inner_(std::move(inner)), lies_(lies) {}

  [[nodiscard]] QByteArray Read(qint64 most) override {
    const std::optional<Fault> fault = files_.Enter(FileSystemOperation::Read, path_);
    QByteArray piece = isEnded_ ? QByteArray() : inner_->Read(most);
    if (fault == Fault::DoAndFail) {
      files_.FailAt(path_);
    }
    if (lies_ || IsLie(fault)) {
      piece.truncate(piece.size() / 2);
      isEnded_ = true;
    }
    return piece;
  }
  [[nodiscard]] bool HadWrongSize() const override { return inner_->HadWrongSize(); }

 private:
  FaultyFileSystem& files_;
  QString path_;
  std::unique_ptr<ContentSource> inner_;
  bool lies_;
  bool isEnded_ = false;
};

std::unique_ptr<ContentSource> FaultyFileSystem::OpenSource(const QString& path, qint64 offset) {
  const std::optional<Fault> fault = Enter(FileSystemOperation::OpenSource, path);
  std::unique_ptr<ContentSource> source = inner_->OpenSource(path, offset);
  if (fault == Fault::DoAndFail) {
    FailAt(path);
  }
  return std::make_unique<Source>(*this, path, std::move(source), IsLie(fault));
}

class FaultyFileSystem::Sink final : public ContentSink {
 public:
  Sink(FaultyFileSystem& files, QString path, std::unique_ptr<ContentSink> inner, std::optional<Fault> fault)
      : files_(files), path_(std::move(path)), inner_(std::move(inner)), lie_(fault) {}

  void Write(const QByteArray& piece) override {
    const std::optional<Fault> fault = files_.Enter(FileSystemOperation::Write, path_);
    const bool drops = IsLie(lie_) || IsLie(fault);
    lie_ = IsLie(lie_) ? lie_ : fault;
    inner_->Write(drops ? piece.first(piece.size() / 2) : piece);
    claimed_ += piece.size();
    if (fault == Fault::DoAndFail) {
      files_.FailAt(path_);
    }
  }

  [[nodiscard]] std::optional<QString> TemporaryName() const override { return inner_->TemporaryName(); }

  [[nodiscard]] SeenItem Commit() override {
    const std::optional<Fault> fault = files_.Enter(FileSystemOperation::Commit, path_);
    if (fault == Fault::LieAndReckon) {
      SeenItem reckoned;
      reckoned.entry.name = path_.mid(path_.lastIndexOf(u'\\') + 1);
      reckoned.entry.attributes = attribute::kArchive;
      reckoned.entry.size = claimed_;
      return reckoned;
    }
    SeenItem placed = inner_->Commit();
    if (fault == Fault::DoAndFail) {
      files_.FailAt(path_);
    }
    if (lie_ == Fault::LieAndReckon) {
      placed.entry.size = claimed_;
    }
    return placed;
  }

 private:
  FaultyFileSystem& files_;
  QString path_;
  std::unique_ptr<ContentSink> inner_;
  std::optional<Fault> lie_;
  qint64 claimed_ = 0;
};

std::unique_ptr<ContentSink> FaultyFileSystem::OpenSink(const QString& path, const SinkRequest& request) {
  const std::optional<Fault> fault = Enter(FileSystemOperation::OpenSink, path);
  std::unique_ptr<ContentSink> sink = inner_->OpenSink(path, request);
  if (fault == Fault::DoAndFail) {
    FailAt(path);
  }
  return std::make_unique<Sink>(*this, path, std::move(sink), fault);
}

std::optional<QString> FaultyFileSystem::ReadLink(const QString& path) {
  const std::optional<Fault> fault = Enter(FileSystemOperation::ReadLink, path);
  std::optional<QString> target = inner_->ReadLink(path);
  if (fault == Fault::DoAndFail) {
    FailAt(path);
  }
  return target;
}

void FaultyFileSystem::CreateLink(const QString& path, const QString& target) {
  Change(FileSystemOperation::CreateLink, path, target, [&] { inner_->CreateLink(path, target); });
}

FileEntry FaultyFileSystem::Stat(const QString& path) {
  const std::optional<Fault> fault = Enter(FileSystemOperation::Stat, path);
  FileEntry entry = inner_->Stat(path);
  if (fault == Fault::DoAndFail) {
    FailAt(path);
  }
  return entry;
}

FileTraits FaultyFileSystem::Traits(const QString& path) {
  const std::optional<Fault> fault = Enter(FileSystemOperation::Stat, path);
  const FileTraits traits = inner_->Traits(path);
  if (fault == Fault::DoAndFail) {
    FailAt(path);
  }
  return traits;
}

void FaultyFileSystem::SetTraits(const QString& path, const FileTraits& traits) {
  Change(FileSystemOperation::Write, path, {}, [&] { inner_->SetTraits(path, traits); });
}

void FaultyFileSystem::Flush(const QString& path) {
  Change(FileSystemOperation::Flush, path, {}, [&] { inner_->Flush(path); });
}

void FaultyFileSystem::CreateFile(const QString& path) {
  Change(FileSystemOperation::CreateFile, path, {}, [&] { inner_->CreateFile(path); });
}

void FaultyFileSystem::CreateFolder(const QString& path) {
  Change(FileSystemOperation::CreateFolder, path, {}, [&] { inner_->CreateFolder(path); });
}

void FaultyFileSystem::CreateClosedFolder(const QString& path) {
  Change(FileSystemOperation::CreateFolder, path, {}, [&] { inner_->CreateClosedFolder(path); });
}

void FaultyFileSystem::Copy(const QString& from, const QString& to, bool overwrite,
                            const ItemObserver& observer) {
  Change(FileSystemOperation::Copy, from, to, [&] { inner_->Copy(from, to, overwrite, observer); });
}

void FaultyFileSystem::Rename(const QString& from, const QString& to, bool overwrite) {
  Change(FileSystemOperation::Rename, from, to, [&] { inner_->Rename(from, to, overwrite); });
}

void FaultyFileSystem::Remove(const QString& path, const ItemObserver& observer) {
  Change(FileSystemOperation::Remove, path, {}, [&] { inner_->Remove(path, observer); });
}

void FaultyFileSystem::RemoveAlone(const QString& path) {
  Change(FileSystemOperation::Remove, path, {}, [&] { inner_->RemoveAlone(path); });
}

std::vector<FileIdentity> FaultyFileSystem::FolderIdentities(const QString& folder) {
  const std::optional<Fault> fault = Enter(FileSystemOperation::Identity, folder);
  std::vector<FileIdentity> identities = inner_->FolderIdentities(folder);
  if (fault == Fault::DoAndFail) {
    FailAt(folder);
  }
  return identities;
}

Variant FaultyFileSystem::Execute(const QString& path, const QString& command, const Variant& parameter) {
  Variant result;
  Change(
      FileSystemOperation::Execute, path, command,
      [&] { result = inner_->Execute(path, command, parameter); }, parameter);
  return result;
}

std::optional<FileIdentity> FaultyFileSystem::Identity(const QString& path) {
  const std::optional<Fault> fault = Enter(FileSystemOperation::Identity, path);
  std::optional<FileIdentity> identity = inner_->Identity(path);
  if (fault == Fault::DoAndFail) {
    FailAt(path);
  }
  return identity;
}

}  // namespace trevane::test

#include "tests/support/FaultyFileSystem.h"

#include "engine/files/ProviderError.h"

#include <algorithm>

namespace trevane::test {

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
  if (fault != Fault::Lie) {
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

FileEntry FaultyFileSystem::Stat(const QString& path) {
  const std::optional<Fault> fault = Enter(FileSystemOperation::Stat, path);
  FileEntry entry = inner_->Stat(path);
  if (fault == Fault::DoAndFail) {
    FailAt(path);
  }
  return entry;
}

QByteArray FaultyFileSystem::Read(const QString& path) {
  const std::optional<Fault> fault = Enter(FileSystemOperation::Read, path);
  QByteArray content = inner_->Read(path);
  if (fault == Fault::DoAndFail) {
    FailAt(path);
  }
  if (fault == Fault::Lie) {
    content.truncate(content.size() / 2);
  }
  return content;
}

void FaultyFileSystem::Write(const QString& path, const QByteArray& content) {
  const std::optional<Fault> fault = Enter(FileSystemOperation::Write, path);
  inner_->Write(path, fault == Fault::Lie ? content.first(content.size() / 2) : content);
  if (fault == Fault::DoAndFail) {
    FailAt(path);
  }
}

std::optional<FileStamp> FaultyFileSystem::WriteNew(const QString& path, const QByteArray& content,
                                                    const FileTraits& traits) {
  const std::optional<Fault> fault = Enter(FileSystemOperation::Write, path);
  const auto stamp =
      inner_->WriteNew(path, fault == Fault::Lie ? content.first(content.size() / 2) : content, traits);
  if (fault == Fault::DoAndFail) {
    FailAt(path);
  }
  return stamp;
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

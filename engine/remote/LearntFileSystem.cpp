#include "engine/remote/LearntFileSystem.h"

#include "engine/files/ProviderError.h"
#include "engine/remote/LearntHeldFolder.h"
#include "engine/remote/LearntSink.h"

#include <utility>

namespace trevane {

LearntFileSystem::LearntFileSystem(std::shared_ptr<FileSystem> behind, std::shared_ptr<LearntClock> clock)
    : behind_(std::move(behind)),
      memory_(std::make_shared<LearntMemory>(std::move(clock), behind_->Capabilities().caseSensitive)) {}

Listing LearntFileSystem::List(const QString& folder) {
  if (const Listing* known = memory_->ListingOf(folder)) {
    return *known;
  }
  Listing entries = behind_->List(folder);
  memory_->LearnListing(folder, entries);
  return entries;
}

void LearntFileSystem::ListInBatches(const QString& folder, const ListingReceiver& receive) {
  if (const Listing* known = memory_->ListingOf(folder)) {
    static_cast<void>(receive(Listing(*known)));
    return;
  }
  Listing all;
  bool isWhole = true;
  behind_->ListInBatches(folder, [&](Listing&& batch) {
    all.insert(all.end(), batch.begin(), batch.end());
    isWhole = receive(std::move(batch));
    return isWhole;
  });
  if (isWhole) {
    memory_->LearnListing(folder, all);
  }
}

std::optional<FileEntry> LearntFileSystem::Find(const QString& path) {
  if (std::optional<LearntMemory::Known> known = memory_->ItemAt(path)) {
    return std::move(known->entry);
  }
  std::optional<FileEntry> entry = behind_->Find(path);
  memory_->LearnItem(path, entry);
  return entry;
}

FileEntry LearntFileSystem::Stat(const QString& path) {
  std::optional<LearntMemory::Known> known = memory_->ItemAt(path);
  if (!known) {
    const FileEntry entry = behind_->Stat(path);
    memory_->LearnItem(path, entry);
    return entry;
  }
  if (!known->entry) {
    Fail(error::kNotFound, path);
  }
  return *std::move(known->entry);
}

QStringList LearntFileSystem::Details(const QString& path) {
  if (std::optional<QStringList> known = memory_->DetailsOf(path)) {
    return *std::move(known);
  }
  const QStringList lines = behind_->Details(path);
  memory_->LearnDetails(path, lines);
  return lines;
}

void LearntFileSystem::ForgetLearnt() {
  memory_->ForgetAll();
  behind_->ForgetLearnt();
}

std::unique_ptr<ContentSink> LearntFileSystem::OpenSink(const QString& path, const SinkRequest& request) {
  const LearntChange change(*memory_, path);
  return std::make_unique<LearntSink>(behind_->OpenSink(path, request), memory_, path);
}

std::vector<WriteResult> LearntFileSystem::WriteMany(const std::vector<NewContent>& files) {
  std::vector<std::unique_ptr<LearntChange>> changes;
  changes.reserve(files.size());
  for (const NewContent& file : files) {
    changes.push_back(std::make_unique<LearntChange>(*memory_, file.name));
  }
  return behind_->WriteMany(files);
}

void LearntFileSystem::CreateLink(const QString& path, const QString& target) {
  const LearntChange change(*memory_, path);
  behind_->CreateLink(path, target);
}

void LearntFileSystem::SetTraits(const QString& path, const FileTraits& traits) {
  const LearntChange change(*memory_, path);
  behind_->SetTraits(path, traits);
}

void LearntFileSystem::CreateFile(const QString& path) {
  const LearntChange change(*memory_, path);
  behind_->CreateFile(path);
}

void LearntFileSystem::CreateFolder(const QString& path) {
  const LearntChange change(*memory_, path);
  behind_->CreateFolder(path);
}

void LearntFileSystem::CreateClosedFolder(const QString& path) {
  const LearntChange change(*memory_, path);
  behind_->CreateClosedFolder(path);
}

std::shared_ptr<HeldFolder> LearntFileSystem::Hold(const QString& folder) {
  return std::make_shared<LearntHeldFolder>(behind_->Hold(folder), memory_);
}

void LearntFileSystem::Copy(const QString& from, const QString& to, bool overwrite,
                            const ItemObserver& observer) {
  const LearntChange change(*memory_, to);
  behind_->Copy(from, to, overwrite, observer);
}

void LearntFileSystem::Rename(const QString& from, const QString& to, bool overwrite) {
  const LearntChange source(*memory_, from);
  const LearntChange target(*memory_, to);
  behind_->Rename(from, to, overwrite);
}

void LearntFileSystem::Remove(const QString& path, const ItemObserver& observer) {
  const LearntChange change(*memory_, path);
  behind_->Remove(path, observer);
}

void LearntFileSystem::RemoveAlone(const QString& path) {
  const LearntChange change(*memory_, path);
  behind_->RemoveAlone(path);
}

std::vector<Leftover> LearntFileSystem::TakeLeftovers() {
  std::vector<Leftover> leftovers = behind_->TakeLeftovers();
  if (!leftovers.empty()) {
    memory_->ForgetAll();
  }
  return leftovers;
}

Variant LearntFileSystem::Execute(const QString& path, const QString& command, const Variant& parameter) {
  memory_->ForgetAll();
  Variant answer = behind_->Execute(path, command, parameter);
  memory_->ForgetAll();
  return answer;
}

}  // namespace trevane

#include "engine/remote/LearntHeldFolder.h"

#include "engine/files/ProviderPath.h"
#include "engine/remote/LearntSink.h"

namespace trevane {

QString LearntHeldFolder::PathOf(const QString& name) const {
  return providerpath::Child(behind_->Path(), name);
}

std::unique_ptr<ContentSink> LearntHeldFolder::OpenSink(const QString& name, const SinkRequest& request,
                                                        const std::optional<SeenItem>& seen) {
  const LearntChange change(*memory_, PathOf(name));
  return std::make_unique<LearntSink>(behind_->OpenSink(name, request, seen), memory_, PathOf(name));
}

std::vector<WriteResult> LearntHeldFolder::WriteMany(const std::vector<NewContent>& files) {
  std::vector<std::unique_ptr<LearntChange>> changes;
  changes.reserve(files.size());
  for (const NewContent& file : files) {
    changes.push_back(std::make_unique<LearntChange>(*memory_, PathOf(file.name)));
  }
  return behind_->WriteMany(files);
}

void LearntHeldFolder::CreateLink(const QString& name, const QString& target) {
  const LearntChange change(*memory_, PathOf(name));
  behind_->CreateLink(name, target);
}

void LearntHeldFolder::SetTraits(const QString& name, const FileTraits& traits) {
  const LearntChange change(*memory_, PathOf(name));
  behind_->SetTraits(name, traits);
}

void LearntHeldFolder::SetTraitsOf(const SeenItem& seen, const FileTraits& traits) {
  const LearntChange change(*memory_, PathOf(seen.entry.name));
  behind_->SetTraitsOf(seen, traits);
}

std::optional<SeenItem> LearntHeldFolder::MakeFolder(const QString& name, bool closed) {
  const LearntChange change(*memory_, PathOf(name));
  return behind_->MakeFolder(name, closed);
}

void LearntHeldFolder::CreateFolder(const QString& name, bool closed) {
  const LearntChange change(*memory_, PathOf(name));
  behind_->CreateFolder(name, closed);
}

void LearntHeldFolder::RemoveAlone(const QString& name, const SeenItem& seen) {
  const LearntChange change(*memory_, PathOf(name));
  behind_->RemoveAlone(name, seen);
}

void LearntHeldFolder::RemoveMany(const std::vector<SeenItem>& items) {
  std::vector<std::unique_ptr<LearntChange>> changes;
  changes.reserve(items.size());
  for (const SeenItem& item : items) {
    changes.push_back(std::make_unique<LearntChange>(*memory_, PathOf(item.entry.name)));
  }
  behind_->RemoveMany(items);
}

}  // namespace trevane

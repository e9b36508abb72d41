#include "engine/files/SourceRecord.h"

#include "engine/files/ProviderError.h"
#include "engine/files/ProviderPath.h"

#include <algorithm>
#include <chrono>
#include <thread>

namespace trevane {

namespace {

/// Changes are stamped with the time of the clock's last tick: two changes within one tick look alike.
constexpr std::chrono::milliseconds kTick{20};

bool IsOwnFolder(const FileEntry& entry) {
  return entry.IsFolder() && !entry.IsLink();
}

[[noreturn]] void FailChanged(const HeldFolder& folder, const QString& name) {
  Fail(providererror::kChanged, QStringLiteral("The source changed while it was moved"),
       providerpath::Child(folder.Path(), name));
}

[[noreturn]] void FailNotArrived(const HeldFolder& folder, const QString& name) {
  Fail(providererror::kChanged, QStringLiteral("The copy could not be verified; the source was kept"),
       providerpath::Child(folder.Path(), name));
}

}  // namespace

void SourceRecord::Take(HeldFolder& folder, const QString& name) {
  top_ = Item();
  top_.name = name;
  shared_.clear();
  unlinked_.clear();
  std::vector<Key> files;
  Take(folder, top_, files);
  std::sort(files.begin(), files.end());
  for (auto at = std::adjacent_find(files.begin(), files.end()); at != files.end();
       at = std::adjacent_find(at + 1, files.end())) {
    shared_.insert(*at);
  }
  if (top_.seen.stateStamp) {
    std::this_thread::sleep_for(kTick);
  }
}

void SourceRecord::Take(HeldFolder& folder, Item& item, std::vector<Key>& files) {
  std::optional<SeenItem> seen = folder.Find(item.name);
  if (!seen) {
    Fail(error::kNotFound, providerpath::Child(folder.Path(), item.name));
  }
  item.seen = *std::move(seen);
  if (item.seen.isMountPoint) {
    Fail(providererror::kBusy, QStringLiteral("A drive is mounted here"),
         providerpath::Child(folder.Path(), item.name));
  }
  if (!IsOwnFolder(item.seen.entry)) {
    if (item.seen.identity) {
      files.emplace_back(item.seen.identity->volume, item.seen.identity->file);
    }
    return;
  }
  const std::shared_ptr<HeldFolder> inner = folder.Enter(item.name);
  for (FileEntry& entry : inner->List()) {
    Item& below = item.below.emplace_back();
    below.name = std::move(entry.name);
    Take(*inner, below, files);
  }
}

bool SourceRecord::IsUnchanged(const Item& item, const SeenItem& now) const {
  if (!item.seen.IsStill(now)) {
    return false;
  }
  // The times of a folder change with its contents.
  return IsOwnFolder(now.entry) || item.seen.stateStamp == now.stateStamp ||
         (now.identity && unlinked_.contains({now.identity->volume, now.identity->file}));
}

void SourceRecord::RequireArrived(HeldFolder& folder, HeldFolder& target, const QString& copyName) const {
  Compare(folder, top_, target, copyName);
}

void SourceRecord::Compare(HeldFolder& folder, const Item& item, HeldFolder& target,
                           const QString& copyName) const {
  const std::optional<SeenItem> source = folder.Find(item.name);
  if (!source || !IsUnchanged(item, *source)) {
    FailChanged(folder, item.name);
  }
  const std::optional<SeenItem> copy = target.Find(copyName);
  if (!copy || copy->entry.IsLink() != source->entry.IsLink() ||
      IsOwnFolder(copy->entry) != IsOwnFolder(source->entry) ||
      (source->identity && copy->identity == source->identity)) {
    FailNotArrived(folder, item.name);
  }
  if (source->entry.IsLink()) {
    return;
  }
  if (!source->entry.IsFolder()) {
    const bool isSizeKnown = source->entry.size >= 0 && copy->entry.size >= 0;
    if (isSizeKnown ? source->entry.size != copy->entry.size
                    : folder.Read(item.name) != target.Read(copyName)) {
      FailNotArrived(folder, item.name);
    }
    return;
  }
  const std::shared_ptr<HeldFolder> inner = folder.Enter(item.name);
  const std::shared_ptr<HeldFolder> innerTarget = target.Enter(copyName);
  if (inner->List().size() != item.below.size()) {
    FailChanged(folder, item.name);
  }
  for (const Item& below : item.below) {
    Compare(*inner, below, *innerTarget, below.name);
  }
}

void SourceRecord::DeleteSource(HeldFolder& folder) {
  Delete(folder, top_);
}

void SourceRecord::Delete(HeldFolder& folder, const Item& item) {
  if (IsOwnFolder(item.seen.entry)) {
    std::optional<SeenItem> now = folder.Find(item.name);
    if (!now) {
      return;
    }
    if (!IsUnchanged(item, *now)) {
      FailChanged(folder, item.name);
    }
    const std::shared_ptr<HeldFolder> inner = folder.Enter(item.name);
    for (const Item& below : item.below) {
      Delete(*inner, below);
    }
  }
  const std::optional<SeenItem> now = folder.Find(item.name);
  if (!now) {
    return;
  }
  if (!IsUnchanged(item, *now)) {
    FailChanged(folder, item.name);
  }
  folder.RemoveAlone(item.name, *now);
  if (now->identity) {
    const Key key{now->identity->volume, now->identity->file};
    if (shared_.contains(key)) {
      unlinked_.insert(key);
    }
  }
}

}  // namespace trevane

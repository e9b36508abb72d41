#include "engine/remote/LearntMemory.h"

#include "base/LowerCase.h"
#include "engine/model/ItemName.h"

#include <algorithm>

namespace trevane {
namespace {

constexpr qsizetype kMostEntries = 200'000;

QString FolderOf(const QString& path) {
  return path.first(std::max<qsizetype>(path.lastIndexOf(u'\\'), 0));
}

QString NameOf(const QString& path) {
  return path.mid(path.lastIndexOf(u'\\') + 1);
}

/// Whether no file system takes another spelling for this name: short names, dots at the end, composed
/// letters.
bool HasOneSpelling(const QString& name) {
  return !name.endsWith(u'.') && !name.endsWith(u' ') &&
         std::none_of(name.begin(), name.end(), [](QChar letter) {
           return letter.unicode() > 0x7e || letter == u'~' || letter < u' ';
         });
}

/// A link of which a listing does not know whether it leads to a folder: the lines of some servers tell no
/// more of it than where it leads.
bool MayLeadToAFolder(const FileEntry& listed) {
  return listed.IsLink() && !listed.IsFolder() && !listed.leadsNowhere && listed.size < 0;
}

}  // namespace

QString LearntMemory::Key(const QString& text) const {
  return caseSensitive_ ? text : LowerCase(text);
}

void LearntMemory::MakeRoom(qsizetype entries) {
  if (entries_ + entries > kMostEntries) {
    folders_.clear();
    entries_ = 0;
  }
  entries_ += entries;
}

void LearntMemory::LearnListing(const QString& folder, const Listing& entries) {
  MakeRoom(static_cast<qsizetype>(entries.size()));
  Listed listed{entries, {}, clock_->Now()};
  listed.positions.reserve(static_cast<qsizetype>(entries.size()));
  for (size_t i = 0; i < entries.size(); ++i) {
    sawLink_ = sawLink_ || entries[i].IsLink();
    const QString key = Key(entries[i].name);
    listed.positions[key] = listed.positions.contains(key) ? -1 : static_cast<qsizetype>(i);
  }
  Folder& known = folders_[Key(folder)];
  known.found.clear();
  known.listed = std::move(listed);
}

void LearntMemory::LearnItem(const QString& path, const std::optional<FileEntry>& entry) {
  MakeRoom(1);
  sawLink_ = sawLink_ || (entry && entry->IsLink());
  folders_[Key(FolderOf(path))].found[Key(NameOf(path))] = {entry, clock_->Now()};
}

void LearntMemory::LearnDetails(const QString& path, const QStringList& lines) {
  details_ = Details{path, lines, clock_->Now()};
}

std::optional<QStringList> LearntMemory::DetailsOf(const QString& path) const {
  const bool holds = details_ && details_->path == path && clock_->StillHolds(details_->moment);
  return holds ? std::optional(details_->lines) : std::nullopt;
}

const LearntMemory::Folder* LearntMemory::FolderAt(const QString& key) const {
  const auto found = folders_.find(key);
  return found == folders_.end() ? nullptr : &found->second;
}

const Listing* LearntMemory::ListingOf(const QString& folder) const {
  const Folder* known = FolderAt(Key(folder));
  const bool holds = known != nullptr && known->listed && clock_->StillHolds(known->listed->moment);
  return holds ? &known->listed->entries : nullptr;
}

std::optional<LearntMemory::Known> LearntMemory::ItemAt(const QString& path) const {
  const QString name = NameOf(path);
  const Folder* known = FolderAt(Key(FolderOf(path)));
  if (known == nullptr || !IsValidItemName(name)) {
    return std::nullopt;
  }
  const QString key = Key(name);
  const auto found = known->found.find(key);
  if (found != known->found.end() && clock_->StillHolds(found->moment)) {
    return Known{found->entry};
  }
  if (!known->listed || !clock_->StillHolds(known->listed->moment)) {
    return std::nullopt;
  }
  const auto position = known->listed->positions.find(key);
  if (position == known->listed->positions.end()) {
    return HasOneSpelling(name) ? std::optional(Known{}) : std::nullopt;
  }
  if (*position < 0) {
    return std::nullopt;
  }
  const FileEntry& listed = known->listed->entries[static_cast<size_t>(*position)];
  return MayLeadToAFolder(listed) ? std::nullopt : std::optional(Known{listed});
}

void LearntMemory::ForgetAround(const QString& path) {
  if (sawLink_) {
    ForgetAll();
    return;
  }
  details_.reset();
  const QString key = Key(path);
  const QString folder = FolderOf(path);
  folders_.erase(Key(folder));
  ForgetItem(folder);
  folders_.erase(key);
  const QString below = key + u'\\';
  auto next = folders_.lower_bound(below);
  while (next != folders_.end() && next->first.startsWith(below)) {
    next = folders_.erase(next);
  }
}

void LearntMemory::ForgetItem(const QString& path) {
  if (path.isEmpty()) {
    return;
  }
  const auto holding = folders_.find(Key(FolderOf(path)));
  if (holding == folders_.end()) {
    return;
  }
  const QString key = Key(NameOf(path));
  holding->second.found.remove(key);
  if (holding->second.listed && holding->second.listed->positions.contains(key)) {
    holding->second.listed->positions[key] = -1;
  }
}

void LearntMemory::ForgetAll() {
  folders_.clear();
  details_.reset();
  entries_ = 0;
  sawLink_ = false;
}

}  // namespace trevane

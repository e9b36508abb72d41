#include "engine/files/TreeRecord.h"

#include "base/LowerCase.h"
#include "base/RunTimeError.h"
#include "engine/model/ContentSteps.h"
#include "engine/model/FileEntry.h"

#include <algorithm>
#include <utility>

namespace trevane {

namespace {

/// Files that are deleted after one listing, and the items that are listed for each of them at most: the
/// listing of a large folder would cost more than it saves.
constexpr qsizetype kFewestTogether = 4;
constexpr qsizetype kListedForEach = 8;

bool IsLinkKind(qint32 attributes) {
  return (attributes & attribute::kLink) != 0;
}

bool IsFolderKind(qint32 attributes) {
  return (attributes & attribute::kFolder) != 0 && !IsLinkKind(attributes);
}

void ReportProgress(const ItemObserver& observer, const QString& name) {
  if (observer && !observer({.name = name})) {
    throw RunTimeError(error::kCancelled, QStringLiteral("The move was cancelled"));
  }
}

/// For each name, whether another one differs from it only in case.
std::vector<bool> TwinsAmong(const QStringList& names) {
  std::vector<qsizetype> order;
  order.reserve(static_cast<size_t>(names.size()));
  for (qsizetype i = 0; i < names.size(); ++i) {
    order.push_back(i);
  }
  std::sort(order.begin(), order.end(), [&names](qsizetype left, qsizetype right) {
    return CompareIgnoringCase(names[left], names[right]) < 0;
  });
  std::vector<bool> twins(order.size(), false);
  for (size_t i = 1; i < order.size(); ++i) {
    if (EqualIgnoringCase(names[order[i - 1]], names[order[i]])) {
      twins[static_cast<size_t>(order[i - 1])] = true;
      twins[static_cast<size_t>(order[i])] = true;
    }
  }
  return twins;
}

}  // namespace

TreeRecord::Item TreeRecord::ItemOf(MovableTree& tree, const QString& name) {
  if (!tree.Find(name)) {
    tree.FailMissing(name);
  }
  tree.RequireMovable();
  Item item;
  item.name = name;
  const qint32 attributes = tree.Attributes();
  item.isLink = IsLinkKind(attributes);
  item.isFolder = IsFolderKind(attributes);
  item.modified = tree.Modified();
  item.identity = tree.Identity();
  item.stateStamp = tree.StateStamp();
  if (!item.isFolder) {
    item.size = tree.Size();
  }
  return item;
}

void TreeRecord::Take(MovableTree& tree, const QString& name, const ItemObserver& observer) {
  struct Level {
    size_t folder = 0;
    QStringList names;
    std::vector<bool> twins;
    qsizetype next = 0;
  };
  items_.clear();
  shared_.clear();
  unlinked_.clear();
  showsChanges_ = true;
  std::vector<Level> levels;
  const auto add = [&](const QString& itemName, bool hasTwin) {
    Item item = ItemOf(tree, itemName);
    item.hasTwin = hasTwin;
    item.end = items_.size() + 1;
    const bool isExact = item.stateStamp || (DateIn(item.modified).IsPresent() && tree.DateStep() == 0);
    showsChanges_ = showsChanges_ && (item.isFolder || item.isLink || isExact);
    items_.push_back(std::move(item));
    if (!items_.back().isFolder) {
      return;
    }
    tree.Enter();
    Level level;
    level.folder = items_.size() - 1;
    level.names = tree.Names();
    level.twins = TwinsAmong(level.names);
    items_.back().children = level.names.size();
    levels.push_back(std::move(level));
  };
  add(name, false);
  while (!levels.empty()) {
    Level& level = levels.back();
    if (level.next == level.names.size()) {
      items_[level.folder].end = items_.size();
      levels.pop_back();
      tree.Leave();
      continue;
    }
    const qsizetype at = level.next++;
    const QString below = level.names[at];
    const bool hasTwin = level.twins[static_cast<size_t>(at)];
    ReportProgress(observer, below);
    add(below, hasTwin);
  }
  FindShared();
}

void TreeRecord::FindShared() {
  std::set<QString> files;
  for (const Item& item : items_) {
    if (!item.isFolder && item.stateStamp && item.identity && !files.insert(*item.identity).second) {
      shared_.insert(*item.identity);
    }
  }
}

void TreeRecord::RequireUnchanged(MovableTree& tree, const Item& item) const {
  const qint32 attributes = tree.Attributes();
  const std::optional<QString> identity = tree.Identity();
  bool isSame = IsLinkKind(attributes) == item.isLink && IsFolderKind(attributes) == item.isFolder &&
                identity == item.identity;
  // The dates of a folder change with its contents. Those of a link belong to its target, which may have gone
  // by now.
  if (isSame && !item.isFolder && !item.isLink) {
    isSame = tree.Size() == item.size &&
             IsSameDate(DateIn(tree.Modified()), DateIn(item.modified), tree.DateStep());
  }
  if (isSame && !item.isFolder) {
    isSame = tree.StateStamp() == item.stateStamp || (identity && unlinked_.contains(*identity));
  }
  if (!isSame) {
    tree.FailChanged(item.name);
  }
}

bool TreeRecord::IsWholeCopy(MovableTree& source, MovableTree& target, const Item& item, Proof proof) {
  const qint32 attributes = target.Attributes();
  const bool isLink = IsLinkKind(attributes);
  if (IsFolderKind(attributes) != item.isFolder || (isLink && !item.isLink)) {
    return false;
  }
  const bool isNewTree = proof == Proof::NewTree;
  // Otherwise the copy itself has refused to replace a file by itself.
  if ((item.isFolder || isNewTree) && item.identity && target.Identity() == item.identity) {
    return false;
  }
  if (item.isFolder) {
    return true;
  }
  if (isNewTree && item.isLink) {
    return isLink;
  }
  if (isLink) {
    if (const std::optional<QString> text = source.LinkText()) {
      return target.LinkText() == text;
    }
  }
  bool isSizeKnown = item.size >= 0;
  // The size of a link is that of its target, and the copied link may have another target.
  if (isSizeKnown && !item.isLink) {
    const qint64 size = target.Size();
    if (size >= 0 && size != item.size) {
      return false;
    }
    isSizeKnown = size >= 0;
  }
  if (isSizeKnown && !item.hasTwin) {
    if (proof != Proof::Content) {
      return true;
    }
    // Copies keep their date. A later date than that of the source proves nothing, nor does one that is not
    // exact.
    if (source.DateStep() == 0 && target.DateStep() == 0 && item.modified != Variant(Missing{}) &&
        target.Modified() == item.modified) {
      return true;
    }
  }
  const auto sent = source.OpenSource();
  const auto arrived = target.OpenSource();
  return IsSameContent(*sent, *arrived);
}

void TreeRecord::RequireArrived(MovableTree& source, MovableTree& target, const QString& copyName,
                                Proof proof, const ItemObserver& observer) const {
  std::vector<size_t> ends;
  for (size_t i = 0; i < items_.size(); ++i) {
    const Item& item = items_[i];
    for (; !ends.empty() && ends.back() == i; ends.pop_back()) {
      source.Leave();
      target.Leave();
    }
    if (i > 0) {
      ReportProgress(observer, item.name);
    }
    if (!source.Find(item.name)) {
      source.FailChanged(item.name);
    }
    RequireUnchanged(source, item);
    if (!target.Find(i > 0 ? item.name : copyName) || !IsWholeCopy(source, target, item, proof)) {
      source.FailNotVerified(item.name);
    }
    if (!item.isFolder) {
      continue;
    }
    source.Enter();
    target.Enter();
    ends.push_back(item.end);
    if (source.Names().size() != item.children) {
      source.FailChanged(item.name);
    }
  }
}

void TreeRecord::RemoveUnchanged(MovableTree& tree, const Item& item) {
  RequireUnchanged(tree, item);
  tree.Remove();
  if (item.identity && shared_.contains(*item.identity)) {
    unlinked_.insert(*item.identity);
  }
}

size_t TreeRecord::EndOfRun(size_t first, const Item* folder) const {
  const size_t end = folder != nullptr ? folder->end : first + 1;
  size_t i = first;
  while (i < end && !items_[i].isFolder && i - first < static_cast<size_t>(content::kMostFiles)) {
    ++i;
  }
  return i;
}

bool TreeRecord::GoTogether(MovableTree& tree, size_t first, size_t end, const Item* folder) {
  const auto count = static_cast<qsizetype>(end - first);
  return folder != nullptr && count >= kFewestTogether && folder->children <= count * kListedForEach &&
         tree.ListingTellsAll();
}

bool TreeRecord::FindForRemoval(MovableTree& tree, size_t at) const {
  const Item& item = items_[at];
  if (item.isFolder && GoTogether(tree, at + 1, EndOfRun(at + 1, &item), &item)) {
    FileEntry folder;
    folder.name = item.name;
    folder.attributes = attribute::kFolder;
    return tree.FindRecorded(folder);
  }
  if (!tree.Find(item.name)) {
    return false;
  }
  if (item.isFolder) {
    RequireUnchanged(tree, item);
  }
  return true;
}

void TreeRecord::RemoveTogether(MovableTree& tree, size_t first, size_t end) const {
  Listing files;
  for (size_t i = first; i < end; ++i) {
    FileEntry& file = files.emplace_back();
    file.name = items_[i].name;
    file.attributes = items_[i].isLink ? attribute::kLink : 0;
    file.size = items_[i].size;
    file.modified = DateIn(items_[i].modified);
  }
  tree.RemoveRecorded(files);
}

void TreeRecord::DeleteSource(MovableTree& tree, const ItemObserver& observer) {
  std::vector<size_t> folders;
  const auto leaveFolders = [&](size_t position) {
    while (!folders.empty() && items_[folders.back()].end == position) {
      const Item& folder = items_[folders.back()];
      folders.pop_back();
      tree.Leave();
      if (!tree.FindLeft()) {
        continue;
      }
      if (tree.RemovesOnlyTheSame()) {
        tree.Remove();
      } else {
        RemoveUnchanged(tree, folder);
      }
    }
  };
  // Files that stand together were looked at up to here.
  size_t runEnd = 0;
  for (size_t i = 0; i < items_.size();) {
    const Item& item = items_[i];
    if (i > 0 && observer) {
      observer({.name = item.name});
    }
    if (i >= runEnd && !item.isFolder) {
      const Item* folder = folders.empty() ? nullptr : &items_[folders.back()];
      runEnd = EndOfRun(i, folder);
      if (GoTogether(tree, i, runEnd, folder)) {
        RemoveTogether(tree, i, runEnd);
        i = runEnd;
        leaveFolders(i);
        continue;
      }
    }
    if (!FindForRemoval(tree, i)) {
      i = item.end;
    } else if (item.isFolder) {
      tree.Enter();
      folders.push_back(i);
      ++i;
    } else {
      RemoveUnchanged(tree, item);
      ++i;
    }
    leaveFolders(i);
  }
}

}  // namespace trevane

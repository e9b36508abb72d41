#include "engine/providers/ftp/FtpErrors.h"
#include "engine/providers/ftp/FtpServer.h"

#include <QHash>

#include <algorithm>
#include <utility>

namespace trevane::ftp {
namespace {

using Kind = ListedItem::Kind;

bool ShowsFolder(const ListedItem& item) {
  return item.kind == Kind::Folder;
}

QHash<QByteArray, ListedItem> ByName(const ParsedListing& listing) {
  QHash<QByteArray, ListedItem> items;
  items.reserve(static_cast<qsizetype>(listing.items.size()));
  for (const ListedItem& item : listing.items) {
    items.insert(item.name, item);
  }
  return items;
}

}  // namespace

void Server::BeginLinkWatch(bool removes) noexcept {
  ++linkWatches_;
  removals_ += removes ? 1 : 0;
}

void Server::EndLinkWatch(bool removes) noexcept {
  removals_ -= removes ? 1 : 0;
  if (--linkWatches_ == 0) {
    ownFolders_.Clear();
  }
}

bool Server::IsOwnFolder(const Place& place, const ListedItem& item) {
  return linkWatches_ == 0 || ownFolders_.Has(place.path, item.unique);
}

bool Server::MayHideLinks(const Place& folder, const ParsedListing& listing) {
  if (can_.mlsd != Seen::Works || can_.factLinks == Seen::Works) {
    return false;
  }
  const bool knowsHiding = can_.factLinks == Seen::Refused;
  if (removals_ > 0 && knowsHiding) {
    // Those that lead nowhere are not shown at all.
    return true;
  }
  return (linkWatches_ > 0 || knowsHiding) &&
         std::any_of(listing.items.begin(), listing.items.end(), [&](const ListedItem& item) {
           return ShowsFolder(item) && !ownFolders_.Has(PathIn(folder.path, item.name), item.unique);
         });
}

void Server::MarkLinks(FtpDialogue& line, const Place& folder, ParsedListing& listing) {
  if (MayHideLinks(folder, listing)) {
    try {
      MarkByLines(folder, ReadLines(line, folder), listing);
    } catch (const RunTimeError& failure) {
      // The line that was asked may be gone, and another one in its place.
      const bool hasNoLines = failure.Number() == error::kNotSupported || failure.Number() == kUnreadable;
      const bool mayMislead = !hasNoLines || can_.factLinks == Seen::Refused;
      if (!HasLine() || (linkWatches_ > 0 && mayMislead)) {
        // What a link leads to would be taken for a folder of this one, and removed.
        throw;
      }
    }
  }
  if (linkWatches_ == 0) {
    return;
  }
  for (ListedItem& item : listing.items) {
    if (!ShowsFolder(item)) {
      continue;
    }
    if (ownFolders_.IsAt(folder.path, item.unique, separator_)) {
      // No folder holds itself.
      item.kind = Kind::Link;
      continue;
    }
    ownFolders_.Add(PathIn(folder.path, item.name), item.unique);
  }
}

void Server::MarkByLines(const Place& folder, const ParsedListing& lines, ParsedListing& listing) {
  if (!lines.items.empty() && std::none_of(lines.items.begin(), lines.items.end(),
                                           [](const ListedItem& item) { return item.mode.has_value(); })) {
    // Only the lines of Unix show links.
    can_.factLinks = Seen::Works;
    return;
  }
  const QHash<QByteArray, ListedItem> told = ByName(lines);
  const auto doubtHidden = [&] {
    for (ListedItem& item : listing.items) {
      const bool isHidden = item.name.startsWith('.') && !ShowsHiddenLines() && !told.contains(item.name);
      if (removals_ > 0 && isHidden && ShowsFolder(item)) {
        // Nothing tells. As a link it is not entered, and a server deletes no folder as if it were one.
        item.kind = Kind::Link;
      }
    }
  };
  if (lines.items.empty()) {
    doubtHidden();
    return;
  }
  QHash<QByteArray, ListedItem> unseen = told;
  std::vector<ListedItem*> unlisted;
  bool showsLinks = false;
  bool hidesLinks = false;
  for (ListedItem& item : listing.items) {
    const auto there = unseen.constFind(item.name);
    showsLinks = showsLinks || item.kind == Kind::Link;
    if (there == unseen.cend()) {
      if (ShowsFolder(item) && (!item.name.startsWith('.') || ShowsHiddenLines())) {
        unlisted.push_back(&item);
      }
      continue;
    }
    if (there->kind == Kind::Link && ShowsFolder(item)) {
      item.kind = Kind::Link;
      hidesLinks = true;
      links_.insert(PathIn(folder.path, item.name), {.isFolder = true, .leadsNowhere = false});
    }
    if (item.kind == Kind::Link && item.target.isEmpty()) {
      item.target = there->target;
    }
    unseen.erase(there);
  }
  // Lines may spell a name in another way. Where they show fewer folders than the facts, the others are links
  // that they leave out: some servers do with those that lead to the folder itself or to the one above it.
  const auto folders = std::count_if(unseen.cbegin(), unseen.cend(), ShowsFolder);
  const bool areLeftOut = static_cast<qsizetype>(unlisted.size()) > folders;
  if (areLeftOut) {
    for (ListedItem* const item : unlisted) {
      item->kind = Kind::Link;
      links_.insert(PathIn(folder.path, item->name), {.isFolder = true, .leadsNowhere = false});
    }
    hidesLinks = true;
  }
  doubtHidden();
  // A link that the facts leave out leads nowhere.
  for (const ListedItem& item : std::as_const(unseen)) {
    if (item.kind == Kind::Link && (unlisted.empty() || areLeftOut)) {
      listing.items.push_back(item);
      links_.insert(PathIn(folder.path, item.name), {.isFolder = false, .leadsNowhere = true});
      hidesLinks = true;
    }
  }
  if (hidesLinks) {
    can_.factLinks = Seen::Refused;
  } else if (showsLinks && can_.factLinks == Seen::Unknown) {
    can_.factLinks = Seen::Works;
  }
}

bool Server::HoldsHiddenLinks(const Place& folder) {
  if (can_.mlsd != Seen::Works) {
    return false;
  }
  FtpDialogue& line = Line();
  try {
    const ParsedListing lines = ReadLines(line, folder);
    const bool holds = std::any_of(lines.items.begin(), lines.items.end(),
                                   [](const ListedItem& item) { return item.kind == Kind::Link; });
    can_.factLinks = holds ? Seen::Refused : can_.factLinks;
    return holds;
  } catch (const RunTimeError&) {
    if (!HasLine()) {
      throw;
    }
    return false;
  }
}

}  // namespace trevane::ftp

#include "engine/providers/ftp/FtpErrors.h"
#include "engine/providers/ftp/FtpServer.h"

#include <algorithm>
#include <utility>

namespace trevane::ftp {
namespace {

constexpr char kFirstBehindBlank = 0x21;
constexpr char kLastOfAscii = 0x7e;

/// Whether STAT can be asked with the path: no server takes a part of it for a pattern or an option, or needs
/// to be told of its encoding first.
bool IsPlainForStatus(const QByteArray& path) {
  constexpr QByteArrayView kPatterns("*?[]{}~\\\"");
  return std::all_of(
             path.begin(), path.end(),
             [&](char c) { return c >= kFirstBehindBlank && c <= kLastOfAscii && !kPatterns.contains(c); }) &&
         !path.contains("/-") && !path.startsWith('-');
}

/// Whether an answer would surely show such a name, and as it is. Names with a dot in front may be hidden.
bool IsShownAsItIs(const QByteArray& name) {
  return !name.startsWith('.') && !name.startsWith(' ') && !name.endsWith(' ') &&
         std::all_of(name.begin(), name.end(), [](char c) { return c >= ' ' && c <= kLastOfAscii; });
}

}  // namespace

bool Server::MayAskStatus(const Place& place) const {
  // Who has the listing of a folder looks for what may be missing there, and only what is there is believed.
  return can_.mlst == Seen::Refused && can_.statusLists != Seen::Refused && !place.IsTop() &&
         recentFolder_ != place.folder && linkWatches_ == 0 && putBacks_ == 0 &&
         IsPlainForStatus(place.folder) && IsShownAsItIs(place.ownName);
}

std::optional<ListedItem> Server::LookOnTheWay(const Place& place) {
  if (!MayAskStatus(place)) {
    return Look(place);
  }
  FtpDialogue& line = Line();
  Reply reply;
  try {
    reply = line.Command("STAT " + place.folder);
  } catch (const RunTimeError& failure) {
    // Such an answer is more than the server or the line can stand.
    can_.statusLists = Seen::Refused;
    const bool isOfLine = failure.Number() == kConnectionLost || failure.Number() == error::kTimeOut;
    if (!isOfLine || !connector_->ConnectsWithoutQuestion()) {
      throw;
    }
    return Look(place);
  }
  std::optional<ListedItem> item = ItemOfStatus(reply, place);
  can_.statusLists = item ? Seen::Works : Seen::Refused;
  const bool leadsOn =
      item && (item->kind == ListedItem::Kind::Folder || item->kind == ListedItem::Kind::Link);
  if (!leadsOn) {
    // What a file's line says is compared with listings.
    return Look(place);
  }
  if (!can_.askedZone && can_.mdtm != Seen::Refused) {
    // No date is better than one of another zone. The first listing of files learns the zone.
    item->modified = {};
    item->step = DateStep::None;
  }
  return item;
}

std::optional<ListedItem> Server::ItemOfStatus(const Reply& reply, const Place& place) {
  const bool isOfStatus = reply.code >= 211 && reply.code <= 213;
  const qsizetype first = reply.text.indexOf('\n');
  const qsizetype last = reply.text.lastIndexOf('\n');
  if (!isOfStatus || last <= first) {
    return std::nullopt;
  }
  // The words of the server. Where they are lines of items, the answer was cut, or is the rest of another
  // one.
  for (const QByteArray& words : {reply.text.first(first), reply.text.sliced(last + 1)}) {
    if (!ParseLines(words).IsUnreadable()) {
      return std::nullopt;
    }
  }
  ParsedListing listing = ParseLines(reply.text.sliced(first + 1, last - first));
  const auto isNamed = [&](const ListedItem& item) { return item.name == place.ownName; };
  const auto found = std::find_if(listing.items.begin(), listing.items.end(), isNamed);
  if (found == listing.items.end() || std::any_of(found + 1, listing.items.end(), isNamed)) {
    return std::nullopt;
  }
  // Some answer with the line of the folder itself.
  const bool isFolderItself = listing.items.size() == 1 && place.ownName == Above(place).ownName;
  return isFolderItself ? std::nullopt : std::optional(std::move(*found));
}

}  // namespace trevane::ftp

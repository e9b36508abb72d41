#include "base/ForeignText.h"
#include "base/LowerCase.h"
#include "base/NameCodec.h"
#include "engine/providers/ftp/FtpErrors.h"
#include "engine/providers/ftp/FtpServer.h"

#include <QDateTime>
#include <QHash>
#include <QSet>

#include <algorithm>
#include <memory>
#include <utility>

namespace trevane::ftp {
namespace {

/// A longer listing is one that never ends.
constexpr qint64 kMostBytes = qint64{256} * 1024 * 1024;

/// Whether LIST can be asked with the path: no server takes a part of it for a pattern or an option.
bool IsPlain(const QByteArray& path) {
  return std::none_of(
             path.begin(), path.end(),
             [](char c) { return c == ' ' || c == '*' || c == '?' || c == '[' || c == '{' || c == '~'; }) &&
         !path.contains("/-") && !path.startsWith('-');
}

/// "ls" answers with the item itself where it is no folder.
bool IsItself(const ParsedListing& listing, const Place& folder) {
  if (listing.items.size() != 1 || listing.items.front().kind == ListedItem::Kind::Folder) {
    return false;
  }
  return listing.items.front().name == folder.ownName;
}

[[noreturn]] void FailUnreadable(const ParsedListing& listing, const Place& folder) {
  constexpr qsizetype kLongest = 120;
  Fail(kUnreadable,
       QStringLiteral("The server's listing cannot be read (%1)")
           .arg(ForeignLine(DecodeBytes(listing.firstUnreadable), kLongest)),
       folder.text);
}

bool EndsWithName(const QByteArray& line, const QByteArray& name) {
  const QByteArray text = line.trimmed();
  if (!text.endsWith(name)) {
    return false;
  }
  const qsizetype before = text.size() - name.size() - 1;
  return before < 0 || text[before] == ' ' || text[before] == '\t' || text[before] == '/';
}

void RequireWhole(const FtpDialogue::Text& text, const Place& folder) {
  if (text.isTooLarge) {
    Fail(error::kWin32Error + 8, QStringLiteral("The server's listing has no end"), folder.text);
  }
}

/// What this computer's own zone is ahead of UTC at a date that is shown as if it were UTC, in minutes.
int OwnZoneAt(const ListedItem& shown) {
  const QDateTime date = QDateTime::fromMSecsSinceEpoch(shown.modified.msecs, Qt::UTC);
  return QDateTime(date.date(), date.time(), Qt::LocalTime).offsetFromUtc() / 60;
}

QSet<QByteArray> NamesOf(const ParsedListing& listing) {
  QSet<QByteArray> names;
  names.reserve(static_cast<qsizetype>(listing.items.size()));
  for (const ListedItem& item : listing.items) {
    names.insert(item.name);
  }
  return names;
}

}  // namespace

ServerClock Server::Clock() const {
  return {.now = QDateTime::currentMSecsSinceEpoch(), .zone = can_.zone};
}

void Server::Enter(FtpDialogue& line, const Place& folder) {
  const Reply entered = line.Command("CWD " + folder.path);
  if (!entered.IsDone()) {
    FailFolder(entered, folder);
  }
}

void Server::FailFolder(const Reply& reply, const Place& folder) {
  if (folder.IsTop() || reply.code == 0) {
    throw ReplyError(reply, folder.text);
  }
  const std::optional<ListedItem> item = Look(folder);
  if (!item) {
    throw ReplyError(reply, error::kNotFound, folder.text);
  }
  const qint32 number = NumberOf(reply, folder.path);
  if (item->kind != ListedItem::Kind::Folder) {
    // A link may lead nowhere.
    const bool leadsNowhere = item->kind == ListedItem::Kind::Link && number == error::kNotFound;
    throw ReplyError(reply, leadsNowhere ? error::kNotFound : providererror::kNotAFolder, folder.text);
  }
  const bool isSure = number != error::kNotFound && number != providererror::kNotAFolder &&
                      number != providererror::kGeneralFailure;
  throw ReplyError(reply, isSure ? number : error::kAccessDenied, folder.text);
}

void Server::FailListing(FtpDialogue& line, const Reply& reply, const Place& folder) {
  const qint32 number = NumberOf(reply, folder.path);
  const bool isOfPath = number == error::kNotFound || number == providererror::kNotAFolder ||
                        number == providererror::kGeneralFailure || number == error::kAccessDenied ||
                        number == error::kInvalidName || number == kInUse;
  if (!isOfPath) {
    throw ReplyError(reply, folder.text);
  }
  Enter(line, folder);
  const bool isSure = number != error::kNotFound && number != providererror::kNotAFolder &&
                      number != providererror::kGeneralFailure;
  throw ReplyError(reply, isSure ? number : error::kAccessDenied, folder.text);
}

ParsedListing Server::ReadListing(FtpDialogue& line, const Place& folder) {
  return can_.mlsd == Seen::Refused ? ReadLines(line, folder) : ReadFacts(line, folder);
}

ParsedListing Server::ReadFolder(const Place& folder) {
  FtpDialogue& line = Line();
  ParsedListing listing = ReadListing(line, folder);
  if (LacksUtf8(listing)) {
    needsUtf8_ = true;
    TellUtf8();
    if (can_.utf8 != Seen::Refused) {
      listing = ReadListing(line, folder);
    }
  }
  MarkLinks(line, folder, listing);
  Note(listing);
  recentFolder_ = folder.path;
  recent_ = listing;
  recentAt_.start();
  return listing;
}

ParsedListing Server::ReadRecently(const Place& folder) {
  constexpr qint64 kRecent = 60000;
  if (recentFolder_ == folder.path && recentAt_.elapsed() < kRecent) {
    return recent_;
  }
  return ReadFolder(folder);
}

void Server::Note(const ParsedListing& listing) {
  can_.modes = can_.modes || std::any_of(listing.items.begin(), listing.items.end(),
                                         [](const ListedItem& item) { return item.mode.has_value(); });
  for (const ListedItem& item : listing.items) {
    rules_.Seen(item.name);
  }
  if (can_.caseSensitive != Seen::Unknown) {
    return;
  }
  QSet<QByteArray> folded;
  for (const ListedItem& item : listing.items) {
    folded.insert(item.name.toLower());
  }
  if (folded.size() < NamesOf(listing).size()) {
    can_.caseSensitive = Seen::Works;
  }
}

ParsedListing Server::ReadFacts(FtpDialogue& line, const Place& folder) {
  const FtpDialogue::Text text = line.ReadText("MLSD " + folder.path, kMostBytes);
  if (!text.reply.IsDone()) {
    const bool isUnknown = text.reply.IsUnknownCommand();
    if (text.reply.IsRefusedForNow() || (can_.mlsd == Seen::Works && !isUnknown)) {
      FailListing(line, text.reply, folder);
    }
    ParsedListing lines = ReadLines(line, folder);
    can_.mlsd = Seen::Refused;
    return lines;
  }
  RequireWhole(text, folder);
  ParsedListing listing = ParseFacts(text.bytes);
  if (listing.IsUnreadable()) {
    if (can_.mlsd == Seen::Works) {
      FailUnreadable(listing, folder);
    }
    listing = ReadLines(line, folder);
    can_.mlsd = Seen::Refused;
    return listing;
  }
  if (text.bytes.trimmed().isEmpty()) {
    // Not even itself: it may be missing.
    Enter(line, folder);
  } else {
    can_.mlsd = Seen::Works;
  }
  return listing;
}

QByteArray Server::ReadLinesOnce(FtpDialogue& line, const Place& folder, bool isInside, bool withHidden) {
  QByteArray command = withHidden ? QByteArray("LIST -a") : QByteArray("LIST");
  if (!isInside) {
    command += ' ' + folder.path;
  }
  const FtpDialogue::Text text = line.ReadText(command, kMostBytes);
  if (text.reply.IsDone()) {
    RequireWhole(text, folder);
    return text.bytes;
  }
  if (text.reply.text.toLower().contains("no files found")) {
    Enter(line, folder);
    return {};
  }
  FailListing(line, text.reply, folder);
}

ParsedListing Server::ParseLines(const QByteArray& bytes) const {
  return ParseList(bytes, Clock());
}

ParsedListing Server::ReadLines(FtpDialogue& line, const Place& folder) {
  bool isInside = can_.listPath == Seen::Refused || !IsPlain(folder.path);
  if (isInside) {
    Enter(line, folder);
  }
  QByteArray bytes = ReadLinesOnce(line, folder, isInside, can_.listAll == Seen::Works);
  ParsedListing listing = ParseLines(bytes);
  // A path in front of the names makes them unreadable, too.
  if (!isInside && (IsItself(listing, folder) || listing.IsUnreadable())) {
    Enter(line, folder);
    isInside = true;
    bytes = ReadLinesOnce(line, folder, isInside, can_.listAll == Seen::Works);
    listing = ParseLines(bytes);
  }
  if (listing.IsUnreadable()) {
    FailUnreadable(listing, folder);
  }
  if (listing.items.empty() && !isInside) {
    // Servers list a missing folder without an error, and some list nothing but the one they are in.
    Enter(line, folder);
    isInside = true;
    if (can_.listPath == Seen::Unknown) {
      bytes = ReadLinesOnce(line, folder, isInside, can_.listAll == Seen::Works);
      listing = ParseLines(bytes);
      if (listing.IsUnreadable()) {
        FailUnreadable(listing, folder);
      }
      can_.listPath = listing.items.empty() ? Seen::Unknown : Seen::Refused;
    }
  } else if (!isInside && !folder.IsTop()) {
    can_.listPath = Seen::Works;
  }
  if (can_.listAll == Seen::Unknown) {
    LearnHidden(line, folder, isInside, bytes);
    listing = ParseLines(bytes);
  }
  if (!can_.askedZone) {
    LearnZone(line, folder, bytes);
    listing = ParseLines(bytes);
  }
  if (can_.zone && !can_.askedSeason && LearnSeason(line, folder, listing)) {
    listing = ParseLines(bytes);
  }
  return listing;
}

void Server::LearnHidden(FtpDialogue& line, const Place& folder, bool isInside, QByteArray& bytes) {
  const ParsedListing plain = ParseLines(bytes);
  const bool isUnix = std::any_of(plain.items.begin(), plain.items.end(),
                                  [](const ListedItem& item) { return item.mode.has_value(); });
  if (!plain.items.empty()) {
    can_.listAll = Seen::Refused;
    if (!isUnix) {
      return;
    }
  }
  const FtpDialogue::Text text =
      line.ReadText(isInside ? QByteArray("LIST -a") : "LIST -a " + folder.path, kMostBytes);
  if (!text.reply.IsDone() || text.isTooLarge) {
    can_.listAll = Seen::Refused;
    return;
  }
  // It shows the folder itself, and all that is shown without.
  const bool showsItself = text.bytes.contains(" .\r") || text.bytes.contains(" .\n");
  if (showsItself && NamesOf(ParseLines(text.bytes)).contains(NamesOf(plain))) {
    can_.listAll = Seen::Works;
    bytes = text.bytes;
  }
}

void Server::LearnZone(FtpDialogue& line, const Place& folder, const QByteArray& bytes) {
  // Its dates as if they were UTC.
  ServerClock clock = Clock();
  clock.zone = 0;
  ParsedListing listing = ParseList(bytes, clock);
  const auto exact = std::find_if(listing.items.begin(), listing.items.end(), [](const ListedItem& item) {
    return item.kind == ListedItem::Kind::File && item.step >= DateStep::Minute;
  });
  if (exact == listing.items.end()) {
    return;
  }
  can_.askedZone = true;
  if (can_.mdtm == Seen::Refused) {
    return;
  }
  if (const std::optional<qint64> time = DateOf(line, PathIn(folder.path, exact->name))) {
    can_.zone = ZoneOf(*exact, *time);
    can_.askedSeason = can_.zone != OwnZoneAt(*exact);
  }
}

std::optional<qint64> Server::DateOf(FtpDialogue& line, const QByteArray& path) {
  const Reply reply = line.Command("MDTM " + path);
  Learn(can_.mdtm, reply.IsDone(), reply.IsUnknownCommand());
  return reply.IsDone() ? ParseTimeValue(reply.text) : std::nullopt;
}

bool Server::LearnSeason(FtpDialogue& line, const Place& folder, const ParsedListing& listing) {
  const auto asShown = [this](ListedItem item) {
    item.modified.msecs += qint64{*can_.zone} * 60 * 1000;
    return item;
  };
  const auto other = std::find_if(listing.items.begin(), listing.items.end(), [&](const ListedItem& item) {
    return item.kind == ListedItem::Kind::File && item.step >= DateStep::Minute &&
           OwnZoneAt(asShown(item)) != *can_.zone;
  });
  if (other == listing.items.end()) {
    return false;
  }
  can_.askedSeason = true;
  const ListedItem shown = asShown(*other);
  const std::optional<qint64> time = DateOf(line, PathIn(folder.path, other->name));
  if (!time || ZoneOf(shown, *time) != OwnZoneAt(shown)) {
    return false;
  }
  can_.zone.reset();
  return true;
}

std::optional<qint64> Server::SizeOf(const Place& place) {
  if (can_.size == Seen::Refused) {
    return std::nullopt;
  }
  const Reply reply = Line().Command("SIZE " + place.path);
  Learn(can_.size, reply.IsDone(), reply.IsUnknownCommand());
  bool isNumber = false;
  const qint64 size = reply.IsDone() ? reply.text.trimmed().toLongLong(&isNumber) : -1;
  return isNumber && size >= 0 ? std::optional(size) : std::nullopt;
}

qint64 Server::ListedSize(const Place& place) const {
  if (recentFolder_ != place.folder) {
    return -1;
  }
  const auto item = std::find_if(recent_.items.begin(), recent_.items.end(),
                                 [&](const ListedItem& each) { return each.name == place.ownName; });
  return item == recent_.items.end() || item->kind != ListedItem::Kind::File ? -1 : item->size;
}

bool Server::IsFolder(const Place& place) {
  return place.IsTop() || Line().Command("CWD " + place.path).IsDone();
}

std::optional<ListedItem> Server::Look(const Place& place) {
  if (place.IsTop()) {
    return ListedItem{.name = {}, .kind = ListedItem::Kind::Folder};
  }
  if (can_.mlst == Seen::Refused) {
    return LookInListing(place);
  }
  const Reply reply = Line().Command("MLST " + place.path);
  if (!reply.IsDone()) {
    Learn(can_.mlst, false, reply.IsUnknownCommand());
    // It may be a link that leads nowhere.
    const bool isMissing = removals_ == 0 && NumberOf(reply, place.path) == error::kNotFound;
    return isMissing ? std::nullopt : LookInListing(place);
  }
  if (std::optional<ListedItem> item = ParseItemFacts(reply.text)) {
    can_.mlst = Seen::Works;
    if (item->kind == ListedItem::Kind::Folder && !IsOwnFolder(place, *item)) {
      return LookInListing(place);
    }
    item->name = place.ownName;
    return item;
  }
  return LookInListing(place);
}

std::optional<ListedItem> Server::LookInListing(const Place& place) {
  ParsedListing listing;
  try {
    listing = ReadFolder(Above(place));
  } catch (const RunTimeError& failure) {
    if (failure.Number() == error::kNotFound || failure.Number() == providererror::kNotAFolder) {
      return std::nullopt;
    }
    throw;
  }
  const ListedItem* other = nullptr;
  const QString folded = LowerCase(place.name);
  for (const ListedItem& item : listing.items) {
    if (item.name == place.ownName) {
      return item;
    }
    if (can_.caseSensitive != Seen::Works && LowerCase(names_.FromServer(item.name)) == folded) {
      other = &item;
    }
  }
  if (other != nullptr && IsOneItem(place, other->name)) {
    return *other;
  }
  if (listing.unreadable > 0 || (place.ownName.startsWith('.') && !ShowsHidden())) {
    return LookUnlisted(place, listing);
  }
  return std::nullopt;
}

bool Server::Answers(const QByteArray& path) {
  for (Seen Capabilities::*asked : {&Capabilities::size, &Capabilities::mdtm}) {
    if (can_.*asked == Seen::Refused) {
      continue;
    }
    const Reply reply = Line().Command((asked == &Capabilities::size ? "SIZE " : "MDTM ") + path);
    Learn(can_.*asked, reply.IsDone(), reply.IsUnknownCommand());
    if (reply.IsDone()) {
      return true;
    }
  }
  return Line().Command("CWD " + path).IsDone();
}

bool Server::IsOneItem(const Place& place, const QByteArray& listed) {
  if (can_.caseSensitive != Seen::Unknown) {
    return can_.caseSensitive == Seen::Refused;
  }
  if (!Answers(PathIn(place.folder, listed))) {
    // Nothing tells: it counts as taken.
    return true;
  }
  const bool isOne = Answers(place.path);
  can_.caseSensitive = isOne ? Seen::Refused : Seen::Works;
  return isOne;
}

std::optional<ListedItem> Server::LookUnlisted(const Place& place, const ParsedListing& listing) {
  ListedItem item{.name = place.ownName};
  if (const std::optional<qint64> size = SizeOf(place)) {
    item.size = *size;
    return item;
  }
  if (IsFolder(place)) {
    item.kind = ListedItem::Kind::Folder;
    return item;
  }
  if (can_.size == Seen::Works) {
    return std::nullopt;
  }
  if (can_.mdtm != Seen::Refused) {
    const Reply reply = Line().Command("MDTM " + place.path);
    Learn(can_.mdtm, reply.IsDone(), reply.IsUnknownCommand());
    if (reply.IsDone()) {
      return item;
    }
  }
  if (can_.mdtm == Seen::Works) {
    return std::nullopt;
  }
  // Nobody knows what such a line stands for, so that the name counts as taken.
  const auto& lines = listing.unreadableLines;
  const bool isNamed = std::any_of(lines.begin(), lines.end(),
                                   [&](const QByteArray& line) { return EndsWithName(line, place.ownName); });
  return isNamed || CanBeRead(place) ? std::optional(item) : std::nullopt;
}

bool Server::CanBeRead(const Place& place) {
  // RNFR would do as well, but some servers take nothing but RNTO after it.
  constexpr qint64 kPiece = qint64{64} * 1024;
  constexpr int kMostPieces = 16;
  Server::RequireTransferable(place.path, place.text);
  Reply refusal;
  const std::unique_ptr<FtpDownload> download = Line().Retrieve(place.path, 0, refusal);
  if (!download) {
    const qint32 number = NumberOf(refusal, place.path);
    if (number == kNoData || number == kConnectionLost) {
      throw ReplyError(refusal, place.text);
    }
    return number == error::kAccessDenied || number == kInUse;
  }
  // A transfer that is broken off may cost the line.
  for (int i = 0; i < kMostPieces; ++i) {
    if (download->Read(kPiece).isEmpty()) {
      static_cast<void>(download->Finish());
      break;
    }
  }
  return true;
}

void Server::FailLooking(const Reply& reply, const Place& place) {
  const qint32 number = NumberOf(reply, place.path);
  const bool isSure = number != providererror::kGeneralFailure && number != error::kNotFound;
  if (isSure) {
    throw ReplyError(reply, place.text);
  }
  const std::optional<ListedItem> item = Look(place);
  // A server that tells the size of what a link leads to tells none where it leads nowhere.
  const bool leadsNowhere = item && item->kind == ListedItem::Kind::Link && !SizeOf(place) &&
                            can_.size == Seen::Works && !IsFolder(place);
  if (leadsNowhere) {
    throw ReplyError(reply, error::kNotFound, QStringLiteral("The link leads nowhere"), place.text);
  }
  throw ReplyError(reply, item ? error::kAccessDenied : error::kNotFound, place.text);
}

FileEntry Server::EntryOf(const ListedItem& item, const QString& name, const QByteArray& folder) const {
  FileEntry entry;
  entry.name = name;
  entry.modified = item.modified;
  switch (item.kind) {
    case ListedItem::Kind::Folder:
      entry.attributes = attribute::kFolder;
      break;
    case ListedItem::Kind::Device:
      entry.attributes = attribute::kDevice;
      break;
    case ListedItem::Kind::Link: {
      entry.attributes = attribute::kLink;
      entry.size = -1;
      const auto known = links_.constFind(PathIn(folder, item.name));
      if (known != links_.cend()) {
        entry.leadsNowhere = known->leadsNowhere;
        entry.attributes |= known->isFolder ? attribute::kFolder : attribute::kArchive;
        entry.size = known->isFolder ? 0 : -1;
      } else {
        entry.attributes |= attribute::kArchive;
      }
      break;
    }
    case ListedItem::Kind::File:
      entry.attributes = attribute::kArchive;
      entry.size = item.size;
      if (item.isReadOnly) {
        entry.attributes |= attribute::kReadOnly;
      }
      break;
  }
  if (name.startsWith(u'.')) {
    entry.attributes |= attribute::kHidden;
  }
  return entry;
}

FileEntry Server::EntryAt(const Place& place, const ListedItem& item) {
  if (item.kind == ListedItem::Kind::Link && !links_.contains(place.path)) {
    const Reply entered = Line().Command("CWD " + place.path);
    const bool leadsNowhere =
        !entered.IsDone() && NumberOf(entered, place.path) == error::kNotFound && !SizeOf(place);
    links_.insert(place.path, {.isFolder = entered.IsDone(), .leadsNowhere = leadsNowhere});
  }
  FileEntry entry = EntryOf(item, place.name, place.folder);
  // A server may answer with another spelling.
  entry.name = names_.FromServer(item.name.isEmpty() ? place.ownName : item.name);
  return entry;
}

}  // namespace trevane::ftp

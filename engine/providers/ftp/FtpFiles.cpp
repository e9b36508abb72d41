#include "engine/providers/ftp/FtpFiles.h"

#include "base/ForeignText.h"
#include "base/NameCodec.h"
#include "engine/files/ProviderPath.h"
#include "engine/providers/ftp/FtpBatches.h"
#include "engine/providers/ftp/FtpErrors.h"
#include "engine/providers/ftp/FtpFileSystem.h"
#include "engine/providers/ftp/FtpFolder.h"
#include "engine/providers/ftp/FtpRawFiles.h"
#include "engine/providers/ftp/FtpSource.h"

#include <QHash>

#include <utility>

namespace trevane {

std::shared_ptr<FileSystem> OpenFtpFileSystem(std::unique_ptr<FtpConnector> connector,
                                              const FtpSettings& settings,
                                              std::shared_ptr<CallControl> control,
                                              std::shared_ptr<ftp::AbandonedItems> abandoned) {
  if (!abandoned) {
    abandoned = std::make_shared<ftp::AbandonedItems>();
  }
  return std::make_shared<ftp::Files>(std::move(connector), settings, std::move(control),
                                      std::move(abandoned));
}

namespace ftp {
namespace {

constexpr qint64 kSecond = 1000;
constexpr qint64 kDay = 24 * 60 * 60 * kSecond;

/// A name that nothing can be opened by: who uses the listing counts it and tells so.
FileEntry RefusedEntry(const QString& shown) {
  constexpr qsizetype kLongest = 200;
  FileEntry entry;
  entry.name = u'/' + shown.left(kLongest);
  entry.attributes = attribute::kDevice;
  entry.size = -1;
  return entry;
}

/// The text of a link without its own folder in front, `inside`, which ends with a separator.
QByteArray TargetHere(const ListedItem& link, const QByteArray& inside) {
  return link.target.startsWith(inside) ? link.target.sliced(inside.size()) : link.target;
}

}  // namespace

Files::Files(std::unique_ptr<FtpConnector> connector, const FtpSettings& settings,
             std::shared_ptr<CallControl> control, std::shared_ptr<AbandonedItems> abandoned)
    : server_(std::make_shared<Server>(std::move(connector), settings, std::move(control),
                                       std::move(abandoned))) {
  // What Capabilities tells must hold from the beginning.
  LearnRename(*server_, server_->At(QString()).path);
}

FileSystemCapabilities Files::Capabilities() const {
  const bool hasSeconds = server_->Can().mlsd != Seen::Refused;
  return {.caseSensitive = true,
          .traits = false,
          .temporaryNames = server_->Can().rename != Seen::Refused,
          .freshNames = true,
          .dateStep = hasSeconds ? kSecond : kDay,
          .notice = server_->Connector().Notice()};
}

Listing Files::List(const QString& folder) {
  const Place place = server_->At(folder);
  const ParsedListing parsed = server_->ReadFolder(place);
  // Where a link leads is known for free when the folder holds it.
  QHash<QByteArray, const ListedItem*> byName;
  for (const ListedItem& item : parsed.items) {
    byName.insert(item.name, &item);
  }
  const QByteArray inside = server_->PathIn(place.path, {});
  Listing listing;
  listing.reserve(parsed.items.size());
  for (const ListedItem& item : parsed.items) {
    if (!ServerNames::IsName(item.name)) {
      listing.push_back(RefusedEntry(server_->Names().FromServer(item.name)));
      continue;
    }
    FileEntry entry = server_->EntryOf(item, server_->Names().FromServer(item.name), place.path);
    const ListedItem* const target =
        item.kind == ListedItem::Kind::Link ? byName.value(TargetHere(item, inside)) : nullptr;
    if (target != nullptr && target->kind != ListedItem::Kind::Link) {
      const FileEntry shown = server_->EntryOf(*target, entry.name, place.path);
      entry.attributes = shown.attributes | attribute::kLink;
      entry.size = shown.IsFolder() ? 0 : -1;
    }
    listing.push_back(std::move(entry));
  }
  const QString unreadable = ForeignLine(DecodeBytes(parsed.firstUnreadable), 200);
  for (int i = 0; i < parsed.unreadable; ++i) {
    listing.push_back(RefusedEntry(QStringLiteral("%1 %2").arg(i + 1).arg(unreadable)));
  }
  return listing;
}

void Files::ListInBatches(const QString& folder, const ListingReceiver& receive) {
  static_cast<void>(receive(List(folder)));
}

Place Files::PlaceOfItem(const QString& path, qint32 refusalOfTop) const {
  Place place = server_->At(path);
  if (place.IsTop()) {
    Fail(refusalOfTop, place.text);
  }
  return place;
}

ListedItem Files::Require(const Place& place) {
  std::optional<ListedItem> item = server_->Look(place);
  if (!item) {
    Fail(error::kNotFound, place.text);
  }
  return *std::move(item);
}

std::optional<FileEntry> Files::Find(const QString& path) {
  const Place place = server_->At(path);
  const std::optional<ListedItem> item = server_->LookOnTheWay(place);
  return item ? std::optional(server_->EntryAt(place, *item)) : std::nullopt;
}

std::unique_ptr<ContentSource> Files::OpenSource(const QString& path, qint64 offset) {
  return std::make_unique<Source>(server_, server_->At(path), offset);
}

std::unique_ptr<ContentSink> Files::OpenSink(const QString& path, const SinkRequest& request) {
  return OpenSinkAt(server_, path, request);
}

std::vector<WriteResult> Files::WriteMany(const std::vector<NewContent>& files) {
  return WriteBatch(server_, files);
}

std::vector<ReadResult> Files::ReadMany(const QStringList& paths) {
  return ReadBatch(server_, paths);
}

std::optional<QString> Files::ReadLink(const QString& path) {
  const Place place = server_->At(path);
  ListedItem item = Require(place);
  if (item.kind != ListedItem::Kind::Link) {
    return std::nullopt;
  }
  if (item.target.isEmpty()) {
    Fail(error::kNotSupported, QStringLiteral("The server does not tell where the link leads"), place.text);
  }
  return server_->Names().FromServer(item.target);
}

FileTraits Files::Traits(const QString& path) {
  return RawServer(server_).Traits(path);
}

void Files::SetTraits(const QString& path, const FileTraits& traits) {
  const Place place = server_->At(path);
  if (place.IsTop() || Require(place).kind == ListedItem::Kind::Link) {
    Fail(error::kAccessDenied, place.text);
  }
  SetTraitsAt(*server_, place, traits);
}

void Files::CreateFolder(const QString& path) {
  const Place place = PlaceOfItem(path, error::kExists);
  server_->RequireFits(place);
  const Reply made = server_->Line().Command("MKD " + place.path);
  if (made.IsDone()) {
    server_->NoteMade(place);
    return;
  }
  const qint32 number = NumberOf(made, place.path);
  if (number != error::kDiskFull && !made.IsUnknownCommand() && server_->Look(place)) {
    throw ReplyError(made, error::kExists, place.text);
  }
  throw StoringError(*server_, made, place);
}

std::shared_ptr<HeldFolder> Files::Hold(const QString& folder) {
  return std::make_shared<Folder>(*this, server_, folder);
}

void Files::Copy(const QString& from, const QString& to, bool overwrite, const ItemObserver& observer) {
  const LinkWatch watch(*server_);
  FileSystem::Copy(from, to, overwrite, observer);
}

void Files::Remove(const QString& path, const ItemObserver& observer) {
  const LinkWatch watch(*server_, true);
  const bool knewHiding = server_->Can().factLinks == Seen::Refused;
  try {
    FileSystem::Remove(path, observer);
  } catch (const RunTimeError& failure) {
    const bool hasLearnt = !knewHiding && server_->Can().factLinks == Seen::Refused;
    if (!hasLearnt || failure.Number() != error::kDirectoryNotEmpty) {
      throw;
    }
    // Of links that lead nowhere, which are listed from now on.
    FileSystem::Remove(path, observer);
  }
}

std::vector<Leftover> Files::TakeLeftovers() {
  return server_->TakeLeftovers();
}

QString Files::PathFromText(const QString& text) {
  if (text.isEmpty() || text.startsWith(u'/') || text.startsWith(u'\\')) {
    return text;
  }
  const QString start = server_->TextOf(server_->Line().Start()).value_or(QString());
  return providerpath::BelowStart(start, text);
}

QStringList Files::Details(const QString& path) {
  const Place place = server_->At(path);
  if (place.IsTop()) {
    return server_->Connector().Details();
  }
  QStringList lines;
  const ListedItem item = Require(place);
  if (item.mode) {
    lines += QStringLiteral("Permissions: %1").arg(*item.mode, 3, 8, QLatin1Char('0'));
  }
  if (!item.owner.isEmpty()) {
    const QString owner = QString::fromUtf8(item.owner);
    lines += QStringLiteral("Owner: %1")
                 .arg(item.group.isEmpty() ? owner : owner + u':' + QString::fromUtf8(item.group));
  }
  return lines;
}

}  // namespace ftp
}  // namespace trevane

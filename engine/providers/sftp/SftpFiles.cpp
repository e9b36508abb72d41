#include "engine/providers/sftp/SftpFiles.h"

#include "engine/files/ProviderError.h"
#include "engine/files/ProviderPath.h"
#include "engine/files/TemporaryName.h"
#include "engine/providers/sftp/SftpBatchReader.h"
#include "engine/providers/sftp/SftpBatchWriter.h"
#include "engine/providers/sftp/SftpErrors.h"
#include "engine/providers/sftp/SftpFileSystem.h"
#include "engine/providers/sftp/SftpFolder.h"
#include "engine/providers/sftp/SftpFolderReader.h"
#include "engine/providers/sftp/SftpItem.h"
#include "engine/providers/sftp/SftpSink.h"
#include "engine/providers/sftp/SftpSource.h"
#include "engine/providers/sftp/SftpSteps.h"
#include "engine/providers/sftp/SftpTreeRemover.h"
#include "engine/providers/sftp/SftpUnflushed.h"

#include <QLocale>
#include <QtEndian>

#include <algorithm>
#include <exception>
#include <iterator>
#include <utility>

namespace trevane {

std::shared_ptr<FileSystem> OpenSftpFileSystem(std::unique_ptr<SftpConnector> connector,
                                               const SftpSettings& settings,
                                               std::shared_ptr<CallControl> control) {
  return std::make_shared<sftp::Files>(std::move(connector), settings, std::move(control));
}

namespace sftp {
namespace {

Attributes Require(const std::optional<Attributes>& item, const Place& place) {
  if (!item) {
    Fail(error::kNotFound, place.text);
  }
  return *item;
}

/// The names in the answer of OwnerNames, "joe:users"; numbers where it has none.
QString OwnerText(const ExtendedAnswer& answer, const Attributes::Owner& owner) {
  PacketFields fields(answer.bytes);
  QStringList texts;
  for (const quint32 number : {owner.user, owner.group}) {
    const std::optional<QByteArrayView> list = fields.Bytes();
    PacketFields names(list.value_or(QByteArrayView()));
    const std::optional<QByteArrayView> name = names.Bytes();
    texts += name && !name->isEmpty() ? QString::fromUtf8(*name) : QString::number(number);
  }
  return texts.join(u':');
}

}  // namespace

Files::Files(std::unique_ptr<SftpConnector> connector, const SftpSettings& settings,
             std::shared_ptr<CallControl> control)
    : server_(std::make_shared<Server>(std::move(connector), settings, std::move(control))) {}

FileSystemCapabilities Files::Capabilities() const {
  return {.caseSensitive = true,
          .identity = true,
          .identityOfPath = true,
          .identitySpace = QStringLiteral("sftp"),
          .overlaps = true,
          .dateStep = 1000,
          .notice = server_->Connector().Notice()};
}

Listing Files::List(const QString& folder) {
  Listing listing;
  ListInBatches(folder, [&listing](Listing&& entries) {
    listing.insert(listing.end(), std::make_move_iterator(entries.begin()),
                   std::make_move_iterator(entries.end()));
    return true;
  });
  return listing;
}

void Files::ListInBatches(const QString& folder, const ListingReceiver& receive) {
  ReadFolder(*server_, server_->At(folder), receive);
}

std::optional<FileEntry> Files::Find(const QString& path) {
  const Place place = server_->At(path);
  Request look = server_->Line(place.text)->Lstat(place.path);
  // Identities are mostly asked for next: in the same flight they cost no wait.
  Request folder = server_->AskCanonical(place.folder);
  Request item = server_->AskCanonical(place.path);
  const std::optional<Attributes> own = Server::TakeLook(look, place);
  server_->LearnCanonical(folder, place.folder);
  server_->LearnCanonical(item, place.path);
  return own ? std::optional(server_->EntryAt(place, *own)) : std::nullopt;
}

std::unique_ptr<ContentSource> Files::OpenSource(const QString& path, qint64 offset) {
  return std::make_unique<Source>(*server_, server_->At(path), offset);
}

std::unique_ptr<ContentSink> Files::OpenSink(const QString& path, const SinkRequest& request) {
  NoteBuilt(server_->At(path));
  return OpenSinkAt(server_, path, request);
}

void Files::NoteBuilt(const Place& place) {
  if (isCopying_ && IsOwnTemporaryName(place.name)) {
    built_ += place.text;
  }
}

void Files::RemoveBuilt() noexcept {
  Session* const line = server_->LineIfOpen();
  const PutBack uncancelled(line);
  for (const QString& path : std::exchange(built_, {})) {
    try {
      if (line != nullptr && !line->IsBroken()) {
        RemoveTree(*server_, server_->At(path), {});
      }
    } catch (const std::exception&) {
      // It has its own name by now, or is left under its temporary one.
    }
  }
}

void Files::Copy(const QString& from, const QString& to, bool overwrite, const ItemObserver& observer) {
  isCopying_ = true;
  try {
    FileSystem::Copy(from, to, overwrite, observer);
  } catch (...) {
    isCopying_ = false;
    RemoveBuilt();
    throw;
  }
  isCopying_ = false;
  built_.clear();
}

std::vector<ReadResult> Files::ReadMany(const QStringList& paths) {
  return ReadBatch(*server_, paths);
}

std::vector<WriteResult> Files::WriteMany(const std::vector<NewContent>& files) {
  return WriteBatch(server_, files);
}

void Files::Remove(const QString& path, const ItemObserver& observer) {
  RemoveTree(*server_, server_->At(path), observer);
}

std::optional<QString> Files::ReadLink(const QString& path) {
  const Place place = server_->At(path);
  const std::shared_ptr<Session> line = server_->Line(place.text);
  Request look = line->Lstat(place.path);
  Request read = line->ReadLink(place.path);
  if (!Require(Server::TakeLook(look, place), place).IsLink()) {
    return std::nullopt;
  }
  const Outcome<NameAnswer> names = read.Names();
  if (!names) {
    throw StatusError(names.status, place.text);
  }
  if (names->names.empty()) {
    Fail(providererror::kGeneralFailure, place.text);
  }
  return server_->NamesOf().FromServer(names->names.front().name);
}

void Files::CreateLink(const QString& path, const QString& target) {
  const Place place = server_->At(path);
  if (place.IsTop()) {
    Fail(error::kExists, place.text);
  }
  const QByteArray text = server_->NamesOf().ToServer(target, place.text);
  if (text.isEmpty() || text.contains('\0')) {
    Fail(error::kInvalidParameter, place.text);
  }
  server_->ForgetCanonical();
  NoteBuilt(place);
  const StatusAnswer made = server_->Line(place.text)->MakeLink(place.path, text).Status();
  if (made.IsOk()) {
    return;
  }
  if (server_->Look(place)) {
    Fail(error::kExists, place.text);
  }
  throw server_->StoringError(made, place);
}

FileTraits Files::Traits(const QString& path) {
  const Place place = server_->At(path);
  return TraitsOf(Require(server_->Follow(place), place));
}

void Files::SetTraits(const QString& path, const FileTraits& traits) {
  const Place place = server_->At(path);
  const Attributes own = Require(server_->Look(place), place);
  if (own.IsLink()) {
    Fail(error::kAccessDenied, place.text);
  }
  SetTraitsAt(*server_, place, own, traits);
}

void Files::Flush(const QString& path) {
  server_->Written().Flush(*server_, server_->At(path));
}

void Files::CreateFile(const QString& path) {
  const Place place = server_->At(path);
  if (place.IsTop()) {
    Fail(error::kExists, place.text);
  }
  const std::shared_ptr<Session> line = server_->Line(place.text);
  Outcome<HandleAnswer> opened =
      line->Open(place.path, openflag::kWrite | openflag::kCreate | openflag::kExclusive).Handle();
  if (opened) {
    OpenHandle handle(line, opened->handle);
    RequireOk(handle.Close().Status(), place);
    server_->Written().Add(*server_, place.path);
    return;
  }
  if (NumberOf(opened.status) == providererror::kGeneralFailure && server_->Look(place)) {
    Fail(error::kExists, place.text);
  }
  throw server_->StoringError(opened.status, place);
}

void Files::MakeFolder(const QString& path, quint32 mode) {
  const Place place = server_->At(path);
  if (place.IsTop()) {
    Fail(error::kExists, place.text);
  }
  NoteBuilt(place);
  RequireMade(*server_, server_->Line(place.text)->MakeFolder(place.path, {.mode = mode}).Status(), place);
}

void Files::CreateFolder(const QString& path) {
  MakeFolder(path, kOpenFolder);
}

void Files::CreateClosedFolder(const QString& path) {
  MakeFolder(path, kClosedFolder);
}

std::shared_ptr<HeldFolder> Files::Hold(const QString& folder) {
  return std::make_shared<Folder>(*this, server_, server_->At(folder).text);
}

std::vector<Leftover> Files::TakeLeftovers() {
  return std::exchange(server_->Leftovers(), {});
}

std::optional<FileIdentity> Files::Identity(const QString& path) {
  const Place place = server_->At(path);
  const QByteArray folder = server_->Canonical(place.folder, place.text);
  return server_->IdentityOf(folder, place.IsTop() ? QByteArray() : place.OwnName());
}

std::vector<FileIdentity> Files::FolderIdentities(const QString& folder) {
  const Place place = server_->At(folder);
  QByteArray path = server_->Canonical(place.path, place.text);
  std::vector<FileIdentity> identities;
  while (path.size() > 1) {
    identities.push_back(server_->IdentityOf(path, {}));
    path.truncate(std::max<qsizetype>(path.lastIndexOf('/'), 1));
  }
  identities.push_back(server_->IdentityOf("/", {}));
  return identities;
}

QString Files::PathFromText(const QString& text) {
  if (text.isEmpty() || text.startsWith(u'/') || text.startsWith(u'\\')) {
    return text;
  }
  const QString start = server_->NamesOf().PathFromServer(server_->Line(text)->Start());
  return providerpath::BelowStart(start, text);
}

QStringList Files::Details(const QString& path) {
  const Place place = server_->At(path);
  const std::shared_ptr<Session> line = server_->Line(place.text);
  if (place.IsTop()) {
    QStringList lines = server_->Connector().Details();
    if (const std::optional<Server::Space> space = server_->SpaceAt(line->Start())) {
      const QLocale english(QLocale::English);
      lines += QStringLiteral("Free space: %1 of %2")
                   .arg(english.formattedDataSize(static_cast<qint64>(space->free)),
                        english.formattedDataSize(static_cast<qint64>(space->all)));
    }
    return lines;
  }
  QStringList lines;
  const Attributes own = Require(server_->Look(place), place);
  if (own.mode) {
    lines += QStringLiteral("Permissions: %1").arg(ModeText(*own.mode));
  }
  if (own.owner) {
    QString owner = QStringLiteral("%1:%2").arg(own.owner->user).arg(own.owner->group);
    if (line->Offers().ownerNames) {
      const Outcome<ExtendedAnswer> names = line->OwnerNames(own.owner->user, own.owner->group).Extended();
      owner = names ? OwnerText(*names, *own.owner) : owner;
    }
    lines += QStringLiteral("Owner: %1").arg(owner);
  }
  return lines;
}

}  // namespace sftp
}  // namespace trevane

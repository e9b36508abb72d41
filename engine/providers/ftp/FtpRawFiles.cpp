#include "engine/providers/ftp/FtpRawFiles.h"

#include "base/LowerCase.h"
#include "engine/files/StagedPrivateFile.h"
#include "engine/files/StagedSink.h"
#include "engine/files/TemporaryName.h"
#include "engine/providers/ftp/FtpErrors.h"
#include "engine/providers/ftp/FtpSource.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QHash>

#include <exception>
#include <utility>

namespace trevane::ftp {
namespace {

/// From so many items of a folder on one listing is cheaper than a look at each.
constexpr qsizetype kFewestToList = 3;

}  // namespace

RunTimeError StoringError(Server& server, const Reply& reply, const Place& place) {
  qint32 number = NumberOf(reply, place.path);
  if (number == providererror::kGeneralFailure || number == providererror::kNotAFolder) {
    number = error::kAccessDenied;
  }
  const bool isOpen =
      number == error::kAccessDenied || number == error::kInvalidName || number == error::kNotFound;
  if (isOpen && !server.IsFolder(server.Above(place))) {
    number = error::kNotFound;
  }
  return ReplyError(reply, number, place.text);
}

namespace {

/// A staged sink with the primitives that it is built on.
class Sink final : public ContentSink {
 public:
  Sink(const std::shared_ptr<Server>& server, const QString& path, const SinkRequest& request)
      : raw_(server), sink_(raw_.StagedHere(), path, request) {}

  void Write(const QByteArray& piece) override { sink_.Write(piece); }
  [[nodiscard]] std::optional<QString> TemporaryName() const override { return sink_.TemporaryName(); }
  [[nodiscard]] SeenItem Commit() override { return sink_.Commit(); }

 private:
  RawServer raw_;
  StagedSink sink_;
};

}  // namespace

/// While another call needs the line the content is kept on this computer; it is sent anew at the end.
class RawServer::Writer final : public RawWriter, private Transfer {
 public:
  Writer(std::shared_ptr<Server> server, Place place) : server_(std::move(server)), place_(std::move(place)) {
    Begin();
  }
  ~Writer() override {
    upload_.reset();
    server_->Vacate(*this);
  }
  Writer(const Writer&) = delete;
  Writer& operator=(const Writer&) = delete;

  void Write(const QByteArray& piece) override {
    ThrowFailure();
    if (piece.isEmpty()) {
      return;
    }
    if (upload_) {
      upload_->Write(piece);
      written_ += piece.size();
      hash_.addData(piece);
      return;
    }
    if (!rest_) {
      rest_ = std::make_unique<StagedPrivateFile>(QString());
    }
    rest_->Append(piece);
  }

  void Close() override {
    CloseUnseen();
    RequireSize(written_);
  }

  /// As Close; the size that has arrived is looked at elsewhere.
  void CloseUnseen() {
    ThrowFailure();
    if (upload_) {
      Finish();
    }
    if (rest_) {
      SendAnew();
    }
  }

 private:
  void Begin() {
    Server::RequireTransferable(place_.path, place_.text);
    upload_ = server_->Line().Store(place_.path);
    if (upload_->WasRefused()) {
      Finish();
      return;
    }
    server_->Occupy(*this);
  }

  void ThrowFailure() const {
    if (failure_) {
      throw *failure_;
    }
  }

  void Finish() {
    const Reply reply = upload_->Finish();
    upload_.reset();
    server_->Vacate(*this);
    if (!reply.IsDone()) {
      throw StoringError(*server_, reply, place_);
    }
  }

  void MakeWay() noexcept override {
    try {
      Finish();
    } catch (const RunTimeError& failure) {
      failure_ = failure;
      upload_.reset();
    } catch (const std::exception&) {
      failure_ = ProviderError(error::kWin32Error + 8, place_.text);
      upload_.reset();
    }
  }

  void Lose() noexcept override {
    upload_.reset();
    failure_ = ProviderError(kConnectionLost, place_.text);
  }

  /// The first part stands on the server, the rest is here.
  void SendAnew() {
    StagedPrivateFile whole((QString()));
    if (written_ > 0) {
      RequireSize(written_);
      Source first(server_, place_, 0);
      Append(first, whole);
      if (whole.Size() != written_ || HashOf(whole) != hash_.result()) {
        Fail(providererror::kChanged, place_.text);
      }
    }
    Append(*rest_->OpenSource(), whole);
    rest_.reset();
    Begin();
    written_ = 0;
    hash_.reset();
    const std::unique_ptr<ContentSource> source = whole.OpenSource();
    for (;;) {
      const QByteArray piece = source->Read(content::kSmallestPiece);
      if (piece.isEmpty()) {
        break;
      }
      Write(piece);
    }
    Finish();
  }

  static QByteArray HashOf(StagedPrivateFile& content) {
    const std::unique_ptr<ContentSource> source = content.OpenSource();
    QCryptographicHash hash(QCryptographicHash::Sha256);
    for (QByteArray piece = source->Read(content::kSmallestPiece); !piece.isEmpty();
         piece = source->Read(content::kSmallestPiece)) {
      hash.addData(piece);
    }
    return hash.result();
  }

  static void Append(ContentSource& source, StagedPrivateFile& to) {
    for (;;) {
      const QByteArray piece = source.Read(content::kSmallestPiece);
      if (piece.isEmpty()) {
        return;
      }
      to.Append(piece);
    }
  }

  /// The server has as many bytes as were sent.
  void RequireSize(qint64 expected) {
    std::optional<qint64> size = server_->SizeOf(place_);
    if (!size) {
      const std::optional<ListedItem> item = server_->Look(place_);
      // Another name may be seen, and its size.
      const bool isHidden = place_.ownName.startsWith('.') && !server_->ShowsHidden();
      if (!item || (item->size < 0 && isHidden && IsTemporaryName(place_.name))) {
        Fail(isHidden ? error::kInvalidName : providererror::kChanged,
             QStringLiteral("The new content did not arrive"), place_.text);
      }
      size = item->size;
    }
    if (size < 0) {
      RequireContent();
      return;
    }
    if (size != expected) {
      Fail(providererror::kChanged, QStringLiteral("Only %1 of %2 bytes arrived").arg(*size).arg(expected),
           place_.text);
    }
  }

  /// Nothing tells the size: what was sent is read back.
  void RequireContent() {
    Source source(server_, place_, 0);
    QCryptographicHash arrived(QCryptographicHash::Sha256);
    for (QByteArray piece = source.Read(content::kSmallestPiece); !piece.isEmpty();
         piece = source.Read(content::kSmallestPiece)) {
      arrived.addData(piece);
    }
    if (arrived.result() != hash_.result()) {
      Fail(providererror::kChanged, QStringLiteral("Another content arrived than was sent"), place_.text);
    }
  }

  std::shared_ptr<Server> server_;
  const Place place_;
  std::unique_ptr<FtpUpload> upload_;
  qint64 written_ = 0;
  /// Of what was sent.
  QCryptographicHash hash_{QCryptographicHash::Sha256};
  std::unique_ptr<StagedPrivateFile> rest_;
  std::optional<RunTimeError> failure_;
};

void RawServer::StoreUnseen(const QString& path, const QByteArray& content) {
  Writer writer(server_, server_->At(path));
  writer.Write(content);
  writer.CloseUnseen();
}

RawCapabilities RawServer::Capabilities() const {
  const ftp::Capabilities& can = server_->Can();
  const bool setsDates = can.mfmt != Seen::Refused || can.mdtmSets != Seen::Refused;
  return {.renameReplaces = can.renameReplaces != Seen::Refused,
          .canRename = can.rename != Seen::Refused,
          .traits = setsDates || (can.modes && can.chmod != Seen::Refused)};
}

std::optional<SeenItem> RawServer::Find(const QString& path) {
  const Place place = server_->At(path);
  const auto known = known_.constFind(place.path);
  const std::optional<ListedItem> item = known != known_.cend() ? *known : server_->Look(place);
  known_.remove(place.path);
  taken_ = item && item->kind == ListedItem::Kind::File ? place.path : QByteArray();
  return item ? std::optional(SeenItem{server_->EntryAt(place, *item), std::nullopt}) : std::nullopt;
}

std::vector<std::optional<SeenItem>> RawServer::FindMany(const QStringList& paths) {
  std::vector<std::optional<SeenItem>> found;
  found.reserve(static_cast<std::size_t>(paths.size()));
  QHash<QString, qsizetype> counts;
  const auto folderOf = [](const QString& path) { return path.first(path.lastIndexOf(u'\\') + 1); };
  for (const QString& path : paths) {
    ++counts[folderOf(path)];
  }
  QHash<QString, QHash<QByteArray, ListedItem>> listed;
  for (const QString& path : paths) {
    const QString folder = folderOf(path);
    const Place place = server_->At(path);
    if (counts.value(folder) >= kFewestToList) {
      auto there = listed.find(folder);
      if (there == listed.end()) {
        there = listed.insert(folder, {});
        for (const ListedItem& item : server_->ReadFolder(server_->Above(place)).items) {
          there->insert(item.name, item);
        }
      }
      const auto item = there->constFind(place.ownName);
      if (item != there->cend()) {
        found.emplace_back(SeenItem{server_->EntryAt(place, *item), std::nullopt});
        continue;
      }
    }
    found.push_back(Find(path));
  }
  return found;
}

std::unique_ptr<ContentSource> RawServer::OpenSource(const QString& path) {
  return std::make_unique<Source>(server_, server_->At(path), 0);
}

std::unique_ptr<RawWriter> RawServer::Store(const QString& path, Creation /*creation*/, bool /*isPrivate*/) {
  return std::make_unique<Writer>(server_, server_->At(path));
}

void RawServer::Rename(const QString& from, const QString& to) {
  const Place source = server_->At(from);
  const Place target = server_->At(to);
  FtpDialogue& line = server_->Line();
  const std::vector<Reply> replies = line.Commands({"RNFR " + source.path, "RNTO " + target.path});
  if (replies.size() == 1 || replies.empty()) {
    const Reply refusal = replies.empty() ? Reply() : replies.front();
    ftp::Capabilities& can = server_->Can();
    if (refusal.IsUnknownCommand() && can.rename == Seen::Unknown) {
      can.rename = Seen::Refused;
      throw ReplyError(refusal, error::kNotSupported, source.text);
    }
    server_->FailLooking(refusal, source);
  }
  EndRename(source, target, replies.back());
}

void RawServer::EndRename(const Place& source, const Place& target, const Reply& reply) {
  ftp::Capabilities& can = server_->Can();
  const bool replaces = std::exchange(taken_, {}) == target.path;
  if (reply.IsDone()) {
    RequireRenamed(source, target, reply, replaces);
    server_->NoteRenamed(source, target);
    return;
  }
  const qint32 number = NumberOf(reply, target.path);
  if (number == error::kDiskFull || !server_->Look(target)) {
    if (number == error::kInvalidName || number == providererror::kNameTooLong) {
      // Another name stands there.
      server_->Rules().Refused(target.ownName);
    }
    throw StoringError(*server_, reply, target);
  }
  // Whatever the server says of it.
  if (replaces && can.renameReplaces == Seen::Unknown && server_->Look(source)) {
    can.renameReplaces = Seen::Refused;
    can.refusesTaken = number == error::kExists;
  }
  throw ReplyError(reply, error::kExists, target.text);
}

void RawServer::RequireRenamed(const Place& source, const Place& target, const Reply& reply, bool replaces) {
  ftp::Capabilities& can = server_->Can();
  const bool wasSeen = replaces ? can.renameReplaces == Seen::Works : can.sawRename;
  // In another case it may be found under the old name as well.
  const bool tells = LowerCase(source.text) != LowerCase(target.text);
  if (!wasSeen && tells && server_->Look(source)) {
    if (replaces) {
      can.renameReplaces = Seen::Refused;
      throw ReplyError(reply, error::kExists, target.text);
    }
    can.rename = Seen::Refused;
    throw NotRenamed(reply, target.text);
  }
  can.rename = Seen::Works;
  can.sawRename = can.sawRename || tells;
  if (replaces) {
    can.renameReplaces = Seen::Works;
  }
}

void RawServer::Remove(const QString& path) {
  const Place place = server_->At(path);
  const Reply removed = server_->Line().Command("DELE " + place.path);
  if (!removed.IsDone()) {
    server_->FailLooking(removed, place);
  }
}

void RawServer::CreateFolder(const QString& path) {
  const Place place = server_->At(path);
  const Reply made = server_->Line().Command("MKD " + place.path);
  if (!made.IsDone()) {
    throw StoringError(*server_, made, place);
  }
}

FileTraits RawServer::Traits(const QString& path) {
  const Place place = server_->At(path);
  const std::optional<ListedItem> item = server_->Look(place);
  if (!item) {
    Fail(error::kNotFound, place.text);
  }
  FileTraits traits;
  if (item->kind != ListedItem::Kind::Link) {
    traits.permissions = item->mode;
  }
  traits.modified = item->modified;
  return traits;
}

void RawServer::SetTraits(const QString& path, const FileTraits& traits) {
  SetTraitsAt(*server_, server_->At(path), traits);
}

StagedPlace RawServer::StagedHere() {
  return {.files = *this,
          .learnt = Server::Naming(),
          .server = server_->Key(),
          .leaveBehind = [this](const QString& path) { server_->LeaveBehind(path); }};
}

void RequireReplaceable(const ListedItem& item, const QString& text) {
  if (item.kind != ListedItem::Kind::File || item.isReadOnly) {
    Fail(error::kAccessDenied, text);
  }
}

std::unique_ptr<ContentSink> OpenSinkAt(const std::shared_ptr<Server>& server, const QString& path,
                                        const SinkRequest& request) {
  const Place place = server->At(path);
  const bool isNew = request.mode == SinkRequest::Mode::New;
  if (place.IsTop()) {
    Fail(isNew ? error::kExists : error::kAccessDenied, place.text);
  }
  // What is built beside it.
  Server::RequireTransferable(place.folder, place.text);
  const std::optional<ListedItem> item = server->Look(place);
  if (item && isNew) {
    Fail(error::kExists, place.text);
  }
  if (item) {
    RequireReplaceable(*item, place.text);
  } else {
    server->RequireFits(place);
  }
  LearnRename(*server, item ? place.path : place.folder);
  return std::make_unique<Sink>(server, place.text, request);
}

void LearnRename(Server& server, const QByteArray& path) {
  Seen& rename = server.Can().rename;
  if (rename == Seen::Unknown) {
    // Without RNFR in front it changes nothing: a server that knows it misses that one. RNFR alone would
    // make some servers refuse everything but RNTO.
    constexpr int kBadSequence = 503;
    const Reply reply = server.Line().Command("RNTO " + path);
    Learn(rename, reply.code == kBadSequence, reply.IsUnknownCommand());
  }
}

namespace {

QByteArray ModeCommand(const Place& place, quint32 mode) {
  return "SITE CHMOD " + QByteArray::number(mode, 8).rightJustified(3, '0') + ' ' + place.path;
}

QByteArray DateCommand(const Place& place, Date modified, bool byMfmt) {
  const QByteArray date = QDateTime::fromMSecsSinceEpoch(modified.msecs, Qt::UTC)
                              .toString(QStringLiteral("yyyyMMddHHmmss"))
                              .toLatin1();
  return (byMfmt ? "MFMT " : "MDTM ") + date + ' ' + place.path;
}

}  // namespace

std::optional<QByteArrayList> TraitCommands(Server& server, const Place& place, const FileTraits& traits) {
  const Capabilities& can = server.Can();
  QByteArrayList commands;
  if (traits.permissions && can.modes && can.chmod != Seen::Refused) {
    if (can.chmod != Seen::Works) {
      return std::nullopt;
    }
    commands << ModeCommand(place, *traits.permissions);
  }
  if (!traits.modified.IsPresent()) {
    return commands;
  }
  for (const bool byMfmt : {true, false}) {
    const Seen how = byMfmt ? can.mfmt : can.mdtmSets;
    if (how == Seen::Works) {
      commands << DateCommand(place, traits.modified, byMfmt);
      break;
    }
    if (how == Seen::Unknown) {
      return std::nullopt;
    }
  }
  return commands;
}

bool SetTraitsAt(Server& server, const Place& place, const FileTraits& traits) {
  bool isSet = false;
  Capabilities& can = server.Can();
  if (traits.permissions && can.modes && can.chmod != Seen::Refused) {
    const Reply reply = server.Line().Command(ModeCommand(place, *traits.permissions));
    Learn(can.chmod, reply.IsDone(), reply.IsUnknownCommand());
    isSet = reply.IsDone();
  }
  if (!traits.modified.IsPresent()) {
    return isSet;
  }
  for (const bool byMfmt : {true, false}) {
    Seen& how = byMfmt ? can.mfmt : can.mdtmSets;
    if (how == Seen::Refused) {
      continue;
    }
    const Reply reply = server.Line().Command(DateCommand(place, traits.modified, byMfmt));
    Learn(how, reply.IsDone(), reply.IsUnknownCommand() || !byMfmt);
    if (reply.IsDone()) {
      return true;
    }
  }
  return isSet;
}

}  // namespace trevane::ftp

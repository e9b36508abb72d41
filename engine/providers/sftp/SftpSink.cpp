#include "engine/providers/sftp/SftpSink.h"

#include "engine/files/ProviderError.h"
#include "engine/files/StagedSink.h"
#include "engine/providers/sftp/SftpErrors.h"
#include "engine/providers/sftp/SftpItem.h"
#include "engine/providers/sftp/SftpSource.h"
#include "engine/providers/sftp/SftpUnflushed.h"

#include <algorithm>
#include <deque>
#include <utility>

namespace trevane::sftp {
namespace {

constexpr std::size_t kBlocks = 96;
constexpr quint32 kPrivate = 0600;

/// Where content for that path belongs: behind links, also behind one whose target is missing.
Place FollowLinks(Server& server, Place place, std::optional<Attributes>& item) {
  constexpr int kMostLinks = 40;
  for (int i = 0; i < kMostLinks; ++i) {
    item = server.Look(place);
    if (!item || !item->IsLink()) {
      return place;
    }
    const Outcome<NameAnswer> names = server.Line(place.text)->ReadLink(place.path).Names();
    if (!names) {
      throw StatusError(names.status, place.text);
    }
    const QByteArray target = names->names.empty() ? QByteArray() : names->names.front().name;
    const qsizetype slash = target.lastIndexOf('/');
    const QByteArray name = target.sliced(slash + 1);
    if (!Names::IsName(name)) {
      // Only a folder ends like this.
      Fail(error::kAccessDenied, place.text);
    }
    QByteArray folder = place.folder;
    if (slash >= 0) {
      folder = target.startsWith('/') ? target.first(slash + 1) : folder + '/' + target.first(slash);
    }
    const QByteArray canonical = server.Canonical(folder, place.text);
    place = server.At(server.NamesOf().PathFromServer(canonical + '/' + name));
  }
  Fail(providererror::kLinkLoop, place.text);
}

/// A staged sink with the primitives that it is built on.
class Sink final : public ContentSink {
 public:
  Sink(std::shared_ptr<Server> server, const QString& path, const SinkRequest& request)
      : server_(std::move(server)),
        path_(server_->At(path).path),
        raw_(*server_, request.mode, path),
        sink_(raw_.StagedHere(), path, request) {}

  void Write(const QByteArray& piece) override { sink_.Write(piece); }
  [[nodiscard]] std::optional<QString> TemporaryName() const override { return sink_.TemporaryName(); }
  [[nodiscard]] SeenItem Commit() override {
    SeenItem placed = sink_.Commit();
    server_->Written().Add(*server_, path_);
    return placed;
  }

 private:
  std::shared_ptr<Server> server_;
  const QByteArray path_;
  RawServer raw_;
  StagedSink sink_;
};

}  // namespace

class RawServer::Writer final : public RawWriter {
 public:
  Writer(Server& server, Place place, OpenHandle handle, bool isFlushed)
      : server_(server),
        line_(server.Line(place.text)),
        place_(std::move(place)),
        handle_(std::move(handle)),
        isFlushed_(isFlushed) {}

  void Write(const QByteArray& piece) override {
    line_->SetSubject(place_.text);
    const auto block = static_cast<qsizetype>(line_->Bounds().writeBlock);
    for (qsizetype at = 0; at < piece.size(); at += block) {
      while (blocks_.size() >= kBlocks) {
        Confirm();
      }
      const QByteArrayView bytes = QByteArrayView(piece).sliced(at, std::min(block, piece.size() - at));
      blocks_.push_back(line_->Write(handle_.Get(), written_, bytes));
      written_ += static_cast<quint64>(bytes.size());
    }
    // What failed meanwhile fails now.
    line_->Flush();
    while (!blocks_.empty() && blocks_.front().IsAnswered()) {
      Confirm();
    }
  }

  void Close() override {
    line_->SetSubject(place_.text);
    Request flushing;
    if (isFlushed_ && line_->Offers().fsync) {
      flushing = line_->Fsync(handle_.Get());
    }
    while (!blocks_.empty()) {
      Confirm();
    }
    if (flushing.IsUnderWay()) {
      Require(flushing.Status());
    }
    Request closing = handle_.Close();
    Require(closing.Status());
  }

 private:
  void Confirm() {
    const StatusAnswer answer = blocks_.front().Status();
    blocks_.pop_front();
    Require(answer);
  }

  void Require(const StatusAnswer& answer) {
    if (!answer.IsOk()) {
      throw server_.StoringError(answer, place_);
    }
  }

  Server& server_;
  const std::shared_ptr<Session> line_;
  const Place place_;
  OpenHandle handle_;
  std::deque<Request> blocks_;
  quint64 written_ = 0;
  const bool isFlushed_;
};

RawCapabilities RawServer::Capabilities() const {
  const Session* const line = server_.LineIfOpen();
  const bool isNew = mode_ == SinkRequest::Mode::New;
  return {.renameReplaces = !isNew && line != nullptr && line->Offers().posixRename,
          .renameRefuses = isNew && line != nullptr && line->Offers().hardLink,
          .exclusiveCreate = true,
          .traits = true};
}

void RequireReplaceable(const Attributes& item, const QString& text) {
  constexpr quint32 kWriteBits = 0222;
  const bool isReadOnly = item.mode && (*item.mode & kWriteBits) == 0;
  if (!item.IsFile() || isReadOnly) {
    Fail(error::kAccessDenied, text);
  }
}

std::optional<SeenItem> SeenAt(Server& server, const Place& place) {
  const std::shared_ptr<Session> line = server.Line(place.text);
  Request look = line->Lstat(place.path);
  Request canonical = server.AskCanonical(place.folder);
  const std::optional<Attributes> own = Server::TakeLook(look, place);
  if (!own) {
    return std::nullopt;
  }
  SeenItem seen;
  seen.entry = server.EntryAt(place, *own);
  const QByteArray folder = server.TakeCanonical(canonical, place.folder, place.text);
  seen.identity = server.IdentityOf(folder, place.OwnName());
  return seen;
}

std::optional<SeenItem> RawServer::Find(const QString& path) {
  return SeenAt(server_, server_.At(path));
}

std::unique_ptr<ContentSource> RawServer::OpenSource(const QString& path) {
  return std::make_unique<Source>(server_, server_.At(path), 0);
}

std::unique_ptr<RawWriter> RawServer::Store(const QString& path, Creation creation, bool isPrivate) {
  Place place = server_.At(path);
  if (!shown_.isEmpty()) {
    place.text = shown_;
  }
  const std::shared_ptr<Session> line = server_.Line(place.text);
  const quint32 how = creation == Creation::New ? openflag::kExclusive : openflag::kTruncate;
  Attributes attributes;
  if (isPrivate) {
    attributes.mode = kPrivate;
  }
  Outcome<HandleAnswer> opened =
      line->Open(place.path, openflag::kWrite | openflag::kCreate | how, attributes).Handle();
  if (opened) {
    return std::make_unique<Writer>(server_, place, OpenHandle(line, opened->handle),
                                    mode_ == SinkRequest::Mode::Replace);
  }
  const bool mayExist =
      creation == Creation::New && NumberOf(opened.status) == providererror::kGeneralFailure;
  if (mayExist && server_.Look(place)) {
    Fail(error::kExists, place.text);
  }
  throw server_.StoringError(opened.status, place);
}

bool RawServer::RenameByLink(const Place& from, const Place& to) {
  const std::shared_ptr<Session> line = server_.Line(to.text);
  const StatusAnswer linked = line->HardLink(from.path, to.path).Status();
  if (linked.IsOk()) {
    // The content has its name: its temporary one is only a second one.
    const PutBack uncancelled(line.get());
    const StatusAnswer removed = line->Remove(from.path).Status();
    if (!removed.IsOk() && NumberOf(removed) != error::kNotFound) {
      throw StatusError(removed, from.text);
    }
    return true;
  }
  switch (NumberOf(linked)) {
    case error::kAccessDenied:
    case error::kNotSupported:
    case error::kInvalidParameter:
    case error::kWin32Error + 1142:
    case providererror::kGeneralFailure:
      if (server_.Look(to)) {
        Fail(error::kExists, to.text);
      }
      return false;
    default:
      throw StatusError(linked, to.text);
  }
}

void RawServer::Rename(const QString& from, const QString& to) {
  const Place source = server_.At(from);
  const Place target = server_.At(to);
  const std::shared_ptr<Session> line = server_.Line(target.text);
  server_.ForgetCanonical();
  const bool isNew = mode_ == SinkRequest::Mode::New;
  if (isNew && line->Offers().hardLink && RenameByLink(source, target)) {
    return;
  }
  const StatusAnswer renamed = !isNew && line->Offers().posixRename
                                   ? line->PosixRename(source.path, target.path).Status()
                                   : line->Rename(source.path, target.path).Status();
  if (renamed.IsOk()) {
    return;
  }
  if (NumberOf(renamed) == providererror::kGeneralFailure && server_.Look(target)) {
    Fail(error::kExists, target.text);
  }
  throw server_.StoringError(renamed, target);
}

void RawServer::Remove(const QString& path) {
  const Place place = server_.At(path);
  const StatusAnswer removed = server_.Line(place.text)->Remove(place.path).Status();
  if (!removed.IsOk()) {
    throw StatusError(removed, place.text);
  }
}

void RawServer::CreateFolder(const QString& path) {
  const Place place = server_.At(path);
  const StatusAnswer made = server_.Line(place.text)->MakeFolder(place.path, {}).Status();
  if (!made.IsOk()) {
    throw server_.StoringError(made, place);
  }
}

void RawServer::BeginPutBack() noexcept {
  if (Session* const line = server_.LineIfOpen()) {
    line->BeginPutBack();
  }
}

void RawServer::EndPutBack() noexcept {
  if (Session* const line = server_.LineIfOpen()) {
    line->EndPutBack();
  }
}

FileTraits RawServer::Traits(const QString& path) {
  const Place place = server_.At(path);
  const std::optional<Attributes> item = server_.Follow(place);
  if (!item) {
    Fail(error::kNotFound, place.text);
  }
  return TraitsOf(*item);
}

void RawServer::SetTraits(const QString& path, const FileTraits& traits) {
  const Attributes attributes = AttributesOf(traits, SecondsNow());
  if (attributes == Attributes()) {
    return;
  }
  const Place place = server_.At(path);
  const StatusAnswer set = server_.Line(place.text)->SetStat(place.path, attributes).Status();
  if (!set.IsOk()) {
    throw StatusError(set, place.text);
  }
}

StagedPlace RawServer::StagedHere() {
  return {.files = *this,
          .learnt = Server::Naming(),
          .server = server_.Key(),
          .leaveBehind = [this](const QString& path) {
            server_.Leftovers().push_back({path, false});
          }};
}

std::unique_ptr<ContentSink> OpenSinkAt(const std::shared_ptr<Server>& server, const QString& path,
                                        const SinkRequest& request) {
  Place place = server->At(path);
  const bool isNew = request.mode == SinkRequest::Mode::New;
  if (place.IsTop()) {
    Fail(isNew ? error::kExists : error::kAccessDenied, place.text);
  }
  std::optional<Attributes> item;
  if (isNew) {
    item = server->Look(place);
    if (item) {
      Fail(error::kExists, place.text);
    }
  } else {
    place = FollowLinks(*server, std::move(place), item);
    if (item) {
      RequireReplaceable(*item, place.text);
    }
  }
  return std::make_unique<Sink>(server, place.text, request);
}

}  // namespace trevane::sftp

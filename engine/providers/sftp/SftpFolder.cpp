#include "engine/providers/sftp/SftpFolder.h"

#include "engine/files/ProviderError.h"
#include "engine/providers/sftp/SftpErrors.h"
#include "engine/providers/sftp/SftpFolderReader.h"
#include "engine/providers/sftp/SftpSink.h"
#include "engine/providers/sftp/SftpSteps.h"
#include "engine/providers/sftp/SftpUnflushed.h"

#include <QHash>

#include <deque>
#include <utility>

namespace trevane::sftp {
namespace {

constexpr std::size_t kAtOnce = 64;
constexpr qint64 kDateStep = 1000;

void RequireStill(const SeenItem& seen, const FileEntry& now, const QString& text) {
  // The identity is that of the path.
  SeenItem there{now, seen.identity};
  if (!seen.IsStill(there, kDateStep)) {
    Fail(providererror::kChanged, text);
  }
}

}  // namespace

Folder::Folder(FileSystem& files, std::shared_ptr<Server> server, const QString& path)
    : PathFolder(files, path), server_(std::move(server)) {}

Folder::Folder(const Folder& above, const QString& name, const SeenItem& seen)
    : PathFolder(above, name, seen), server_(above.server_) {}

std::shared_ptr<HeldFolder> Folder::Enter(const QString& name) {
  return std::shared_ptr<HeldFolder>(new Folder(*this, name, RequireFolder(name)));
}

std::shared_ptr<HeldFolder> Folder::EnterSeen(const QString& name, const SeenItem& seen) {
  // Each change checks that it is still a folder.
  if (!seen.entry.IsFolder() || seen.entry.IsLink()) {
    return Enter(name);
  }
  return std::shared_ptr<HeldFolder>(new Folder(*this, name, seen));
}

std::optional<SeenItem> Folder::Find(const QString& name) {
  const Place place = server_->At(PathOf(name));
  static_cast<void>(server_->Line(place.text));
  // The identities of a folder that is found are mostly asked for next: in the same flight they cost no wait.
  Request item = server_->AskCanonical(place.path);
  std::optional<SeenItem> seen = SeenAt(*server_, place);
  server_->LearnCanonical(item, place.path);
  return seen;
}

Request Folder::AskInPlace() {
  const Place folder = server_->At(Path());
  return IsEntered() ? server_->Line(folder.text)->Lstat(folder.path) : Request();
}

void Folder::TakeInPlace(Request& request) {
  if (!request.IsUnderWay()) {
    return;
  }
  const std::optional<Attributes> own = Server::TakeLook(request, server_->At(Path()));
  if (!own || !own->IsFolder()) {
    Fail(providererror::kChanged, Path());
  }
}

std::optional<SeenItem> Folder::MakeFolder(const QString& name, bool closed) {
  RequireInPlace();
  const Place place = server_->At(PathOf(name));
  const std::shared_ptr<Session> line = server_->Line(place.text);
  Request making = line->MakeFolder(place.path, {.mode = closed ? kClosedFolder : kOpenFolder});
  // Behind it: a server answers requests of one path in their order.
  Request look = line->Lstat(place.path);
  Request canonical = server_->AskCanonical(place.folder);
  RequireMade(*server_, making.Status(), place);
  const std::optional<Attributes> own = Server::TakeLook(look, place);
  if (!own) {
    return SeenAt(*server_, place);
  }
  const QByteArray folder = server_->TakeCanonical(canonical, place.folder, place.text);
  return SeenItem{server_->EntryAt(place, *own), server_->IdentityOf(folder, place.OwnName())};
}

void Folder::SetTraitsOf(const SeenItem& seen, const FileTraits& traits) {
  const Place place = server_->At(PathOf(seen.entry.name));
  Request inPlace = AskInPlace();
  const std::shared_ptr<Session> line = server_->Line(place.text);
  Request look = line->Lstat(place.path);
  Request canonical = server_->AskCanonical(place.folder);
  TakeInPlace(inPlace);
  const std::optional<Attributes> own = Server::TakeLook(look, place);
  const QByteArray folder = server_->TakeCanonical(canonical, place.folder, place.text);
  if (!own || own->IsLink() || own->IsFolder() != seen.entry.IsFolder() ||
      server_->IdentityOf(folder, place.OwnName()) != seen.identity) {
    Fail(providererror::kChanged, place.text);
  }
  SetTraitsAt(*server_, place, *own, traits);
}

void Folder::RemoveAlone(const QString& name, const SeenItem& seen) {
  const Place place = server_->At(PathOf(name));
  Request inPlace = AskInPlace();
  const std::optional<Attributes> own = server_->Look(place);
  TakeInPlace(inPlace);
  if (!own) {
    Fail(error::kNotFound, place.text);
  }
  RequireStill(seen, server_->EntryAt(place, *own), place.text);
  if (own->IsFolder()) {
    // Its failures are looked at there.
    Files().RemoveAlone(place.text);
    return;
  }
  const StatusAnswer removed = server_->Line(place.text)->Remove(place.path).Status();
  server_->ForgetCanonical();
  server_->Written().Remove(place.path);
  if (!removed.IsOk()) {
    throw StatusError(removed, place.text);
  }
}

void Folder::RemoveMany(const std::vector<SeenItem>& items) {
  const Place folder = server_->At(Path());
  const std::shared_ptr<Session> line = server_->Line(folder.text);
  Request inPlace = AskInPlace();
  QHash<QString, FileEntry> there;
  Request inPlaceBehind;
  ReadFolder(
      *server_, folder,
      [&there](Listing&& entries) {
        for (const FileEntry& entry : entries) {
          there.insert(entry.name, entry);
        }
        return true;
      },
      IsEntered() ? &inPlaceBehind : nullptr);
  TakeInPlace(inPlace);
  TakeInPlace(inPlaceBehind);
  server_->ForgetCanonical();
  std::deque<std::pair<Place, Request>> under;
  const auto confirm = [&] {
    auto [place, request] = std::move(under.front());
    under.pop_front();
    line->SetSubject(place.text);
    const StatusAnswer removed = request.Status();
    if (!removed.IsOk()) {
      throw StatusError(removed, place.text);
    }
    server_->Written().Remove(place.path);
  };
  const auto confirmAll = [&] {
    while (!under.empty()) {
      confirm();
    }
  };
  for (const SeenItem& item : items) {
    const QString& name = item.entry.name;
    const auto now = there.constFind(name);
    try {
      if (now == there.cend()) {
        Fail(error::kNotFound, PathOf(name));
      }
      RequireStill(item, *now, PathOf(name));
    } catch (const RunTimeError&) {
      confirmAll();
      throw;
    }
    if (now->IsFolder() && !now->IsLink()) {
      confirmAll();
      Files().RemoveAlone(PathOf(name));
      continue;
    }
    Place place = server_->At(PathOf(name));
    Request request = line->Remove(place.path);
    under.emplace_back(std::move(place), std::move(request));
    if (under.size() >= kAtOnce) {
      confirm();
    }
  }
  confirmAll();
}

}  // namespace trevane::sftp

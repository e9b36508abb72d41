#include "base/LowerCase.h"
#include "engine/files/ProviderError.h"
#include "engine/files/StagedPlacement.h"
#include "engine/providers/sftp/SftpErrors.h"
#include "engine/providers/sftp/SftpFiles.h"
#include "engine/providers/sftp/SftpFolderReader.h"
#include "engine/providers/sftp/SftpSink.h"
#include "engine/providers/sftp/SftpUnflushed.h"

#include <limits>

namespace trevane::sftp {
namespace {

constexpr quint32 kWriteBits = 0222;

QByteArray Joined(const QByteArray& folder, const QByteArray& path) {
  return (folder.endsWith('/') ? folder : folder + '/') + path.sliced(path.lastIndexOf('/') + 1);
}

void RequireSameKind(const Attributes& source, const Attributes& existing, const Place& to) {
  const bool isDevice = !existing.IsFolder() && !existing.IsLink() && !existing.IsFile();
  if (source.IsFolder() != existing.IsFolder() || isDevice) {
    Fail(error::kExists, QStringLiteral("An item of another kind has that name"), to.text);
  }
  if (existing.IsFile() && existing.mode && (*existing.mode & kWriteBits) == 0) {
    Fail(error::kAccessDenied, to.text);
  }
}

}  // namespace

bool Files::IsEmptyFolder(const Place& folder) {
  bool isEmpty = true;
  ReadFolder(*server_, folder, [&isEmpty](Listing&& entries) {
    isEmpty = isEmpty && entries.empty();
    return isEmpty;
  });
  return isEmpty;
}

bool Files::IsCaseChange(const Place& from, const Place& to) {
  if (from.folder != to.folder || from.name == to.name || LowerCase(from.name) != LowerCase(to.name)) {
    return false;
  }
  bool holdsNew = false;
  bool holdsOld = false;
  Place folder = from;
  folder.path = from.folder;
  ReadFolder(*server_, folder, [&](Listing&& entries) {
    for (const FileEntry& entry : entries) {
      holdsNew = holdsNew || entry.name == to.name;
      holdsOld = holdsOld || entry.name == from.name;
    }
    return true;
  });
  return holdsOld && !holdsNew;
}

void Files::FailRename(const StatusAnswer& answer, const Place& from, const Place& to) {
  const qint32 number = NumberOf(answer);
  if (number == error::kNotFound) {
    throw StatusError(answer, server_->Look(from) ? to.text : from.text);
  }
  if (number != providererror::kGeneralFailure) {
    throw StatusError(answer, from.text);
  }
  // One code for all: what stands there tells which it was.
  if (const std::optional<Attributes> existing = server_->Look(to)) {
    Fail(existing->IsFolder() ? error::kDirectoryNotEmpty : error::kExists, to.text);
  }
  const std::optional<Server::Space> here = server_->SpaceAt(from.folder);
  const std::optional<Server::Space> there = server_->SpaceAt(to.folder);
  const bool knowsDevices = here && there && (here->device != 0 || there->device != 0);
  if (from.folder != to.folder && (!knowsDevices || here->device != there->device)) {
    Fail(providererror::kNotSameDevice, from.text);
  }
  throw server_->StoringError(answer, to);
}

void Files::ReplaceFolder(const Place& from, const Place& to) {
  const std::shared_ptr<Session> line = server_->Line(to.text);
  if (!IsEmptyFolder(to)) {
    Fail(error::kDirectoryNotEmpty, to.text);
  }
  if (line->Offers().posixRename) {
    const StatusAnswer renamed = line->PosixRename(from.path, to.path).Status();
    if (!renamed.IsOk()) {
      FailRename(renamed, from, to);
    }
    return;
  }
  const StatusAnswer removed = line->RemoveFolder(to.path).Status();
  if (!removed.IsOk()) {
    FailRename(removed, from, to);
  }
  const StatusAnswer renamed = line->Rename(from.path, to.path).Status();
  if (renamed.IsOk()) {
    return;
  }
  // It was empty.
  const PutBack uncancelled(line.get());
  static_cast<void>(line->MakeFolder(to.path, {}).Status());
  throw StatusError(renamed, from.text);
}

void Files::ReplaceFile(const Place& from, const Place& to, const Attributes& source) {
  const std::shared_ptr<Session> line = server_->Line(to.text);
  if (line->Offers().posixRename) {
    const StatusAnswer renamed = line->PosixRename(from.path, to.path).Status();
    if (!renamed.IsOk()) {
      FailRename(renamed, from, to);
    }
    return;
  }
  RawServer raw(*server_, SinkRequest::Mode::Replace);
  const quint64 size = source.IsLink() ? 0 : source.size.value_or(0);
  StagedPlacement(raw.StagedHere(), NameRung::Long, static_cast<qint64>(size))
      .Put(from.text, to.text, SinkRequest::Mode::Replace);
}

void Files::Rename(const QString& from, const QString& to, bool overwrite) {
  const Place source = server_->At(from);
  const Place target = server_->At(to);
  if (source.IsTop() || target.IsTop()) {
    Fail(source.IsTop() ? error::kAccessDenied : error::kExists, source.IsTop() ? target.text : source.text);
  }
  const std::shared_ptr<Session> line = server_->Line(source.text);
  Request lookFrom = line->Lstat(source.path);
  Request lookTo = line->Lstat(target.path);
  Request folderFrom = server_->AskCanonical(source.folder);
  Request folderTo = server_->AskCanonical(target.folder);
  const std::optional<Attributes> own = Server::TakeLook(lookFrom, source);
  if (!own) {
    Fail(error::kNotFound, source.text);
  }
  const std::optional<Attributes> existing = Server::TakeLook(lookTo, target);
  const QByteArray fromPath =
      Joined(server_->TakeCanonical(folderFrom, source.folder, source.text), source.path);
  const QByteArray toPath = Joined(server_->TakeCanonical(folderTo, target.folder, target.text), target.path);
  if (fromPath == toPath) {
    Fail(error::kInvalidParameter, QStringLiteral("The source and the destination are the same item"),
         target.text);
  }
  if (own->IsFolder() && toPath.startsWith(fromPath + '/')) {
    Fail(error::kInvalidParameter, QStringLiteral("The destination lies inside the source"), target.text);
  }
  const bool clashes = existing && !IsCaseChange(source, target);
  if (clashes && !overwrite) {
    Fail(error::kExists, target.text);
  }
  server_->ForgetCanonical();
  if (!clashes) {
    const StatusAnswer renamed = line->Rename(source.path, target.path).Status();
    if (!renamed.IsOk()) {
      FailRename(renamed, source, target);
    }
  } else {
    RequireSameKind(*own, *existing, target);
    if (own->IsFolder()) {
      ReplaceFolder(source, target);
    } else {
      ReplaceFile(source, target, *own);
    }
  }
  server_->Written().Move(source.path, target.path);
  built_.removeOne(source.text);
}

void Files::RemoveAlone(const QString& path) {
  const Place place = server_->At(path);
  if (place.IsTop()) {
    Fail(error::kAccessDenied, place.text);
  }
  const std::optional<Attributes> own = server_->Look(place);
  if (!own) {
    Fail(error::kNotFound, place.text);
  }
  const std::shared_ptr<Session> line = server_->Line(place.text);
  const StatusAnswer removed =
      (own->IsFolder() ? line->RemoveFolder(place.path) : line->Remove(place.path)).Status();
  server_->ForgetCanonical();
  if (removed.IsOk()) {
    server_->Written().Remove(place.path);
    return;
  }
  if (own->IsFolder() && NumberOf(removed) == providererror::kGeneralFailure && !IsEmptyFolder(place)) {
    Fail(error::kDirectoryNotEmpty, place.text);
  }
  throw StatusError(removed, place.text);
}

}  // namespace trevane::sftp

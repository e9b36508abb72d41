#include "base/LowerCase.h"
#include "engine/files/NameLadder.h"
#include "engine/files/StagedPlacement.h"
#include "engine/providers/ftp/FtpErrors.h"
#include "engine/providers/ftp/FtpFiles.h"
#include "engine/providers/ftp/FtpRawFiles.h"

namespace trevane::ftp {

bool Files::IsCaseChange(const Place& from, const Place& to, const ListedItem& existing) {
  if (from.folder != to.folder || from.name == to.name || LowerCase(from.name) != LowerCase(to.name)) {
    return false;
  }
  if (existing.name != to.ownName) {
    // It is listed under the old spelling.
    return true;
  }
  bool holdsOld = false;
  bool holdsNew = false;
  for (const ListedItem& item : server_->ReadFolder(server_->Above(from)).items) {
    holdsOld = holdsOld || item.name == from.ownName;
    holdsNew = holdsNew || item.name == to.ownName;
  }
  return holdsOld && !holdsNew;
}

void Files::ReplaceFolder(const Place& from, const Place& to) {
  if (!server_->ReadFolder(to).items.empty()) {
    Fail(error::kDirectoryNotEmpty, to.text);
  }
  if (server_->Can().rename == Seen::Refused) {
    // Nothing must make room for it.
    Fail(error::kNotSupported, from.text);
  }
  const Reply removed = server_->Line().Command("RMD " + to.path);
  if (!removed.IsDone()) {
    server_->FailLooking(removed, to);
  }
  RawServer raw(server_);
  try {
    raw.Rename(from.text, to.text);
  } catch (const RunTimeError&) {
    // It was empty.
    server_->BeginPutBack();
    try {
      raw.CreateFolder(to.text);
    } catch (const RunTimeError&) {
      // The failure of the rename is told.
    }
    server_->EndPutBack();
    throw;
  }
}

void Files::Rename(const QString& from, const QString& to, bool overwrite) {
  const Place source = PlaceOfItem(from, error::kAccessDenied);
  const Place target = PlaceOfItem(to, error::kExists);
  if (source.path == target.path) {
    Fail(error::kInvalidParameter, QStringLiteral("The source and the destination are the same item"),
         target.text);
  }
  const ListedItem own = Require(source);
  if (own.kind == ListedItem::Kind::Folder && target.path.startsWith(server_->PathIn(source.path, {}))) {
    Fail(error::kInvalidParameter, QStringLiteral("The destination lies inside the source"), target.text);
  }
  const std::optional<ListedItem> existing = server_->Look(target);
  RawServer raw(server_);
  server_->ForgetLearnt();
  if (!existing || IsCaseChange(source, target, *existing)) {
    server_->RequireFits(target);
    raw.Rename(source.text, target.text);
    return;
  }
  if (!overwrite) {
    Fail(error::kExists, target.text);
  }
  const bool isFolder = own.kind == ListedItem::Kind::Folder;
  if (isFolder != (existing->kind == ListedItem::Kind::Folder) ||
      existing->kind == ListedItem::Kind::Device) {
    Fail(error::kExists, QStringLiteral("An item of another kind has that name"), target.text);
  }
  if (existing->kind == ListedItem::Kind::File && existing->isReadOnly) {
    Fail(error::kAccessDenied, target.text);
  }
  if (isFolder) {
    ReplaceFolder(source, target);
    return;
  }
  const qint64 size = own.kind == ListedItem::Kind::Link ? 0 : own.size;
  ReplaceFile(raw, source, target, size);
}

void Files::ReplaceFile(RawServer& raw, const Place& from, const Place& to, qint64 size) {
  const QString folder = to.text.first(to.text.size() - to.name.size());
  NameRung rung = Server::Naming().FirstRung(server_->Key(), folder);
  if (rung == NameRung::InPlace) {
    // Of new content: the old one may still be renamed.
    rung = NameRung::Long;
  }
  for (;;) {
    try {
      StagedPlacement(raw.StagedHere(), rung, size).Put(from.text, to.text, SinkRequest::Mode::Replace);
      return;
    } catch (const RunTimeError& failure) {
      const NameRung next = nameladder::After(rung, failure);
      if (next == rung || next == NameRung::InPlace || !raw.Find(from.text) || !raw.Find(to.text)) {
        throw;
      }
      rung = next;
    }
  }
}

void Files::RemoveAlone(const QString& path) {
  const LinkWatch watch(*server_, true);
  const Place place = PlaceOfItem(path, error::kAccessDenied);
  const ListedItem own = Require(place);
  const bool isFolder = own.kind == ListedItem::Kind::Folder;
  if (isFolder && !server_->ReadFolder(place).items.empty()) {
    // Some devices would remove what is in it as well.
    Fail(error::kDirectoryNotEmpty, place.text);
  }
  const Reply removed = server_->Line().Command((isFolder ? "RMD " : "DELE ") + place.path);
  server_->ForgetLearnt();
  if (removed.IsDone()) {
    server_->NoteRemoved(place);
    return;
  }
  const qint32 number = NumberOf(removed, place.path);
  if (isFolder && number != error::kNotFound && number != error::kNotSupported &&
      (!server_->ReadFolder(place).items.empty() || server_->HoldsHiddenLinks(place))) {
    throw ReplyError(removed, error::kDirectoryNotEmpty, place.text);
  }
  server_->FailLooking(removed, place);
}

}  // namespace trevane::ftp

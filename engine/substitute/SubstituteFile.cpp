#include "engine/substitute/SubstituteFile.h"

#include "engine/files/MoveItem.h"
#include "engine/files/ProviderError.h"
#include "engine/files/ProviderPath.h"
#include "engine/model/ItemName.h"
#include "engine/substitute/SubstituteFiles.h"

#include <algorithm>
#include <limits>

namespace trevane {

namespace {

Variant AsVariant(Date date) {
  return date.IsPresent() ? Variant(date) : Variant(Missing{});
}

[[noreturn]] void Refuse(qint32 number, const QString& sentence, const QString& path) {
  throw RunTimeError(number, sentence + QStringLiteral(": ") + path);
}

/// `Copy` and `Move` know the overwrite option and nothing else.
bool OverWriteOf(const QString& option) {
  const FileOptions options = ParseFileOptions(option);
  if (options.folder || options.create != FileOptions::Create::Nothing) {
    throw RunTimeError(error::kInvalidParameter, QStringLiteral("The option is not known: '%1'").arg(option));
  }
  return options.overWrite;
}

}  // namespace

SubstituteFile::SubstituteFile(std::shared_ptr<FileSystemSession> session,
                               std::weak_ptr<SubstituteFiles> parent, FolderReference folder,
                               const SeenItem& seen, qint32 index)
    : session_(std::move(session)),
      parent_(std::move(parent)),
      folder_(std::move(folder)),
      entry_(seen.entry),
      identity_(seen.identity),
      knownAt_(session_->Revision()),
      index_(index) {}

SubstituteFile::~SubstituteFile() {
  if (state_ != State::Pending) {
    return;
  }
  try {
    const FileSystemSession::Change change(*session_);
    if (Holder() != nullptr) {
      Holder()->WriteNew(entry_.name, {}, {});
    } else {
      session_->Files().CreateFile(FullPath());
    }
  } catch (const std::exception&) {
    // Nobody is left to report to.
  }
}

std::shared_ptr<SubstituteFile> SubstituteFile::At(const std::shared_ptr<FileSystemSession>& session,
                                                   const QString& path) {
  const qsizetype separator = path.lastIndexOf(u'\\');
  const QString folder = separator < 0 ? QString() : path.left(separator);
  return std::make_shared<SubstituteFile>(session, std::weak_ptr<SubstituteFiles>(), FolderReference(folder),
                                          SeenItem{session->Stat(path), {}}, 0);
}

QString SubstituteFile::FullPath() const {
  return folder_.PathOf(entry_.name);
}

void SubstituteFile::Update(const SeenItem& seen) {
  if (identity_ != seen.identity && holds_ == 0) {
    own_.reset();
    files_.reset();
  }
  entry_ = seen.entry;
  identity_ = seen.identity;
  knownAt_ = session_->Revision();
}

const FileEntry& SubstituteFile::Entry() {
  if (state_ == State::There && knownAt_ != session_->Revision()) {
    const QString name = entry_.name;
    std::optional<SeenItem> seen;
    if (Holder() != nullptr) {
      seen = session_->Find(folder_, name);
      if (!seen) {
        throw ItemNotFound(FullPath());
      }
    } else {
      seen = SeenItem{session_->Stat(FullPath()), std::nullopt};
    }
    Update(*seen);
    // The collection knows this object by the name it was opened with.
    entry_.name = name;
    knownAt_ = session_->Revision();
  }
  return entry_;
}

void SubstituteFile::RequireThere() const {
  if (state_ != State::There) {
    throw ItemNotFound(FullPath());
  }
}

void SubstituteFile::RequireNoTop(const QString& path) const {
  if (session_->IsTop(path)) {
    Refuse(error::kAccessDenied, QStringLiteral("A drive or a top folder stays where it is"), path);
  }
}

void SubstituteFile::LeaveParent() noexcept {
  if (const auto parent = parent_.lock()) {
    parent->Forget(index_);
  }
}

Variant SubstituteFile::Value() {
  RequireThere();
  return Holder() != nullptr ? Holder()->Read(entry_.name) : session_->Files().Read(FullPath());
}

void SubstituteFile::PutValue(const Variant& value) {
  PutNewValue(value, {});
}

void SubstituteFile::PutNewValue(const Variant& value, const FileTraits& traits) {
  const auto* content = std::get_if<QByteArray>(&value);
  if (content == nullptr) {
    Refuse(error::kInvalidParameter, QStringLiteral("The content of a file is a byte array"), FullPath());
  }
  if (state_ == State::There) {
    const FileSystemSession::Change change(*session_);
    if (Holder() != nullptr) {
      Holder()->Replace(entry_.name, Seen(), *content);
    } else {
      session_->Files().Write(FullPath(), *content);
    }
    return;
  }
  if (state_ != State::Pending) {
    RequireThere();
  }
  // From here on nothing may appear under the name when this object is destroyed.
  state_ = State::Failed;
  made_ = *content;
  const FileSystemSession::Change change(*session_);
  try {
    stamp_ = Holder() != nullptr ? Holder()->WriteNew(entry_.name, *content, traits)
                                 : session_->Files().WriteNew(FullPath(), *content, traits);
  } catch (const RunTimeError& failure) {
    if (failure.Number() == error::kExists) {
      state_ = State::GivenUp;  // the item there is another program's
    }
    throw;
  }
  state_ = State::There;
}

FileTraits SubstituteFile::Traits() {
  RequireThere();
  return Holder() != nullptr ? Holder()->Traits(entry_.name) : session_->Files().Traits(FullPath());
}

void SubstituteFile::SetTraits(const FileTraits& traits) {
  RequireThere();
  const FileSystemSession::Change change(*session_);
  if (Holder() != nullptr) {
    // Another program may have replaced the item that was made here.
    const std::optional<SeenItem> now = session_->Find(folder_, entry_.name);
    if (!now || now->identity != identity_ || now->entry.IsFolder() != entry_.IsFolder() ||
        now->entry.IsLink()) {
      throw ProviderError(providererror::kChanged, FullPath());
    }
    Holder()->SetTraits(entry_.name, traits);
  } else {
    session_->Files().SetTraits(FullPath(), traits);
  }
}

bool SubstituteFile::IsWhatWasMade() {
  FileSystem& files = session_->Files();
  const std::optional<SeenItem> seen = session_->Find(folder_, entry_.name);
  const FileEntry* there = seen ? &seen->entry : nullptr;
  if (there == nullptr || !made_ || there->IsFolder() || there->IsLink()) {
    return false;
  }
  Update(*seen);
  const auto identity = [&] { return Holder() != nullptr ? seen->identity : files.Identity(FullPath()); };
  const auto content = [&] {
    return Holder() != nullptr ? Holder()->Read(entry_.name) : files.Read(FullPath());
  };
  if (stamp_) {
    return there->size == stamp_->size && there->modified == stamp_->modified &&
           (!stamp_->identity || identity() == stamp_->identity);
  }
  // Putting the content was reported as failed and may have been done, or there is no stamp to recognise it
  // by.
  return there->size <= made_->size() && made_->startsWith(content());
}

void SubstituteFile::TakeBack() {
  if (state_ == State::There || state_ == State::Failed) {
    if (IsWhatWasMade()) {
      RemoveAlone();
    }
  }
  state_ = State::GivenUp;
  LeaveParent();
}

qint32 SubstituteFile::Attribute() {
  return Entry().attributes;
}

Variant SubstituteFile::DateCreated() {
  return AsVariant(Entry().created);
}

Variant SubstituteFile::DateLastAccessed() {
  return AsVariant(Entry().accessed);
}

Variant SubstituteFile::DateLastModified() {
  return AsVariant(Entry().modified);
}

SubstituteFiles& SubstituteFile::Children() {
  if (!files_) {
    files_ = std::make_shared<SubstituteFiles>(session_, SubstituteFiles::Kind::Folder, Inside());
  }
  return *files_;
}

Variant SubstituteFile::FileNames(const QString& option) {
  static_cast<void>(ParseFileOptions(option));
  return Children().Names();
}

Listing SubstituteFile::List() {
  return Children().List();
}

void SubstituteFile::ListInBatches(const ListingReceiver& receive) {
  Children().ListInBatches(receive);
}

std::shared_ptr<IxoFiles> SubstituteFile::Files() {
  static_cast<void>(Children());
  return files_;
}

qint32 SubstituteFile::Index() {
  return index_;
}

QString SubstituteFile::Name() {
  return entry_.name;
}

QString SubstituteFile::Path() {
  if (session_->IsTop(FullPath()) && !providerpath::IsShare(folder_.Path())) {
    return QString();
  }
  const QString folder = folder_.Path();
  if (folder.isEmpty()) {
    return QStringLiteral("\\");
  }
  return session_->Capabilities().topHoldsDrives ? folder + u'\\' : u'\\' + folder + u'\\';
}

qint32 SubstituteFile::Size() {
  return static_cast<qint32>(std::clamp<qint64>(Entry().size, 0, std::numeric_limits<qint32>::max()));
}

qint64 SubstituteFile::Size64() {
  return Entry().size;
}

QString SubstituteFile::Type() {
  return session_->Files().TypeName(Entry());
}

std::optional<QString> SubstituteFile::Identity() {
  if (!session_->Capabilities().identity || state_ != State::There) {
    return std::nullopt;
  }
  if (Holder() != nullptr) {
    // Entry and identity come from one look-up; a listing has no identity.
    if (!identity_) {
      knownAt_ = 0;
    }
    static_cast<void>(Entry());
  }
  const auto identity = Holder() != nullptr ? identity_ : session_->Files().Identity(FullPath());
  if (!identity) {
    return std::nullopt;
  }
  return IdentityText(*identity);
}

QString SubstituteFile::IdentityText(const FileIdentity& identity) const {
  return QStringLiteral("%1:%2:%3")
      .arg(session_->Provider())
      .arg(identity.volume, 0, 16)
      .arg(identity.file, 0, 16);
}

QStringList SubstituteFile::FolderIdentities() {
  QStringList texts;
  if (session_->Capabilities().identity && state_ == State::There) {
    for (const FileIdentity& identity : session_->Files().FolderIdentities(FullPath())) {
      texts.append(IdentityText(identity));
    }
  }
  return texts;
}

std::shared_ptr<IxoFile> SubstituteFile::OpenFile(const QString& name, const QString& option) {
  RequireItemName(name);
  const FileOptions options = ParseFileOptions(option);
  if (options.folder && !options.folder->isEmpty()) {
    const QString folder = session_->ToPath(*options.folder);
    if (!session_->IsSameName(folder, FullPath())) {
      return At(session_, folder)->OpenChild(name, options.create);
    }
  }
  return OpenChild(name, options.create);
}

std::shared_ptr<IxoFile> SubstituteFile::CreateNewFile(const QString& name) {
  RequireItemName(name);
  RequireThere();
  return AddFile(name);
}

std::shared_ptr<IxoFile> SubstituteFile::AddFile(const QString& name) {
  // Its kind is that of when it was opened: a change since then shows when the content is put.
  if (!entry_.IsFolder()) {
    Refuse(error::kWin32Error + 267, QStringLiteral("The item is not a folder"), FullPath());
  }
  return Children().AdoptPending(name);
}

std::shared_ptr<IxoFile> SubstituteFile::CreateClosedFolder(const QString& name) {
  RequireItemName(name);
  return OpenChild(name, FileOptions::Create::Folder, true);
}

std::shared_ptr<IxoFile> SubstituteFile::OpenChild(const QString& name, FileOptions::Create create,
                                                   bool closed) {
  RequireThere();
  const FolderReference inside = Inside();
  // A private folder has to be new: creating it fails if one exists.
  std::optional<SeenItem> existing = closed ? std::nullopt : session_->Find(inside, name);
  if (!existing && create == FileOptions::Create::Nothing) {
    throw ItemNotFound(inside.PathOf(name));
  }
  if (!existing && create == FileOptions::Create::Folder) {
    const FileSystemSession::Change change(*session_);
    if (inside.Held()) {
      inside.Held()->CreateFolder(name, closed);
      existing = session_->Find(inside, name);
    } else if (closed) {
      session_->Files().CreateClosedFolder(inside.PathOf(name));
    } else {
      session_->Files().CreateFolder(inside.PathOf(name));
    }
    if (!existing) {
      existing.emplace();
      existing->entry.name = name;
      existing->entry.attributes = attribute::kFolder;
    }
  }
  if (!existing) {
    return AddFile(name);
  }
  const bool clash = (create == FileOptions::Create::File && existing->entry.IsFolder()) ||
                     (create == FileOptions::Create::Folder && !existing->entry.IsFolder());
  if (clash) {
    Refuse(error::kExists, QStringLiteral("An item of another kind has that name"), inside.PathOf(name));
  }
  return Children().Adopt(*existing);
}

bool SubstituteFile::IsKnownAbsent(const QString& name) {
  RequireItemName(name);
  RequireThere();
  return !session_->Find(Inside(), name);
}

void SubstituteFile::Flush() {
  RequireThere();
  if (Holder() != nullptr) {
    Holder()->Flush(entry_.name);
  } else {
    session_->Files().Flush(FullPath());
  }
}

FolderReference SubstituteFile::Inside() {
  if (!own_ && Holder() != nullptr) {
    // A link that was asked for by its address is followed, a link below it never is.
    own_ = holds_ > 0 && entry_.IsLink() ? session_->Files().Hold(FullPath()) : Holder()->Enter(entry_.name);
  }
  return own_ ? FolderReference(own_) : FolderReference(FullPath());
}

void SubstituteFile::Hold() {
  if (holds_ == 0) {
    RequireThere();
    const QString path = FullPath();
    if (path.isEmpty() && session_->Capabilities().topHoldsDrives) {
      return;
    }
    if (session_->IsTop(path)) {
      own_ = session_->Files().Hold(path);
    } else if (Holder() == nullptr) {
      const FolderReference held(session_->Files().Hold(folder_.Path()));
      const std::optional<SeenItem> seen = session_->Find(held, entry_.name);
      if (!seen) {
        throw ItemNotFound(path);
      }
      heldFrom_ = folder_.Path();
      folder_ = held;
      Update(*seen);
    }
    // The children that were opened by their path stay known by it.
    files_.reset();
  }
  ++holds_;
}

void SubstituteFile::LetGo() noexcept {
  if (holds_ == 0 || --holds_ > 0) {
    return;
  }
  files_.reset();
  own_.reset();
  if (heldFrom_) {
    folder_ = FolderReference(*std::exchange(heldFrom_, std::nullopt));
    identity_.reset();
  }
}

bool SubstituteFile::LeadsNowhere() {
  return Entry().leadsNowhere;
}

QStringList SubstituteFile::RefusedNames() {
  return files_ ? files_->Refused() : QStringList();
}

void SubstituteFile::Copy(const QString& destination, const QString& option, const ItemObserver& observer) {
  RequireThere();
  const bool overWrite = OverWriteOf(option);
  const QString target = session_->ToPath(destination);
  RequireNoTop(target);
  const FileSystemSession::Change change(*session_);
  session_->Files().Copy(FullPath(), target, overWrite, observer);
}

void SubstituteFile::Delete(const QString& option, const ItemObserver& observer) {
  static_cast<void>(ParseFileOptions(option));
  const QString path = FullPath();
  RequireNoTop(path);
  const State before = std::exchange(state_, state_ == State::There ? State::There : State::GivenUp);
  if (before == State::Failed) {
    // Putting the content was reported as failed and may have been done all the same.
    try {
      static_cast<void>(session_->Stat(path));
    } catch (const RunTimeError& failure) {
      if (failure.Number() == error::kNotFound) {
        LeaveParent();
        return;
      }
      state_ = State::Failed;
      throw;
    }
  }
  if (before == State::There || before == State::Failed) {
    const FileSystemSession::Change change(*session_);
    session_->Files().Remove(path, observer);
  }
  LeaveParent();
}

void SubstituteFile::DeleteAlone() {
  RequireThere();
  RemoveAlone();
  state_ = State::GivenUp;
  LeaveParent();
}

void SubstituteFile::RemoveAlone() {
  // A folder that is held stays.
  files_.reset();
  own_.reset();
  if (Holder() != nullptr) {
    const FileSystemSession::Change change(*session_);
    Holder()->RemoveAlone(entry_.name, Seen());
    return;
  }
  const QString path = FullPath();
  RequireNoTop(path);
  const FileSystemSession::Change change(*session_);
  session_->Files().RemoveAlone(path);
}

std::vector<Leftover> SubstituteFile::TakeLeftovers() {
  return session_->Files().TakeLeftovers();
}

Variant SubstituteFile::Execute(const QString& command, const Variant& parameter) {
  RequireThere();
  // A command may do anything to the file system.
  const FileSystemSession::Change change(*session_);
  return session_->Files().Execute(FullPath(), command, parameter);
}

void SubstituteFile::Move(const QString& destination, const QString& option) {
  RequireThere();
  const bool overWrite = OverWriteOf(option);
  const QString path = FullPath();
  const QString target = session_->ToPath(destination);
  RequireNoTop(path);
  RequireNoTop(target);
  {
    const FileSystemSession::Change change(*session_);
    MoveItem(session_->Files(), path, target, overWrite);
  }
  LeaveParent();
  parent_.reset();
  files_.reset();
  const qsizetype separator = target.lastIndexOf(u'\\');
  folder_ = FolderReference(separator < 0 ? QString() : target.left(separator));
  heldFrom_.reset();
  own_.reset();
  entry_.name = target.mid(separator + 1);
}

Variant SubstituteFile::Run(const QString& option) {
  static_cast<void>(ParseFileOptions(option));
  return Execute(QString(), Missing{});
}

}  // namespace trevane

#include "engine/substitute/SubstituteFile.h"

#include "engine/files/MoveItem.h"
#include "engine/files/ProviderError.h"
#include "engine/files/ProviderPath.h"
#include "engine/model/BatchWatch.h"
#include "engine/model/ContentSteps.h"
#include "engine/model/ItemName.h"
#include "engine/substitute/SubstituteContent.h"
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

/// The observer may let events run.
ItemObserver WithinCallOf(const ItemObserver& observer) {
  if (!observer) {
    return {};
  }
  return [&observer](const ItemProgress& item) {
    const WithinCall within;
    return observer(item);
  };
}

/// So may the watch of a batch.
BatchWatch::Receiver WithinCallOfWatch() {
  if (!BatchWatch::Current()) {
    return {};
  }
  return [receive = BatchWatch::Current()](const BatchStep& step) {
    const WithinCall within;
    receive(step);
  };
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

SubstituteFile::~SubstituteFile() = default;

std::shared_ptr<SubstituteFile> SubstituteFile::At(const std::shared_ptr<FileSystemSession>& session,
                                                   const QString& path) {
  const qsizetype separator = path.lastIndexOf(u'\\');
  const QString folder = separator < 0 ? QString() : path.left(separator);
  return std::make_shared<SubstituteFile>(session, std::weak_ptr<SubstituteFiles>(), FolderReference(folder),
                                          SeenItem{session->Stat(path), {}}, 0);
}

std::shared_ptr<SubstituteFile> SubstituteFile::KnownAt(const std::shared_ptr<FileSystemSession>& session,
                                                        const QString& path) {
  if (session->IsTop(path)) {
    return At(session, path);
  }
  const qsizetype separator = path.lastIndexOf(u'\\');
  SeenItem seen;
  seen.entry.name = path.mid(separator + 1);
  seen.entry.attributes = attribute::kFolder;
  auto folder = std::make_shared<SubstituteFile>(
      session, std::weak_ptr<SubstituteFiles>(),
      FolderReference(separator < 0 ? QString() : path.left(separator)), seen, 0);
  // Before any revision.
  folder->knownAt_ = 0;
  return folder;
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

std::unique_ptr<ContentSource> SubstituteFile::OpenSource(qint64 offset) {
  RequireThere();
  return std::make_unique<SubstituteSource>(session_, folder_,
                                            Holder() != nullptr
                                                ? Holder()->OpenSource(entry_.name, offset)
                                                : session_->Files().OpenSource(FullPath(), offset));
}

std::unique_ptr<ContentSink> SubstituteFile::OpenSink(const SinkRequest& request) {
  if (state_ != State::Pending) {
    RequireThere();
  }
  SinkRequest asked = request;
  asked.mode = state_ == State::Pending ? SinkRequest::Mode::New : SinkRequest::Mode::Replace;
  const std::optional<SeenItem> seen = state_ == State::There ? std::optional(Seen()) : std::nullopt;
  return std::make_unique<SubstituteSink>(
      std::static_pointer_cast<SubstituteFile>(shared_from_this()), session_, folder_,
      Holder() != nullptr ? Holder()->OpenSink(entry_.name, asked, seen)
                          : session_->Files().OpenSink(FullPath(), asked));
}

SeenItem SubstituteFile::Commit(ContentSink& sink, const ContentPrint& print) {
  const bool isNew = state_ == State::Pending;
  if (isNew) {
    // From here on it can be there, whatever the answer is.
    state_ = State::Failed;
    made_ = print;
  }
  SeenItem placed;
  try {
    const FileSystemSession::Change change(*session_);
    placed = sink.Commit();
  } catch (const RunTimeError& failure) {
    ContentFailed();
    if (isNew && failure.Number() == error::kExists) {
      state_ = State::GivenUp;  // the item there is another program's
    }
    throw;
  }
  if (made_) {
    Made(placed, print);
  } else {
    const QString name = entry_.name;
    Update(placed);
    entry_.name = name;
  }
  return placed;
}

void SubstituteFile::Made(const SeenItem& seen, const ContentPrint& print) {
  made_ = print;
  stamp_ = seen;
  state_ = State::There;
  const QString name = entry_.name;
  Update(seen);
  // The collection knows this object by the name it was opened with.
  entry_.name = name;
}

std::vector<ReadResult> SubstituteFile::ReadMany(const QStringList& names) {
  RequireThere();
  std::for_each(names.begin(), names.end(), RequireItemName);
  const BatchWatch watch(WithinCallOfWatch());
  const FolderReference inside = Inside();
  if (inside.Held()) {
    return inside.Held()->ReadMany(names);
  }
  QStringList paths;
  for (const QString& name : names) {
    paths.append(inside.PathOf(name));
  }
  return session_->Files().ReadMany(paths);
}

std::vector<WriteResult> SubstituteFile::WriteMany(const std::vector<NewContent>& files) {
  RequireThere();
  for (const NewContent& file : files) {
    RequireItemName(file.name);
  }
  FolderReference inside = Inside();
  const bool replaces = std::ranges::any_of(
      files, [](const NewContent& file) { return file.request.mode == SinkRequest::Mode::Replace; });
  if (replaces && !inside.Held()) {
    // By a path alone a link would be written through.
    inside = FolderReference(session_->Files().Hold(inside.Path()));
  }
  std::vector<NewContent> asked = files;
  for (NewContent& file : asked) {
    if (!inside.Held()) {
      file.name = inside.PathOf(file.name);
    }
  }
  std::vector<WriteResult> results;
  {
    const FileSystemSession::Change change(*session_);
    const BatchWatch watch(WithinCallOfWatch());
    results = inside.Held() ? inside.Held()->WriteMany(asked) : session_->Files().WriteMany(asked);
  }
  for (size_t i = 0; i < results.size(); ++i) {
    // The old content of a file that was to be replaced is intact.
    if (results[i].failure && results[i].failure->Number() != error::kExists &&
        files[i].request.mode == SinkRequest::Mode::New) {
      SeenItem failed;
      failed.entry.name = files[i].name;
      SubstituteFile leftover(session_, {}, inside, failed, 0);
      leftover.state_ = State::Failed;
      leftover.made_.emplace().Add(files[i].content);
      leftover.TakeBackQuietly();
    }
  }
  return results;
}

std::optional<QString> SubstituteFile::LinkText() {
  RequireThere();
  return Holder() != nullptr ? Holder()->ReadLink(entry_.name) : session_->Files().ReadLink(FullPath());
}

void SubstituteFile::CreateLink(const QString& name, const QString& text) {
  RequireItemName(name);
  RequireThere();
  const FolderReference inside = Inside();
  const FileSystemSession::Change change(*session_);
  if (inside.Held()) {
    inside.Held()->CreateLink(name, text);
  } else {
    session_->Files().CreateLink(inside.PathOf(name), text);
  }
}

void SubstituteFile::ForgetLearnt() {
  session_->ForgetLearnt();
}

Variant SubstituteFile::Value() {
  return ReadAll(*OpenSource());
}

void SubstituteFile::PutValue(const Variant& value) {
  PutNewValue(value, {});
}

void SubstituteFile::PutNewValue(const Variant& value, const FileTraits& traits) {
  const auto* content = std::get_if<QByteArray>(&value);
  if (content == nullptr) {
    Refuse(error::kInvalidParameter, QStringLiteral("The content of a file is a byte array"), FullPath());
  }
  const auto sink = OpenSink({.expectedSize = content->size(), .traits = traits});
  if (!content->isEmpty()) {
    sink->Write(*content);
  }
  static_cast<void>(sink->Commit());
}

FileTraits SubstituteFile::Traits() {
  RequireThere();
  if (!session_->Capabilities().traits) {
    return {};
  }
  return Holder() != nullptr ? Holder()->Traits(entry_.name) : session_->Files().Traits(FullPath());
}

FileTraits SubstituteFile::TraitsOf(const FileEntry& child) {
  RequireItemName(child.name);
  RequireThere();
  FileTraits traits;
  if (session_->Capabilities().traits) {
    const FolderReference inside = Inside();
    traits = inside.Held() ? inside.Held()->Traits(child.name)
                           : session_->Files().Traits(inside.PathOf(child.name));
  } else {
    traits.created = child.created;
  }
  if (!traits.modified.IsPresent()) {
    traits.modified = child.modified;
  }
  return traits;
}

void SubstituteFile::SetTraits(const FileTraits& traits) {
  RequireThere();
  const FileSystemSession::Change change(*session_);
  // Where paths are all that is known the file system itself refuses a link, and a date opens nothing to
  // anybody: it is not worth two calls.
  const bool isOnlyDates = !traits.permissions && !traits.marks;
  if (Holder() != nullptr && !(isOnlyDates && ListingTellsAll())) {
    // Another program may have replaced the item that was made here.
    Holder()->SetTraitsOf(Seen(), traits);
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
  if (stamp_ && (there->size != stamp_->entry.size || there->modified != stamp_->entry.modified ||
                 (stamp_->identity && identity() != stamp_->identity))) {
    return false;
  }
  // Without a stamp putting the content was reported as failed and may have been done. What is not all of it
  // may be another program's.
  if (stamp_ ? there->size > made_->Size() : there->size != made_->Size()) {
    return false;
  }
  return HoldsStartOf(*made_);
}

void SubstituteFile::RemoveEmpty() {
  // Without content to compare, the removal itself looks whether it is the one that was made.
  try {
    const FileSystemSession::Change change(*session_);
    Holder()->RemoveAlone(entry_.name, *stamp_);
  } catch (const RunTimeError& failure) {
    if (failure.Number() != providererror::kChanged && failure.Number() != error::kNotFound) {
      throw;
    }
    // It is another program's by now, or has gone.
  }
}

bool SubstituteFile::HoldsStartOf(const ContentPrint& print) {
  const auto source =
      Holder() != nullptr ? Holder()->OpenSource(entry_.name) : session_->Files().OpenSource(FullPath());
  ContentPrint there;
  while (there.Size() <= print.Size()) {
    const QByteArray piece = source->Read(content::kLargestPiece);
    if (piece.isEmpty()) {
      return stamp_ ? there.IsStartOf(print) : there.IsSame(print);
    }
    there.Add(piece);
  }
  return false;
}

bool SubstituteFile::HasLostLine() noexcept {
  try {
    return session_->Files().HasLostLine(FullPath());
  } catch (const std::exception&) {
    return false;
  }
}

void SubstituteFile::TakeBackQuietly() noexcept {
  for (int attempt = 0; attempt < 2 && !HasLostLine(); ++attempt) {
    try {
      TakeBack();
      return;
    } catch (const std::exception&) {
      continue;
    }
  }
}

void SubstituteFile::TakeBack() {
  const bool isEmpty = stamp_ && made_ && made_->Size() == 0;
  if (state_ == State::There && isEmpty && Holder() != nullptr && (ListingTellsAll() || stamp_->identity)) {
    RemoveEmpty();
  } else if (state_ == State::There || state_ == State::Failed) {
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

QStringList SubstituteFile::Details() {
  RequireThere();
  return session_->Files().Details(FullPath());
}

std::optional<QString> SubstituteFile::Identity() {
  if (!session_->Capabilities().identity || state_ != State::There) {
    return std::nullopt;
  }
  const bool isAsked = Holder() != nullptr && !session_->Capabilities().identityOfPath;
  if (isAsked) {
    // Entry and identity come from one look-up; a listing has no identity.
    if (!identity_) {
      knownAt_ = 0;
    }
    static_cast<void>(Entry());
  }
  const auto identity = isAsked ? identity_ : session_->Files().Identity(FullPath());
  if (!identity) {
    return std::nullopt;
  }
  return IdentityText(*identity);
}

QString SubstituteFile::IdentityText(const FileIdentity& identity) const {
  const QString& space = session_->Capabilities().identitySpace;
  const QString numbers = QStringLiteral("%1:%2:%3")
                              .arg(space.isEmpty() ? session_->Provider() : space)
                              .arg(identity.volume, 0, 16)
                              .arg(identity.file, 0, 16);
  return identity.text.isEmpty() ? numbers : numbers + u':' + identity.text;
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

QString SubstituteFile::IdentityScope() {
  const FileSystemCapabilities& capabilities = session_->Capabilities();
  if (!capabilities.identity) {
    return {};
  }
  if (capabilities.identityOfPath) {
    // Other ways may lead to the place of a path, and the same path of another connection to another place.
    return QStringLiteral("connection:%1").arg(reinterpret_cast<quintptr>(session_.get()), 0, 16);
  }
  const QString& space = capabilities.identitySpace;
  return QStringLiteral("space:") + (space.isEmpty() ? session_->Provider() : space);
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
  RequireFolder();
  return Children().AdoptPending(name);
}

void SubstituteFile::RequireFolder() const {
  // Its kind is that of when it was opened: a change since then shows when the content is put.
  if (!entry_.IsFolder()) {
    Refuse(error::kWin32Error + 267, QStringLiteral("The item is not a folder"), FullPath());
  }
}

std::shared_ptr<IxoFile> SubstituteFile::MakeFile(const QString& name) {
  RequireFolder();
  const FolderReference inside = Inside();
  SeenItem seen;
  {
    const FileSystemSession::Change change(*session_);
    const auto sink = inside.Held() ? inside.Held()->OpenSink(name, {}, std::nullopt)
                                    : session_->Files().OpenSink(inside.PathOf(name), {});
    seen = sink->Commit();
  }
  seen.entry.name = name;
  const auto child = Children().Adopt(seen);
  child->Made(seen, ContentPrint());
  return child;
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
    if (!CanHoldFolders()) {
      Refuse(error::kNotSupported, QStringLiteral("No folders can be made on this controller"),
             inside.PathOf(name));
    }
    const FileSystemSession::Change change(*session_);
    if (inside.Held()) {
      existing = inside.Held()->MakeFolder(name, closed);
      if (existing) {
        existing->entry.name = name;
      }
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
    return MakeFile(name);
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

std::optional<std::shared_ptr<IxoFile>> SubstituteFile::LookFor(const QString& name) {
  RequireItemName(name);
  RequireThere();
  const std::optional<SeenItem> seen = session_->Find(Inside(), name);
  if (!seen) {
    return std::shared_ptr<IxoFile>();
  }
  return std::shared_ptr<IxoFile>(Children().Adopt(*seen));
}

std::shared_ptr<IxoFile> SubstituteFile::MakeFolder(const QString& name, bool closed) {
  RequireItemName(name);
  RequireThere();
  const FolderReference inside = Inside();
  if (!inside.Held()) {
    return nullptr;
  }
  if (!CanHoldFolders()) {
    Refuse(error::kNotSupported, QStringLiteral("No folders can be made on this controller"),
           inside.PathOf(name));
  }
  std::optional<SeenItem> made;
  {
    const FileSystemSession::Change change(*session_);
    made = inside.Held()->MakeFolder(name, closed);
  }
  if (!made) {
    throw RunTimeError(-1, QStringLiteral("The folder was not created: %1").arg(name));
  }
  made->entry.name = name;
  return Children().Adopt(*made);
}

std::shared_ptr<IxoFile> SubstituteFile::OpenListed(const FileEntry& child) {
  if (!ListingTellsAll()) {
    return OpenFile(child.name, QString());
  }
  RequireItemName(child.name);
  RequireThere();
  return Children().Adopt({child, std::nullopt});
}

bool SubstituteFile::ListingTellsAll() {
  const FileSystemCapabilities& capabilities = session_->Capabilities();
  return !capabilities.identity || capabilities.identityOfPath;
}

bool SubstituteFile::SeesArrivals() {
  RequireThere();
  const FolderReference inside = Inside();
  return inside.Held() && inside.Held()->SeesArrivals();
}

void SubstituteFile::DeleteSeen(const Listing& children) {
  RequireThere();
  const FolderReference inside = Inside();
  if (!ListingTellsAll() || !inside.Held()) {
    IxoFile::DeleteSeen(children);
    return;
  }
  std::vector<SeenItem> items;
  for (const FileEntry& child : children) {
    RequireItemName(child.name);
    items.push_back({child, session_->Files().Identity(inside.PathOf(child.name))});
  }
  const FileSystemSession::Change change(*session_);
  inside.Held()->RemoveMany(items);
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
    if (holds_ > 0 && entry_.IsLink()) {
      own_ = session_->Files().Hold(FullPath());
    } else if (knownAt_ == session_->Revision()) {
      own_ = Holder()->EnterSeen(entry_.name, Seen());
    } else {
      own_ = Holder()->Enter(entry_.name);
    }
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
      if (ListingTellsAll() && entry_.IsFolder() && !entry_.IsLink()) {
        // Later it would have to be looked for once more.
        own_ = Holder()->EnterSeen(entry_.name, Seen());
      }
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
  session_->Files().Copy(FullPath(), target, overWrite, WithinCallOf(observer));
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
    session_->Files().Remove(path, WithinCallOf(observer));
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

bool SubstituteFile::CanRun() {
  return session_->Capabilities().execute;
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

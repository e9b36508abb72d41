#include "engine/providers/memory/MemoryFileSystem.h"

#include "base/LowerCase.h"
#include "engine/files/BatchedListing.h"
#include "engine/files/ProviderError.h"
#include "engine/files/ProviderPath.h"
#include "engine/files/TemporaryName.h"

#include <algorithm>
#include <atomic>

namespace trevane {

namespace {

enum class Kind { Folder, File, Link, Device };

constexpr int kMostLinks = 40;
/// 2020-01-02T03:04:05 UTC.
constexpr qint64 kFirstNow = 1577934245000;

void ReportProgress(const ItemObserver& observer, const QString& name) {
  if (observer && !observer({.name = name})) {
    Fail(error::kCancelled, name);
  }
}

}  // namespace

struct MemoryFileSystem::Node {
  quint64 id = 0;
  QString name;
  Kind kind = Kind::Folder;
  QByteArray content;
  QString target;
  bool isRelative = false;
  std::map<QString, NodePtr> children;
  Date created;
  Date accessed;
  Date modified;
  qint32 extra = 0;
  std::optional<quint32> permissions;
  QStringList hostileNames;
  /// The folder that holds it, or null.
  Node* above = nullptr;
  bool isTop = false;
  bool writeProtected = false;
};

MemoryFileSystem::MemoryFileSystem(MemoryFileSystemOptions options)
    : options_(std::move(options)), now_{kFirstNow} {
  static std::atomic<quint64> lastVolume = 0;
  volume_ = ++lastVolume;
  root_ = NewNode({});
  root_->isTop = true;
  const QStringList drives = std::exchange(options_.drives, {});
  for (const QString& drive : drives) {
    AddDrive(drive);
  }
}

MemoryFileSystem::~MemoryFileSystem() = default;

FileSystemCapabilities MemoryFileSystem::Capabilities() const {
  return {.topHoldsDrives = !options_.drives.isEmpty(),
          .caseSensitive = options_.caseSensitive,
          .identity = options_.identity,
          .identitySpace = QStringLiteral("memory"),
          .execute = options_.execute,
          .folders = options_.folders,
          .dateStep = options_.dateStep};
}

// Finding a place

QString MemoryFileSystem::Key(const QString& name) const {
  return options_.caseSensitive ? name : LowerCase(name);
}

QStringList MemoryFileSystem::Pieces(const QString& path) const {
  QStringList pieces = providerpath::Split(path);
  if (options_.drives.isEmpty() || pieces.isEmpty()) {
    return pieces;
  }
  if (!providerpath::IsDriveName(pieces.first())) {
    pieces.prepend(options_.drives.first());
  } else {
    pieces.first() = pieces.first().toUpper();
  }
  return pieces;
}

MemoryFileSystem::Place MemoryFileSystem::Locate(const QString& path, bool followLast, int depth) const {
  if (depth > kMostLinks) {
    Fail(providererror::kLinkLoop, path);
  }
  Place place;
  place.pieces = Pieces(path);
  place.node = root_;
  place.drive = root_;
  for (qsizetype i = 0; i < place.pieces.size(); ++i) {
    const bool last = i + 1 == place.pieces.size();
    if (place.node == nullptr || place.node->kind != Kind::Folder) {
      Fail(error::kNotFound, path);
    }
    place.parent = place.node;
    place.name = place.pieces[i];
    const bool drivesHere = place.parent == root_ && !options_.drives.isEmpty();
    const auto at = place.parent->children.find(drivesHere ? place.name : Key(place.name));
    place.node = at == place.parent->children.end() ? nullptr : at->second;
    if (drivesHere) {
      place.drive = place.node;
    }
    if (place.node != nullptr && place.node->kind == Kind::Link && (!last || followLast)) {
      const Place target = Locate(TargetPath(*place.node), true, depth + 1);
      place.node = target.node;
      place.drive = target.drive;
      if (last) {
        place.parent = target.parent;
        place.name = target.name;
      }
    }
  }
  return place;
}

MemoryFileSystem::Place MemoryFileSystem::FindExisting(const QString& path, bool followLast) const {
  Place place = Locate(path, followLast);
  if (place.node == nullptr) {
    Fail(error::kNotFound, path);
  }
  return place;
}

void MemoryFileSystem::RequireWritable(const Place& place, const QString& path) const {
  if (place.drive != nullptr && place.drive->writeProtected) {
    Fail(providererror::kWriteProtected, path);
  }
}

void MemoryFileSystem::RequireCreatable(const Place& place, const QString& path) const {
  if (place.parent == nullptr) {
    Fail(error::kExists, path);
  }
  if (place.parent == root_ && !options_.drives.isEmpty()) {
    Fail(place.node != nullptr ? error::kExists : error::kNotFound, path);
  }
  RequireWritable(place, path);
}

void MemoryFileSystem::RequireRoom(qint64 bytes, const QString& path) const {
  if (options_.capacity >= 0 && Used(*root_) + bytes > options_.capacity) {
    Fail(error::kDiskFull, path);
  }
}

void MemoryFileSystem::RefuseInside(const Place& source, const Place& target, const QString& path) {
  for (const Node* above = target.parent.get(); above != nullptr; above = above->above) {
    if (above == source.node.get()) {
      Fail(error::kInvalidParameter, QStringLiteral("The destination lies inside the source"), path);
    }
  }
}

qint64 MemoryFileSystem::Used(const Node& node) const {
  qint64 used = node.content.size();
  for (const auto& [key, child] : node.children) {
    used += Used(*child);
  }
  return used;
}

// Operations

FileEntry MemoryFileSystem::Describe(const Node& node, const NodePtr& drive, const QString& path) const {
  const Node* shown = &node;
  FileEntry entry;
  entry.name = node.name;
  NodePtr target;
  if (node.kind == Kind::Link) {
    entry.attributes |= attribute::kLink;
    try {
      target = Locate(path, true).node;
      entry.leadsNowhere = target == nullptr;  // it is shown with its own data
    } catch (const RunTimeError& failure) {
      entry.leadsNowhere = failure.Number() == error::kNotFound;
    }
    if (target != nullptr) {
      shown = target.get();
    }
  }
  switch (shown->kind) {
    case Kind::Folder:
      entry.attributes |= attribute::kFolder;
      break;
    case Kind::File:
    case Kind::Link:
      entry.attributes |= attribute::kArchive;
      entry.size = shown->kind == Kind::File ? shown->content.size() : shown->target.size();
      break;
    case Kind::Device:
      entry.attributes |= attribute::kDevice;
      break;
  }
  if (node.isTop) {
    entry.attributes = attribute::kFolder;
    return entry;
  }
  entry.attributes |= shown->extra | node.extra;
  if (node.name.startsWith(u'.')) {
    entry.attributes |= attribute::kHidden;
  }
  if (drive != nullptr && drive->writeProtected) {
    entry.attributes |= attribute::kReadOnly;
  }
  entry.created = Rounded(shown->created);
  entry.accessed = Rounded(shown->accessed);
  entry.modified = Rounded(shown->modified);
  return entry;
}

Listing MemoryFileSystem::List(const QString& folder) {
  Record(FileSystemOperation::List, folder);
  const Place place = FindExisting(folder, true);
  if (place.node->kind != Kind::Folder) {
    Fail(providererror::kNotAFolder, folder);
  }
  Listing listing;
  listing.reserve(place.node->children.size());
  for (const auto& [key, child] : place.node->children) {
    const NodePtr& drive = child->isTop ? child : place.drive;
    listing.push_back(Describe(*child, drive, providerpath::Child(folder, child->name)));
  }
  for (const QString& name : place.node->hostileNames) {
    FileEntry entry;
    entry.name = name;
    listing.push_back(entry);
  }
  return listing;
}

void MemoryFileSystem::ListInBatches(const QString& folder, const ListingReceiver& receive) {
  BatchedListing batches(receive);
  for (FileEntry& entry : List(folder)) {
    if (!batches.Add(std::move(entry))) {
      return;
    }
  }
  batches.Finish();
}

std::optional<FileEntry> MemoryFileSystem::Find(const QString& path) {
  Record(FileSystemOperation::Stat, path);
  try {
    return EntryOf(FindExisting(path, false), path);
  } catch (const RunTimeError& failure) {
    if (failure.Number() != error::kNotFound) {
      throw;
    }
    return std::nullopt;
  }
}

FileEntry MemoryFileSystem::EntryOf(const Place& place, const QString& path) const {
  return Describe(*place.node, place.drive, path);
}

SeenItem MemoryFileSystem::SeenAt(const Place& place, const QString& path) const {
  SeenItem seen;
  seen.entry = EntryOf(place, path);
  if (options_.identity) {
    seen.identity = FileIdentity{volume_, place.node->id};
  }
  return seen;
}

Date MemoryFileSystem::Rounded(const Date& date) const {
  if (options_.dateStep <= 0 || !date.IsPresent()) {
    return date;
  }
  const qint64 rest = date.msecs % options_.dateStep;
  return {date.msecs - (rest < 0 ? rest + options_.dateStep : rest)};
}

QString MemoryFileSystem::PathOf(const Node& node) const {
  QStringList pieces;
  for (const Node* at = &node; at != nullptr && at != root_.get(); at = at->above) {
    pieces.prepend(at->name);
  }
  return pieces.join(u'\\');
}

QString MemoryFileSystem::TargetPath(const Node& link) const {
  if (!link.isRelative) {
    return link.target;
  }
  QStringList pieces = link.above == nullptr ? QStringList() : providerpath::Split(PathOf(*link.above));
  for (const QString& piece : link.target.split(u'\\', Qt::SkipEmptyParts)) {
    if (piece == u"..") {
      if (!pieces.isEmpty()) {
        pieces.removeLast();
      }
    } else if (piece != u".") {
      pieces.append(piece);
    }
  }
  return pieces.join(u'\\');
}

std::optional<QString> MemoryFileSystem::ReadLink(const QString& path) {
  Record(FileSystemOperation::ReadLink, path);
  const NodePtr node = FindExisting(path, false).node;
  if (node->kind != Kind::Link) {
    return std::nullopt;
  }
  // A path from the top has a "\" in front unless a drive shows that it is one.
  const bool needsMark = !node->isRelative && options_.drives.isEmpty();
  return needsMark ? u'\\' + node->target : node->target;
}

void MemoryFileSystem::CreateLink(const QString& path, const QString& target) {
  Record(FileSystemOperation::CreateLink, path, target);
  const Place place = Locate(path, false);
  if (place.node != nullptr) {
    Fail(error::kExists, path);
  }
  RequireCreatable(place, path);
  if (target.isEmpty() || target.contains(QChar(u'\0'))) {
    Fail(error::kInvalidName, path);
  }
  Tick();
  const NodePtr node = NewNode(place.name);
  node->kind = Kind::Link;
  node->target = target;
  node->target.replace(u'/', u'\\');
  const bool fromTop = node->target.startsWith(u'\\');
  node->isRelative = !fromTop && !providerpath::IsDriveName(node->target.section(u'\\', 0, 0));
  if (fromTop) {
    node->target.remove(0, 1);
  }
  Attach(place.parent, node);
}

/// Reads what the file holds at that moment.
class MemoryFileSystem::Source final : public ContentSource {
 public:
  Source(NodePtr node, qint64 offset) : node_(std::move(node)), at_(offset) {}

  [[nodiscard]] QByteArray Read(qint64 most) override {
    const QByteArray piece = at_ < node_->content.size() ? node_->content.mid(at_, most) : QByteArray();
    at_ += piece.size();
    return piece;
  }

 private:
  NodePtr node_;
  qint64 at_;
};

std::unique_ptr<ContentSource> MemoryFileSystem::OpenSource(const QString& path, qint64 offset) {
  Record(FileSystemOperation::Read, path);
  const Place place = FindExisting(path, true);
  if (place.node->kind != Kind::File) {
    Fail(error::kAccessDenied, path);
  }
  return std::make_unique<Source>(place.node, offset);
}

class MemoryFileSystem::Sink final : public ContentSink {
 public:
  Sink(MemoryFileSystem& files, const QString& path, const SinkRequest& request)
      : files_(files), path_(path), request_(request), old_(Require().node) {
    files_.RequireRoom(std::max<qint64>(request.expectedSize, 0), path);
  }
  ~Sink() override { Drop(); }

  [[nodiscard]] std::optional<QString> TemporaryName() const override { return temporary_; }

  void Write(const QByteArray& piece) override {
    files_.RequireRoom(piece.size(), path_);
    if (!built_) {
      parent_ = Require().parent;
      built_ = files_.NewNode(temporary_);
      built_->kind = Kind::File;
      files_.Attach(parent_, built_);
    }
    built_->content += piece;
  }

  [[nodiscard]] SeenItem Commit() override {
    Place place = Require();
    if (IsNew() && place.node != nullptr) {
      Fail(error::kExists, path_);
    }
    if (place.node != old_ && place.node != nullptr) {
      Fail(providererror::kChanged, path_);
    }
    const QByteArray content = built_ ? built_->content : QByteArray();
    Drop();
    const Date now = files_.Tick();
    if (place.node == nullptr) {
      place.node = files_.NewNode(place.name);
      place.node->kind = Kind::File;
      place.node->permissions = request_.traits.permissions;
      files_.Attach(place.parent, place.node);
    }
    place.node->content = content;
    place.node->modified = request_.traits.modified.IsPresent() ? request_.traits.modified : now;
    place.node->accessed = now;
    return files_.SeenAt(place, path_);
  }

 private:
  void Drop() {
    if (built_) {
      files_.Detach(parent_, temporary_);
      built_.reset();
    }
  }

  [[nodiscard]] bool IsNew() const { return request_.mode == SinkRequest::Mode::New; }

  /// Where the content goes. Fails where none can be written.
  [[nodiscard]] Place Require() const {
    Place place = files_.Locate(path_, !IsNew());
    const bool replaces = !IsNew() && place.node != nullptr;
    if (replaces && place.node->kind != Kind::File) {
      Fail(error::kAccessDenied, path_);
    }
    files_.RequireCreatable(place, path_);
    if (replaces && (place.node->extra & attribute::kReadOnly) != 0) {
      Fail(error::kAccessDenied, path_);
    }
    return place;
  }

  MemoryFileSystem& files_;
  QString path_;
  SinkRequest request_;
  NodePtr old_;
  QString temporary_ = MakeTemporaryName();
  NodePtr parent_;
  NodePtr built_;
};

std::unique_ptr<ContentSink> MemoryFileSystem::OpenSink(const QString& path, const SinkRequest& request) {
  Record(FileSystemOperation::Write, path);
  return std::make_unique<Sink>(*this, path, request);
}

void MemoryFileSystem::CreateFile(const QString& path) {
  Record(FileSystemOperation::CreateFile, path);
  const Place place = Locate(path, false);
  if (place.node != nullptr) {
    Fail(error::kExists, path);
  }
  RequireCreatable(place, path);
  Tick();
  const NodePtr node = NewNode(place.name);
  node->kind = Kind::File;
  Attach(place.parent, node);
}

void MemoryFileSystem::CreateFolder(const QString& path) {
  Record(FileSystemOperation::CreateFolder, path);
  if (!options_.folders) {
    Fail(error::kNotSupported, QStringLiteral("This file system has no folders"), path);
  }
  const Place place = Locate(path, false);
  if (place.node != nullptr) {
    Fail(error::kExists, path);
  }
  RequireCreatable(place, path);
  Tick();
  Attach(place.parent, NewNode(place.name));
}

void MemoryFileSystem::CreateClosedFolder(const QString& path) {
  CreateFolder(path);
  FindExisting(path, false).node->permissions = 0700;
}

FileTraits MemoryFileSystem::Traits(const QString& path) {
  Record(FileSystemOperation::Stat, path);
  FileTraits traits;
  const NodePtr node = FindExisting(path, true).node;
  traits.permissions = node->permissions;
  traits.modified = Rounded(node->modified);
  return traits;
}

void MemoryFileSystem::SetTraits(const QString& path, const FileTraits& traits) {
  Record(FileSystemOperation::Write, path);
  const Place place = FindExisting(path, false);
  RequireWritable(place, path);
  if (place.node->kind == Kind::Link) {
    Fail(error::kAccessDenied, path);
  }
  if (traits.permissions) {
    place.node->permissions = traits.permissions;
  }
  if (traits.modified.IsPresent()) {
    place.node->modified = traits.modified;
  }
}

void MemoryFileSystem::SetPermissions(const QString& path, quint32 permissions) {
  FindExisting(path, true).node->permissions = permissions;
}

std::optional<quint32> MemoryFileSystem::Permissions(const QString& path) const {
  return FindExisting(path, false).node->permissions;
}

void MemoryFileSystem::AddHostileName(const QString& folder, const QString& name) {
  FindExisting(folder, true).node->hostileNames.append(name);
}

void MemoryFileSystem::Copy(const QString& from, const QString& to, bool overwrite,
                            const ItemObserver& observer) {
  Record(FileSystemOperation::Copy, from, to);
  const Place source = FindExisting(from, false);
  const Place target = Locate(to, false);
  if (source.node == target.node) {
    Fail(error::kInvalidParameter, QStringLiteral("The source and the destination are the same item"), to);
  }
  if (source.node->kind == Kind::Device) {
    Fail(error::kNotSupported, QStringLiteral("A device, pipe or socket cannot be copied"), from);
  }
  RefuseInside(source, target, to);
  if (source.node->isTop) {
    Fail(error::kAccessDenied, from);
  }
  if (target.node != nullptr && !overwrite) {
    Fail(error::kExists, to);
  }
  if (target.node != nullptr && target.node->isTop) {
    Fail(error::kAccessDenied, to);
  }
  RequireCreatable(target, to);
  Tick();
  CopyInto(*source.node, target.parent, target.name, to, observer);
}

void MemoryFileSystem::CopyInto(const Node& source, const NodePtr& parent, const QString& name,
                                const QString& path, const ItemObserver& observer) {
  const auto at = parent->children.find(Key(name));
  const NodePtr existing = at == parent->children.end() ? nullptr : at->second;
  if (existing == nullptr) {
    RequireRoom(Used(source), path);
    Attach(parent, Clone(source, name, observer));
    return;
  }
  if ((existing->kind == Kind::Folder) != (source.kind == Kind::Folder) || existing->kind == Kind::Device) {
    Fail(error::kExists, QStringLiteral("An item of another kind has that name"), path);
  }
  if (source.kind == Kind::Folder) {
    for (const auto& [key, child] : source.children) {
      if (child->kind == Kind::Device) {
        Fail(error::kNotSupported, QStringLiteral("A device, pipe or socket cannot be copied"),
             providerpath::Child(path, child->name));
      }
      ReportProgress(observer, child->name);
      CopyInto(*child, existing, child->name, providerpath::Child(path, child->name), observer);
    }
    return;
  }
  if ((existing->extra & attribute::kReadOnly) != 0) {
    Fail(error::kAccessDenied, path);
  }
  RequireRoom(source.content.size(), path);
  const NodePtr copy = Clone(source, existing->name, observer);
  Detach(parent, existing->name);
  Attach(parent, copy);
}

MemoryFileSystem::NodePtr MemoryFileSystem::Clone(const Node& node, const QString& name,
                                                  const ItemObserver& observer) {
  if (node.kind == Kind::Device) {
    Fail(error::kNotSupported, QStringLiteral("A device, pipe or socket cannot be copied"), node.name);
  }
  const NodePtr copy = NewNode(name);
  copy->kind = node.kind;
  copy->content = node.content;
  copy->target = node.target;
  copy->isRelative = node.isRelative;
  copy->accessed = node.accessed;
  copy->modified = node.modified;
  copy->extra = node.extra;
  for (const auto& [key, child] : node.children) {
    ReportProgress(observer, child->name);
    Attach(copy, Clone(*child, child->name, observer));
  }
  copy->modified = node.modified;
  return copy;
}

void MemoryFileSystem::Rename(const QString& from, const QString& to, bool overwrite) {
  Record(FileSystemOperation::Rename, from, to);
  const Place source = FindExisting(from, false);
  const Place target = Locate(to, false);
  if (source.node->isTop) {
    Fail(error::kAccessDenied, from);
  }
  RefuseInside(source, target, to);
  const bool same = source.node == target.node;
  if (same && source.node->name == target.name) {
    Fail(error::kInvalidParameter, QStringLiteral("The source and the destination are the same item"), to);
  }
  if (target.node != nullptr && !same) {
    if (!overwrite) {
      Fail(error::kExists, to);
    }
    if (target.node->isTop) {
      Fail(error::kAccessDenied, to);
    }
    if ((target.node->kind == Kind::Folder) != (source.node->kind == Kind::Folder) ||
        target.node->kind == Kind::Device) {
      Fail(error::kExists, QStringLiteral("An item of another kind has that name"), to);
    }
    if (!target.node->children.empty()) {
      Fail(error::kDirectoryNotEmpty, to);
    }
    if ((target.node->extra & attribute::kReadOnly) != 0) {
      Fail(error::kAccessDenied, to);
    }
  }
  if (!same) {
    RequireCreatable(target, to);
  }
  RequireWritable(source, from);
  if (source.drive != target.drive) {
    Fail(providererror::kNotSameDevice, to);
  }
  Tick();
  const NodePtr node = source.node;
  Detach(source.parent, source.name);
  if (target.node != nullptr && !same) {
    Detach(target.parent, target.name);
  }
  node->name = target.name;
  Attach(target.parent, node);
}

void MemoryFileSystem::Remove(const QString& path, const ItemObserver& observer) {
  Record(FileSystemOperation::Remove, path);
  const Place place = FindExisting(path, false);
  if (place.node->isTop) {
    Fail(error::kAccessDenied, path);
  }
  RequireWritable(place, path);
  ReportBelow(*place.node, observer);
  Tick();
  Detach(place.parent, place.name);
}

void MemoryFileSystem::RemoveAlone(const QString& path) {
  if (const Place place = Locate(path, false); place.node != nullptr && !place.node->children.empty()) {
    Record(FileSystemOperation::Remove, path);
    Fail(error::kDirectoryNotEmpty, path);
  }
  Remove(path);
}

Variant MemoryFileSystem::Execute(const QString& path, const QString& command, const Variant& parameter) {
  if (!options_.execute) {
    return FileSystem::Execute(path, command, parameter);
  }
  Record(FileSystemOperation::Execute, path, command);
  (void)FindExisting(path, true);
  return command.isEmpty() ? Variant() : Variant(command);
}

std::optional<FileIdentity> MemoryFileSystem::Identity(const QString& path) {
  Record(FileSystemOperation::Identity, path);
  if (!options_.identity) {
    return std::nullopt;
  }
  return FileIdentity{volume_, FindExisting(path, false).node->id};
}

std::vector<FileIdentity> MemoryFileSystem::FolderIdentities(const QString& folder) {
  Record(FileSystemOperation::Identity, folder);
  std::vector<FileIdentity> identities;
  if (options_.identity) {
    const NodePtr inmost = FindExisting(folder, true).node;
    for (const Node* node = inmost.get(); node != nullptr; node = node->above) {
      identities.push_back({volume_, node->id});
    }
  }
  return identities;
}

void MemoryFileSystem::ReportBelow(const Node& node, const ItemObserver& observer) {
  for (const auto& [key, child] : node.children) {
    ReportProgress(observer, child->name);
    ReportBelow(*child, observer);
  }
}

// Small parts

MemoryFileSystem::NodePtr MemoryFileSystem::NewNode(const QString& name) {
  auto node = std::make_shared<Node>();
  node->id = nextId_++;
  node->name = name;
  node->created = node->accessed = node->modified = now_;
  return node;
}

void MemoryFileSystem::Attach(const NodePtr& parent, const NodePtr& node) {
  parent->children[Key(node->name)] = node;
  node->above = parent.get();
  parent->modified = now_;
}

void MemoryFileSystem::Detach(const NodePtr& parent, const QString& name) {
  const auto at = parent->children.find(Key(name));
  if (at != parent->children.end()) {
    at->second->above = nullptr;
    parent->children.erase(at);
  }
  parent->modified = now_;
}

Date MemoryFileSystem::Tick() {
  now_.msecs += 1000;
  return now_;
}

void MemoryFileSystem::Record(FileSystemOperation operation, const QString& path,
                              const QString& destination) {
  calls_.push_back({operation, path, destination});
}

int MemoryFileSystem::CallCount(FileSystemOperation operation) const {
  return static_cast<int>(
      std::count_if(calls_.begin(), calls_.end(),
                    [operation](const FileSystemCall& call) { return call.operation == operation; }));
}

// Set-up

MemoryFileSystem::NodePtr MemoryFileSystem::MakePath(const QString& path) {
  NodePtr node = root_;
  const QStringList pieces = Pieces(path);
  for (const QString& piece : pieces) {
    const bool drivesHere = node == root_ && !options_.drives.isEmpty();
    const auto at = node->children.find(drivesHere ? piece : Key(piece));
    if (at != node->children.end()) {
      node = at->second;
      continue;
    }
    const NodePtr made = NewNode(piece);
    Attach(node, made);
    node = made;
  }
  return node;
}

void MemoryFileSystem::AddFolder(const QString& path) {
  MakePath(path)->kind = Kind::Folder;
}

void MemoryFileSystem::AddFile(const QString& path, const QByteArray& content) {
  const NodePtr node = MakePath(path);
  node->kind = Kind::File;
  node->content = content;
}

void MemoryFileSystem::AddLink(const QString& path, const QString& target) {
  const NodePtr node = MakePath(path);
  node->kind = Kind::Link;
  node->target = target;
  node->isRelative = target.startsWith(u'.');
}

void MemoryFileSystem::AddDevice(const QString& path) {
  MakePath(path)->kind = Kind::Device;
}

void MemoryFileSystem::Vanish(const QString& path) {
  const Place place = Locate(path, false);
  if (place.parent != nullptr) {
    Detach(place.parent, place.name);
  }
}

void MemoryFileSystem::SetTimes(const QString& path, Date created, Date accessed, Date modified) {
  const Place place = FindExisting(path, false);
  place.node->created = created;
  place.node->accessed = accessed;
  place.node->modified = modified;
}

void MemoryFileSystem::SetAttributes(const QString& path, qint32 bits) {
  FindExisting(path, false).node->extra = bits;
}

void MemoryFileSystem::SetWriteProtected(const QString& drive, bool on) {
  FindExisting(options_.drives.isEmpty() ? QString() : drive, true).node->writeProtected = on;
}

void MemoryFileSystem::AddDrive(const QString& name) {
  options_.drives.append(name.toUpper());
  const NodePtr drive = NewNode(name.toUpper());
  drive->isTop = true;
  drive->above = root_.get();
  root_->children[drive->name] = drive;
}

void MemoryFileSystem::RemoveDrive(const QString& name) {
  options_.drives.removeAll(name.toUpper());
  root_->children.erase(name.toUpper());
}

bool MemoryFileSystem::Exists(const QString& path) const {
  try {
    return Locate(path, false).node != nullptr;
  } catch (const RunTimeError&) {
    return false;
  }
}

QByteArray MemoryFileSystem::Content(const QString& path) const {
  return FindExisting(path, true).node->content;
}

QStringList MemoryFileSystem::Tree() const {
  QStringList lines;
  for (const auto& [key, child] : root_->children) {
    AppendTree(*child, child->name, lines);
  }
  lines.sort();
  return lines;
}

void MemoryFileSystem::AppendTree(const Node& node, const QString& path, QStringList& lines) const {
  switch (node.kind) {
    case Kind::Folder:
      lines.append(path + u'\\');
      break;
    case Kind::File:
      lines.append(path + u'=' + QString::fromLatin1(node.content));
      break;
    case Kind::Link:
      lines.append(path + QStringLiteral("->") + node.target);
      break;
    case Kind::Device:
      lines.append(path + u'!');
      break;
  }
  for (const auto& [key, child] : node.children) {
    AppendTree(*child, providerpath::Child(path, child->name), lines);
  }
}

}  // namespace trevane

#include "engine/files/TreeByPath.h"

#include "base/LowerCase.h"
#include "engine/files/ProviderError.h"
#include "engine/files/ProviderPath.h"
#include "engine/files/TreeCopy.h"
#include "engine/files/TreeRemoval.h"
#include "engine/model/Content.h"
#include "engine/model/ItemName.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace trevane {
namespace {

bool IsOwnFolder(const FileEntry& entry) {
  return entry.IsFolder() && !entry.IsLink();
}

/// A name that a listing has no right to contain ("..", separators) would lead out of the tree.
void RequireName(const QString& name, const QString& folder) {
  if (!IsValidItemName(name)) {
    Fail(error::kInvalidName, providerpath::Child(folder, name));
  }
}

Listing ListOwn(FileSystem& files, const QString& folder) {
  Listing listing = files.List(folder);
  for (const FileEntry& entry : listing) {
    RequireName(entry.name, folder);
  }
  return listing;
}

/// Nothing when it is missing; fails when it is no longer a folder of its own.
bool IsStillFolder(FileSystem& files, const QString& path) {
  const std::optional<FileEntry> now = files.Find(path);
  if (now && !IsOwnFolder(*now)) {
    Fail(providererror::kChanged, path);
  }
  return now.has_value();
}

/// The folders below a path, for RemoveTree.
class RemovalTree {
 public:
  using Item = FileEntry;

  RemovalTree(FileSystem& files, const QString& folder) : files_(files), levels_{folder} {}

  [[nodiscard]] std::vector<Item> List() { return ListOwn(files_, levels_.back()); }
  [[nodiscard]] static bool IsFolder(const Item& item) { return IsOwnFolder(item); }
  [[nodiscard]] static QString NameOf(const Item& item) { return item.name; }
  [[nodiscard]] bool Enter(const Item& item) {
    const QString path = TextOf(item);
    if (!IsStillFolder(files_, path)) {
      return false;
    }
    levels_.push_back(path);
    return true;
  }
  void Leave() { levels_.pop_back(); }
  [[nodiscard]] static bool IsMountPoint() { return false; }
  void Remove(const Item& item) {
    try {
      files_.RemoveAlone(TextOf(item));
    } catch (const RunTimeError& failure) {
      if (failure.Number() != error::kNotFound) {
        throw;
      }
    }
  }
  [[nodiscard]] QString Text() const { return levels_.back(); }
  [[nodiscard]] QString TextOf(const Item& item) const {
    return providerpath::Child(levels_.back(), item.name);
  }

 private:
  FileSystem& files_;
  std::vector<QString> levels_;
};

/// The folders of two paths, for CopyTree.
class CopyingTree {
 public:
  using Item = FileEntry;
  using Status = FileEntry;
  using Name = QString;

  CopyingTree(FileSystem& files, const QString& from, const QString& to)
      : files_(files),
        hasIdentities_(files.Capabilities().identity),
        hasTraits_(files.Capabilities().traits),
        hasTemporaryNames_(files.Capabilities().temporaryNames),
        overlaps_(files.Capabilities().overlaps),
        from_{from},
        to_{to} {}

  [[nodiscard]] std::vector<Item> List() {
    Listing listing = ListOwn(files_, from_.back());
    // Without identities only this shows a destination inside the source, for instance behind a link.
    const bool isInside =
        !hasIdentities_ && !probe_.isEmpty() &&
        std::any_of(listing.begin(), listing.end(), [&](const Item& item) { return item.name == probe_; });
    if (isInside) {
      Fail(error::kInvalidParameter, QStringLiteral("The destination lies inside the source"), Text());
    }
    return listing;
  }
  void Examine(Item& /*item*/, bool /*withIdentity*/) const {}
  [[nodiscard]] static bool IsFolder(const Item& item) { return IsOwnFolder(item); }
  [[nodiscard]] static QString NameOf(const Item& item) { return item.name; }
  [[nodiscard]] std::optional<FileIdentity> EnterSource(const Item& item) {
    const QString path = SourceTextOf(item);
    if (!IsStillFolder(files_, path)) {
      Fail(error::kNotFound, path);
    }
    from_.push_back(path);
    entered_.push_back(item);
    return IdentityOfPath(path);
  }
  void LeaveSource() {
    from_.pop_back();
    entered_.pop_back();
  }
  [[nodiscard]] QString SourceTextOf(const Item& item) const {
    return providerpath::Child(from_.back(), item.name);
  }

  [[nodiscard]] std::optional<Status> Find(const QString& name) { return files_.Find(TextOf(name)); }
  // Both would cost a further call.
  [[nodiscard]] static std::optional<FileIdentity> IdentityOf(const FileEntry& /*entry*/) {
    return std::nullopt;
  }
  [[nodiscard]] std::optional<FileIdentity> IdentityAt(const QString& name) {
    return IdentityOfPath(TextOf(name));
  }
  void RequireReplaceable(const Item& source, const Status& existing, const QString& name) const {
    const bool isDevice = (existing.attributes & attribute::kDevice) != 0 && !existing.IsLink();
    // In place a link would be written through.
    const bool isFollowed = existing.IsLink() && !hasTemporaryNames_;
    if (IsFolder(source) != IsFolder(existing) || isDevice || isFollowed) {
      Fail(error::kExists, QStringLiteral("An item of another kind has that name"), TextOf(name));
    }
    if (!IsFolder(existing) && !existing.IsLink() && (existing.attributes & attribute::kReadOnly) != 0) {
      Fail(error::kAccessDenied, TextOf(name));
    }
  }
  void MakeFolder(const QString& name, const QString& madeName) {
    files_.CreateClosedFolder(TextOf(madeName));
    if (madeName != name) {
      probe_ = madeName;
    }
  }
  /// A rename may change the identity of a new folder.
  [[nodiscard]] std::optional<FileIdentity> EnterDestination(const QString& /*name*/, const QString& madeName,
                                                             bool isNew) {
    to_.push_back(TextOf(madeName));
    return isNew ? std::nullopt : IdentityOfPath(to_.back());
  }
  void LeaveDestination() { to_.pop_back(); }
  [[nodiscard]] std::vector<FileIdentity> FoldersAbove() {
    return hasIdentities_ ? files_.FolderIdentities(to_.back()) : std::vector<FileIdentity>();
  }
  static void SearchLeftovers() {}
  [[nodiscard]] bool HasTemporaryNames() const { return hasTemporaryNames_; }
  void Rename(const QString& from, const QString& to, bool replace) {
    files_.Rename(TextOf(from), TextOf(to), replace);
  }
  void RemoveUnfinished(const QString& name) noexcept {
    try {
      RemoveTreeByPath(files_, TextOf(name), {});
    } catch (const std::exception&) {
      // It is left under its temporary name.
    }
  }
  [[nodiscard]] QString Text() const { return to_.back(); }
  [[nodiscard]] QString TextOf(const QString& name) const { return providerpath::Child(to_.back(), name); }

  void RequireCopyable(const Item& source, const QString& /*name*/) const {
    if ((source.attributes & attribute::kDevice) != 0 && !source.IsLink()) {
      Fail(error::kNotSupported, QStringLiteral("A device, pipe or socket cannot be copied"),
           SourceTextOf(source));
    }
  }

  void CopyContent(const Item& source, const QString& name, const QString& madeName, bool replaces,
                   const CopyProgress& progress) {
    const QString from = SourceTextOf(source);
    const QString to = TextOf(madeName);
    if (source.IsLink()) {
      const std::optional<QString> target = files_.ReadLink(from);
      if (!target) {
        Fail(error::kNotSupported, QStringLiteral("The link cannot be read"), from);
      }
      files_.CreateLink(to, *target);
      return;
    }
    const bool replacesItself = replaces && madeName == name;
    const std::unique_ptr<ContentSource> content = files_.OpenSource(from);
    const std::unique_ptr<ContentSink> sink =
        files_.OpenSink(to, {.mode = replacesItself ? SinkRequest::Mode::Replace : SinkRequest::Mode::New,
                             .expectedSize = source.size,
                             .traits = TraitsOf(from, source)});
    qint64 copied = 0;
    for (;;) {
      const QByteArray piece = content->Read(content::kLargestPiece);
      if (piece.isEmpty()) {
        break;
      }
      sink->Write(piece);
      copied += piece.size();
      if (progress && !progress(copied, std::max(copied, source.size))) {
        Fail(error::kCancelled, from);
      }
    }
    // The copy may match neither the old nor the new content.
    if (copied < source.size && !content->HadWrongSize()) {
      Fail(providererror::kChanged,
           QStringLiteral("Only %1 of %2 bytes could be read").arg(copied).arg(source.size), from);
    }
    const SeenItem placed = sink->Commit();
    if (placed.entry.size != copied && placed.entry.size >= 0) {
      if (!replacesItself) {
        RemoveUnfinished(madeName);
      }
      Fail(providererror::kChanged, to);
    }
    if (replaces && madeName != name) {
      RequireOther(source, name, madeName);
    }
    if (replaces) {
      files_.Flush(to);
    }
  }
  [[nodiscard]] std::optional<qint64> SizeInBatch(const Item& source) const {
    const bool isPlain =
        !source.IsFolder() && !source.IsLink() && (source.attributes & attribute::kDevice) == 0;
    return overlaps_ && isPlain && source.size >= 0 ? std::optional(source.size) : std::nullopt;
  }
  void CopyContents(const std::vector<Item>& batch) {
    QStringList sources;
    for (const Item& source : batch) {
      sources.append(SourceTextOf(source));
    }
    std::vector<ReadResult> read = files_.ReadMany(sources);
    read.resize(batch.size());
    std::vector<NewContent> contents;
    contents.reserve(batch.size());
    std::vector<Item> alone;
    for (size_t i = 0; i < batch.size(); ++i) {
      const Item& source = batch[i];
      if (read[i].failure) {
        throw *read[i].failure;
      }
      if (!read[i].content || read[i].content->size() != source.size) {
        // It has changed since it was listed.
        alone.push_back(source);
        continue;
      }
      SinkRequest request;
      request.expectedSize = source.size;
      request.traits = read[i].traits ? *read[i].traits : TraitsOf(SourceTextOf(source), source);
      contents.push_back({TextOf(source.name), *std::exchange(read[i].content, std::nullopt), request});
    }
    if (!contents.empty()) {
      RequireWritten(contents, files_.WriteMany(contents));
    }
    for (const Item& source : alone) {
      CopyContent(source, source.name, source.name, false, {});
    }
  }
  void CopyAttributes() { files_.SetTraits(to_.back(), TraitsOf(from_.back(), entered_.back())); }

  [[nodiscard]] static QString TextFromName(const QString& name) { return name; }
  [[nodiscard]] static QString NameFromText(const QString& text) { return text; }

 private:
  [[nodiscard]] std::optional<FileIdentity> IdentityOfPath(const QString& path) {
    return hasIdentities_ ? files_.Identity(path) : std::nullopt;
  }

  /// The date is that of the listing where nothing else tells it.
  [[nodiscard]] FileTraits TraitsOf(const QString& path, const Item& item) {
    FileTraits traits = hasTraits_ ? files_.Traits(path) : FileTraits();
    if (!traits.modified.IsPresent()) {
      traits.modified = item.modified;
    }
    return traits;
  }

  static void RequireWritten(const std::vector<NewContent>& contents,
                             const std::vector<WriteResult>& written) {
    for (size_t i = 0; i < contents.size(); ++i) {
      if (i < written.size() && written[i].failure) {
        throw *written[i].failure;
      }
      const bool isWhole =
          i < written.size() && written[i].item &&
          (written[i].item->entry.size < 0 || written[i].item->entry.size == contents[i].content.size());
      if (!isWhole) {
        Fail(providererror::kChanged, contents[i].name);
      }
    }
  }

  /// Without identities a file may be about to replace itself, for instance behind a link: then the copy
  /// stands in the folder of the source, too.
  void RequireOther(const Item& source, const QString& name, const QString& madeName) {
    if (hasIdentities_ || LowerCase(source.name) != LowerCase(name) || otherFolder_ == to_.back()) {
      return;
    }
    if (files_.Find(providerpath::Child(from_.back(), madeName))) {
      RemoveUnfinished(madeName);
      Fail(error::kInvalidParameter, QStringLiteral("The source and the destination are the same item"),
           TextOf(name));
    }
    otherFolder_ = to_.back();
  }

  FileSystem& files_;
  const bool hasIdentities_;
  const bool hasTraits_;
  const bool hasTemporaryNames_;
  const bool overlaps_;
  std::vector<QString> from_;
  /// The folders of the source that were entered.
  std::vector<Item> entered_;
  std::vector<QString> to_;
  /// The temporary name of the topmost new folder.
  QString probe_;
  /// A folder of the destination that is known to be another one than that of the source.
  QString otherFolder_;
};

/// The folder and the name of an item.
struct PlaceByPath {
  QString folder;
  QString name;
};

/// Fails with `refusal` for the top and for a drive.
PlaceByPath SplitItem(const FileSystem& files, const QString& path, qint32 refusal) {
  QStringList pieces = providerpath::Split(path);
  const bool isDrive =
      pieces.size() == 1 && files.Capabilities().topHoldsDrives && providerpath::IsDriveName(pieces.first());
  if (pieces.isEmpty() || isDrive) {
    Fail(refusal, path);
  }
  const QString name = pieces.takeLast();
  return {providerpath::Join(pieces), name};
}

/// For comparing paths of one file system.
QString Folded(const FileSystem& files, const QString& path) {
  const QString joined = providerpath::Join(providerpath::Split(path));
  return files.Capabilities().caseSensitive ? joined : LowerCase(joined);
}

void RefuseSameOrInside(FileSystem& files, const QString& from, const QString& to, const QString& toFolder,
                        const FileEntry& source, bool exists) {
  const QString oldPath = Folded(files, from);
  const QString newPath = Folded(files, to);
  const bool hasIdentities = files.Capabilities().identity;
  const std::optional<FileIdentity> own = hasIdentities ? files.Identity(from) : std::nullopt;
  if (oldPath == newPath || (exists && own && own == files.Identity(to))) {
    Fail(error::kInvalidParameter, QStringLiteral("The source and the destination are the same item"), to);
  }
  if (!IsOwnFolder(source)) {
    return;
  }
  bool isInside = newPath.startsWith(oldPath + u'\\');
  if (own) {
    const std::vector<FileIdentity> above = files.FolderIdentities(toFolder);
    isInside = isInside || std::find(above.begin(), above.end(), *own) != above.end();
  }
  if (isInside) {
    Fail(error::kInvalidParameter, QStringLiteral("The destination lies inside the source"), to);
  }
}

/// Where neither identities nor a temporary name can show it, a destination behind a link may lie inside the
/// source.
void RefuseLinksAbove(FileSystem& files, const QString& folder) {
  for (QString path = folder; !path.isEmpty();
       path.truncate(std::max<qsizetype>(path.lastIndexOf(u'\\'), 0))) {
    const std::optional<FileEntry> entry = files.Find(path);
    if (entry && entry->IsLink()) {
      Fail(error::kNotSupported, QStringLiteral("The destination may lie inside the source"), folder);
    }
  }
}

}  // namespace

void CopyTreeByPath(FileSystem& files, const QString& from, const QString& to, bool overwrite,
                    const ItemObserver& observer) {
  const PlaceByPath source = SplitItem(files, from, error::kAccessDenied);
  const PlaceByPath target = SplitItem(files, to, error::kExists);
  std::optional<FileEntry> top = files.Find(from);
  if (!top) {
    Fail(error::kNotFound, from);
  }
  // A server may answer with another one.
  top->name = source.name;
  const std::optional<FileEntry> existing = files.Find(to);
  RefuseSameOrInside(files, from, to, target.folder, *top, existing.has_value());
  CopyingTree tree(files, source.folder, target.folder);
  tree.RequireCopyable(*top, target.name);
  if (existing && !overwrite) {
    Fail(error::kExists, to);
  }
  const FileSystemCapabilities can = files.Capabilities();
  if (!can.identity && !can.temporaryNames && IsOwnFolder(*top)) {
    RefuseLinksAbove(files, target.folder);
  }
  CopyTree(tree, *std::move(top), target.name, overwrite, observer);
}

void RemoveTreeByPath(FileSystem& files, const QString& path, const ItemObserver& observer) {
  const PlaceByPath place = SplitItem(files, path, error::kAccessDenied);
  std::optional<FileEntry> top = files.Find(path);
  if (!top) {
    Fail(error::kNotFound, path);
  }
  top->name = place.name;
  RemovalTree tree(files, place.folder);
  RemoveTree(tree, *std::move(top), observer);
}

}  // namespace trevane

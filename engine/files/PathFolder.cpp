#include "engine/files/PathFolder.h"

#include "engine/files/ProviderError.h"
#include "engine/files/ProviderPath.h"

#include <QHash>

#include <algorithm>
#include <functional>
#include <utility>

namespace trevane {
namespace {

/// Below this many items a listing costs more than it saves.
constexpr qsizetype kFewestToList = 4;

/// Checks once more before content of several pieces is put in place, since much may have changed while they
/// were written. For a single piece the check when it was opened is enough.
class CheckedSink final : public ContentSink {
 public:
  CheckedSink(std::unique_ptr<ContentSink> sink, std::function<void()> check)
      : sink_(std::move(sink)), check_(std::move(check)) {}

  [[nodiscard]] std::optional<QString> TemporaryName() const override { return sink_->TemporaryName(); }
  void Write(const QByteArray& piece) override {
    ++pieces_;
    sink_->Write(piece);
  }
  [[nodiscard]] SeenItem Commit() override {
    if (pieces_ > 1) {
      check_();
    }
    return sink_->Commit();
  }

 private:
  std::unique_ptr<ContentSink> sink_;
  std::function<void()> check_;
  int pieces_ = 0;
};

}  // namespace

PathFolder::PathFolder(FileSystem& files, const QString& path) : files_(files), path_(path) {
  const std::vector<FileIdentity> upwards =
      HasIdentities() ? files_.FolderIdentities(path_) : std::vector<FileIdentity>();
  if (!upwards.empty()) {
    identity_ = upwards.front();
  }
}

PathFolder::PathFolder(const PathFolder& above, const QString& name, const SeenItem& seen)
    : files_(above.files_), path_(above.PathOf(name)), entered_(true) {
  if (HasIdentities()) {
    identity_ = seen.identity;
  }
}

bool PathFolder::HasIdentities() const {
  const FileSystemCapabilities capabilities = files_.Capabilities();
  return capabilities.identity && !capabilities.identityOfPath;
}

QString PathFolder::PathOf(const QString& name) const {
  return providerpath::Child(path_, name);
}

SeenItem PathFolder::RequireFolder(const QString& name) {
  std::optional<SeenItem> seen = Find(name);
  if (!seen) {
    Fail(error::kNotFound, PathOf(name));
  }
  if (HasIdentities()) {
    // Checked again, in case a link took the place of the folder before its identity was asked for.
    seen->entry = files_.Stat(PathOf(name));
  }
  if (!seen->entry.IsFolder() || seen->entry.IsLink()) {
    Fail(providererror::kNotAFolder, PathOf(name));
  }
  return *std::move(seen);
}

std::shared_ptr<HeldFolder> PathFolder::Enter(const QString& name) {
  return std::shared_ptr<HeldFolder>(new PathFolder(*this, name, RequireFolder(name)));
}

std::shared_ptr<HeldFolder> PathFolder::EnterSeen(const QString& name, const SeenItem& seen) {
  // Each change checks that it is still a folder.
  if (HasIdentities() || !seen.entry.IsFolder() || seen.entry.IsLink()) {
    return Enter(name);
  }
  return std::shared_ptr<HeldFolder>(new PathFolder(*this, name, seen));
}

void PathFolder::RequireInPlace() {
  if (!entered_) {
    const std::vector<FileIdentity> upwards =
        identity_ ? files_.FolderIdentities(path_) : std::vector<FileIdentity>();
    if (identity_ && (upwards.empty() || upwards.front() != *identity_)) {
      Fail(providererror::kChanged, path_);
    }
    return;
  }
  if (identity_) {
    if (files_.Identity(path_) != identity_) {
      Fail(providererror::kChanged, path_);
    }
    return;
  }
  const std::optional<FileEntry> entry = files_.Find(path_);
  if (!entry || !entry->IsFolder() || entry->IsLink()) {
    Fail(providererror::kChanged, path_);
  }
}

Listing PathFolder::List() {
  return files_.List(path_);
}

std::optional<SeenItem> PathFolder::Find(const QString& name) {
  const QString path = PathOf(name);
  std::optional<FileEntry> entry = files_.Find(path);
  if (!entry) {
    return std::nullopt;
  }
  SeenItem seen;
  seen.entry = *std::move(entry);
  if (files_.Capabilities().identity) {
    seen.identity = files_.Identity(path);
  }
  return seen;
}

std::unique_ptr<ContentSource> PathFolder::OpenSource(const QString& name, qint64 offset) {
  return files_.OpenSource(PathOf(name), offset);
}

std::unique_ptr<ContentSink> PathFolder::OpenSink(const QString& name, const SinkRequest& request,
                                                  const std::optional<SeenItem>& seen) {
  RequireInPlace();
  if (seen) {
    RequireSeen(name, *seen);
  }
  SinkRequest there = request;
  there.mode = seen ? SinkRequest::Mode::Replace : SinkRequest::Mode::New;
  // GCC 12 warns of a copy of the optional item itself.
  const auto expected = seen ? std::make_shared<const SeenItem>(*seen) : nullptr;
  const auto check = [this, name, expected] {
    RequireInPlace();
    if (expected) {
      RequireSeen(name, *expected);
    }
  };
  return std::make_unique<CheckedSink>(files_.OpenSink(PathOf(name), there), check);
}

std::vector<ReadResult> PathFolder::ReadMany(const QStringList& names) {
  QStringList paths;
  for (const QString& name : names) {
    paths.append(PathOf(name));
  }
  return files_.ReadMany(paths);
}

QHash<QString, FileEntry> PathFolder::LookAtReplaced(const std::vector<NewContent>& files) {
  QStringList names;
  for (const NewContent& file : files) {
    if (file.request.mode == SinkRequest::Mode::Replace) {
      names.append(file.name);
    }
  }
  QHash<QString, FileEntry> there;
  if (names.size() >= kFewestToList) {
    for (const FileEntry& entry : files_.List(path_)) {
      there.insert(entry.name, entry);
    }
  }
  for (const QString& name : names) {
    // A file may be listed under another spelling.
    if (!there.contains(name)) {
      if (const std::optional<FileEntry> entry = files_.Find(PathOf(name))) {
        there.insert(name, *entry);
      }
    }
  }
  return there;
}

std::vector<WriteResult> PathFolder::WriteMany(const std::vector<NewContent>& files) {
  const bool replaces = std::ranges::any_of(
      files, [](const NewContent& file) { return file.request.mode == SinkRequest::Mode::Replace; });
  if (replaces && HasIdentities()) {
    // Each file is known by more than its path, and is looked at right before it is replaced.
    return HeldFolder::WriteMany(files);
  }
  const QHash<QString, FileEntry> replaced = LookAtReplaced(files);
  RequireInPlace();
  std::vector<WriteResult> results(files.size());
  std::vector<NewContent> there;
  std::vector<size_t> places;
  for (size_t i = 0; i < files.size(); ++i) {
    const NewContent& file = files[i];
    const auto old = replaced.constFind(file.name);
    const bool isThere = file.request.mode == SinkRequest::Mode::Replace && old != replaced.cend();
    try {
      if (isThere) {
        RequireReplaceable(*old, PathOf(file.name));
      }
    } catch (const RunTimeError& failure) {
      results[i].failure = failure;
      continue;
    }
    there.push_back({PathOf(file.name), file.content, file.request});
    there.back().request.mode = isThere ? SinkRequest::Mode::Replace : SinkRequest::Mode::New;
    places.push_back(i);
  }
  std::vector<WriteResult> written = there.empty() ? std::vector<WriteResult>() : files_.WriteMany(there);
  for (size_t i = 0; i < places.size() && i < written.size(); ++i) {
    results[places[i]] = std::move(written[i]);
  }
  const bool hasWritten =
      std::ranges::any_of(results, [](const WriteResult& result) { return result.item.has_value(); });
  if (!HasIdentities() || !hasWritten) {
    // Nothing but its kind can be asked for: one look at the end serves many batches.
    return results;
  }
  try {
    // A link that took the folder's place meanwhile may have led the content elsewhere: none counts as
    // arrived.
    RequireInPlace();
  } catch (const RunTimeError& failure) {
    for (WriteResult& result : results) {
      if (result.item) {
        result = {std::nullopt, failure};
      }
    }
  }
  return results;
}

std::optional<QString> PathFolder::ReadLink(const QString& name) {
  return files_.ReadLink(PathOf(name));
}

void PathFolder::CreateLink(const QString& name, const QString& target) {
  RequireInPlace();
  files_.CreateLink(PathOf(name), target);
}

void PathFolder::ListInBatches(const ListingReceiver& receive) {
  files_.ListInBatches(path_, receive);
}

FileTraits PathFolder::Traits(const QString& name) {
  return files_.Traits(PathOf(name));
}

void PathFolder::SetTraits(const QString& name, const FileTraits& traits) {
  RequireInPlace();
  files_.SetTraits(PathOf(name), traits);
}

void PathFolder::RequireSeen(const QString& name, const SeenItem& seen) {
  const std::optional<SeenItem> now = Find(name);
  // Writing follows links.
  const bool isThat = now && now->identity == seen.identity && !now->entry.IsLink() && !now->entry.IsFolder();
  if (!isThat) {
    Fail(providererror::kChanged, PathOf(name));
  }
}

void PathFolder::CreateFolder(const QString& name, bool closed) {
  RequireInPlace();
  if (closed) {
    files_.CreateClosedFolder(PathOf(name));
  } else {
    files_.CreateFolder(PathOf(name));
  }
}

void PathFolder::RemoveAlone(const QString& name, const SeenItem& seen) {
  RequireInPlace();
  const std::optional<SeenItem> now = Find(name);
  if (!now) {
    Fail(error::kNotFound, PathOf(name));
  }
  SeenItem before = seen;
  if (!HasIdentities()) {
    // An item that was listed has none, and that of a path tells nothing but the path.
    before.identity = now->identity;
  }
  if (!before.IsStill(*now, files_.Capabilities().dateStep)) {
    Fail(providererror::kChanged, PathOf(name));
  }
  files_.RemoveAlone(PathOf(name));
}

void PathFolder::RemoveMany(const std::vector<SeenItem>& items) {
  if (HasIdentities() || items.size() < static_cast<size_t>(kFewestToList)) {
    HeldFolder::RemoveMany(items);
    return;
  }
  RequireInPlace();
  QHash<QString, FileEntry> there;
  for (const FileEntry& entry : files_.List(path_)) {
    there.insert(entry.name, entry);
  }
  const qint64 dateStep = files_.Capabilities().dateStep;
  for (const SeenItem& item : items) {
    const QString& name = item.entry.name;
    const auto now = there.constFind(name);
    if (now == there.cend()) {
      Fail(error::kNotFound, PathOf(name));
    }
    SeenItem seen = item;
    seen.identity.reset();
    if (!seen.IsStill({*now, std::nullopt}, dateStep)) {
      Fail(providererror::kChanged, PathOf(name));
    }
    files_.RemoveAlone(PathOf(name));
  }
}

void PathFolder::Flush(const QString& name) {
  files_.Flush(PathOf(name));
}

}  // namespace trevane

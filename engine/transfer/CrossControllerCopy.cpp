#include "engine/transfer/CrossControllerCopy.h"

#include "base/LowerCase.h"
#include "base/RunTimeError.h"
#include "engine/model/ItemName.h"
#include "engine/transfer/CopiedLink.h"
#include "engine/transfer/FileTransfer.h"
#include "engine/transfer/FolderBatch.h"
#include "engine/transfer/HeldItem.h"
#include "engine/transfer/OpenedObjects.h"
#include "engine/transfer/TransferSteps.h"
#include "prompts/ItemQuestions.h"
#include "views/addresses/NodeTags.h"

#include <QHash>
#include <QSet>

#include <algorithm>
#include <optional>
#include <utility>

namespace trevane {

namespace {

bool IsFolder(qint32 attributes) {
  return (attributes & attribute::kFolder) != 0;
}
bool IsLink(qint32 attributes) {
  return (attributes & attribute::kLink) != 0;
}

/// Sets the traits of a new folder after it was filled, because they may forbid writing into it. They are set
/// also when the copy ends early.
class NewFolderTraits {
 public:
  NewFolderTraits() = default;
  ~NewFolderTraits() {
    try {
      Apply();
    } catch (const std::exception&) {
      // The folder stays closed; the failure that ends the copy is reported.
    }
  }
  NewFolderTraits(const NewFolderTraits&) = delete;
  NewFolderTraits& operator=(const NewFolderTraits&) = delete;

  void Await(const std::shared_ptr<IxoFile>& folder, const FileTraits& traits) {
    folder_ = folder;
    traits_ = traits;
  }
  void Apply() {
    if (const auto folder = std::exchange(folder_, nullptr)) {
      folder->SetTraits(traits_);
    }
  }

 private:
  std::shared_ptr<IxoFile> folder_;
  FileTraits traits_;
};

}  // namespace

/// A folder that is copied.
struct CrossControllerCopy::Level {
  Level(std::shared_ptr<IxoFile> from, std::shared_ptr<IxoFile> to, OpenedObjects&& objects)
      : opened(std::move(objects)), source(from), target(to), batch(std::move(from), std::move(to)) {}

  /// Released after all else.
  OpenedObjects opened;
  std::shared_ptr<IxoFile> source;
  std::shared_ptr<IxoFile> target;
  NewFolderTraits traits;
  Listing entries;
  size_t next = 0;
  FolderBatch batch;
  ArrivalCheck arrivals;
  /// In lower case: names that are there, or were copied here. One of them can be a clash.
  QSet<QString> taken;
  /// As ItemProgress::folder.
  QString path;
  /// The number of questions before its listings.
  int questions = 0;
};

CrossControllerCopy::CrossControllerCopy(UserPrompts& prompts, ItemObserver observer)
    : prompts_(prompts), observer_(std::move(observer)) {}

CrossControllerCopy::~CrossControllerCopy() = default;

void CrossControllerCopy::Run(const std::shared_ptr<IxoFile>& source, const std::shared_ptr<IxoFile>& folder,
                              const QString& name, const FolderFinder& sourceFolder) {
  outcome_ = Arrival::Failed;
  arrived_ = 0;
  leftOut_.clear();
  answer_ = ItemAnswer::Yes;
  questions_ = 0;
  files_ = 0;
  filesKnown_ = 0;
  sourceFolder_ = sourceFolder;
  RequireItemName(name);
  if (IsFolder(source->Attribute()) && !IsLink(source->Attribute()) && !folder->CanHoldFolders()) {
    throw RunTimeError(error::kNotSupported,
                       QStringLiteral("No folders can be made on this controller: %1").arg(name));
  }
  overlap_.Begin(*source, *folder);
  needsProof_ = !PlaceProbe::AreToldApart(*source, *folder);
  if (needsProof_ && IsFolder(source->Attribute()) && !IsLink(source->Attribute())) {
    PlaceProbe::RequireNames(*folder, name);
  }
  const HeldItem from(source);
  const HeldItem into(folder);
  outcome_ = Arrival::Everything;
  const auto end = [this] {
    probe_.TakeAway();
    while (!levels_.empty()) {
      levels_.pop_back();
    }
  };
  try {
    CopyItem(source, folder, name, OpenedObjects());
    CopyBelow();
    end();
  } catch (const RunTimeError& failure) {
    end();
    if (failure.Number() == error::kCancelled) {
      outcome_ = Arrival::Cancelled;
      return;
    }
    outcome_ = Arrival::Failed;
    throw;
  } catch (...) {
    end();
    outcome_ = Arrival::Failed;
    throw;
  }
}

void CrossControllerCopy::Skip(Arrival how) {
  if (outcome_ != Arrival::Cancelled) {
    outcome_ = how;
  }
}

void CrossControllerCopy::LeaveOut(const QString& name, const QString& reason) {
  leftOut_.push_back({name, reason});
  Skip(Arrival::Skipped);
}

bool CrossControllerCopy::MayGoOn(const QString& name, qint64 bytes, qint64 size) {
  return !observer_ || observer_({.name = name,
                                  .folder = levels_.empty() ? QString() : levels_.back()->path,
                                  .bytes = bytes,
                                  .size = size,
                                  .files = levels_.empty() ? -1 : files_,
                                  .filesKnown = levels_.empty() ? -1 : filesKnown_});
}

void CrossControllerCopy::CopyItem(const std::shared_ptr<IxoFile>& source,
                                   const std::shared_ptr<IxoFile>& folder, const QString& name,
                                   OpenedObjects&& opened) {
  const qint32 attributes = source->Attribute();
  if (IsLink(attributes)) {
    const auto depth = static_cast<qsizetype>(levels_.size()) - 1;
    if (const auto reason = CopyLink(*source, folder, name, depth)) {
      LeaveOut(name, *reason);
    } else {
      ++arrived_;
      ++files_;
    }
    return;
  }
  const bool isFolder = IsFolder(attributes);
  if (isFolder) {
    overlap_.RefuseDestination(*source, name);
  }
  auto existing = FindChild(*folder, name);
  if (existing) {
    opened.Remember(folder, existing);
    OverlapGuard::RefuseSame(*source, *existing, name);
    if (answer_ != ItemAnswer::YesAll) {
      answer_ = AskOverwrite(prompts_, name);
      ++questions_;
      source->ForgetLearnt();
      folder->ForgetLearnt();
      if (answer_ == ItemAnswer::No || answer_ == ItemAnswer::Cancel) {
        Skip(answer_ == ItemAnswer::Cancel ? Arrival::Cancelled : Arrival::Skipped);
        return;
      }
      // Another program may have replaced it while the question was open.
      existing = FindChild(*folder, name);
    }
  }
  if (existing) {
    opened.Remember(folder, existing);
    OverlapGuard::RefuseSame(*source, *existing, name);
    RequireSameKind(*existing, isFolder, name);
  }
  if (isFolder) {
    EnterFolder(source, existing, folder, name, std::move(opened));
    return;
  }
  CopyFile(*source, existing, folder, name, opened);
  ++arrived_;
  ++files_;
}

bool CrossControllerCopy::CopyNewFolder(const std::shared_ptr<IxoFile>& source,
                                        const std::shared_ptr<IxoFile>& folder, const QString& name,
                                        OpenedObjects& opened) {
  const qint32 attributes = source->Attribute();
  if (!IsFolder(attributes) || IsLink(attributes)) {
    return false;
  }
  overlap_.RefuseDestination(*source, name);
  const FileTraits traits = source->Traits();
  std::shared_ptr<IxoFile> made;
  try {
    made = folder->MakeFolder(name, traits.permissions.has_value());
  } catch (const RunTimeError& failure) {
    if (failure.Number() != error::kExists) {
      throw NotCreated(failure);
    }
  }
  if (!made) {
    return false;
  }
  opened.Remember(folder, made);
  RequireSameKind(*made, true, name);
  FillFolder(source, made, name, std::move(opened), traits);
  return true;
}

void CrossControllerCopy::CopyFile(IxoFile& source, const std::shared_ptr<IxoFile>& existing,
                                   const std::shared_ptr<IxoFile>& folder, const QString& name,
                                   OpenedObjects& opened) {
  FileTransfer transfer(source, name,
                        [this, &name](qint64 bytes, qint64 size) { return MayGoOn(name, bytes, size); });
  if (!existing) {
    const auto created = CreateNewFile(*folder, name);
    opened.Remember(folder, created);
    NoteArrived(transfer.CopyTo(*created, *folder));
    return;
  }
  FileTransfer::PlaceCheck check;
  // Within a folder the probe has shown it.
  if (needsProof_ && levels_.empty()) {
    check = [&](const std::optional<QString>& temporaryName) {
      const auto from = sourceFolder_ ? sourceFolder_() : nullptr;
      if (!from) {
        throw RunTimeError(
            error::kNotSupported,
            QStringLiteral("Nothing shows that both controllers are different places: %1").arg(name));
      }
      if (!temporaryName) {
        probe_.Place(folder, name);
      }
      if (temporaryName ? PlaceProbe::Holds(*from, *temporaryName) : probe_.IsIn(*from)) {
        throw PlaceProbe::OnePlace(name);
      }
      probe_.TakeAway();
    };
  }
  NoteArrived(transfer.Replace(*existing, *folder, check));
}

void CrossControllerCopy::EnterFolder(const std::shared_ptr<IxoFile>& source,
                                      const std::shared_ptr<IxoFile>& existing,
                                      const std::shared_ptr<IxoFile>& folder, const QString& name,
                                      OpenedObjects&& opened) {
  auto target = existing;
  std::optional<FileTraits> traits;
  bool wasSeen = existing != nullptr;
  if (!target) {
    traits = source->Traits();
    target = CreateNewFolder(*folder, name, traits->permissions.has_value(), wasSeen);
    opened.Remember(folder, target);
  }
  if (wasSeen) {
    RequireSameKind(*target, true, name);
  } else {
    // Nothing below an empty folder would show that it was not created.
    const auto seen = FindChild(*folder, name);
    if (!seen) {
      throw RunTimeError(-1, QStringLiteral("The folder was not created: %1").arg(name));
    }
    if (seen != target) {
      opened.Remember(folder, seen);
    }
    RequireSameKind(*seen, true, name);
  }
  FillFolder(source, target, name, std::move(opened), traits);
}

void CrossControllerCopy::FillFolder(const std::shared_ptr<IxoFile>& source,
                                     const std::shared_ptr<IxoFile>& target, const QString& name,
                                     OpenedObjects&& opened, const std::optional<FileTraits>& traits) {
  auto level = std::make_unique<Level>(source, target, std::move(opened));
  level->path = levels_.empty() ? name : levels_.back()->path + u'\\' + name;
  level->questions = questions_;
  if (traits && (traits->permissions || traits->marks || traits->created.IsPresent())) {
    level->traits.Await(target, *traits);
  }
  const bool isNew = traits.has_value();
  overlap_.AddFilled(*target);
  ++arrived_;
  if (needsProof_ && levels_.empty()) {
    try {
      probe_.Place(target);
    } catch (...) {
      RemoveIfNew(target, isNew);
      throw;
    }
  }
  levels_.push_back(std::move(level));
  ReadFolder(*levels_.back(), isNew);
}

void CrossControllerCopy::ReadFolder(Level& level, bool isNew) {
  if (!isNew) {
    for (const FileEntry& entry : level.target->List()) {
      level.taken.insert(LowerCase(entry.name));
    }
  }
  level.entries = level.source->List();
  if (probe_.IsPlaced() && probe_.IsIn(level.entries)) {
    probe_.TakeAway();
    RemoveIfNew(levels_.front()->target, levels_.size() == 1 && isNew);
    throw PlaceProbe::OnePlace(level.path);
  }
  filesKnown_ += std::ranges::count_if(
      level.entries, [](const FileEntry& entry) { return !entry.IsFolder() || entry.IsLink(); });
  for (const QString& name : level.source->RefusedNames()) {
    LeaveOut(name, QStringLiteral("The name is not valid"));
  }
}

void CrossControllerCopy::RemoveIfNew(const std::shared_ptr<IxoFile>& folder, bool isNew) noexcept {
  if (!isNew) {
    return;
  }
  try {
    folder->DeleteAlone();
    --arrived_;
  } catch (const std::exception&) {
    // It is not empty, or stays as an empty folder; the refusal is reported.
  }
}

void CrossControllerCopy::CopyBelow() {
  while (!levels_.empty()) {
    Level& level = *levels_.back();
    if (outcome_ == Arrival::Cancelled) {
      return;
    }
    if (level.next == level.entries.size()) {
      FinishBatch(level);
      RequireArrived(level);
      level.traits.Apply();
      levels_.pop_back();
      continue;
    }
    // What was asked for is looked at anew by itself: only a file that can go in a batch needs it.
    if (level.questions != questions_ && FolderBatch::CanHold(level.entries[level.next]) &&
        !level.taken.contains(LowerCase(level.entries[level.next].name))) {
      RefreshEntries(level);
      if (level.next == level.entries.size()) {
        continue;
      }
    }
    // The level may be joined by one below, which may not move the entry.
    const FileEntry entry = level.entries[level.next++];
    if (!MayGoOn(entry.name, 0, entry.size)) {
      FinishBatch(level);
      Skip(Arrival::Cancelled);
      return;
    }
    CopyEntry(level, entry);
  }
}

void CrossControllerCopy::CopyEntry(Level& level, const FileEntry& entry) {
  RequireItemName(entry.name);
  const bool isFresh = level.questions == questions_;
  if (isFresh && Gather(level, entry)) {
    return;
  }
  FinishBatch(level);
  const QString key = LowerCase(entry.name);
  const bool isNew = isFresh && !level.taken.contains(key);
  level.taken.insert(key);
  OpenedObjects opened;
  const bool isFolder = entry.IsFolder() && !entry.IsLink();
  const auto child =
      isFresh && isFolder ? level.source->OpenListed(entry) : level.source->OpenFile(entry.name, QString());
  if (!child) {
    throw ItemNotFound(entry.name);
  }
  opened.Remember(level.source, child);
  if (!isFolder || !isNew || !CopyNewFolder(child, level.target, entry.name, opened)) {
    CopyItem(child, level.target, entry.name, std::move(opened));
  }
}

bool CrossControllerCopy::Gather(Level& level, const FileEntry& entry) {
  const QString key = LowerCase(entry.name);
  if (!FolderBatch::CanHold(entry) || level.taken.contains(key)) {
    return false;
  }
  if (!level.batch.HasRoomFor(entry)) {
    FinishBatch(level);
  }
  level.taken.insert(key);
  level.batch.Add(entry, entry.name);
  return true;
}

void CrossControllerCopy::FinishBatch(Level& level) {
  if (level.batch.IsEmpty()) {
    return;
  }
  const FolderBatch::Result result = level.batch.Finish();
  for (const ArrivedFile& file : result.files) {
    level.arrivals.Add(file);
  }
  const auto arrived = std::ranges::count(result.arrived, true);
  arrived_ += arrived;
  files_ += arrived;
  if (result.failure) {
    throw *result.failure;
  }
}

void CrossControllerCopy::NoteArrived(const ArrivedFile& file) {
  // A single file is known by the answer to its last piece alone.
  if (!levels_.empty()) {
    levels_.back()->arrivals.Add(file);
  }
}

void CrossControllerCopy::RequireArrived(Level& level) {
  if (level.arrivals.IsEmpty() || (isCompared_ && outcome_ == Arrival::Everything)) {
    return;
  }
  RequireInPlace(*level.target);
  const auto failures = level.arrivals.List(level.target);
  if (!failures.empty()) {
    const auto count = static_cast<qint64>(failures.size());
    arrived_ -= count;
    files_ -= count;
    throw failures.front().error;
  }
}

void CrossControllerCopy::RefreshEntries(Level& level) {
  level.questions = questions_;
  QHash<QString, FileEntry> now;
  for (const FileEntry& entry : level.source->List()) {
    now.insert(entry.name, entry);
  }
  for (size_t i = level.next; i < level.entries.size(); ++i) {
    const auto there = now.constFind(level.entries[i].name);
    // One that has vanished fails when it is reached: those before it arrive.
    if (there != now.cend()) {
      level.entries[i] = *there;
    }
  }
  for (const FileEntry& entry : level.target->List()) {
    level.taken.insert(LowerCase(entry.name));
  }
}

}  // namespace trevane

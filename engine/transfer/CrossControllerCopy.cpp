#include "engine/transfer/CrossControllerCopy.h"

#include "base/LowerCase.h"
#include "base/RunTimeError.h"
#include "engine/model/ItemName.h"
#include "engine/transfer/CopiedLink.h"
#include "engine/transfer/FileTransfer.h"
#include "engine/transfer/FolderBatch.h"
#include "engine/transfer/HeldItem.h"
#include "engine/transfer/NewFolderTraits.h"
#include "engine/transfer/OpenedObjects.h"
#include "engine/transfer/TransferSteps.h"
#include "prompts/ItemQuestions.h"
#include "views/addresses/NodeTags.h"

#include <QHash>
#include <QSet>

#include <algorithm>
#include <deque>
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
  struct LeftFile {
    FileEntry entry;
    bool goesAlone;
  };
  /// Files that batches have left: they come before the other entries.
  std::deque<LeftFile> left;
  ArrivalCheck arrivals;
  /// In lower case: names that are there, or were copied here. One of them can be a clash.
  QSet<QString> taken;
  /// What was there when the target was listed, by name. Only items whose name no other one has in another
  /// case, and that nothing was copied onto.
  QHash<QString, FileEntry> there;
  /// As ItemProgress::folder.
  QString path;
  /// This copy has made it.
  bool isNew = false;
  /// The number of questions before its listings.
  int questions = 0;

  [[nodiscard]] bool HasNext() const { return !left.empty() || next < entries.size(); }
  [[nodiscard]] const FileEntry& Next() const { return left.empty() ? entries[next] : left.front().entry; }
  [[nodiscard]] bool NextGoesAlone() const { return !left.empty() && left.front().goesAlone; }
  void TakeNext() {
    if (left.empty()) {
      ++next;
    } else {
      left.pop_front();
    }
  }
};

CrossControllerCopy::CrossControllerCopy(UserPrompts& prompts, ItemObserver observer)
    : prompts_(prompts), observer_(std::move(observer)) {}

CrossControllerCopy::~CrossControllerCopy() = default;

void CrossControllerCopy::Run(const std::shared_ptr<IxoFile>& source, const std::shared_ptr<IxoFile>& folder,
                              const QString& name, const FolderFinder& sourceFolder) {
  outcome_ = Arrival::Failed;
  arrived_ = 0;
  leftOut_.clear();
  made_.Forget();
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
    if (needsProof_ && IsFolder(source->Attribute()) && !IsLink(source->Attribute())) {
      RefuseHintedFolder(source, folder, name);
    }
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

void CrossControllerCopy::LeaveOut(const QString& name, const QString& reason, bool isCopied) {
  leftOut_.push_back({name, reason, isCopied});
  Skip(Arrival::Skipped);
}

bool CrossControllerCopy::MayGoOn(const QString& name, qint64 bytes, qint64 size, qint64 filesOfBatch) {
  return !observer_ || observer_({.name = name,
                                  .folder = levels_.empty() ? QString() : levels_.back()->path,
                                  .bytes = bytes,
                                  .size = size,
                                  .files = levels_.empty() ? -1 : files_ + filesOfBatch,
                                  .filesKnown = levels_.empty() ? -1 : filesKnown_});
}

void CrossControllerCopy::CopyItem(const std::shared_ptr<IxoFile>& source,
                                   const std::shared_ptr<IxoFile>& folder, const QString& name,
                                   OpenedObjects&& opened, bool wasTaken) {
  const qint32 attributes = source->Attribute();
  if (IsLink(attributes)) {
    CopyLinkItem(*source, folder, name);
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
    RefuseHinted(*source, *existing, folder, name);
    if (answer_ != ItemAnswer::YesAll) {
      if (!MayReplace(*source, *folder, name)) {
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
  bool isTaken = false;
  try {
    CopyFile(*source, existing, folder, name, opened);
  } catch (const RunTimeError& failure) {
    isTaken = !existing && !wasTaken && failure.Number() == error::kExists;
    if (!isTaken) {
      throw;
    }
  }
  if (isTaken) {
    // As for a file of a batch: what has its name now is asked for.
    source->ForgetLearnt();
    folder->ForgetLearnt();
    CopyItem(source, folder, name, std::move(opened), true);
    return;
  }
  ++arrived_;
  ++files_;
}

bool CrossControllerCopy::MayReplace(IxoFile& source, IxoFile& folder, const QString& name) {
  answer_ = AskOverwrite(prompts_, name);
  ++questions_;
  source.ForgetLearnt();
  folder.ForgetLearnt();
  if (answer_ == ItemAnswer::No || answer_ == ItemAnswer::Cancel) {
    Skip(answer_ == ItemAnswer::Cancel ? Arrival::Cancelled : Arrival::Skipped);
    return false;
  }
  return true;
}

void CrossControllerCopy::CopyLinkItem(IxoFile& source, const std::shared_ptr<IxoFile>& folder,
                                       const QString& name) {
  LinkCopy copy(source, folder, name, static_cast<qsizetype>(levels_.size()) - 1);
  LinkCopy::Outcome outcome = copy.Make();
  if (outcome == LinkCopy::Outcome::OtherLink) {
    if (answer_ != ItemAnswer::YesAll && !MayReplace(source, *folder, name)) {
      return;
    }
    outcome = copy.Replace();
  }
  if (copy.IsNew() && needsProof_ && !levels_.empty()) {
    made_.AddLink(FolderBelowTop(), name, copy.Text());
  }
  if (outcome != LinkCopy::Outcome::Made) {
    LeaveOut(name, copy.Reason());
    return;
  }
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
    const ArrivedFile file = transfer.CopyTo(*created, *folder);
    NoteArrived(file);
    TellWrongSize(file);
    return;
  }
  FileTransfer::PlaceCheck check;
  bool nothingShows = false;
  // Within a folder the probe has shown it.
  if (needsProof_ && levels_.empty()) {
    check = [&](const std::optional<QString>& temporaryName) {
      QString reason = name;
      const auto from = SourceFolder(reason);
      if (!temporaryName) {
        RequireApart(folder, from, name, reason);
        return;
      }
      const std::optional<bool> isOnePlace = from ? IsIn(*from, temporaryName, reason) : std::nullopt;
      if (isOnePlace.value_or(false)) {
        throw PlaceProbe::OnePlace(name);
      }
      // Were it one place, the file would get its own content.
      nothingShows = !isOnePlace;
    };
  }
  const ArrivedFile file = transfer.Replace(*existing, *folder, check);
  NoteArrived(file);
  TellWrongSize(file);
  if (nothingShows && isCompared_) {
    LeaveOut(name,
             QStringLiteral("It was copied, and its source kept, because nothing shows that both controllers "
                            "are different places"),
             true);
  }
}

void CrossControllerCopy::TellWrongSize(const ArrivedFile& file) {
  if (file.hadWrongSize) {
    LeaveOut(file.name,
             QStringLiteral("It has %1 bytes, and its controller tells another size").arg(file.size), true);
    leftOut_.back().hadWrongSize = true;
  }
}

void CrossControllerCopy::RefuseHintedFolder(const std::shared_ptr<IxoFile>& source,
                                             const std::shared_ptr<IxoFile>& folder, const QString& name) {
  const std::optional<QStringList> way = OverlapGuard::HintedWay(*source, *folder);
  if (!way) {
    return;
  }
  OpenedObjects opened;
  auto at = source;
  for (const QString& step : *way) {
    const auto below = FindChild(*at, step);
    if (below) {
      opened.Remember(at, below);
    }
    if (!below || !IsFolder(below->Attribute()) || IsLink(below->Attribute())) {
      // The destination is there.
      return;
    }
    at = below;
  }
  RequireApart(folder, at, name, name);
}

void CrossControllerCopy::RefuseHinted(IxoFile& source, IxoFile& existing,
                                       const std::shared_ptr<IxoFile>& folder, const QString& name) {
  // Within a folder the probe shows it.
  if (!needsProof_ || !levels_.empty()) {
    return;
  }
  const auto identity = source.Identity();
  if (!identity || existing.Identity() != identity) {
    return;
  }
  QString reason = name;
  const auto from = SourceFolder(reason);
  RequireApart(folder, from, name, reason);
}

void CrossControllerCopy::RequireApart(const std::shared_ptr<IxoFile>& folder,
                                       const std::shared_ptr<IxoFile>& from, const QString& name,
                                       QString reason) {
  if (!from) {
    throw PlaceProbe::NothingShows(reason);
  }
  probe_.Place(folder, name);
  const std::optional<bool> isOnePlace = IsIn(*from, std::nullopt, reason);
  probe_.TakeAway();
  if (!isOnePlace) {
    throw PlaceProbe::NothingShows(reason);
  }
  if (*isOnePlace) {
    throw PlaceProbe::OnePlace(name);
  }
}

std::shared_ptr<IxoFile> CrossControllerCopy::SourceFolder(QString& reason) const {
  try {
    return sourceFolder_ ? sourceFolder_() : nullptr;
  } catch (const RunTimeError& failure) {
    if (EndsCalls(failure)) {
      throw;
    }
    reason = failure.Description();
    return nullptr;
  }
}

std::optional<bool> CrossControllerCopy::IsIn(IxoFile& folder, const std::optional<QString>& name,
                                              QString& reason) const {
  try {
    return name ? PlaceProbe::Holds(folder, *name) : probe_.IsIn(folder);
  } catch (const RunTimeError& failure) {
    if (EndsCalls(failure)) {
      throw;
    }
    reason = failure.Description();
    return std::nullopt;
  }
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
  if (traits && target->KeepsTraits()) {
    FileTraits kept = *traits;
    if (!kept.modified.IsPresent()) {
      kept.modified = DateIn(source->DateLastModified());
    }
    level->traits.Await(target, kept);
  }
  const bool isNew = traits.has_value();
  level->isNew = isNew;
  if (needsProof_ && isNew && !levels_.empty()) {
    made_.AddFolder(FolderBelowTop(), name);
  }
  overlap_.AddFilled(*target);
  ++arrived_;
  levels_.push_back(std::move(level));
  if (needsProof_ && levels_.size() == 1 && isNew) {
    // A new folder is not the source: at most it stands in it, and a listing from now on shows that.
    source->ForgetLearnt();
  } else if (needsProof_ && !probe_.IsPlaced()) {
    PlaceInTop();
  }
  ReadFolder(*levels_.back(), isNew);
}

void CrossControllerCopy::PlaceInTop() {
  const Level& top = *levels_.front();
  try {
    probe_.Place(top.target);
    // What was listed before has no probe.
    top.source->ForgetLearnt();
  } catch (...) {
    TakeBackMade();
    throw;
  }
}

void CrossControllerCopy::ReadFolder(Level& level, bool isNew) {
  if (!isNew) {
    LearnTarget(level);
  }
  level.entries = level.source->List();
  const bool mayLeadThere = std::ranges::any_of(
      level.entries, [](const FileEntry& entry) { return entry.IsFolder() && !entry.IsLink(); });
  if (needsProof_ && mayLeadThere && !probe_.IsPlaced()) {
    PlaceInTop();
  }
  if (probe_.IsPlaced() && probe_.IsIn(level.entries)) {
    const QString path = level.path;
    probe_.TakeAway();
    TakeBackMade();
    throw PlaceProbe::OnePlace(path);
  }
  filesKnown_ += std::ranges::count_if(
      level.entries, [](const FileEntry& entry) { return !entry.IsFolder() || entry.IsLink(); });
  for (const QString& name : level.source->RefusedNames()) {
    LeaveOut(name, QStringLiteral("The name is not valid"));
  }
}

QString CrossControllerCopy::FolderBelowTop() const {
  const QString& path = levels_.back()->path;
  const qsizetype top = levels_.front()->path.size();
  return path.mid(top + 1);
}

void CrossControllerCopy::TakeBackMade() noexcept {
  for (const auto& level : levels_) {
    level->traits.Forget();
  }
  while (levels_.size() > 1) {
    levels_.pop_back();
  }
  const auto top = levels_.front()->target;
  arrived_ -= made_.TakeBack(top);
  RemoveIfNew(top, levels_.front()->isNew);
}

void CrossControllerCopy::LearnTarget(Level& level) {
  QSet<QString> keys;
  level.there.clear();
  for (const FileEntry& entry : level.target->List()) {
    const QString key = LowerCase(entry.name);
    level.taken.insert(key);
    if (keys.contains(key)) {
      level.there.removeIf([&key](const auto& other) { return LowerCase(other.key()) == key; });
      continue;
    }
    keys.insert(key);
    level.there.insert(entry.name, entry);
  }
}

void CrossControllerCopy::RemoveIfNew(const std::shared_ptr<IxoFile>& folder, bool isNew) noexcept {
  if (!isNew || folder->HasLostLine()) {
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
    if (!level.HasNext()) {
      if (!FinishBatch(level)) {
        continue;
      }
      RequireArrived(level);
      if (levels_.size() == 1) {
        // All folders of the source were listed, and nothing may change the folder after it got its date.
        probe_.TakeAway();
      }
      level.traits.Apply();
      levels_.pop_back();
      continue;
    }
    // What was asked for is looked at anew by itself: only a file that can go in a batch needs it.
    if (level.questions != questions_ && !level.NextGoesAlone() && FolderBatch::CanHold(level.Next()) &&
        (answer_ == ItemAnswer::YesAll || !level.taken.contains(LowerCase(level.Next().name)))) {
      RefreshEntries(level);
    }
    // The level may be joined by one below, which may not move the entry.
    const FileEntry entry = level.Next();
    if (!MayGoOn(entry.name, 0, entry.size)) {
      static_cast<void>(FinishBatch(level));
      Skip(Arrival::Cancelled);
      return;
    }
    CopyNext(level, entry);
  }
}

void CrossControllerCopy::CopyNext(Level& level, const FileEntry& entry) {
  RequireItemName(entry.name);
  const bool isFresh = level.questions == questions_ && !level.NextGoesAlone();
  switch (isFresh ? Gather(level, entry) : Gathering::GoesAlone) {
    case Gathering::Gathered:
      level.TakeNext();
      return;
    case Gathering::Later:
      return;
    case Gathering::GoesAlone:
      break;
  }
  if (!FinishBatch(level)) {
    return;
  }
  level.TakeNext();
  const QString key = LowerCase(entry.name);
  const bool isNew = isFresh && !level.taken.contains(key);
  if (!isFresh || !isNew || !entry.IsFolder() || entry.IsLink()) {
    CopyAlone(level, entry);
    return;
  }
  level.taken.insert(key);
  OpenedObjects opened;
  const auto child = level.source->OpenListed(entry);
  if (!child) {
    throw ItemNotFound(entry.name);
  }
  opened.Remember(level.source, child);
  if (!CopyNewFolder(child, level.target, entry.name, opened)) {
    CopyItem(child, level.target, entry.name, std::move(opened));
  }
}

void CrossControllerCopy::CopyAlone(Level& level, const FileEntry& entry) {
  level.taken.insert(LowerCase(entry.name));
  level.there.remove(entry.name);
  OpenedObjects opened;
  const bool isKnown = level.questions == questions_ && entry.IsFolder() && !entry.IsLink();
  const auto child =
      isKnown ? level.source->OpenListed(entry) : level.source->OpenFile(entry.name, QString());
  if (!child) {
    throw ItemNotFound(entry.name);
  }
  opened.Remember(level.source, child);
  CopyItem(child, level.target, entry.name, std::move(opened));
}

bool CrossControllerCopy::IsSameFile(Level& level, const QString& name) {
  if (level.source->ListingTellsAll() || level.target->ListingTellsAll()) {
    // Paths tell folders apart, and these two are different ones.
    return false;
  }
  OpenedObjects opened;
  const auto source = FindChild(*level.source, name);
  if (source) {
    opened.Remember(level.source, source);
  }
  const auto existing = FindChild(*level.target, name);
  if (existing) {
    opened.Remember(level.target, existing);
  }
  const auto identity = source ? source->Identity() : std::nullopt;
  return identity && existing && existing->Identity() == identity;
}

CrossControllerCopy::Gathering CrossControllerCopy::Gather(Level& level, const FileEntry& entry) {
  const QString key = LowerCase(entry.name);
  if (!FolderBatch::CanHold(entry)) {
    return Gathering::GoesAlone;
  }
  std::optional<FileEntry> replaced;
  if (level.taken.contains(key)) {
    const auto there = level.there.constFind(entry.name);
    if (answer_ != ItemAnswer::YesAll || there == level.there.cend() || there->IsFolder() ||
        there->IsLink() || IsSameFile(level, entry.name)) {
      return Gathering::GoesAlone;
    }
    replaced = *there;
  }
  if (!level.batch.HasRoomFor(entry) && !FinishBatch(level)) {
    return Gathering::Later;
  }
  level.there.remove(entry.name);
  level.taken.insert(key);
  level.batch.Add(entry, entry.name, replaced);
  return Gathering::Gathered;
}

bool CrossControllerCopy::FinishBatch(Level& level) {
  if (level.batch.IsEmpty()) {
    return outcome_ != Arrival::Cancelled;
  }
  const FolderBatch::Result result =
      level.batch.Finish([this] { return prompts_.IsEnding(); },
                         [this](const FolderBatch::Progress& progress) {
                           if (!MayGoOn(progress.name, 0, -1, progress.filesWritten)) {
                             // What was begun is finished, and nothing begins after it.
                             Skip(Arrival::Cancelled);
                           }
                         });
  for (const ArrivedFile& file : result.files) {
    NoteArrived(file);
  }
  const auto arrived = std::ranges::count(result.arrived, true);
  arrived_ += arrived;
  files_ += arrived;
  if (result.failure) {
    throw *result.failure;
  }
  bool hasLeft = false;
  for (size_t i = result.left.size(); i-- > 0;) {
    if (result.left[i] == FolderBatch::Left::No) {
      continue;
    }
    hasLeft = true;
    const FileEntry entry = level.batch.Finished(i);
    const bool goesAlone = result.left[i] == FolderBatch::Left::Alone;
    if (!goesAlone) {
      // It is gathered once more.
      if (const auto replaced = level.batch.Replaced(i)) {
        level.there.insert(entry.name, *replaced);
      } else {
        level.taken.remove(LowerCase(entry.name));
      }
    }
    level.left.push_front({entry, goesAlone});
  }
  return !hasLeft && outcome_ != Arrival::Cancelled;
}

void CrossControllerCopy::NoteArrived(const ArrivedFile& file) {
  // A single file is known by the answer to its last piece alone.
  if (levels_.empty()) {
    return;
  }
  levels_.back()->arrivals.Add(file);
  if (needsProof_ && file.isNew) {
    made_.AddFile(FolderBelowTop(), file);
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
  const auto refresh = [&now](FileEntry& entry) {
    const auto there = now.constFind(entry.name);
    // One that has vanished fails when it is reached: those before it arrive.
    if (there != now.cend()) {
      entry = *there;
    }
  };
  for (Level::LeftFile& file : level.left) {
    refresh(file.entry);
  }
  for (size_t i = level.next; i < level.entries.size(); ++i) {
    refresh(level.entries[i]);
  }
  LearnTarget(level);
}

}  // namespace trevane

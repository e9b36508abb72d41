#include "engine/items/FileSetCopy.h"

#include "base/LowerCase.h"
#include "base/RunTimeError.h"
#include "engine/transfer/OpenedObjects.h"
#include "engine/transfer/OverlapGuard.h"
#include "engine/transfer/TransferSteps.h"
#include "prompts/UserPrompts.h"

#include <algorithm>
#include <utility>

namespace trevane {

namespace {

constexpr qint32 kReadFault = error::kWin32Error + 30;

std::shared_ptr<IxoFile> RequireChild(const std::shared_ptr<IxoFile>& folder, const QString& name,
                                      OpenedObjects& opened) {
  auto child = folder->OpenFile(name, QString());
  if (!child) {
    throw ItemNotFound(name);
  }
  opened.Remember(folder, child);
  return child;
}

/// The first of the files at the end that can go in another batch; all of them where there are none.
size_t EndOfBatch(const FolderBatch::Result& result) {
  size_t end = result.left.size();
  for (size_t i = end; i-- > 0 && !result.arrived[i];) {
    if (result.left[i] == FolderBatch::Left::Behind) {
      end = i;
    }
  }
  return end;
}

}  // namespace

FileSetCopy::FileSetCopy(const FileAccess& files, const QString& from, const QString& into, bool move,
                         Scope scope)
    : files_(files), from_(from), into_(into), move_(move), scope_(scope), source_(files), target_(files) {
  try {
    Open();
  } catch (const RunTimeError& failure) {
    batch_.reset();
    NoteEnd(failure);
  }
}

void FileSetCopy::NoteEnd(const RunTimeError& failure) {
  if (EndsCalls(failure)) {
    end_ = failure;
  }
}

void FileSetCopy::Open() {
  source_.Resolve(from_, LookUp::Exact);
  target_.Resolve(into_, LookUp::Exact);
  if (!source_.File() || !target_.File()) {
    return;
  }
  const QStringList from = source_.File()->FolderIdentities();
  const QStringList into = target_.File()->FolderIdentities();
  const bool isKnown = !from.isEmpty() && !into.isEmpty();
  // Where identities are not comparable the names show it: those of one place are all taken.
  if (isKnown && from.first() == into.first() &&
      OverlapGuard::AreComparable(*source_.File(), *target_.File())) {
    return;
  }
  const bool isWithin = scope_ == Scope::WithinOne;
  if (isWithin && (!isKnown || source_.File()->ListingTellsAll())) {
    return;
  }
  heldSource_.emplace(source_.File());
  heldTarget_.emplace(target_.File());
  // A copy that failed is made once more, alone: not where it may have been done all the same.
  if (isWithin && !(source_.File()->SeesArrivals() && target_.File()->SeesArrivals())) {
    heldSource_.reset();
    heldTarget_.reset();
    return;
  }
  targetIsLink_ = (target_.File()->Attribute() & attribute::kLink) != 0;
  batch_.emplace(source_.File(), target_.File());
  if (isWithin) {
    return;
  }
  for (const FileEntry& entry : source_.File()->List()) {
    entries_.insert(entry.name, entry);
  }
  for (const FileEntry& entry : target_.File()->List()) {
    taken_.insert(LowerCase(entry.name));
  }
}

void FileSetCopy::LookAt(const QString& name) {
  try {
    OpenedObjects opened;
    const auto child = RequireChild(source_.File(), name, opened);
    FileEntry entry;
    entry.name = name;
    entry.attributes = child->Attribute();
    entry.size = child->Size64();
    entries_.insert(name, entry);
  } catch (const RunTimeError& failure) {
    entries_.remove(name);
    NoteEnd(failure);
  }
}

bool FileSetCopy::CanTake(const QString& name) {
  if (scope_ == Scope::WithinOne && !IsTaken(name)) {
    LookAt(name);
  }
  const auto entry = entries_.constFind(name);
  return entry != entries_.cend() && FolderBatch::CanHold(*entry) && !IsTaken(name);
}

bool FileSetCopy::ListingIsProof() const {
  // Of dates that are not exact no change can be told.
  return source_.File()->ListingTellsAll() && source_.File()->DateStep() == 0;
}

bool FileSetCopy::IsTaken(const QString& name) const {
  return taken_.contains(LowerCase(name));
}

std::optional<qint64> FileSetCopy::SizeOf(const QString& name) const {
  const auto entry = entries_.constFind(name);
  return entry != entries_.cend() && entry->size >= 0 ? std::optional(entry->size) : std::nullopt;
}

bool FileSetCopy::HasRoomFor(const QString& name) const {
  return batch_->HasRoomFor(entries_.value(name));
}

bool FileSetCopy::Add(const QString& name) {
  try {
    // Otherwise the entry of the listing is all that is known of it.
    if (move_ && !ListingIsProof()) {
      OpenedObjects opened;
      const auto child = RequireChild(source_.File(), name, opened);
      MoveRecord record;
      record.Take(child, {});
      records_.push_back(std::move(record));
    }
  } catch (const RunTimeError& failure) {
    NoteEnd(failure);
    return false;
  }
  batch_->Add(entries_.value(name), name);
  names_.append(name);
  taken_.insert(LowerCase(name));
  return true;
}

void FileSetCopy::SetFailure(Outcome& outcome, const RunTimeError& failure, const QString& name) {
  if (outcome.number == 0) {
    outcome.number = ResultCode(failure);
    outcome.reason = failure.Description();
    outcome.failedName = name;
  }
}

bool FileSetCopy::CopyWithin(const QString& name, Outcome& outcome) {
  try {
    OpenedObjects opened;
    const auto child = RequireChild(source_.File(), name, opened);
    const auto& into = target_.File();
    child->Copy(into->Path() + into->Name() + u'\\' + name, QStringLiteral("OverWrite=False"));
    return true;
  } catch (const RunTimeError& failure) {
    if (failure.Number() == error::kCancelled) {
      SetFailure(outcome, failure, name);
    }
    return false;
  }
}

FileSetCopy::Outcome FileSetCopy::FinishWithin(const QStringList& names, const ItemReceiver& receive,
                                               const Observer& observer) {
  Outcome outcome;
  FolderBatch::Progress progress;
  batch_.emplace(source_.File(), target_.File());
  for (const QString& name : names) {
    if (!CopyWithin(name, outcome)) {
      break;
    }
    outcome.items.push_back({name, true});
    if (!move_ && !receive(outcome.items.back())) {
      return outcome;
    }
    if (move_ && observer) {
      // A copy is told of as it arrives.
      progress.name = name;
      ++progress.filesRead;
      ++progress.filesWritten;
      observer(progress);
    }
  }
  if (move_ && !outcome.items.empty()) {
    size_t told = 0;
    const auto tell = [&] { static_cast<void>(receive(outcome.items[told++])); };
    if (outcome.number == 0) {
      DeleteSources(outcome, tell);
    } else {
      for (Item& item : outcome.items) {
        item.done = false;
      }
    }
    while (told < outcome.items.size()) {
      tell();
    }
  }
  records_.clear();
  return outcome;
}

FileSetCopy::Outcome FileSetCopy::Finish(const ItemReceiver& receive, const Observer& observer) {
  const QStringList names = std::exchange(names_, {});
  if (scope_ == Scope::WithinOne) {
    return FinishWithin(names, receive, observer);
  }
  Outcome outcome;
  FolderBatch::Result result = batch_->Finish([this] { return files_.Prompts().IsEnding(); }, observer);
  if (!targetIsLink_ && !result.files.empty()) {
    try {
      RequireInPlace(*target_.File());
    } catch (const RunTimeError& failure) {
      if (!result.failure) {
        result.failure = failure;
        result.failedName = names.front();
      }
      result.files.clear();
      result.arrived.assign(result.arrived.size(), false);
    }
  }
  for (qsizetype i = 0; i < names.size(); ++i) {
    const auto at = static_cast<size_t>(i);
    const bool isLeft = result.left[at] != FolderBatch::Left::No && !result.failure;
    outcome.items.push_back({.name = names[i], .done = result.arrived[at], .isLeft = isLeft});
  }
  if (!result.failure) {
    outcome.items.resize(EndOfBatch(result));
  }
  if (result.failure) {
    SetFailure(outcome, *result.failure, result.failedName);
  }
  size_t told = 0;
  const auto tell = [&] {
    Item& item = outcome.items[told++];
    // After a failure nothing new begins.
    item.isLeft = item.isLeft && outcome.number == 0;
    static_cast<void>(receive(item));
  };
  if (move_ && result.failure && EndsCalls(*result.failure)) {
    for (Item& item : outcome.items) {
      item.done = false;
    }
  } else if (move_) {
    DeleteSources(outcome, tell);
  } else {
    RequireArrived(outcome, result.files);
  }
  records_.clear();
  while (told < outcome.items.size()) {
    tell();
  }
  return outcome;
}

void FileSetCopy::RequireArrived(Outcome& outcome, const std::vector<ArrivedFile>& files) {
  if (files.empty()) {
    return;
  }
  // One listing serves all, but what a file costs may not grow with the folder. Where paths are all that is
  // known, a look at one file is a call to the device; elsewhere it is quick.
  constexpr qsizetype kListedForEach = 8;
  constexpr qsizetype kListedForEachCall = 64;
  const auto most = static_cast<qsizetype>(files.size()) *
                    (target_.File()->ListingTellsAll() ? kListedForEachCall : kListedForEach);
  ArrivalCheck check;
  for (const ArrivedFile& file : files) {
    check.Add(file);
  }
  try {
    const auto failures = taken_.size() <= most ? check.List(target_.File()) : check.Find(target_.File());
    for (const ArrivalCheck::Failure& failure : failures) {
      SetFailure(outcome, failure.error, failure.name);
      for (Item& item : outcome.items) {
        item.done = item.done && item.name != failure.name;
      }
    }
  } catch (const RunTimeError& failure) {
    // They were written, but nothing shows it.
    SetFailure(outcome, failure, files.front().name);
    for (Item& item : outcome.items) {
      item.done = false;
    }
  }
}

void FileSetCopy::DeleteSources(Outcome& outcome, const std::function<void()>& tell) {
  bool flushed = false;
  bool ended = false;
  try {
    target_.File()->Flush();
    flushed = true;
  } catch (const RunTimeError& failure) {
    SetFailure(outcome, failure, outcome.items.front().name);
  }
  // A flush can take long, and another program may have written to a source meanwhile.
  source_.File()->ForgetLearnt();
  target_.File()->ForgetLearnt();
  if (ListingIsProof()) {
    if (flushed) {
      DeleteListed(outcome);
    } else {
      for (Item& item : outcome.items) {
        item.done = false;
      }
    }
    return;
  }
  for (size_t i = 0; i < outcome.items.size(); ++i) {
    Item& item = outcome.items[i];
    if (!std::exchange(item.done, false) || !flushed || ended) {
      tell();
      continue;
    }
    try {
      {
        OpenedObjects opened;
        const auto child = RequireChild(source_.File(), item.name, opened);
        const auto arrived = RequireChild(target_.File(), item.name, opened);
        const auto proof = records_[i].ShowsChanges() ? MoveRecord::Proof::Size : MoveRecord::Proof::Content;
        records_[i].RequireArrived(child, arrived, proof, {});
        records_[i].DeleteSource(child, {});
      }
      item.done = true;
    } catch (const RunTimeError& failure) {
      SetFailure(outcome, failure, item.name);
      ended = EndsCalls(failure);
    }
    item.gone = item.done;
    try {
      source_.File()->ForgetLearnt();
      OpenedObjects opened;
      const auto still = FindChild(*source_.File(), item.name);
      item.gone = still == nullptr;
      if (still) {
        opened.Remember(source_.File(), still);
        if (std::exchange(item.done, false)) {
          SetFailure(outcome, RunTimeError(-1, QStringLiteral("It is still there: %1").arg(item.name)),
                     item.name);
        }
      }
    } catch (const RunTimeError& failure) {
      // It could not be asked: nothing more is known of it.
      if (EndsCalls(failure)) {
        SetFailure(outcome, failure, item.name);
        ended = true;
      }
    }
    tell();
  }
}

Listing FileSetCopy::ArrivedSources(Outcome& outcome) {
  QHash<QString, FileEntry> there;
  try {
    for (const FileEntry& entry : target_.File()->List()) {
      there.insert(entry.name, entry);
    }
  } catch (const RunTimeError& failure) {
    SetFailure(outcome, failure, outcome.items.front().name);
  }
  Listing arrived;
  for (Item& item : outcome.items) {
    if (!std::exchange(item.done, false)) {
      continue;
    }
    const FileEntry& source = entries_[item.name];
    const auto copy = there.constFind(item.name);
    const bool isWhole =
        copy != there.cend() && !copy->IsFolder() && !copy->IsLink() && copy->size == source.size;
    if (isWhole) {
      arrived.push_back(source);
    } else {
      SetFailure(
          outcome,
          RunTimeError(
              kReadFault,
              QStringLiteral("The copy of %1 could not be verified; the source was kept").arg(item.name)),
          item.name);
    }
  }
  return arrived;
}

void FileSetCopy::DeleteListed(Outcome& outcome) {
  Listing left = ArrivedSources(outcome);
  QSet<QString> gone;
  while (!left.empty()) {
    std::optional<RunTimeError> failure;
    try {
      source_.File()->DeleteSeen(left);
    } catch (const RunTimeError& notDeleted) {
      failure = notDeleted;
    }
    QSet<QString> still;
    try {
      for (const FileEntry& entry : source_.File()->List()) {
        still.insert(entry.name);
      }
    } catch (const RunTimeError& notListed) {
      // Nothing more is known of them.
      SetFailure(outcome, failure.value_or(notListed), left.front().name);
      break;
    }
    const auto kept =
        std::ranges::find_if(left, [&](const FileEntry& entry) { return still.contains(entry.name); });
    for (auto entry = left.begin(); entry != kept; ++entry) {
      gone.insert(entry->name);
    }
    if (kept == left.end()) {
      if (failure) {
        SetFailure(outcome, *failure, left.back().name);
      }
      break;
    }
    SetFailure(outcome,
               failure.value_or(RunTimeError(-1, QStringLiteral("It is still there: %1").arg(kept->name))),
               kept->name);
    if (failure && EndsCalls(*failure)) {
      break;
    }
    // The others have arrived as well.
    left.erase(left.begin(), kept + 1);
  }
  for (Item& item : outcome.items) {
    item.gone = gone.contains(item.name);
    item.done = item.gone;
  }
}

}  // namespace trevane

#include "fileops/modIxoFile.h"

#include "base/DisplayText.h"
#include "base/LowerCase.h"
#include "base/RunTimeError.h"
#include "engine/items/FileSetCopy.h"
#include "engine/items/clsIxoFile.h"
#include "fileops/DisabledWindow.h"
#include "fileops/ProgressLabel.h"
#include "prompts/ItemQuestions.h"
#include "prompts/ShowFailure.h"
#include "prompts/ShownGauge.h"
#include "views/addresses/Addresses.h"
#include "views/addresses/NodeTags.h"

#include <QElapsedTimer>
#include <QScopedValueRollback>

#include <algorithm>
#include <exception>
#include <optional>

namespace trevane {

namespace {

constexpr qint32 kWaitAtEnd = 30;
/// The longest time between two updates of the window within one entry, in milliseconds.
constexpr qint64 kPaintEvery = 10;

/// The number of left out items that the message names.
constexpr size_t kMostNamed = 5;

QString FolderOf(const QString& address) {
  return address.left(address.lastIndexOf(kAddressSeparator));
}

/// As the log shows it.
QString LogPath(const QString& address) {
  return AddressToEnginePath(address);
}

/// Painting takes longer than copying a small file, so it is done at intervals.
class PaintClock {
 public:
  [[nodiscard]] bool IsDue() {
    if (clock_.isValid() && !clock_.hasExpired(kPaintEvery)) {
      return false;
    }
    clock_.start();
    return true;
  }

 private:
  QElapsedTimer clock_;
};

}  // namespace

modIxoFile::modIxoFile(const Parts& parts) : parts_(parts) {}

modIxoFile::~modIxoFile() = default;

bool modIxoFile::Transfer(const clsClipBrd& destination) {
  if (running_) {
    return true;
  }
  const QScopedValueRollback<bool> running(running_, true);
  gone_.clear();
  transferred_ = 0;
  moved_ = 0;
  const bool move = parts_.state.nFileOpMode == OperationState::kCut;
  // Entries that are added to the clipboard during the transfer are not pasted.
  const clsClipBrds entries = parts_.state.clipboard;
  leftOut_.clear();
  cancelled_ = false;
  const bool done = TransferEntries(entries, clsClipBrd(destination), move);
  set_.reset();
  progress_.reset();
  ReportLeftOut();
  return done;
}

void modIxoFile::ReportLeftOut() {
  if (leftOut_.empty()) {
    return;
  }
  const auto copied = std::ranges::count_if(leftOut_, [](const LeftOutItem& item) { return item.isCopied; });
  const auto odd = std::ranges::count_if(leftOut_, [](const LeftOutItem& item) { return item.hadWrongSize; });
  const auto left = static_cast<qsizetype>(leftOut_.size()) - copied;
  QStringList sentences;
  if (left > 0) {
    sentences.append(left == 1 ? QStringLiteral("1 item was left out.")
                               : QStringLiteral("%1 items were left out.").arg(left));
  }
  if (copied > odd) {
    sentences.append(copied - odd == 1
                         ? QStringLiteral("1 item was copied and not moved.")
                         : QStringLiteral("%1 items were copied and not moved.").arg(copied - odd));
  }
  if (odd > 0) {
    sentences.append(
        odd == 1 ? QStringLiteral("1 file has another size than its controller tells.")
                 : QStringLiteral("%1 files have another size than their controllers tell.").arg(odd));
  }
  Message message;
  message.text = sentences.join(u' ');
  message.icon = PromptIcon::Exclamation;
  QStringList lines;
  for (size_t i = 0; i < std::min(leftOut_.size(), kMostNamed); ++i) {
    lines.append(DisplayText(leftOut_[i].name) + QStringLiteral(": ") + leftOut_[i].reason);
  }
  message.informativeText = lines.join(u'\n');
  parts_.files.Prompts().ShowMessage(message);
}

bool modIxoFile::TransferEntries(const clsClipBrds& entries, const clsClipBrd& into, bool move) {
  const QString word = move ? QStringLiteral("MOVE") : QStringLiteral("COPY");
  ProgressGauge& gauge = parts_.files.Prompts().Gauge();
  DisabledWindow window(parts_.host);
  const ShownGauge shown(gauge);
  gauge.ShowGage(word + QStringLiteral(" Files/Directories"));
  gauge.CancelEnable(true);
  gauge.SetGageMax(entries.Count());
  window.Disable();
  for (qint32 at = 1; at <= entries.Count();) {
    const clsClipBrd& entry = entries.Item(at);
    failed_ = LastPiece(AddressOf(entry));
    ShowEntry(failed_, at);
    // One entry may take long, and a single file lets no events run.
    gauge.PaintGage();
    Step step = Step::Failed;
    try {
      const qint32 first = at;
      step = TransferBatch(entries, at, into, move);
      if (step == Step::Done && at == first) {
        ++at;
        step = TransferEntry(entry, into, move);
        if (step == Step::Done) {
          step = AfterEntry(failed_, at);
        }
      }
    } catch (const std::exception& failure) {
      step = Step::Failed;
      reason_ = ReasonOf(failure);
    }
    if (step == Step::Failed && cancelled_) {
      step = Step::Cancelled;
    }
    if (step == Step::Failed) {
      set_.reset();
      ShowFailure(parts_.files.Prompts(), parts_.host,
                  QStringLiteral("Failed in ") + word.toLower() + QStringLiteral(" operation."),
                  {.item = failed_, .reason = reason_});
      return false;
    }
    if (step == Step::Ended) {
      return true;
    }
    if (step == Step::Cancelled) {
      break;
    }
  }
  gauge.WaitGage(kWaitAtEnd);
  return true;
}

void modIxoFile::ShowEntry(const QString& name, qint32 at) {
  const bool isOfSet = progress_ && progress_->Covers(at);
  parts_.files.Prompts().Gauge().SetGageLabel(isOfSet ? progress_->Label(name, at) : name);
}

modIxoFile::Step modIxoFile::AfterEntry(const QString& name, qint32 next) {
  ProgressGauge& gauge = parts_.files.Prompts().Gauge();
  gauge.IncrementGageValue(name);
  if (progress_ && progress_->Covers(next - 1)) {
    gauge.SetGageLabel(progress_->Label(name, next));
  }
  parts_.host.LetEventsRun();
  return parts_.files.Prompts().IsCancelled() ? Step::Cancelled : Step::Done;
}

bool modIxoFile::CanShareBatch(const clsClipBrd& entry, const clsClipBrd& other, const clsClipBrd& into) {
  const auto isFile = [](const clsClipBrd& one) {
    return IsFileOrFolder(one.Attributes()) && (one.Attributes() & kFolderBit) == 0 &&
           !one.PasteName().isEmpty();
  };
  return isFile(entry) && isFile(other) && entry.PastePath() == other.PastePath() &&
         entry.CtrlIdx() == other.CtrlIdx() && !EqualIgnoringCase(into.PastePath(), entry.PastePath());
}

void modIxoFile::CountSet(const clsClipBrds& entries, qint32 at, const clsClipBrd& into) {
  if (progress_ && progress_->Covers(at)) {
    return;
  }
  progress_.reset();
  const clsClipBrd& first = entries.Item(at);
  qint32 behind = at + 1;
  while (behind <= entries.Count() && CanShareBatch(first, entries.Item(behind), into)) {
    ++behind;
  }
  if (behind - at < 2) {
    return;
  }
  std::vector<std::optional<qint64>> sizes;
  sizes.reserve(static_cast<size_t>(behind - at));
  for (qint32 each = at; each < behind; ++each) {
    sizes.push_back(set_->SizeOf(entries.Item(each).PasteName()));
  }
  progress_.emplace(at, sizes);
}

modIxoFile::Step modIxoFile::TransferBatch(const clsClipBrds& entries, qint32& at, const clsClipBrd& into,
                                           bool move) {
  const clsClipBrd& first = entries.Item(at);
  const auto shares = [&](qint32 other) {
    return other >= 1 && other <= entries.Count() && CanShareBatch(first, entries.Item(other), into);
  };
  if (!shares(at + 1) && !shares(at - 1)) {
    set_.reset();
    return Step::Done;
  }
  if (!set_ || !set_->IsBetween(first.PastePath(), into.PastePath())) {
    set_.reset();
    const bool within = first.CtrlIdx() == into.CtrlIdx();
    set_ = std::make_unique<FileSetCopy>(
        parts_.files, first.PastePath(), into.PastePath(), move,
        within ? FileSetCopy::Scope::WithinOne : FileSetCopy::Scope::BetweenControllers);
  }
  const auto end = [this, &first] {
    const RunTimeError failure = *set_->End();
    set_.reset();
    if (failure.Number() == error::kCancelled) {
      return Step::Ended;
    }
    failed_ = first.PasteName();
    reason_ = failure.Description();
    return Step::Failed;
  };
  if (set_->End()) {
    return end();
  }
  CountSet(entries, at, into);
  if (!set_->IsOpen()) {
    return Step::Done;
  }
  qint32 behind = at;
  while (shares(behind)) {
    const QString& name = entries.Item(behind).PasteName();
    if (!set_->CanTake(name) || !set_->HasRoomFor(name) || !set_->Add(name)) {
      break;
    }
    ++behind;
  }
  if (set_->End()) {
    return end();
  }
  if (set_->IsEmpty()) {
    if (set_->IsTaken(first.PasteName())) {
      // What was learnt of both folders is not used after a question.
      set_.reset();
    }
    return Step::Done;
  }
  Step step = Step::Done;
  bool isStale = false;
  // Each is told as soon as it is done, so that the log knows of every source that was deleted.
  PaintClock clock;
  const auto observe = [&, begin = at](const FileSetCopy::Progress& batch) {
    if (clock.IsDue()) {
      const std::optional<QString> label = progress_ ? progress_->DuringBatch(batch, begin) : std::nullopt;
      if (label) {
        parts_.files.Prompts().Gauge().SetGageLabel(*label);
      }
      parts_.host.LetEventsRun();
    }
  };
  const auto receive = [&](const FileSetCopy::Item& item) {
    const clsClipBrd& entry = entries.Item(at++);
    const QString source = AddressOf(entry);
    if (item.isLeft) {
      isStale = true;
      step = TransferLeft(step, entries, at, into, move);
      return step == Step::Done;
    }
    if (item.gone) {
      gone_.append(source);
    }
    if (!item.done) {
      return true;
    }
    ++transferred_;
    moved_ += move ? 1 : 0;
    parts_.log.LogEvent(move ? QStringLiteral("MOVE") : QStringLiteral("COPY"), LogPath(source),
                        LogPath(JoinAddress(into.PastePath(), entry.PasteName())));
    // What has arrived is finished also after Cancel.
    if (AfterEntry(item.name, at) == Step::Cancelled && step == Step::Done) {
      step = Step::Cancelled;
    }
    return step == Step::Done;
  };
  const FileSetCopy::Outcome outcome = set_->Finish(receive, observe);
  if (isStale) {
    // Something else works here, or a question was asked: both folders are listed anew.
    set_.reset();
  }
  if (outcome.number == error::kCancelled) {
    return step == Step::Cancelled ? step : Step::Ended;
  }
  if (outcome.number != 0) {
    failed_ = outcome.failedName;
    reason_ = outcome.reason;
    return Step::Failed;
  }
  return step;
}

modIxoFile::Step modIxoFile::TransferLeft(Step step, const clsClipBrds& entries, qint32 next,
                                          const clsClipBrd& into, bool move) {
  if (step != Step::Done) {
    // Nothing new begins.
    return step;
  }
  const clsClipBrd& entry = entries.Item(next - 1);
  const QString& name = entry.PasteName();
  failed_ = name;
  const Step done = TransferEntry(entry, into, move);
  return done == Step::Done ? AfterEntry(name, next) : done;
}

bool modIxoFile::IsOntoItself(clsIxoFile& source, clsIxoFile& folder, const QString& address) {
  const auto couldNotAsk = [this](const clsIxoFile& asked) {
    NoteFailure(asked);
    return true;
  };
  const auto identity = source.Identity();
  if (source.Result() != 0) {
    return couldNotAsk(source);
  }
  if (folder.Result() != 0) {
    return couldNotAsk(folder);
  }
  // Where identities prove nothing the copy finds out.
  const bool isComparable = identity && source.HasComparableIdentity(folder);
  if (source.Result() != 0) {
    return couldNotAsk(source);
  }
  const QStringList into = isComparable ? folder.FolderIdentities() : QStringList();
  if (folder.Result() != 0) {
    return couldNotAsk(folder);
  }
  if (into.isEmpty()) {
    return false;
  }
  reason_ = QStringLiteral("The destination is the item itself, or holds it, or is in it: %1")
                .arg(folder.Address());
  if (into.contains(*identity)) {
    return true;
  }
  const FoundChild there = folder.FindChild(LastPiece(address));
  if (there.presence != FoundChild::Presence::Unknown) {
    // This covers the folder of the entry itself, too.
    return folder.Result() != 0 ? couldNotAsk(folder) : there.identity == identity;
  }
  clsIxoFile from = parts_.files.FileAt(FolderOf(address));
  const QStringList holding = from.Result() == 0 ? from.FolderIdentities() : QStringList();
  if (from.Result() != 0) {
    return couldNotAsk(from);
  }
  // The copy itself handles whatever else it is.
  return !holding.isEmpty() && holding.first() == into.first();
}

bool modIxoFile::IsKnownAbsent(const QString& address) {
  clsIxoFile file = parts_.files.FileAt(address);
  return file.IsAbsent();
}

bool modIxoFile::IsSeen(const QString& address) {
  clsIxoFile file = parts_.files.FileAt(address);
  return file.Result() == 0;
}

modIxoFile::Step modIxoFile::TransferEntry(const clsClipBrd& entry, const clsClipBrd& destination,
                                           bool move) {
  const auto fail = [this](const QString& reason) {
    reason_ = reason;
    return Step::Failed;
  };
  if (!IsFileOrFolder(entry.Attributes())) {
    return fail(QStringLiteral("Only files and folders can be copied"));
  }
  const QString& into = destination.PastePath();
  const bool isFolder = (entry.Attributes() & kFolderBit) != 0;
  if (EqualIgnoringCase(into, isFolder ? FolderOf(entry.PastePath()) : entry.PastePath())) {
    return fail(QStringLiteral("It is in that folder already: %1").arg(into));
  }
  if (isFolder &&
      LowerCase(kAddressSeparator + into).contains(LowerCase(kAddressSeparator + entry.PastePath()))) {
    return fail(QStringLiteral("The destination's address contains the folder's own: %1").arg(into));
  }
  const QString target = entry.PasteName().isEmpty() ? into : JoinAddress(into, entry.PasteName());
  const QString source = AddressOf(entry);
  const bool within = destination.CtrlIdx() == entry.CtrlIdx();
  // Between controllers the destination is held before anything is done with it, and a folder that is moved
  // is held to be recorded: both look for it then.
  const auto resolve = [within](clsIxoFile& item, const QString& address, bool isHeldNext) {
    const bool isShown = !within && isHeldNext && !IsLocalAddress(address);
    item.SetPath(address, isShown ? LookUp::Shown : LookUp::Exact);
    if (isShown && item.FoundPieces().join(kAddressSeparator) != address) {
      item.SetPath(address, LookUp::Exact);
    }
  };
  clsIxoFile file(parts_.files);
  resolve(file, source, move && isFolder);
  if (file.Result() != 0) {
    NoteFailure(file);
    return Step::Failed;
  }
  clsIxoFile folder(parts_.files);
  resolve(folder, into, true);
  if (IsOntoItself(file, folder, source)) {
    return Step::Failed;
  }

  ProgressGauge& gauge = parts_.files.Prompts().Gauge();
  PaintClock clock;
  ProgressLabel label(LastPiece(source));
  QElapsedTimer since;
  since.start();
  bool cancelled = false;
  const ItemObserver observer = [&](const ItemProgress& item) {
    if (clock.IsDue()) {
      if (const std::optional<QString> next = label.Next(item, since.elapsed())) {
        gauge.SetGageLabel(*next);
      }
      parts_.host.LetEventsRun();
    }
    cancelled = cancelled || parts_.files.Prompts().IsCancelled();
    return !cancelled;
  };
  // A call that was cancelled while it was waited for ends the operation like Cancel.
  const auto wasCancelled = [&] { return cancelled || file.Result() == error::kCancelled; };
  const auto failure = [&] {
    if (wasCancelled()) {
      return cancelled ? Step::Cancelled : Step::Ended;
    }
    return fail(file.ResultText());
  };

  if (move) {
    file.RecordSource(observer);
    if (file.Result() != 0) {
      return failure();
    }
  }
  // An engine may report a copy although it has replaced nothing.
  const bool mayReplace = move && (within || file.HasComparableIdentity(folder)) &&
                          folder.FindChild(LastPiece(source)).presence != FoundChild::Presence::Absent;
  bool whole = true;
  if (within) {
    if (file.Copy(into, entry.PasteName(), false, observer) != 0) {
      if (wasCancelled()) {
        return failure();
      }
      const ItemAnswer answer = AskOverwrite(parts_.files.Prompts(), target);
      if (answer == ItemAnswer::Cancel) {
        return Step::Ended;
      }
      if (answer == ItemAnswer::No) {
        return Step::Done;
      }
      if (file.Copy(into, entry.PasteName(), true, observer) != 0) {
        return failure();
      }
    }
  } else {
    const qint32 failed = file.CopyDiffCtrl(folder, entry.PasteName(), observer);
    leftOut_.insert(leftOut_.end(), file.LeftOut().begin(), file.LeftOut().end());
    if (failed != 0) {
      return failure();
    }
    if (file.Arrived() == Arrival::Cancelled) {
      return cancelled ? Step::Cancelled : Step::Ended;
    }
    whole = file.Arrived() == Arrival::Everything;
    if (!whole && file.ArrivedItems() == 0) {
      return Step::Done;
    }
  }
  const bool moved = move && whole;
  if (moved) {
    file.DeleteMoved(folder, entry.PasteName(), mayReplace, observer);
    if (file.Result() != 0) {
      const Step failed = failure();
      NoteIfGone(source);
      return failed;
    }
    if (IsSeen(source)) {
      return cancelled ? Step::Cancelled : fail(QStringLiteral("It is still there: %1").arg(LogPath(source)));
    }
    gone_.append(source);
  }
  ++transferred_;
  moved_ += moved ? 1 : 0;
  parts_.log.LogEvent(moved ? QStringLiteral("MOVE") : QStringLiteral("COPY"), LogPath(source),
                      LogPath(target));
  return Step::Done;
}

bool modIxoFile::Delete(const DeleteRequest& request) {
  if (running_) {
    return true;
  }
  const QScopedValueRollback<bool> running(running_, true);
  gone_.clear();
  item_.clear();
  cancelled_ = false;
  bool deleted = true;
  try {
    const DeleteRequest fixed = request;
    DisabledWindow window(parts_.host);
    switch (fixed.side) {
      case DeleteRequest::Side::Neither:
        break;
      case DeleteRequest::Side::List:
        deleted = DeleteItems(fixed, [&window] { window.Disable(); });
        break;
      case DeleteRequest::Side::Tree:
        deleted = DeleteNode(fixed, [&window] { window.Disable(); });
        break;
    }
  } catch (const std::exception& failure) {
    deleted = false;
    reason_ = ReasonOf(failure);
  }
  if (!deleted && cancelled_) {
    // As with the answer Cancel.
    return true;
  }
  if (!deleted) {
    ShowFailure(parts_.files.Prompts(), parts_.host, QStringLiteral("Failed in delete operation."),
                {.item = item_, .reason = reason_});
  }
  return deleted;
}

bool modIxoFile::DeleteItems(const DeleteRequest& request, const std::function<void()>& beforeFirst) {
  bool asking = true;
  for (const DeleteRequest::Item& item : request.items) {
    if (asking) {
      switch (AskRemove(parts_.files.Prompts(), item.text)) {
        case ItemAnswer::Yes:
          break;
        case ItemAnswer::YesAll:
          asking = false;
          break;
        case ItemAnswer::No:
          continue;
        case ItemAnswer::Cancel:
          return true;
      }
    }
    beforeFirst();
    if (IsClosedNow()) {
      break;
    }
    if (!DeleteOne(JoinAddress(request.basePath, item.text))) {
      return false;
    }
  }
  return true;
}

bool modIxoFile::DeleteNode(const DeleteRequest& request, const std::function<void()>& beforeFirst) {
  if (!IsFolderTag(request.nodeTag)) {
    return true;
  }
  const QString path = AddressToEnginePath(request.nodeAddress);
  const PromptAnswer answer =
      parts_.files.Prompts().ShowMessage({.text = u'\'' + path + QStringLiteral("'\r\nRemove this file?"),
                                          .icon = PromptIcon::Question,
                                          .buttons = PromptButtons::YesNo,
                                          .defaultAnswer = PromptAnswer::No});
  if (answer != PromptAnswer::Yes) {
    return true;
  }
  beforeFirst();
  return IsClosedNow() || DeleteOne(request.nodeAddress);
}

bool modIxoFile::IsClosedNow() {
  // The window is disabled and takes no input; its close box does.
  parts_.host.LetEventsRun();
  return parts_.files.Prompts().IsEnding();
}

bool modIxoFile::DeleteOne(const QString& address) {
  item_ = LastPiece(address);
  clsIxoFile file = parts_.files.FileAt(address);
  PaintClock clock;
  const ItemObserver observer = [&](const ItemProgress&) {
    if (clock.IsDue()) {
      parts_.host.LetEventsRun();
    }
    return !parts_.files.Prompts().IsEnding();
  };
  if (file.Result() == 0) {
    file.ForgetLearnt();
    file.Delete(observer);
  }
  if (file.Result() != 0) {
    NoteFailure(file);
    NoteIfGone(address);
    return false;
  }
  if (IsSeen(address)) {
    reason_ = QStringLiteral("It is still there: %1").arg(LogPath(address));
    return false;
  }
  gone_.append(address);
  parts_.log.LogEvent(QStringLiteral("DELETE"), LogPath(address));
  return true;
}

void modIxoFile::NoteFailure(const clsIxoFile& file) {
  reason_ = file.ResultText();
  cancelled_ = cancelled_ || file.Result() == error::kCancelled;
}

void modIxoFile::NoteIfGone(const QString& address) {
  // Nothing more is asked after a Cancel.
  if (!cancelled_ && IsKnownAbsent(address)) {
    gone_.append(address);
  }
}

}  // namespace trevane

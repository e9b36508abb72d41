#include "engine/transfer/FileTransfer.h"

#include "base/RunTimeError.h"
#include "engine/model/ContentSteps.h"
#include "engine/transfer/OpenedObjects.h"
#include "engine/transfer/TransferSteps.h"

#include <utility>

namespace trevane {

namespace {

constexpr qint32 kWriteFault = error::kWin32Error + 29;
/// Large enough to cost few calls, small enough to stay in the processor's cache on its way.
constexpr qint64 kPiece = 2 * content::kSmallestPiece;

/// The properties of a file that change when it is written.
struct Snapshot {
  qint64 size;
  Date modified;
  std::optional<QString> identity;
};

Snapshot SnapshotOf(IxoFile& file) {
  return {file.Size64(), DateIn(file.DateLastModified()), file.Identity()};
}

bool MayBeUnchanged(const Snapshot& before, const Snapshot& now, qint64 dateStep) {
  // A newer date shows that it was written.
  if (before.modified.IsPresent() && now.modified.IsPresent() && now.modified.msecs > before.modified.msecs) {
    return false;
  }
  return before.size == now.size && before.identity == now.identity &&
         IsSameDate(before.modified, now.modified, dateStep);
}

}  // namespace

FileTraits FileTransfer::Traits() {
  FileTraits traits = source_.Traits();
  if (!traits.modified.IsPresent()) {
    traits.modified = DateIn(source_.DateLastModified());
  }
  return traits;
}

QByteArray FileTransfer::NextPiece(ContentSource& from) const {
  return from.Read(kPiece);
}

qint64 FileTransfer::Pump(ContentSource& from, ContentSink& to) {
  const qint64 size = source_.Size64();
  qint64 bytes = 0;
  for (;;) {
    const QByteArray piece = NextPiece(from);
    if (piece.isEmpty()) {
      break;
    }
    writing_ = true;
    to.Write(piece);
    writing_ = false;
    bytes += piece.size();
    if (observer_ && !observer_(bytes, size)) {
      throw RunTimeError(error::kCancelled, QStringLiteral("The copy was cancelled"));
    }
  }
  if (!from.HadWrongSize()) {
    RequireRead(bytes, size, name_);
  }
  return bytes;
}

ArrivedFile FileTransfer::CopyTo(IxoFile& created, IxoFile& folder) {
  try {
    // Opened before anything is written, so that an unreadable source leaves nothing to clean up.
    const auto from = source_.OpenSource();
    const FileTraits traits = Traits();
    writing_ = true;
    const auto to = created.OpenSink(
        {.mode = SinkRequest::Mode::New, .expectedSize = source_.Size64(), .traits = traits});
    writing_ = false;
    const qint64 bytes = Pump(*from, *to);
    writing_ = true;
    const SeenItem placed = to->Commit();
    writing_ = false;
    RequireArrived(folder, name_, placed, bytes);
    return {name_, bytes, placed.entry.modified, true, from->HadWrongSize()};
  } catch (const RunTimeError& failure) {
    Discard(created);
    // Without its content the item counts as not created, unless another program took its name.
    throw writing_ && failure.Number() != error::kExists ? NotCreated(failure) : failure;
  } catch (...) {
    Discard(created);
    throw;
  }
}

ArrivedFile FileTransfer::Replace(IxoFile& existing, IxoFile& folder, const PlaceCheck& check) {
  const auto from = source_.OpenSource();
  const Snapshot before = SnapshotOf(existing);
  FileTraits traits;
  traits.modified = DateIn(source_.DateLastModified());
  SeenItem placed;
  qint64 bytes = 0;
  {
    const auto to = existing.OpenSink(
        {.mode = SinkRequest::Mode::Replace, .expectedSize = source_.Size64(), .traits = traits});
    if (check && !to->TemporaryName()) {
      check(std::nullopt);
    }
    bytes = Pump(*from, *to);
    if (check && to->TemporaryName()) {
      if (bytes == 0) {
        to->Write({});
      }
      check(to->TemporaryName());
    }
    placed = to->Commit();
  }
  RequireArrived(folder, name_, placed, bytes);
  // The old content may still be there, whatever Commit has answered: it is asked for.
  const auto there = FindChild(folder, name_);
  if (!there) {
    throw ItemNotFound(name_);
  }
  OpenedObjects opened;
  if (there.get() != &existing) {
    opened.Borrow(folder, there);
  }
  const Snapshot now = SnapshotOf(*there);
  if (now.size >= 0 && now.size != bytes) {
    throw NotArrived(name_, now.size, bytes);
  }
  // An old content of the same length has the same size.
  if (MayBeUnchanged(before, now, existing.DateStep())) {
    const auto sent = source_.OpenSource();
    const auto arrived = there->OpenSource();
    if (!IsSameContent(*sent, *arrived)) {
      throw RunTimeError(kWriteFault, QStringLiteral("The old content is still there: %1").arg(name_));
    }
  }
  return {name_, bytes, placed.entry.modified, false, from->HadWrongSize()};
}

}  // namespace trevane

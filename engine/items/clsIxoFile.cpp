#include "engine/items/clsIxoFile.h"

#include "base/RunTimeError.h"
#include "engine/controllers/FindControllerOfAddress.h"
#include "engine/controllers/OpenControllerRoot.h"
#include "engine/model/ItemName.h"
#include "engine/model/IxoFiles.h"
#include "engine/transfer/OverlapGuard.h"
#include "engine/transfer/PlaceProbe.h"
#include "views/addresses/Addresses.h"
#include "views/addresses/NodeTags.h"

#include <algorithm>
#include <exception>
#include <new>
#include <utility>

namespace trevane {

namespace {

/// The message of the run-time for an object that is not set.
constexpr qint32 kObjectNotSet = 91;
constexpr qint32 kNotEnoughMemory = error::kWin32Error + 8;

QString OverwriteOption(bool overwrite) {
  return overwrite ? QStringLiteral("OverWrite=True") : QStringLiteral("OverWrite=False");
}

/// A size that the file system does not know is shown as 0.
qint64 KnownSize(IxoFile& file) {
  return std::max<qint64>(file.Size64(), 0);
}

}  // namespace

clsIxoFile::clsIxoFile(const FileAccess& files, DateToText dateText)
    : files_(files),
      dateText_(std::move(dateText)),
      resolver_(files),
      unresolved_(kObjectNotSet, QStringLiteral("No address has been set")) {}

clsIxoFile::clsIxoFile(const FileAccess& files, const QString& address, LookUp lookUp) : clsIxoFile(files) {
  SetPath(address, lookUp);
}

void clsIxoFile::SetFailure(const RunTimeError& failure) {
  result_ = ResultCode(failure);
  resultText_ = failure.Description();
}

template <class Work>
auto clsIxoFile::Guarded(const Work& work) -> decltype(work()) {
  result_ = 0;
  resultText_.clear();
  try {
    return work();
  } catch (const RunTimeError& failure) {
    SetFailure(failure);
  } catch (const std::bad_alloc&) {
    SetFailure(RunTimeError(kNotEnoughMemory, QStringLiteral("There is not enough memory")));
  }
  return decltype(work())();
}

trevane::IxoFile& clsIxoFile::File() const {
  if (!resolver_.File()) {
    throw unresolved_;
  }
  return *resolver_.File();
}

trevane::IxoFile& clsIxoFile::FileBelowTop() const {
  trevane::IxoFile& file = File();
  if (resolver_.File() == resolver_.Top()) {
    throw RunTimeError(error::kAccessDenied,
                       QStringLiteral("A drive or a top folder stays where it is: '%1'").arg(path_));
  }
  return file;
}

void clsIxoFile::SetPath(const QString& address, LookUp lookUp) {
  path_ = address;
  path_.replace(u'/', kAddressSeparator);
  if (path_.endsWith(kAddressSeparator)) {
    path_.chop(1);
  }
  absent_ = false;
  LetGo();
  Guarded([&] {
    try {
      resolver_.Resolve(address, lookUp);
    } catch (const RunTimeError& failure) {
      absent_ = resolver_.IsAbsent();
      unresolved_ = failure;
      throw;
    }
  });
}

QString clsIxoFile::CtrlName() {
  return Guarded([&] {
    static_cast<void>(File());
    return resolver_.Controller()->Name();
  });
}

QString clsIxoFile::Name() {
  return Guarded([&] { return File().Name(); });
}

QString clsIxoFile::Path() {
  return Guarded([&] { return File().Path(); });
}

QString clsIxoFile::FullPath() {
  return Guarded([&] { return File().Path() + File().Name(); });
}

QString clsIxoFile::FileType() {
  return Guarded([&] { return File().Type(); });
}

QStringList clsIxoFile::Details() {
  return Guarded([&] { return File().Details(); });
}

QString clsIxoFile::FileSize() {
  return Guarded([&] { return QString::number(KnownSize(File())); });
}

qint64 clsIxoFile::Size64() {
  return Guarded([&] { return KnownSize(File()); });
}

qint32 clsIxoFile::FileAttribute() {
  return Guarded([&] { return File().Attribute() | (IsOnController() ? TAG_CONTROLLER : 0); });
}

std::optional<qint32> clsIxoFile::AttributeOfPiece(qsizetype piece) {
  const auto item = resolver_.ItemOfPiece(piece);
  if (!item) {
    return std::nullopt;
  }
  return Guarded(
      [&]() -> std::optional<qint32> { return item->Attribute() | (IsOnController() ? TAG_CONTROLLER : 0); });
}

QString clsIxoFile::DateCreated() {
  return Guarded([&] { return dateText_(DateIn(File().DateCreated())); });
}

QString clsIxoFile::DateLastAccessed() {
  return Guarded([&] { return dateText_(DateIn(File().DateLastAccessed())); });
}

QString clsIxoFile::DateLastModified() {
  return Guarded([&] { return dateText_(DateIn(File().DateLastModified())); });
}

Date clsIxoFile::CreatedDate() {
  return Guarded([&] { return DateIn(File().DateCreated()); });
}

Date clsIxoFile::AccessedDate() {
  return Guarded([&] { return DateIn(File().DateLastAccessed()); });
}

Date clsIxoFile::ModifiedDate() {
  return Guarded([&] { return DateIn(File().DateLastModified()); });
}

void clsIxoFile::ForgetLearnt() {
  Guarded([&] { File().ForgetLearnt(); });
}

Variant clsIxoFile::FileNames() {
  return Guarded([&] { return File().FileNames(QString()); });
}

Listing clsIxoFile::List() {
  return Guarded([&] { return File().List(); });
}

void clsIxoFile::ListInBatches(const ListingReceiver& receive) {
  Guarded([&] {
    // No file system is left by an error of the receiver.
    std::exception_ptr raised;
    File().ListInBatches([&](Listing&& entries) {
      try {
        return entries.empty() || receive(std::move(entries));
      } catch (...) {
        raised = std::current_exception();
        return false;
      }
    });
    if (raised) {
      std::rethrow_exception(raised);
    }
  });
}

std::optional<QString> clsIxoFile::Identity() {
  return Guarded([&] { return File().Identity(); });
}

QStringList clsIxoFile::FolderIdentities() {
  return Guarded([&] { return File().FolderIdentities(); });
}

bool clsIxoFile::HasComparableIdentity(clsIxoFile& other) {
  return Guarded([&] { return OverlapGuard::AreComparable(File(), other.File()); });
}

Variant clsIxoFile::Value() {
  return Guarded([&] { return File().Value(); });
}

void clsIxoFile::PutValue(const Variant& value) {
  Guarded([&] { File().PutValue(value); });
}

bool clsIxoFile::CanRun() {
  return Guarded([&] { return File().CanRun(); });
}

Variant clsIxoFile::Execute(const QString& command) {
  return Guarded([&] { return File().Execute(command, Missing{}); });
}

void clsIxoFile::Run() {
  Guarded([&] { File().Run(QString()); });
}

void clsIxoFile::Move(const QString& destination, bool overwrite) {
  Guarded([&] { FileBelowTop().Move(destination, OverwriteOption(overwrite)); });
}

void clsIxoFile::Rename(const QString& newName) {
  Guarded([&] {
    RequireItemName(newName);
    FileBelowTop().Move(File().Path() + newName, OverwriteOption(true));
    path_ = path_.left(path_.lastIndexOf(kAddressSeparator) + 1) + newName;
  });
}

void clsIxoFile::Delete(const ItemObserver& observer) {
  Guarded([&] { FileBelowTop().Delete(QString(), observer); });
}

std::vector<Leftover> clsIxoFile::TakeLeftovers() {
  return Guarded([&] { return File().TakeLeftovers(); });
}

void clsIxoFile::RecordSource(const ItemObserver& observer) {
  record_.reset();
  LetGo();
  Guarded([&] {
    if (FileBelowTop().ListingTellsAll()) {
      heldSource_ = std::make_unique<HeldItem>(resolver_.File());
    }
    MoveRecord record;
    record.Take(resolver_.File(), observer);
    record_ = std::move(record);
  });
}

FoundChild clsIxoFile::FindChild(const QString& name) {
  FoundChild found;
  Guarded([&] {
    std::shared_ptr<trevane::IxoFile> child;
    try {
      child = File().OpenFile(name, QString());
    } catch (const RunTimeError& failure) {
      if (failure.Number() != error::kNotFound) {
        throw;
      }
    }
    if (!child) {
      found.presence = FoundChild::Presence::Absent;
      return;
    }
    found.presence = FoundChild::Presence::There;
    OpenedObjects opened;
    opened.Remember(resolver_.File(), child);
    found.identity = child->Identity();
  });
  return found;
}

void clsIxoFile::DeleteMoved(clsIxoFile& folder, const QString& newName, bool replaced,
                             const ItemObserver& observer) {
  Guarded([&] {
    static_cast<void>(FileBelowTop());
    if (!record_) {
      throw RunTimeError(error::kInvalidParameter, QStringLiteral("Nothing was recorded of '%1'").arg(path_));
    }
    const QString name = newName.isEmpty() ? File().Name() : newName;
    static_cast<void>(folder.File());
    const auto& into = folder.resolver_.File();
    if (replaced) {
      RequireTwoPlaces(into, name);
    }
    {
      // Both sides are looked at anew: what is known of them is from before the copy.
      File().ForgetLearnt();
      into->ForgetLearnt();
      const HeldItem heldSource(resolver_.File());
      const HeldItem heldFolder(into);
      OpenedObjects opened;
      const auto target = into->OpenFile(name, QString());
      if (!target) {
        throw ItemNotFound(name);
      }
      opened.Remember(into, target);
      record_->RequireArrived(resolver_.File(), target,
                              replaced ? MoveRecord::Proof::Content : MoveRecord::Proof::Size, observer);
      target->Flush();
    }
    // A flush can take long, and another program may have written to the source meanwhile.
    File().ForgetLearnt();
    AddressResolver source(files_);
    if (File().ListingTellsAll()) {
      // It is held and looked for once more; an identity could not tell more.
      File().ForgetLearnt();
    } else {
      source.Resolve(path_, LookUp::Exact);
    }
    const auto& from = source.File() ? source.File() : resolver_.File();
    if (!record_->ShowsChanges()) {
      // Neither its size nor its date would show that.
      into->ForgetLearnt();
      const HeldItem heldSource(from);
      const HeldItem heldFolder(into);
      OpenedObjects opened;
      const auto target = into->OpenFile(name, QString());
      if (!target) {
        throw ItemNotFound(name);
      }
      opened.Remember(into, target);
      record_->RequireArrived(from, target, MoveRecord::Proof::Content, observer);
    }
    record_->DeleteSource(from, observer);
    record_.reset();
  });
  LetGo();
}

void clsIxoFile::RequireTwoPlaces(const std::shared_ptr<trevane::IxoFile>& into, const QString& name) const {
  AddressResolver holding(files_);
  holding.Resolve(path_.left(path_.lastIndexOf(kAddressSeparator)), LookUp::Exact);
  const auto& from = holding.File();
  if (!from) {
    throw PlaceProbe::NothingShows(name);
  }
  const HeldItem heldFrom(from);
  const HeldItem heldInto(into);
  // The items of a disk have one identity, however often it is mounted. Without fresh names nothing would
  // show it.
  if (from->SeesArrivals() || into->SeesArrivals() || !into->TakesFreshNames()) {
    return;
  }
  PlaceProbe probe;
  probe.Place(into, name);
  if (probe.IsIn(*from)) {
    throw RunTimeError(
        error::kInvalidParameter,
        QStringLiteral("The destination is the same place; the source was kept: %1").arg(name));
  }
}

QString clsIxoFile::CopyTarget(const QString& destinationAddress, const QString& newName) {
  const QStringList pieces = AddressPieces(destinationAddress);
  const QString address = pieces.join(kAddressSeparator);
  const auto record = FindControllerOfAddress(files_.Session().gIxoCtrls(), address);
  if (!record) {
    throw RunTimeError(0, QStringLiteral("No controller is connected for '%1'").arg(destinationAddress));
  }
  const auto own = FindControllerOfAddress(files_.Session().gIxoCtrls(), path_);
  if (own && own != record) {
    throw RunTimeError(error::kInvalidParameter,
                       QStringLiteral("'%1' is on another controller").arg(destinationAddress));
  }
  QString target;
  if (IsLocalAddress(address)) {
    const auto isDrive = [&pieces](const DriveInfo& drive) {
      return pieces.size() > 2 && EqualIgnoringCase(drive.Root, pieces[2]);
    };
    if (std::ranges::none_of(files_.Drives().Drives(), isDrive)) {
      throw RunTimeError(error::kInvalidName, QStringLiteral("There is no drive at '%1'").arg(address));
    }
  } else if (IsFolderRoot(record->Root())) {
    // Where the root really is, also when it was found in a roundabout way.
    const auto root =
        OpenControllerRoot(*files_.Session().gIxoControllers, record->CtrlIdx(), record->Root());
    if (!root) {
      throw RunTimeError(0, QStringLiteral("The root cannot be opened: %1").arg(record->Root()));
    }
    target = root->Path() + root->Name() + u'\\';
  } else {
    target = QStringLiteral("\\");
  }
  for (const QString& piece : pieces.mid(2)) {
    target += piece + u'\\';
  }
  const QString name = newName.isEmpty() ? File().Name() : newName;
  RequireItemName(name);
  return target + name;
}

qint32 clsIxoFile::Copy(const QString& destinationAddress, const QString& newName, bool overwrite,
                        const ItemObserver& observer) {
  Guarded([&] {
    trevane::IxoFile& file = File();
    const QString target = CopyTarget(destinationAddress, newName);
    file.Copy(target, OverwriteOption(overwrite), observer);
  });
  return result_;
}

qint32 clsIxoFile::CopyDiffCtrl(const QString& destinationAddress, const QString& newName,
                                const ItemObserver& observer) {
  BeginCopy();
  Guarded([&] {
    if (AddressPieces(destinationAddress).size() < 2) {
      throw RunTimeError(-1, QStringLiteral("'%1' is no folder").arg(destinationAddress));
    }
    static_cast<void>(File());
    AddressResolver destination(files_);
    destination.Resolve(destinationAddress, LookUp::Exact);
    CopyAcross(destination.File(), newName, observer);
  });
  return result_;
}

qint32 clsIxoFile::CopyDiffCtrl(clsIxoFile& folder, const QString& newName, const ItemObserver& observer) {
  BeginCopy();
  Guarded([&] {
    static_cast<void>(folder.File());
    CopyAcross(folder.resolver_.File(), newName, observer);
  });
  return result_;
}

void clsIxoFile::LetGo() noexcept {
  heldSource_.reset();
  heldTarget_.reset();
}

void clsIxoFile::BeginCopy() {
  arrived_ = Arrival::Failed;
  arrivedItems_ = 0;
  leftOut_.clear();
}

void clsIxoFile::CopyAcross(const std::shared_ptr<trevane::IxoFile>& folder, const QString& newName,
                            const ItemObserver& observer) {
  const QString name = newName.isEmpty() ? File().Name() : newName;
  CrossControllerCopy copy(files_.Prompts(), observer);
  if (record_) {
    copy.ComparedByCaller();
    if (folder->ListingTellsAll()) {
      heldTarget_ = std::make_unique<HeldItem>(folder);
    }
  }
  try {
    AddressResolver holding(files_);
    copy.Run(resolver_.File(), folder, name, [&] {
      holding.Resolve(path_.left(path_.lastIndexOf(kAddressSeparator)), LookUp::Exact);
      return holding.File();
    });
  } catch (...) {
    arrivedItems_ = copy.ArrivedItems();
    leftOut_ = copy.LeftOut();
    throw;
  }
  leftOut_ = copy.LeftOut();
  arrived_ = copy.Outcome();
  arrivedItems_ = copy.ArrivedItems();
}

std::shared_ptr<trevane::IxoFile> clsIxoFile::AddIxoFile(const QString& name, const QString& folder,
                                                         QString& options) {
  options = QStringLiteral("Path=") + folder + u',' + options;
  return Guarded([&] {
    auto child = File().OpenFile(name, options);
    if (!child) {
      throw RunTimeError(0, QStringLiteral("The item could not be opened: %1").arg(name));
    }
    return child;
  });
}

std::shared_ptr<trevane::IxoFile> clsIxoFile::GetIxoFile(const QString& name) {
  return Guarded([&] {
    const auto files = File().Files();
    auto child = files ? files->Item(name) : nullptr;
    if (!child) {
      throw RunTimeError(0, ItemNotFoundText(name));
    }
    return child;
  });
}

void clsIxoFile::ReleaseChild(const std::shared_ptr<trevane::IxoFile>& child) noexcept {
  if (resolver_.File() && child) {
    ReleaseObject(resolver_.File(), child);
  }
}

}  // namespace trevane

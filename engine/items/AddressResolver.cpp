#include "engine/items/AddressResolver.h"

#include "base/RunTimeError.h"
#include "engine/controllers/FindControllerOfAddress.h"
#include "engine/controllers/OpenControllerRoot.h"
#include "engine/model/ItemName.h"
#include "engine/model/IxoFiles.h"
#include "views/addresses/Addresses.h"
#include "views/addresses/NodeTags.h"

#include <algorithm>

namespace trevane {

namespace {

// "Workspace", "My Computer" and the drive.
constexpr qsizetype kDrivePieces = 3;

[[noreturn]] void RefuseAddress(const QString& address) {
  throw RunTimeError(error::kInvalidName,
                     QStringLiteral("The address names no file or folder: '%1'").arg(address));
}

const DriveInfo* FindDrive(const DriveTable& drives, const QString& root) {
  const auto drive = std::ranges::find_if(
      drives.Drives(), [&root](const DriveInfo& info) { return EqualIgnoringCase(info.Root, root); });
  return drive == drives.Drives().end() ? nullptr : &*drive;
}

/// The failure may be that of a folder on the way, which a walk names.
bool MayBeTheWay(qint32 number) {
  return number == error::kNotFound || number == error::kInvalidName || number == error::kAccessDenied;
}

std::shared_ptr<IxoFile> OpenBelow(IxoController& controller, const QString& top, const QStringList& names) {
  const QString folder = (QStringList(top) + names.first(names.size() - 1)).join(u'\\');
  return controller.OpenFile(names.last(), QStringLiteral("Path=") + folder);
}

}  // namespace

QStringList AddressPieces(const QString& address) {
  QString text = address;
  text.replace(u'/', kAddressSeparator);
  if (text.endsWith(kAddressSeparator)) {
    text.chop(1);
  }
  const QStringList pieces = text.split(kAddressSeparator);
  if (!EqualIgnoringCase(pieces.first(), kWorkspaceAddress)) {
    RefuseAddress(address);
  }
  for (const QString& piece : pieces) {
    if (!IsValidItemName(piece)) {
      RefuseAddress(address);
    }
  }
  return pieces;
}

bool IsFolderRoot(const QString& root) {
  return !root.isEmpty() && root != u"/" && root != u"\\";
}

void AddressResolver::Resolve(const QString& address, LookUp lookUp) {
  Release();
  absent_ = false;
  try {
    const QStringList pieces = AddressPieces(address);
    if (pieces.size() < 2) {
      RefuseAddress(address);
    }
    if (!session_.gIxoControllers) {
      throw RunTimeError(error::kDeviceNotReady, QStringLiteral("There is no engine session"));
    }
    if (EqualIgnoringCase(pieces[1], kMyComputerName)) {
      controller_ = session_.gIxoControllers->Item(session_.gLocalCtrlName);
      const DriveInfo* drive = pieces.size() > kDrivePieces ? FindDrive(drives_, pieces[2]) : nullptr;
      if (drive == nullptr || !OpenByPath(drive->Root, pieces, kDrivePieces, lookUp)) {
        Walk(pieces, TakeDrive(pieces), lookUp);
      }
      return;
    }
    const qsizetype from = TakeController(address, pieces, lookUp);
    if (pieces.size() == from || !OpenByPath(top_->Path() + top_->Name(), pieces, from, lookUp)) {
      Walk(pieces, from, lookUp);
    }
  } catch (const RunTimeError& failure) {
    absent_ = absent_ || failure.Number() == error::kNotFound;
    Release();
    throw;
  }
}

qsizetype AddressResolver::TakeDrive(const QStringList& pieces) {
  if (pieces.size() < kDrivePieces) {
    RefuseAddress(pieces.join(kAddressSeparator));
  }
  const auto files = controller_ ? controller_->Files() : nullptr;
  const auto isTaken = [&](qint32 position) {
    const auto drive = files->Item(position);
    if (!drive) {
      return false;
    }
    opened_.Remember(controller_, drive);
    if (EqualIgnoringCase(drive->Name(), pieces[2])) {
      top_ = drive;
      return true;
    }
    opened_.Release();
    return false;
  };
  // Each position asked for lists all drives. The engine and the table differ only after a change of the
  // drives: the position may then be another drive's, or none.
  const DriveInfo* known = FindDrive(drives_, pieces[2]);
  try {
    if (files && known != nullptr && isTaken(static_cast<qint32>(known - drives_.Drives().data()))) {
      return kDrivePieces;
    }
  } catch (const RunTimeError& failure) {
    if (failure.Number() != error::kOutOfRange) {
      throw;
    }
  }
  for (qint32 position = 0; files && position <= drives_.DriveCount(); ++position) {
    if (isTaken(position)) {
      return kDrivePieces;
    }
  }
  absent_ = true;
  throw RunTimeError(0, QStringLiteral("There is no drive '%1'").arg(pieces[2]));
}

qsizetype AddressResolver::TakeController(const QString& address, const QStringList& pieces, LookUp lookUp) {
  onController_ = true;
  controller_ = session_.gIxoControllers->Item(pieces[1]);
  const auto record = FindControllerOfAddress(session_.gIxoCtrls(), pieces.join(kAddressSeparator));
  // One whose root could not be opened stays open in the engine: below its top is not what the user asked
  // for.
  if (!record) {
    controller_.reset();
    throw RunTimeError(0, QStringLiteral("The controller is not connected: '%1'").arg(address));
  }
  if (IsFolderRoot(record->Root())) {
    // Opened by its path: it is in no collection.
    OpenRoot(*record, pieces.size() > 2 || lookUp == LookUp::Shown);
  } else if (const auto files = controller_ ? controller_->Files() : nullptr) {
    top_ = files->Item(qint32(0));
    if (top_) {
      opened_.Remember(controller_, top_);
    }
  }
  if (!top_) {
    throw RunTimeError(0, QStringLiteral("The controller has no top folder: '%1'").arg(address));
  }
  return 2;
}

void AddressResolver::OpenRoot(clsIxoCtrl& record, bool mayBeKnown) {
  const QString known = record.RootPath();
  const qsizetype separator = known.lastIndexOf(u'\\');
  if (mayBeKnown && controller_ && separator >= 0) {
    top_ = controller_->OpenKnownFolder(known.mid(separator + 1), known.left(separator));
    return;
  }
  top_ = OpenControllerRoot(*session_.gIxoControllers, record.CtrlIdx(), record.Root());
  const QString path = top_ ? top_->Path() + top_->Name() : QString();
  // The top of a share is no folder within one.
  record.SetRootPath(path.startsWith(QStringLiteral("\\\\")) ? QString() : path);
}

bool AddressResolver::OpenShown(const QString& top, const QStringList& pieces, qsizetype from) {
  // Names that are spelt otherwise by now fail where case counts. Of a drive where it does not, the spelling
  // is learnt; of a controller that would cost as many round trips as the folder is deep.
  if (!controller_ || (!onController_ && !controller_->IsCaseSensitive())) {
    return false;
  }
  const QStringList names = pieces.mid(from);
  file_ = controller_->OpenKnownFolder(names.last(),
                                       (QStringList(top) + names.first(names.size() - 1)).join(u'\\'));
  if (!file_) {
    return false;
  }
  found_ = pieces;
  way_ = {file_};
  return true;
}

bool AddressResolver::OpenByPath(const QString& top, const QStringList& pieces, qsizetype from,
                                 LookUp lookUp) {
  if (lookUp == LookUp::Shown && OpenShown(top, pieces, from)) {
    return true;
  }
  if (!controller_ || (lookUp != LookUp::Exact && !controller_->IsCaseSensitive())) {
    return false;
  }
  const QStringList names = pieces.mid(from);
  try {
    file_ = OpenBelow(*controller_, top, names);
  } catch (const RunTimeError& failure) {
    if (lookUp == LookUp::Exact && failure.Number() == error::kNotFound && IsFolderThere(top, names)) {
      absent_ = true;
      throw;
    }
    if (!MayBeTheWay(failure.Number())) {
      throw;
    }
  }
  if (!file_) {
    return false;
  }
  found_ = pieces;
  way_ = {file_};
  return true;
}

std::shared_ptr<IxoFile> AddressResolver::ItemOfPiece(qsizetype piece) const {
  const qsizetype first = found_.size() - static_cast<qsizetype>(way_.size());
  return piece >= first && piece < found_.size() ? way_[static_cast<size_t>(piece - first)] : nullptr;
}

bool AddressResolver::IsFolderThere(const QString& top, const QStringList& names) {
  if (names.size() < 2) {
    // That of a controller is always there. For a drive or a root, the walk reports the error.
    return onController_ && top.isEmpty();
  }
  try {
    return OpenBelow(*controller_, top, names.first(names.size() - 1)) != nullptr;
  } catch (const RunTimeError&) {
    return false;
  }
}

void AddressResolver::Walk(const QStringList& pieces, qsizetype from, LookUp lookUp) {
  auto current = top_;
  QStringList found = pieces.first(from);
  for (qsizetype i = from; i < pieces.size(); ++i) {
    std::shared_ptr<IxoFile> next;
    RunTimeError failure(0, ItemNotFoundText(pieces.first(i + 1).join(kAddressSeparator)));
    try {
      next = current->OpenFile(pieces[i], QString());
    } catch (const RunTimeError& notOpened) {
      if (notOpened.Number() != error::kNotFound) {
        throw;
      }
      failure = notOpened;
    }
    if (!next && lookUp != LookUp::Exact) {
      next = OpenIgnoringCase(*current, pieces[i]);
    }
    if (!next) {
      absent_ = true;
      throw failure;
    }
    opened_.Remember(current, next);
    current = next;
    way_.push_back(next);
    found.append(next->Name());
  }
  file_ = current;
  found_ = found;
}

std::shared_ptr<IxoFile> AddressResolver::OpenIgnoringCase(IxoFile& folder, const QString& name) {
  if ((folder.Attribute() & attribute::kFolder) == 0) {
    return nullptr;
  }
  const Variant listed = folder.FileNames(QString());
  const auto* names = std::get_if<QStringList>(&listed);
  QString match;
  for (const QString& candidate : names != nullptr ? *names : QStringList()) {
    if (EqualIgnoringCase(candidate, name)) {
      if (!match.isNull()) {
        return nullptr;
      }
      match = candidate;
    }
  }
  return match.isNull() ? nullptr : folder.OpenFile(match, QString());
}

void AddressResolver::Release() noexcept {
  file_.reset();
  way_.clear();
  found_.clear();
  ClearChildren(top_);
  opened_.Release();
  top_.reset();
  controller_.reset();
  onController_ = false;
}

}  // namespace trevane

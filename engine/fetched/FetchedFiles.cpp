#include "engine/fetched/FetchedFiles.h"

#include "base/LowerCase.h"
#include "base/RunTimeError.h"
#include "engine/controllers/EngineSession.h"
#include "engine/controllers/FindControllerOfAddress.h"
#include "engine/fetched/SafeFileName.h"
#include "engine/items/AddressResolver.h"
#include "engine/items/clsIxoFile.h"
#include "platform/OwnFile.h"
#include "views/addresses/Addresses.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <chrono>
#include <utility>

namespace trevane {

namespace {

constexpr std::chrono::milliseconds kPace(250);
/// While a long file is read.
constexpr std::chrono::milliseconds kReadingPace(5);
/// "No application is associated with the specified file" of the system's numbers.
constexpr qint32 kNoProgram = error::kWin32Error + 1155;
constexpr qint32 kGeneralFailure = error::kWin32Error + 31;
/// The item changed under the operation.
constexpr qint32 kOtherMachine = error::kWin32Error + 1006;
constexpr qint32 kWriteFault = error::kWin32Error + 29;

bool IsSameFile(const FetchedRecord& left, const FetchedRecord& right) {
  return left.provider == right.provider && left.machine == right.machine && left.option == right.option &&
         left.path == right.path;
}

bool IsControllerOf(const clsIxoCtrl& controller, const FetchedRecord& record) {
  return controller.ProvName() == record.provider && controller.MachineName() == record.machine &&
         controller.CtrlOption() == record.option;
}

/// The path of the file below the root of the controller; empty where it is not below it.
QString PathBelow(const clsIxoCtrl& controller, const FetchedRecord& record) {
  if (controller.Root() == record.root) {
    return record.below;
  }
  const QString root = IsFolderRoot(controller.Root()) ? controller.RootPath() : QString();
  const bool isKnown = !root.isEmpty() || !IsFolderRoot(controller.Root());
  return isKnown && record.path.startsWith(root + u'\\') ? record.path.mid(root.size() + 1) : QString();
}

}  // namespace

FetchedFiles::FetchedFiles(Parts parts) : parts_(std::move(parts)) {
  timer_.setInterval(kPace);
  connect(&timer_, &QTimer::timeout, this, &FetchedFiles::Look);
  connect(&watcher_, &QFileSystemWatcher::fileChanged, this, &FetchedFiles::NoteWrite);
  connect(&watcher_, &QFileSystemWatcher::directoryChanged, this, &FetchedFiles::NoteWriteBeside);
}

FetchedFiles::~FetchedFiles() = default;

void FetchedFiles::Recover() {
  for (std::unique_ptr<FetchedFolder>& abandoned : FetchedFolder::TakeAbandoned(parts_.place)) {
    const std::shared_ptr<FetchedFolder> folder = std::move(abandoned);
    RecoverFrom(folder);
    if (!folder->RemoveIfEmpty()) {
      folders_.push_back(folder);
    }
  }
  if (!files_.empty()) {
    timer_.start();
  }
}

void FetchedFiles::RecoverFrom(const std::shared_ptr<FetchedFolder>& folder) {
  for (const QString& item : folder->Items()) {
    const ownfile::Content content = ownfile::Read(folder->RecordOf(item));
    const std::optional<FetchedRecord> record =
        content.state == ownfile::State::Read ? ReadFetchedRecord(content.bytes) : std::nullopt;
    if (!record || SafeFileName(record->name) != record->name) {
      // Without a record nothing was opened yet. What is no part of a fetch stays.
      QFile::remove(folder->PartOf(item));
      QDir().rmdir(folder->FolderOf(item));
      if (QFileInfo(folder->FolderOf(item)).isDir()) {
        unknown_ += folder->FolderOf(item);
      }
      continue;
    }
    QFile::remove(folder->PartOf(item));
    const File file = std::make_shared<FetchedFile>(folder, item, *record);
    file->Recovered(parts_.now());
    files_.push_back(file);
    Watch(*file);
  }
}

FetchedRecord FetchedFiles::RecordOf(clsIxoFile& file) const {
  const QStringList pieces = AddressPieces(file.Address());
  const auto controller = FindControllerOfAddress(parts_.files.Session().gIxoCtrls(), file.Address());
  if (!controller || pieces.size() < 3) {
    throw RunTimeError(error::kInvalidName,
                       QStringLiteral("The address names no file of a controller: '%1'").arg(file.Address()));
  }
  FetchedRecord record{.provider = controller->ProvName(),
                       .machine = controller->MachineName(),
                       .option = controller->CtrlOption(),
                       .root = controller->Root(),
                       .controller = controller->RealCtrlName(),
                       .below = pieces.mid(2).join(kAddressSeparator),
                       .path = file.FullPath(),
                       .name = SafeFileName(pieces.last())};
  if (file.Result() != 0) {
    throw RunTimeError(file.Result(), file.ResultText());
  }
  return record;
}

FetchedFiles::File FetchedFiles::CopyOf(clsIxoFile& file) const {
  FetchedRecord record = RecordOf(file);
  const auto isSame = [&](const File& known) { return IsSameFile(known->Record(), record); };
  if (std::ranges::none_of(files_, isSame)) {
    return nullptr;
  }
  // One address may lead to one machine today and to another one tomorrow.
  record.server = fetchsteps::ServerOf(file);
  const auto found = std::find_if(files_.rbegin(), files_.rend(), [&](const File& known) {
    return isSame(known) && known->Record().server == record.server;
  });
  return found == files_.rend() ? nullptr : *found;
}

void FetchedFiles::Run(clsIxoFile& file) {
  OfferToNewConnections();
  const File old = CopyOf(file);
  if (old) {
    old->LookNow();
  }
  const bool isUsable = old && old->IsUntouched();
  if (isUsable) {
    old->TakeOver();
  }
  if (isUsable && fetchsteps::IsShownUnchanged(file, old->Record())) {
    Open(*old);
    return;
  }
  Open(*Fetch(file, isUsable ? old : nullptr));
}

FetchedFiles::File FetchedFiles::Fetch(clsIxoFile& file, const File& old) {
  FetchedRecord record = RecordOf(file);
  const std::shared_ptr<FetchedFolder> folder = OwnFolder();
  const QString item = folder->NewItem();
  const QString part = folder->PartOf(item);
  fetchsteps::Fetch(file, part, record);
  // It may have been changed during the fetch, and a program that has it open may save an earlier content
  // over the newer one.
  if (old && old->IsUntouched() && old->Beside().isEmpty() && old->Record().name == record.name &&
      ownfile::MoveOver(part, old->Path())) {
    old->WasFetched();
    old->Renew(record);
    old->WasFetched();
    Watch(*old);
    return old;
  }
  const File fetched = std::make_shared<FetchedFile>(folder, item, record);
  try {
    // The record comes first: a file that can be changed has one.
    fetched->Renew(record);
    if (!ownfile::MakeNewPrivateFolder(fetched->FolderPath()) || !ownfile::MoveOver(part, fetched->Path())) {
      throw RunTimeError(kWriteFault, QStringLiteral("The file cannot be kept: ") + fetched->Path());
    }
  } catch (const RunTimeError&) {
    static_cast<void>(folder->RemoveItem(item, record.name));
    throw;
  }
  fetched->WasFetched();
  files_.push_back(fetched);
  Watch(*fetched);
  timer_.start();
  return fetched;
}

void FetchedFiles::Open(FetchedFile& file) const {
  file.TakeOver();
  const OpenOutcome outcome = parts_.open(file.Path());
  switch (outcome.code) {
    case OpenOutcome::Code::Started:
      return;
    case OpenOutcome::Code::NotFound:
      throw ItemNotFound(file.Path());
    case OpenOutcome::Code::NoProgram:
      throw RunTimeError(kNoProgram, outcome.text);
    case OpenOutcome::Code::Failed:
      throw RunTimeError(kGeneralFailure, outcome.text);
  }
}

std::shared_ptr<FetchedFolder> FetchedFiles::OwnFolder() {
  if (!own_) {
    own_ = FetchedFolder::Make(parts_.place);
    folders_.push_back(own_);
  }
  return own_;
}

void FetchedFiles::Watch(const FetchedFile& file) {
  const QStringList watched = watcher_.files() + watcher_.directories();
  for (const QString& path : {file.FolderPath(), file.Path()}) {
    // A file that was replaced is another one, and not watched yet. Where it cannot be watched it is looked
    // at all the same.
    if (!watched.contains(path) && QFile::exists(path)) {
      watcher_.addPath(path);
    }
  }
}

void FetchedFiles::Unwatch(const FetchedFile& file) {
  for (const QString& path : {file.Path(), file.FolderPath()}) {
    if (watcher_.files().contains(path) || watcher_.directories().contains(path)) {
      watcher_.removePath(path);
    }
  }
}

void FetchedFiles::NoteWrite(const QString& path) {
  for (const File& file : files_) {
    if (path == file->Path()) {
      file->NoteWrite(parts_.now());
      Watch(*file);
    }
  }
}

void FetchedFiles::NoteWriteBeside(const QString& folder) {
  for (const File& file : files_) {
    if (folder == file->FolderPath()) {
      file->NoteWriteBeside(parts_.now());
      Watch(*file);
    }
  }
}

void FetchedFiles::Look() {
  OfferToNewConnections();
  bool isReading = false;
  const std::vector<File> files = files_;
  for (const File& file : files) {
    // One at a time: pieces of several would add up.
    isReading = isReading || file->Advance(parts_.now());
  }
  RemoveUnchangedRecovered();
  SetPace(isReading);
  if (NextToAsk()) {
    Q_EMIT ToBeAsked();
  }
}

void FetchedFiles::SetPace(bool isReading) {
  if (files_.empty()) {
    timer_.stop();
    return;
  }
  const std::chrono::milliseconds pace = isReading ? kReadingPace : kPace;
  if (timer_.intervalAsDuration() != pace) {
    timer_.setInterval(pace);
  }
}

void FetchedFiles::RemoveUnchangedRecovered() {
  const auto removed = std::erase_if(files_, [this](const File& file) {
    if (!file->IsRecovered() || !file->IsSettled() || file->IsChanged()) {
      return false;
    }
    Unwatch(*file);
    // What else is in its folder keeps it until the end.
    file->TakeOver();
    if (file->RemoveUnlessChanged()) {
      return true;
    }
    Watch(*file);
    return false;
  });
  if (removed > 0) {
    std::erase_if(folders_, [this](const auto& folder) { return folder != own_ && folder->RemoveIfEmpty(); });
  }
}

void FetchedFiles::OfferToNewConnections() {
  std::vector<std::weak_ptr<clsIxoCtrl>> now;
  for (const auto& controller : parts_.files.Session().gIxoCtrls()) {
    const bool isKnown = std::ranges::any_of(
        connected_, [&](const std::weak_ptr<clsIxoCtrl>& known) { return known.lock() == controller; });
    for (const File& file : files_) {
      const FetchedRecord& record = file->Record();
      if (!isKnown && IsControllerOf(*controller, record) && !PathBelow(*controller, record).isEmpty()) {
        file->Offer();
      }
    }
    now.push_back(controller);
  }
  connected_ = std::move(now);
}

std::shared_ptr<clsIxoCtrl> FetchedFiles::ConnectedFor(const FetchedRecord& record) const {
  for (const auto& controller : parts_.files.Session().gIxoCtrls()) {
    if (IsControllerOf(*controller, record) && !PathBelow(*controller, record).isEmpty()) {
      return controller;
    }
  }
  return nullptr;
}

QString FetchedFiles::AddressOf(const FetchedRecord& record) const {
  const auto controller = ConnectedFor(record);
  return controller ? JoinAddress(JoinAddress(kWorkspaceAddress.toString(), controller->RealCtrlName()),
                                  PathBelow(*controller, record))
                    : QString();
}

QString FetchedFiles::ControllerOf(const FetchedRecord& record) const {
  const auto controller = ConnectedFor(record);
  return controller ? controller->RealCtrlName() : record.controller;
}

FetchedFiles::File FetchedFiles::NextToAsk() const {
  const auto found = std::ranges::find_if(files_, [](const File& file) { return file->IsToBeAsked(); });
  return found == files_.end() ? nullptr : *found;
}

bool FetchedFiles::IsOfAnotherMachine(const FetchedRecord& record) const {
  const QString address = AddressOf(record);
  if (address.isEmpty() || record.server.isEmpty()) {
    return false;
  }
  try {
    return fetchsteps::LookAt(parts_.files, address).server != record.server;
  } catch (const RunTimeError&) {
    // Nothing is put there without asking once more.
    return false;
  }
}

FetchedFiles::PutBackResult FetchedFiles::PutBack(FetchedFile& file, const QByteArray& content,
                                                  const MayReplace& mayReplace) {
  using fetchsteps::Compared;
  const QString address = AddressOf(file.Record());
  if (address.isEmpty()) {
    throw RunTimeError(error::kDeviceNotReady,
                       QStringLiteral("The controller is not connected: ") + file.Record().controller);
  }
  FetchedRecord record = file.Record();
  fetchsteps::Shown shown;
  for (bool isAgreed = false; !isAgreed;) {
    shown = fetchsteps::LookAt(parts_.files, address);
    if (!record.server.isEmpty() && shown.server != record.server) {
      throw RunTimeError(kOtherMachine,
                         QStringLiteral("Another machine answers as '%1' now, not the one that the file was "
                                        "fetched from")
                             .arg(ControllerOf(record)));
    }
    const Compared compared =
        fetchsteps::Compare(parts_.files, address, record, content, StampOf(file.Path()).size);
    if (compared == Compared::IsThere) {
      record.size = shown.size;
      record.modified = shown.modified;
      record.hash = content;
      file.WasPutBack(record);
      return PutBackResult::Done;
    }
    if (compared == Compared::Changed && !mayReplace()) {
      return PutBackResult::Refused;
    }
    // It may have been changed once more while the question stood there.
    isAgreed = compared == Compared::Unchanged || fetchsteps::LookAt(parts_.files, address) == shown;
  }
  if (!fetchsteps::PutBack(parts_.files, address, file.Path(), content, shown, record)) {
    file.NoteWrite(parts_.now());
    return PutBackResult::ChangedAgain;
  }
  file.WasPutBack(record);
  return PutBackResult::Done;
}

FetchedFiles::Kept FetchedFiles::KeptOf(const FetchedFile& file) {
  return {.name = file.Record().name,
          .controller = file.Record().controller,
          .folder = QDir::toNativeSeparators(file.FolderPath()),
          .why = file.IsCertainlyUnchanged() ? Kept::Why::InUse : Kept::Why::Changed,
          .beside = file.Beside()};
}

void FetchedFiles::AddUnknown(std::vector<Kept>& kept) const {
  for (const QString& path : unknown_) {
    const QDir folder(path);
    const QStringList names =
        folder.entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System);
    for (const QString& name : names) {
      kept.push_back({.name = name,
                      .controller = {},
                      .folder = QDir::toNativeSeparators(path),
                      .why = Kept::Why::Unknown});
    }
  }
}

std::vector<FetchedFiles::Kept> FetchedFiles::End() {
  timer_.stop();
  std::vector<Kept> kept;
  for (const File& file : files_) {
    Unwatch(*file);
    if (!file->RemoveUnlessChanged()) {
      kept.push_back(KeptOf(*file));
    }
  }
  AddUnknown(kept);
  files_.clear();
  unknown_.clear();
  for (const auto& folder : folders_) {
    static_cast<void>(folder->RemoveIfEmpty());
  }
  own_.reset();
  folders_.clear();
  return kept;
}

}  // namespace trevane

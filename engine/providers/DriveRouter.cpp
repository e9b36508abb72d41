#include "engine/providers/DriveRouter.h"

#include "base/LowerCase.h"
#include "engine/files/HeldFolder.h"
#include "engine/files/ProviderPath.h"
#include "engine/providers/DriveSnapshot.h"
#include "engine/remote/RemoteFileSystem.h"

#include <algorithm>
#include <utility>

namespace trevane {
namespace {

/// A file system together with the drives that it shows.
struct DrivesOfThread {
  explicit DrivesOfThread(std::vector<Volume> table) : drives(std::move(table)) {}

  DriveSnapshot drives;
  std::shared_ptr<FileSystem> files;
};

bool IsSeparator(QChar letter) {
  return letter == u'\\' || letter == u'/';
}

/// The first `count` names of a path and what stands before them.
QStringView FirstNames(QStringView path, int count) {
  qsizetype end = 0;
  for (int i = 0; i < count; ++i) {
    while (end < path.size() && IsSeparator(path[end])) {
      ++end;
    }
    while (end < path.size() && !IsSeparator(path[end])) {
      ++end;
    }
  }
  return path.first(end);
}

const Volume* DriveNamed(const std::vector<Volume>& drives, QStringView name) {
  const auto found = std::find_if(drives.begin(), drives.end(), [name](const Volume& drive) {
    return name.compare(drive.name, Qt::CaseInsensitive) == 0;
  });
  return found == drives.end() ? nullptr : &*found;
}

}  // namespace

DriveRouter::DriveRouter(RemoteContext& context, Volumes& drives, Open open)
    : context_(context),
      drives_(drives),
      open_(std::move(open)),
      direct_(open_(drives_, {})),
      capabilities_(direct_->Capabilities()) {}

DriveRouter::~DriveRouter() = default;

DriveRouter::Speed DriveRouter::SpeedOf(const Volume& drive) {
  switch (drive.driveType) {
    case drivetype::kRemote:
      return Speed::Remote;
    case drivetype::kRemovable:
      return Speed::Removable;
    default:
      return Speed::Fixed;
  }
}

DriveRouter::Place DriveRouter::PlaceOf(const QString& path) const {
  if (capabilities_.shares && providerpath::IsShare(path)) {
    QString key = LowerCase(FirstNames(path, 2).toString());
    return {Speed::Remote, nullptr, key.replace(u'/', u'\\')};
  }
  QStringView first = FirstNames(path, 1);
  while (!first.isEmpty() && IsSeparator(first.front())) {
    first = first.sliced(1);
  }
  if (first.isEmpty()) {
    return {};
  }
  const std::vector<Volume>& drives = drives_.Current();
  const bool namesDrive = first.size() == 2 && first[1] == u':';
  const Volume* drive = namesDrive ? DriveNamed(drives, first) : drives.empty() ? nullptr : &drives.front();
  if (drive == nullptr) {
    return {};
  }
  const Speed speed = SpeedOf(*drive);
  return {speed, drive, speed == Speed::Fixed ? QString() : drive->name};
}

bool DriveRouter::StillHolds(const Slow& slow, const Place& place, const Place& other) const {
  const auto isKnown = [&slow](const Volume* drive) {
    if (drive == nullptr) {
      return true;
    }
    const Volume* known = DriveNamed(slow.drives, drive->name);
    return known != nullptr && *known == *drive;
  };
  return isKnown(place.drive) && isKnown(other.drive);
}

void DriveRouter::DropVanished() {
  std::erase_if(slow_, [this](const auto& each) {
    const QString& key = each.first;
    if (providerpath::IsShare(key)) {
      return false;
    }
    const Volume* drive = DriveNamed(drives_.Current(), key);
    return drive == nullptr || SpeedOf(*drive) == Speed::Fixed;
  });
}

DriveRouter::Slow DriveRouter::Start(const QString& key) {
  const std::vector<Volume>& table = drives_.Current();
  RemoteConnection::Opening opening;
  opening.name = key;
  opening.noun = providerpath::IsShare(key) ? QStringLiteral("share") : QStringLiteral("drive");
  opening.tellsNoWriting = true;
  opening.open = [open = open_, table](const FileSystemRequest& request) {
    const auto opened = std::make_shared<DrivesOfThread>(table);
    opened->files = open(opened->drives, request);
    return std::shared_ptr<FileSystem>(opened, opened->files.get());
  };
  // Nothing is waited for: there is nothing to ask the drive itself.
  return {table, std::make_shared<RemoteFileSystem>(
                     std::make_shared<RemoteConnection>(context_, std::move(opening)), capabilities_)};
}

FileSystem& DriveRouter::FilesAt(const Place& place, const Place& other, bool changes) {
  if (place.speed == Speed::Fixed) {
    return *direct_;
  }
  auto found = slow_.find(place.key);
  if (found == slow_.end() || !StillHolds(found->second, place, other)) {
    DropVanished();
    found = slow_.insert_or_assign(place.key, Start(place.key)).first;
  }
  found->second.isWorkedIn = found->second.isWorkedIn || changes;
  return *found->second.files;
}

FileSystem& DriveRouter::Reading(const QString& path) {
  return FilesAt(PlaceOf(path), {}, false);
}

FileSystem& DriveRouter::Changing(const QString& path) {
  return FilesAt(PlaceOf(path), {}, true);
}

FileSystem& DriveRouter::Changing(const QString& from, const QString& to) {
  const Place source = PlaceOf(from);
  const Place target = PlaceOf(to);
  return source.speed > target.speed ? FilesAt(source, target, true) : FilesAt(target, source, true);
}

Listing DriveRouter::List(const QString& folder) {
  return Reading(folder).List(folder);
}

void DriveRouter::ListInBatches(const QString& folder, const ListingReceiver& receive) {
  Reading(folder).ListInBatches(folder, receive);
}

FileEntry DriveRouter::Stat(const QString& path) {
  return Reading(path).Stat(path);
}

std::optional<FileEntry> DriveRouter::Find(const QString& path) {
  return Reading(path).Find(path);
}

std::unique_ptr<ContentSource> DriveRouter::OpenSource(const QString& path, qint64 offset) {
  return Reading(path).OpenSource(path, offset);
}

std::unique_ptr<ContentSink> DriveRouter::OpenSink(const QString& path, const SinkRequest& request) {
  return Changing(path).OpenSink(path, request);
}

std::vector<ReadResult> DriveRouter::ReadMany(const QStringList& paths) {
  FileSystem* const first = paths.isEmpty() ? direct_.get() : &Reading(paths.front());
  const bool isOne =
      std::all_of(paths.begin(), paths.end(), [&](const QString& path) { return &Reading(path) == first; });
  return isOne ? first->ReadMany(paths) : FileSystem::ReadMany(paths);
}

std::vector<WriteResult> DriveRouter::WriteMany(const std::vector<NewContent>& files) {
  FileSystem* const first = files.empty() ? direct_.get() : &Changing(files.front().name);
  const bool isOne = std::all_of(files.begin(), files.end(),
                                 [&](const NewContent& file) { return &Changing(file.name) == first; });
  return isOne ? first->WriteMany(files) : FileSystem::WriteMany(files);
}

bool DriveRouter::HasLostLine(const QString& path) const {
  const auto found = slow_.find(PlaceOf(path).key);
  return found != slow_.end() && found->second.files->HasLostLine(path);
}

std::optional<QString> DriveRouter::ReadLink(const QString& path) {
  return Reading(path).ReadLink(path);
}

void DriveRouter::CreateLink(const QString& path, const QString& target) {
  Changing(path).CreateLink(path, target);
}

void DriveRouter::ForgetLearnt() {
  direct_->ForgetLearnt();
  for (const auto& [key, slow] : slow_) {
    slow.files->ForgetLearnt();
  }
}

FileTraits DriveRouter::Traits(const QString& path) {
  return Reading(path).Traits(path);
}

void DriveRouter::SetTraits(const QString& path, const FileTraits& traits) {
  Changing(path).SetTraits(path, traits);
}

void DriveRouter::Flush(const QString& path) {
  Reading(path).Flush(path);
}

void DriveRouter::CreateFile(const QString& path) {
  Changing(path).CreateFile(path);
}

void DriveRouter::CreateFolder(const QString& path) {
  Changing(path).CreateFolder(path);
}

void DriveRouter::CreateClosedFolder(const QString& path) {
  Changing(path).CreateClosedFolder(path);
}

std::shared_ptr<HeldFolder> DriveRouter::Hold(const QString& folder) {
  return Changing(folder).Hold(folder);
}

void DriveRouter::Copy(const QString& from, const QString& to, bool overwrite, const ItemObserver& observer) {
  Changing(from, to).Copy(from, to, overwrite, observer);
}

void DriveRouter::Rename(const QString& from, const QString& to, bool overwrite) {
  Changing(from, to).Rename(from, to, overwrite);
}

void DriveRouter::Remove(const QString& path, const ItemObserver& observer) {
  Changing(path).Remove(path, observer);
}

void DriveRouter::RemoveAlone(const QString& path) {
  Changing(path).RemoveAlone(path);
}

std::vector<Leftover> DriveRouter::TakeLeftovers() {
  std::vector<Leftover> all = direct_->TakeLeftovers();
  for (auto& [key, slow] : slow_) {
    if (!slow.isWorkedIn) {
      continue;
    }
    try {
      const std::vector<Leftover> some = slow.files->TakeLeftovers();
      slow.isWorkedIn = false;
      all.insert(all.end(), some.begin(), some.end());
    } catch (const RunTimeError&) {
      // What the others have told must not be lost; this one is asked again the next time.
    }
  }
  return all;
}

Variant DriveRouter::Execute(const QString& path, const QString& command, const Variant& parameter) {
  return Changing(path).Execute(path, command, parameter);
}

std::optional<FileIdentity> DriveRouter::Identity(const QString& path) {
  return Reading(path).Identity(path);
}

QStringList DriveRouter::Details(const QString& path) {
  return Reading(path).Details(path);
}

std::vector<FileIdentity> DriveRouter::FolderIdentities(const QString& folder) {
  return Reading(folder).FolderIdentities(folder);
}

}  // namespace trevane

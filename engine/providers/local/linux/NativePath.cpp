#include "engine/providers/local/linux/NativePath.h"

#include "base/NameCodec.h"
#include "engine/files/ProviderError.h"
#include "engine/files/ProviderPath.h"
#include "engine/model/ItemName.h"
#include "engine/providers/local/linux/ErrnoTable.h"
#include "engine/providers/local/linux/FileStatus.h"
#include "engine/providers/local/linux/NativeName.h"
#include "platform/Volumes.h"
#include "platform/linux/SystemCalls.h"

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <limits.h>

namespace trevane::local {

QByteArray NativePath::Whole() const {
  QByteArray whole = root;
  for (const QByteArray& name : names) {
    if (!whole.endsWith('/')) {
      whole += '/';
    }
    whole += name;
  }
  return whole;
}

QString NativePath::ParentText() const {
  const qsizetype at = text.lastIndexOf(u'\\');
  return at < 0 ? QString() : text.first(at);
}

NativePath NativePath::Parent() const {
  NativePath parent = *this;
  parent.names.pop_back();
  parent.text = ParentText();
  return parent;
}

NativePath ResolvePath(const Volumes& volumes, const QString& path) {
  if (providerpath::IsShare(path)) {
    Fail(error::kNotSupported, QStringLiteral("Shares of other machines cannot be opened here"), path);
  }
  QStringList pieces = providerpath::Split(path);
  NativePath native;
  if (pieces.isEmpty()) {
    return native;
  }
  const std::vector<Volume>& drives = volumes.Current();
  auto drive = drives.begin();
  if (providerpath::IsDriveName(pieces.first())) {
    drive = std::find_if(drives.begin(), drives.end(), [&](const Volume& volume) {
      return volume.name.compare(pieces.first(), Qt::CaseInsensitive) == 0;
    });
    pieces.removeFirst();
  }
  if (drive == drives.end()) {
    Fail(error::kNotFound, path);
  }
  native.drive = drive->name;
  native.device = drive->device;
  native.root = EncodeText(drive->rootPath);
  if (!native.root.endsWith('/')) {
    native.root += '/';
  }
  native.text = pieces.isEmpty() ? native.drive : native.drive + u'\\' + providerpath::Join(pieces);
  native.names.reserve(static_cast<std::size_t>(pieces.size()));
  for (const QString& piece : std::as_const(pieces)) {
    native.names.push_back(ToNativeName(piece, native.text));
  }
  return native;
}

bool PathResolver::IsDriveAsBefore(const Volumes& volumes) const {
  const std::vector<Volume>& drives = volumes.Current();
  return drive_ < drives.size() && drives[drive_].name == native_.drive &&
         drives[drive_].device == native_.device && drives[drive_].rootPath == driveRoot_;
}

NativePath PathResolver::Resolve(const Volumes& volumes, const QString& path) {
  const qsizetype at = path.lastIndexOf(u'\\');
  const QString name = path.sliced(at + 1);
  const bool hasFolder = at > 0 && IsValidItemName(name);
  if (hasFolder && !folder_.isEmpty() && QStringView(path).first(at) == folder_ && IsDriveAsBefore(volumes)) {
    NativePath native;
    native.text = providerpath::Child(native_.text, name);
    native.drive = native_.drive;
    native.root = native_.root;
    native.device = native_.device;
    native.names.reserve(native_.names.size() + 1);
    native.names = native_.names;
    native.names.push_back(ToNativeName(name, native.text));
    return native;
  }
  NativePath native = ResolvePath(volumes, path);
  folder_.clear();
  if (hasFolder && !native.IsTopOrDrive()) {
    const std::vector<Volume>& drives = volumes.Current();
    drive_ = static_cast<std::size_t>(
        std::find_if(drives.begin(), drives.end(), [&](const Volume& v) { return v.name == native.drive; }) -
        drives.begin());
    driveRoot_ = drives[drive_].rootPath;
    folder_ = path.first(at);
    native_ = native.Parent();
  }
  return native;
}

Location Locate(const NativePath& path) {
  Location location{{}, AT_FDCWD, path.root};
  // The root of the system never changes. Any other is opened and held, so that items are looked up on the
  // volume that was checked and not on one that has replaced it.
  if (path.root != "/") {
    location.holder = OpenAt(AT_FDCWD, path.root.constData(), O_PATH | O_DIRECTORY);
    if (!location.holder.IsOpen()) {
      NativePath root = path;
      root.names.clear();
      FailOpen(errno, root);
    }
    struct statx status {};
    if (path.device != 0 &&
        (StatusOf(location.holder.Get(), status) != 0 || DeviceOf(status) != path.device)) {
      Fail(error::kDeviceNotReady, path.text);
    }
    location.folder = location.holder.Get();
    location.name = path.names.empty() ? QByteArray(".") : QByteArray();
  }
  qsizetype length = location.name.size();
  for (const QByteArray& name : path.names) {
    length += name.size() + 1;
  }
  location.name.reserve(std::min<qsizetype>(length, PATH_MAX));
  for (std::size_t i = 0; i < path.names.size(); ++i) {
    const QByteArray& name = path.names[i];
    if (!location.name.isEmpty() && location.name.size() + 1 + name.size() >= PATH_MAX) {
      FileDescriptor next = OpenAt(location.folder, location.name.constData(), O_PATH | O_DIRECTORY);
      if (!next.IsOpen()) {
        FailErrno(errno, path.text);
      }
      location.holder = std::move(next);
      location.folder = location.holder.Get();
      location.name.clear();
    }
    if (!location.name.isEmpty() && !location.name.endsWith('/')) {
      location.name += '/';
    }
    location.name += name;
  }
  return location;
}

FileDescriptor OpenForNames(const NativePath& folder) {
  const Location location = Locate(folder);
  FileDescriptor opened = OpenAt(location.folder, location.name.constData(), O_PATH | O_DIRECTORY);
  if (!opened.IsOpen()) {
    FailOpen(errno, folder);
  }
  return opened;
}

void FailOpen(int code, const NativePath& path) {
  if (path.IsTopOrDrive() && (code == ENOENT || code == ENOTDIR)) {
    Fail(error::kDeviceNotReady, path.text);
  }
  FailErrno(code, path.text);
}

}  // namespace trevane::local

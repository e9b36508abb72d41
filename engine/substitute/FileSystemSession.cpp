#include "engine/substitute/FileSystemSession.h"

#include "engine/providers/ProviderPath.h"

#include <algorithm>

namespace trevane {

namespace {

RunTimeError NotFound(const QString& path) {
  return RunTimeError(error::kNotFound, QStringLiteral("The item was not found: %1").arg(path));
}

}  // namespace

QString FileSystemSession::ToPath(const QString& enginePath) {
  QStringList pieces = providerpath::Split(enginePath);
  if (capabilities_.topHoldsDrives) {
    if (!pieces.isEmpty() && providerpath::IsDriveName(pieces.first())) {
      pieces.first() = pieces.first().toUpper();
    } else {
      const Listing drives = List(QString());
      if (drives.empty()) {
        throw NotFound(enginePath);
      }
      pieces.prepend(drives.front().name);
    }
  }
  return pieces.join(u'\\');
}

bool FileSystemSession::IsTop(const QString& path) const {
  return path.isEmpty() || (capabilities_.topHoldsDrives && !path.contains(u'\\'));
}

FileEntry FileSystemSession::Stat(const QString& path) {
  std::optional<FileEntry> entry = Find(path);
  if (!entry) {
    throw NotFound(path);
  }
  return *std::move(entry);
}

std::optional<FileEntry> FileSystemSession::Find(const QString& path) {
  if (path.isEmpty()) {
    FileEntry top;
    top.attributes = attribute::kFolder;
    return top;
  }
  if (IsTop(path)) {
    const Listing drives = List(QString());
    const auto drive = std::find_if(drives.begin(), drives.end(), [&path](const FileEntry& entry) {
      return entry.name.compare(path, Qt::CaseInsensitive) == 0;
    });
    return drive == drives.end() ? std::nullopt : std::optional(*drive);
  }
  std::optional<FileEntry> entry = fileSystem_->Find(path);
  if (!entry) {
    return entry;
  }
  const QString asked = path.mid(path.lastIndexOf(u'\\') + 1);
  if (!providerpath::IsValidName(entry->name) || entry->name.compare(asked, NameCase()) != 0) {
    entry->name = asked;
  }
  return entry;
}

Listing FileSystemSession::List(const QString& path) {
  Listing entries = fileSystem_->List(path);
  std::erase_if(entries, [](const FileEntry& entry) { return !providerpath::IsValidName(entry.name); });
  return entries;
}

}  // namespace trevane

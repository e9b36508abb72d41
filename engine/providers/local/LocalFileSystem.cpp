#include "engine/providers/local/LocalFileSystem.h"

#include "engine/files/WholeFile.h"
#include "platform/ShellIcons.h"
#include "platform/TypedPath.h"
#include "platform/Volumes.h"

#include <optional>

namespace trevane {

FileEntry LocalFileSystem::DriveEntry(const QString& name) {
  FileEntry entry;
  entry.name = name;
  entry.attributes = attribute::kFolder;
  return entry;
}

Listing LocalFileSystem::Drives() const {
  Listing listing;
  for (const Volume& volume : volumes_.Current()) {
    listing.push_back(DriveEntry(volume.name));
  }
  return listing;
}

QString LocalFileSystem::PathFromText(const QString& text) {
  return typedpath::Understand(text);
}

QString LocalFileSystem::TypeNameOf(ShellIcons* icons, const FileEntry& entry) {
  if (icons != nullptr && !entry.IsFolder()) {
    const qsizetype dot = entry.name.lastIndexOf(u'.');
    if (dot >= 0 && dot + 1 < entry.name.size()) {
      const std::optional<ShellFileInfo> info = icons->ForExtension(entry.name.sliced(dot).toUpper());
      if (info.has_value() && !info->typeName.isEmpty()) {
        return info->typeName;
      }
    }
  }
  return DefaultTypeName(entry);
}

}  // namespace trevane

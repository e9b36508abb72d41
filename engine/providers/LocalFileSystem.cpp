#include "engine/providers/LocalFileSystem.h"

#include "platform/ShellIcons.h"

#include <optional>

namespace trevane {

QString LocalFileSystem::TypeName(const FileEntry& entry) {
  if (icons_ != nullptr && !entry.IsFolder()) {
    const qsizetype dot = entry.name.lastIndexOf(u'.');
    if (dot >= 0 && dot + 1 < entry.name.size()) {
      const std::optional<ShellFileInfo> info = icons_->ForExtension(entry.name.sliced(dot));
      if (info.has_value() && !info->typeName.isEmpty()) {
        return info->typeName;
      }
    }
  }
  return FileSystem::TypeName(entry);
}

bool LocalFileSystem::IsTemporaryName(const QString& name) {
  return name.size() == 19 && name.startsWith(QStringLiteral(".trevane-")) &&
         name.endsWith(QStringLiteral(".tmp"));
}

}  // namespace trevane

#include "engine/providers/FileSystem.h"

#include "engine/providers/ProviderError.h"

namespace trevane {

Variant FileSystem::Execute(const QString& path, const QString& command, const Variant& parameter) {
  Q_UNUSED(command);
  Q_UNUSED(parameter);
  Fail(error::kNotSupported, path);
}

std::optional<FileIdentity> FileSystem::Identity(const QString& path) {
  Q_UNUSED(path);
  return std::nullopt;
}

QString FileSystem::TypeName(const FileEntry& entry) {
  if (entry.IsFolder()) {
    return QStringLiteral("Folder");
  }
  const qsizetype dot = entry.name.lastIndexOf(u'.');
  if (dot <= 0 || dot + 1 == entry.name.size()) {
    return QStringLiteral("File");
  }
  return entry.name.sliced(dot + 1).toUpper() + QStringLiteral(" File");
}

}  // namespace trevane

#pragma once

#include "engine/files/FileSystem.h"

/// Copying and removing trees, written once over the members that every file system has.
namespace trevane {

/// As FileSystem::Copy. No link is followed; a link is copied as a link where the file system has them.
void CopyTreeByPath(FileSystem& files, const QString& from, const QString& to, bool overwrite,
                    const ItemObserver& observer);

/// As FileSystem::Remove.
void RemoveTreeByPath(FileSystem& files, const QString& path, const ItemObserver& observer);

}  // namespace trevane

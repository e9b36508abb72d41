#pragma once

#include <QString>

namespace trevane {

class FileSystem;

/// Renames or moves an item, also to another drive of the file system; `overwrite` means the same as for
/// FileSystem::Rename. Where a rename is not possible, the item is copied under a temporary name, compared,
/// put in place and flushed; then the source is deleted item by item. The source is deleted only after
/// everything has arrived: items that change or appear in it meanwhile are kept, and the move fails.
void MoveItem(FileSystem& files, const QString& from, const QString& to, bool overwrite);

}  // namespace trevane

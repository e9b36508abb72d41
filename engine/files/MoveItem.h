#pragma once

#include <QString>

namespace trevane {

class FileSystem;

/// Renames or moves an item, also to another drive of the file system; `overwrite` is read as by
/// FileSystem::Rename. What a rename cannot do is copied under a temporary name, compared, put in place and
/// flushed; then the source is deleted item by item. The source is given up only when everything has arrived:
/// what changes or appears in it meanwhile stays where it is, and the move fails.
void MoveItem(FileSystem& files, const QString& from, const QString& to, bool overwrite);

}  // namespace trevane

#pragma once

#include "engine/files/FileSystem.h"
#include "engine/model/ItemObserver.h"
#include "engine/providers/local/LeftoverLog.h"
#include "engine/providers/local/windows/ItemStatus.h"

#include <QString>

#include <vector>

namespace trevane::local {

/// An item of the disk: its path, and its name in failures.
struct Place {
  QString path;
  QString text;

  [[nodiscard]] Place Child(const QString& name) const;
};

/// Fails when a folder (or a file or link) must not replace `existing`: an item of another kind, or a
/// read-only file.
void RequireReplaceable(bool sourceIsFolder, const ItemStatus& existing, const QString& text);

/// Renames in one step. Without `replace` an existing item is left alone (ERROR_ALREADY_EXISTS). 0, or an
/// error of the system. With `durable` the new name is on the disk when this returns. New files are often
/// held open by a scanner or an indexer: then the rename is repeated for a second.
[[nodiscard]] DWORD RenameItem(const QString& from, const QString& to, bool replace, bool durable = false);

/// Replaces an empty folder, which has to be removed first and is created again when the rename fails. 0, or
/// an error of the system.
[[nodiscard]] DWORD RenameOverEmptyFolder(const QString& from, const QString& to);

/// Flushes a file to the disk: 0, or an error of the system.
[[nodiscard]] DWORD FlushFile(const QString& path, const ItemStatus& status);

/// Copies one item, a folder with everything below it, as CopyTree does. Links are never followed. Files are
/// copied by the system, which clones where the file system can, and keeps times, attributes and further
/// streams.
class TreeCopier {
 public:
  /// `leftovers` is for leftovers of killed programs in the folders that others are merged into.
  explicit TreeCopier(LeftoverLog& leftovers) : leftovers_(leftovers) {}

  void Copy(const Place& from, const ItemStatus& source, const Place& to, bool replace,
            const ItemObserver& observer);

 private:
  LeftoverLog& leftovers_;
};

/// The identities of the folder that a path leads to and of all above it.
[[nodiscard]] std::vector<FileIdentity> FoldersUpwards(const QString& folder);

}  // namespace trevane::local

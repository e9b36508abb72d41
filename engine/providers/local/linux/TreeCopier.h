#pragma once

#include "engine/files/FileSystem.h"
#include "engine/model/ItemObserver.h"
#include "engine/providers/local/LeftoverLog.h"
#include "engine/providers/local/linux/FileStatus.h"
#include "engine/providers/local/linux/FolderChain.h"

#include <QByteArray>

#include <optional>
#include <vector>

namespace trevane::local {

/// The status of an item, nothing when it is missing. Fails when it cannot be asked.
[[nodiscard]] std::optional<struct statx> StatusIfThere(const FolderChain& folder, const QByteArray& name);

/// Fails when a folder (or a file or link) must not replace `existing`: an item of another kind, a device, or
/// one that this user may not write. `existing` is `name` in `folder`.
void RequireReplaceable(bool sourceIsFolder, const struct statx& existing, const FolderChain& folder,
                        const QByteArray& name, const Credentials& user);

/// Renames within one volume in one step. Without `replace` an existing destination is EEXIST and is left
/// alone. 0, or an errno; 0 also for a rename that took place but reported a failure. `source` is the status
/// of the item where the caller knows it.
[[nodiscard]] int RenameItem(int fromFolder, const QByteArray& from, int toFolder, const QByteArray& to,
                             bool replace, const struct statx* source = nullptr);

/// Copies one item, a folder with everything below it, from one open folder into another, as CopyTree does.
/// Links are never followed; devices, pipes and sockets are refused without being opened.
class TreeCopier {
 public:
  /// The current folders of `from` and `to` are those of source and destination. `leftovers` is for leftovers
  /// of killed programs in the folders that others are merged into.
  TreeCopier(FolderChain& from, FolderChain& to, const Credentials& user, LeftoverLog& leftovers)
      : from_(from), to_(to), user_(user), leftovers_(leftovers) {}

  void Copy(const QByteArray& name, const QByteArray& newName, bool replace, const ItemObserver& observer);

 private:
  FolderChain& from_;
  FolderChain& to_;
  const Credentials& user_;
  LeftoverLog& leftovers_;
};

/// The identities of an open folder and of all above it.
[[nodiscard]] std::vector<FileIdentity> FoldersUpwards(int folder);

}  // namespace trevane::local

#pragma once

#include "engine/model/ItemObserver.h"
#include "engine/providers/local/LeftoverLog.h"
#include "engine/providers/local/linux/FileCopier.h"
#include "engine/providers/local/linux/FileStatus.h"
#include "engine/providers/local/linux/FolderChain.h"

#include <QByteArray>

#include <optional>
#include <set>
#include <utility>
#include <vector>

namespace trevane::local {

/// The status of an item, nothing when it is missing. Fails when it cannot be asked.
[[nodiscard]] std::optional<struct statx> StatusIfThere(const FolderChain& folder, const QByteArray& name);

/// Fails when `source` must not replace `existing`: an item of another kind, a device, or one that this user
/// may not write. `existing` is `name` in `folder`.
void RequireReplaceable(const struct statx& source, const struct statx& existing, const FolderChain& folder,
                        const QByteArray& name, const Credentials& user);

/// Renames within one volume in one step. Without `replace` an existing destination is EEXIST and is left
/// alone. 0, or an errno; 0 also for a rename that took place but reported a failure.
[[nodiscard]] int RenameItem(int fromFolder, const QByteArray& from, int toFolder, const QByteArray& to,
                             bool replace);

/// Copies one item, a folder with everything below it, from one open folder into another. New items are built
/// under a temporary name and renamed when they are whole; an unfinished copy is removed. Links are never
/// followed; devices, pipes and sockets are refused without being opened.
class TreeCopier {
 public:
  /// The current folders of `from` and `to` are those of source and destination.
  TreeCopier(FolderChain& from, FolderChain& to, const Credentials& user);

  /// Called by Copy with each item within a folder.
  void SetObserver(const ItemObserver& observer) { observer_ = observer; }

  /// For leftovers of killed programs in the folders that others are merged into. Null: they are not searched
  /// for.
  void SetLeftoverLog(LeftoverLog* leftovers) { leftovers_ = leftovers; }

  /// With `replace` a folder is merged into an existing one and a file is replaced; otherwise an existing
  /// destination is error::kExists, also one that appears meanwhile. Where two names of the source are one at
  /// the destination (letter case), the second is error::kExists as well: it never replaces the first.
  void Copy(const QByteArray& name, const QByteArray& newName, bool replace);

 private:
  using Names = std::vector<QByteArray>;
  /// One folder that is being copied.
  struct Level {
    Names folders;
    /// New, and still under a temporary name at this level or one above.
    bool fresh = false;
    /// Has a temporary name until it is whole.
    bool isTemporary = false;
    QByteArray finalName;
    /// The items that this copy has put into an existing folder, so that it never replaces one of them.
    std::set<std::pair<quint64, quint64>> put;
  };

  /// Copies a file or a link under a temporary name and renames it.
  void PutItem(const QByteArray& name, const QByteArray& newName, const struct statx& status, bool replace);
  /// Copies a file or a link into an existing folder, where it may replace another.
  void MergeItem(const QByteArray& name, const struct statx& status);
  void RefusePut(const struct statx& existing, const QByteArray& name) const;
  void CopyFolder(const QByteArray& name, const QByteArray& newName, bool replace);
  void EnterLevel(const QByteArray& name, const QByteArray& newName, bool replace);
  void CopyLevelItems();
  void ReportProgress(const QByteArray& name) const;
  void LeaveLevel();
  void DropTemporary();
  void RefuseInside() const;
  [[nodiscard]] QByteArray MakeTemporaryFolder();

  FolderChain& from_;
  FolderChain& to_;
  const Credentials& user_;
  FileCopier files_;
  ItemObserver observer_;
  LeftoverLog* leftovers_ = nullptr;
  std::vector<Level> levels_;
  /// The folders from the destination upwards.
  std::vector<FileIdentity> above_;
};

/// The identities of an open folder and of all above it.
[[nodiscard]] std::vector<FileIdentity> FoldersUpwards(int folder);

}  // namespace trevane::local

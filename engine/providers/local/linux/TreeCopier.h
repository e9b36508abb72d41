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

/// What stands at a destination now: a status, or nothing. Fails when it cannot be asked.
[[nodiscard]] std::optional<struct statx> StatusIfThere(const FolderChain& folder, const QByteArray& name);

/// Refuses to put an item of the kind of `source` in the place of `existing`: something of another kind, a
/// device, or what this user may not write. `existing` is `name` in `folder`.
void RequireReplaceable(const struct statx& source, const struct statx& existing, const FolderChain& folder,
                        const QByteArray& name, const Credentials& user);

/// Renames within one volume in one step. Without `replace` an existing destination is EEXIST and stays.
/// 0, or an errno; a rename that reports a failure but did happen is none.
[[nodiscard]] int RenameItem(int fromFolder, const QByteArray& from, int toFolder, const QByteArray& to,
                             bool replace);

/// Copies one item, a folder with everything below it, from one open folder into another. What is new comes
/// under a temporary name and is renamed when it is whole; what fails is removed again. Never goes through a
/// link; devices, pipes and sockets are refused unopened.
class TreeCopier {
 public:
  /// `from` and `to` stand in the folders of source and destination.
  TreeCopier(FolderChain& from, FolderChain& to, const Credentials& user);

  /// Told of each item within a folder that Copy copies.
  void SetObserver(const ItemObserver& observer) { observer_ = observer; }

  /// Where what killed programs have left is noted, in the folders that others are merged into. Null:
  /// nowhere, and nothing is looked for.
  void SetLeftoverLog(LeftoverLog* leftovers) { leftovers_ = leftovers; }

  /// Merges a folder into a folder that is there, and replaces a file, when `replace` is set; otherwise an
  /// existing destination is error::kExists, also one that appears meanwhile. Where the destination makes two
  /// names of a folder one (letter case), the second is error::kExists as well: it never replaces the first.
  void Copy(const QByteArray& name, const QByteArray& newName, bool replace);

 private:
  using Names = std::vector<QByteArray>;
  /// One folder that is being copied.
  struct Level {
    Names folders;
    /// Made by us, and not there under its own name yet at this level or one above.
    bool fresh = false;
    /// Stands under a temporary name until it is whole.
    bool isTemporary = false;
    QByteArray finalName;
    /// What this copy has put into a folder that was there before, so that nothing of it is replaced again.
    std::set<std::pair<quint64, quint64>> put;
  };

  /// A file or a link: under a temporary name, then in place.
  void PutItem(const QByteArray& name, const QByteArray& newName, const struct statx& status, bool replace);
  /// In a folder that was there before: what stands there may give way.
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

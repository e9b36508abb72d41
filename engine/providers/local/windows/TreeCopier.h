#pragma once

#include "engine/model/ItemObserver.h"
#include "engine/providers/local/LeftoverLog.h"
#include "engine/providers/local/windows/ItemStatus.h"
#include "engine/providers/local/windows/TreeRemover.h"

#include <QSet>
#include <QString>

#include <optional>
#include <set>
#include <utility>
#include <vector>

namespace trevane::local {

/// An item of the disk: its path, and its name in failures.
struct Place {
  QString path;
  QString text;

  [[nodiscard]] Place Child(const QString& name) const;
};

/// Fails when `source` must not replace `existing`: an item of another kind, or a read-only file.
void RequireReplaceable(const ItemStatus& source, const ItemStatus& existing, const QString& text);

/// Renames in one step. Without `replace` an existing item is left alone (ERROR_ALREADY_EXISTS). 0, or an
/// error of the system. With `durable` the new name is on the disk when this returns. New files are often
/// held open by a scanner or an indexer: then the rename is repeated for a second.
[[nodiscard]] DWORD RenameItem(const QString& from, const QString& to, bool replace, bool durable = false);

/// Replaces an empty folder, which has to be removed first and is created again when the rename fails. 0, or
/// an error of the system.
[[nodiscard]] DWORD RenameOverEmptyFolder(const QString& from, const QString& to);

/// Flushes a file to the disk: 0, or an error of the system.
[[nodiscard]] DWORD FlushFile(const QString& path, const ItemStatus& status);

/// Copies one item, a folder with everything below it. New items are built under a temporary name and renamed
/// when they are whole; an unfinished copy is removed. Links are never followed. Files are copied by the
/// system, which clones where the file system can, and keeps times, attributes and further streams.
class TreeCopier {
 public:
  /// `leftovers` is for leftovers of killed programs in the folders that others are merged into. Null: they
  /// are not searched for.
  explicit TreeCopier(ItemObserver observer = {}, LeftoverLog* leftovers = nullptr)
      : observer_(std::move(observer)), leftovers_(leftovers) {}

  /// With `replace` a folder is merged into an existing one and a file is replaced; otherwise an existing
  /// destination is error::kExists, also one that appears meanwhile. Where two names of the source are one at
  /// the destination, the second is error::kExists as well.
  void Copy(const Place& from, const ItemStatus& source, const Place& to, bool replace);

 private:
  struct Item {
    QString name;
    ItemStatus status;
  };
  /// One folder that is being copied.
  struct Level {
    Place from;
    ItemStatus source;
    /// Of the mounted volume for a mount point; nothing where the file system has none.
    std::optional<FileIdentity> identity;
    /// The path under which it is built.
    Place to;
    QString finalPath;
    std::vector<Item> items;
    size_t next = 0;
    /// New, and still under a temporary name at this level or one above.
    bool fresh = false;
    /// Has a temporary name until it is whole.
    bool isTemporary = false;
    /// The items that this copy has put into an existing folder, so that it never replaces one of them: only
    /// the file system knows which names are equal there (letter case, short names).
    std::set<std::pair<quint64, quint64>> put;
    /// Their names in lower case where the file system has no identities.
    QSet<QString> putNames;
  };

  void PutItem(const Place& from, const ItemStatus& source, const Place& to, bool fresh, bool replace);
  void CopyFolder(const Place& from, const ItemStatus& source, const Place& to, bool replace);
  void EnterLevel(const Place& from, const ItemStatus& source, const Place& to, bool replace);
  void CopyNext(Level& level, bool replace);
  void LeaveLevel();
  void DropTemporary();
  static void CopyOne(const Place& from, const ItemStatus& source, const Place& to);
  /// Fails when the item at `to` was put there by this copy.
  void RefusePut(const Place& to) const;
  /// Remembers the item at `path` for RefusePut.
  static void NotePut(Level& level, const QString& path);

  ItemObserver observer_;
  LeftoverLog* leftovers_ = nullptr;
  std::vector<Level> levels_;
  /// The folders that hold the destination.
  std::vector<FileIdentity> above_;
};

/// The identities of the folder that a path leads to and of all above it.
[[nodiscard]] std::vector<FileIdentity> FoldersUpwards(const QString& folder);

}  // namespace trevane::local

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

/// An item of the disk: where it is, and how failures name it.
struct Place {
  QString path;
  QString text;

  [[nodiscard]] Place Child(const QString& name) const;
};

/// Refuses to put an item of the kind of `source` in the place of `existing`: something of another kind, or
/// what is marked read-only.
void RequireReplaceable(const ItemStatus& source, const ItemStatus& existing, const QString& text);

/// Puts new content in its place in one step. Without `replace` whatever has that name stays
/// (ERROR_ALREADY_EXISTS). 0, or an error of the system.
/// With `durable` the new name is on the disk when this returns. What was just built is often looked at by a
/// scanner or an indexer: then it is tried again for a second.
[[nodiscard]] DWORD RenameItem(const QString& from, const QString& to, bool replace, bool durable = false);

/// A folder gives way to another only by being removed first; it is put back when the other does not come. 0,
/// or an error of the system.
[[nodiscard]] DWORD RenameOverEmptyFolder(const QString& from, const QString& to);

/// Onto the disk: 0, or an error of the system.
[[nodiscard]] DWORD FlushFile(const QString& path, const ItemStatus& status);

/// Copies one item, a folder with everything below it. What is new comes under a temporary name and is
/// renamed when it is whole; what fails is removed again. Never goes through a link. The system's own copying
/// does the work, which clones where the file system can, and keeps times, attributes and further streams.
class TreeCopier {
 public:
  /// `leftovers` notes what killed programs have left in the folders that others are merged into; null: it is
  /// not looked for.
  explicit TreeCopier(ItemObserver observer = {}, LeftoverLog* leftovers = nullptr)
      : observer_(std::move(observer)), leftovers_(leftovers) {}

  /// Merges a folder into a folder that is there, and replaces a file, when `replace` is set; otherwise an
  /// existing destination is error::kExists, also one that appears meanwhile. Two names of a folder that the
  /// destination makes one are error::kExists as well.
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
    /// Behind the mount point, if it is one; nothing where the file system does not tell.
    std::optional<FileIdentity> identity;
    /// Where it is built.
    Place to;
    QString finalPath;
    std::vector<Item> items;
    size_t next = 0;
    /// Made by us, and not there under its own name yet at this level or one above.
    bool fresh = false;
    /// Stands under a temporary name until it is whole.
    bool isTemporary = false;
    /// What this copy has put into a folder that was there before, so that nothing of it is replaced again:
    /// only the file system knows which names are one there (letter case, short names).
    std::set<std::pair<quint64, quint64>> put;
    /// The same in lower case where the file system cannot tell.
    QSet<QString> putNames;
  };

  void PutItem(const Place& from, const ItemStatus& source, const Place& to, bool fresh, bool replace);
  void CopyFolder(const Place& from, const ItemStatus& source, const Place& to, bool replace);
  void EnterLevel(const Place& from, const ItemStatus& source, const Place& to, bool replace);
  void CopyNext(Level& level, bool replace);
  void LeaveLevel();
  void DropTemporary();
  static void CopyOne(const Place& from, const ItemStatus& source, const Place& to);
  /// Fails when what stands at `to` was put there by this copy.
  void RefusePut(const Place& to) const;
  /// Remembers for RefusePut what now stands at `path`.
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

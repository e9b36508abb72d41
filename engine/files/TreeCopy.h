#pragma once

#include "engine/files/CopyProgress.h"
#include "engine/files/FileSystem.h"
#include "engine/files/ProviderError.h"
#include "engine/files/TemporaryName.h"
#include "engine/model/Content.h"
#include "engine/model/ItemObserver.h"

#include <QSet>
#include <QString>

#include <algorithm>
#include <concepts>
#include <optional>
#include <set>
#include <utility>
#include <vector>

namespace trevane {

/// The primitives that CopyTree needs: a current folder of the source and one of the destination, and their
/// items. No link is followed. Each one fails with an error that names the item.
template <class Tree>
concept CopyableTree = requires(Tree& tree, typename Tree::Item& item, const typename Tree::Item& source,
                                const typename Tree::Status& existing, const typename Tree::Name& name,
                                const QString& text, const CopyProgress& progress) {
  // The source.
  /// The items of the current folder.
  { tree.List() } -> std::same_as<std::vector<typename Tree::Item>>;
  /// Completes what is known of an item before it is copied; with `true` its identity, too, where it costs
  /// no further call.
  {tree.Examine(item, true)};
  /// Mount points are folders, links to folders are not.
  { Tree::IsFolder(source) } -> std::same_as<bool>;
  { Tree::NameOf(source) } -> std::convertible_to<typename Tree::Name>;
  /// Makes a folder current; its identity, nothing where the file system has none. Fails when it is no longer
  /// a folder, or is one that is being copied already.
  { tree.EnterSource(source) } -> std::same_as<std::optional<FileIdentity>>;
  {tree.LeaveSource()};
  { tree.SourceTextOf(source) } -> std::convertible_to<QString>;

  // The destination.
  /// The item of that name in the current folder, nothing when there is none.
  { tree.Find(name) } -> std::same_as<std::optional<typename Tree::Status>>;
  /// As far as it is known without a further call.
  { Tree::IdentityOf(source) } -> std::same_as<std::optional<FileIdentity>>;
  { Tree::IdentityOf(existing) } -> std::same_as<std::optional<FileIdentity>>;
  /// The identity of the item of that name; nothing when it is missing or the file system has none.
  { tree.IdentityAt(name) } -> std::same_as<std::optional<FileIdentity>>;
  /// Fails when `source` must not replace `existing`.
  {tree.RequireReplaceable(source, existing, name)};
  /// Makes a folder; where folders have permissions, one that nobody else can enter until CopyAttributes. The
  /// second name is the one it is made under: error::kExists when that is taken.
  {tree.MakeFolder(name, name)};
  /// Makes a folder current that was made under the second name. With `true` it is new. Its identity; of a
  /// new folder only where it costs no further call and no rename changes it.
  { tree.EnterDestination(name, name, true) } -> std::same_as<std::optional<FileIdentity>>;
  {tree.LeaveDestination()};
  /// The current folder and all above it.
  { tree.FoldersAbove() } -> std::same_as<std::vector<FileIdentity>>;
  /// Searches the current folder for what killed programs have left.
  {tree.SearchLeftovers()};
  /// Without, items are made under their own names.
  { tree.HasTemporaryNames() } -> std::same_as<bool>;
  /// Gives an item its name within the current folder. Without `true` an existing item is left alone
  /// (error::kExists).
  {tree.Rename(name, name, true)};
  /// Deletes an unfinished copy with everything below it, as far as possible. Never fails. The current
  /// folder of the destination may be another one afterwards.
  {tree.RemoveUnfinished(name)};
  { tree.Text() } -> std::convertible_to<QString>;
  { tree.TextOf(name) } -> std::convertible_to<QString>;

  // Both.
  /// Fails when the item, no folder, cannot be copied to that name.
  {tree.RequireCopyable(source, name)};
  /// Copies a file or a link with its attributes, the file with its content. The second name is the one it is
  /// made under: error::kExists when that is taken. Removes an unfinished copy. With `true` the copy is about
  /// to replace another file, or does so where both names are one.
  {tree.CopyContent(source, name, name, true, progress)};
  /// Gives the current folder of the destination the rights and times of the current one of the source.
  {tree.CopyAttributes()};

  // Names in texts.
  { Tree::TextFromName(name) } -> std::convertible_to<QString>;
  { Tree::NameFromText(text) } -> std::convertible_to<typename Tree::Name>;
};

/// What a tree has, too, where several files of a folder are copied faster together than one by one.
template <class Tree>
concept BatchedTree = CopyableTree<Tree> &&
    requires(Tree& tree, const typename Tree::Item& source, const std::vector<typename Tree::Item>& batch) {
  /// The bytes of a file that may be in a batch; nothing of all else.
  { tree.SizeInBatch(source) } -> std::same_as<std::optional<qint64>>;
  /// As CopyContent for each of them, under their own names, of which no two differ in case only.
  {tree.CopyContents(batch)};
};

/// The walk of CopyTree.
template <CopyableTree Tree>
class TreeCopy final {
 public:
  TreeCopy(Tree& tree, bool replace, const ItemObserver& observer)
      : tree_(tree), observer_(observer), replace_(replace) {
    if (observer_) {
      progress_ = [this](qint64 bytes, qint64 size) {
        item_.bytes = bytes;
        item_.size = size;
        return observer_(item_);
      };
    }
  }
  TreeCopy(const TreeCopy&) = delete;
  TreeCopy& operator=(const TreeCopy&) = delete;

  void Run(const typename Tree::Item& top, const typename Tree::Name& newName) {
    if (!Tree::IsFolder(top)) {
      if (observer_) {
        item_.name = Tree::TextFromName(Tree::NameOf(top));
        item_.files = 0;
        item_.filesKnown = 1;
      }
      CopyItem(top, newName);
      return;
    }
    above_ = tree_.FoldersAbove();
    try {
      EnterLevel(top, newName);
      CopyLevelItems();
      while (!levels_.empty()) {
        if (levels_.back().folders.empty()) {
          LeaveLevel();
          continue;
        }
        const Item next = std::move(levels_.back().folders.back());
        levels_.back().folders.pop_back();
        ReportProgress(next);
        EnterLevel(next, Tree::NameOf(next));
        CopyLevelItems();
      }
    } catch (const RunTimeError&) {
      RemoveUnfinished();
      throw;
    }
  }

 private:
  using Item = typename Tree::Item;
  using Name = typename Tree::Name;
  using Status = typename Tree::Status;

  /// One folder that is being copied.
  struct Level {
    std::vector<Item> folders;
    /// As ItemProgress names it; empty without an observer.
    QString shownPath;
    Name name;
    /// The name that it has until it is whole.
    Name madeName;
    /// New, and unfinished at this level or one above.
    bool isFresh = false;
    /// To be removed when the copy fails, and under a temporary name where there are such.
    bool isUnfinished = false;
    /// Of the folder at the destination.
    std::optional<FileIdentity> identity;
    /// The items that this copy has put into an existing folder, so that it never replaces one of them: only
    /// the file system knows which names are equal there (letter case, short names).
    std::set<FileIdentity> put;
    /// Their names in lower case where the file system has no identities.
    QSet<QString> putNames;
  };

  /// The name under which `make` has made the item.
  template <class Make>
  [[nodiscard]] static Name MakeTemporary(const Make& make) {
    return Tree::NameFromText(MakeUnderTemporaryName([&make](const QString& free) {
      try {
        make(Tree::NameFromText(free));
        return true;
      } catch (const RunTimeError& failure) {
        if (failure.Number() != error::kExists) {
          throw;
        }
        return false;
      }
    }));
  }

  void ReportProgress(const Item& item) {
    if (!observer_) {
      return;
    }
    item_.name = Tree::TextFromName(Tree::NameOf(item));
    item_.folder = levels_.back().shownPath;
    item_.bytes = 0;
    item_.size = -1;
    item_.files = files_;
    item_.filesKnown = filesKnown_;
    if (!observer_(item_)) {
      Fail(error::kCancelled, tree_.SourceTextOf(item));
    }
  }

  [[nodiscard]] bool IsInFreshFolder() const { return !levels_.empty() && levels_.back().isFresh; }

  /// Copies a file or a link. Outside new folders it is made under a temporary name and renamed.
  void CopyItem(const Item& item, const Name& name) {
    tree_.RequireCopyable(item, name);
    if (IsInFreshFolder()) {
      tree_.CopyContent(item, name, name, false, progress_);
      return;
    }
    // Without `replace_` the rename refuses an existing item.
    const std::optional<Status> existing = replace_ ? tree_.Find(name) : std::nullopt;
    if (existing.has_value()) {
      RefusePut(*existing, name);
      const std::optional<FileIdentity> own = Tree::IdentityOf(item);
      if (own.has_value() && own == Tree::IdentityOf(*existing)) {
        return;  // two names of one file: it has this content already
      }
      tree_.RequireReplaceable(item, *existing, name);
    }
    if (tree_.HasTemporaryNames()) {
      CopyBeside(item, name, existing.has_value());
    } else {
      tree_.CopyContent(item, name, name, existing.has_value(), progress_);
    }
    if (!levels_.empty()) {
      NotePut(name, tree_.IdentityAt(name));
    }
  }

  void CopyBeside(const Item& item, const Name& name, bool replaces) {
    const Name made =
        MakeTemporary([&](const Name& free) { tree_.CopyContent(item, name, free, replaces, progress_); });
    try {
      tree_.Rename(made, name, replaces);
    } catch (const RunTimeError&) {
      tree_.RemoveUnfinished(made);
      throw;
    }
  }

  void EnterLevel(const Item& item, const Name& name) {
    const std::optional<FileIdentity> own = tree_.EnterSource(item);
    // The source may contain the destination under another name.
    if (own.has_value() && std::find(above_.begin(), above_.end(), *own) != above_.end()) {
      Fail(error::kInvalidParameter, QStringLiteral("The destination lies inside the source"),
           tree_.TextOf(name));
    }
    Level level;
    level.name = name;
    level.madeName = name;
    if (observer_) {
      const QString own = Tree::TextFromName(Tree::NameOf(item));
      level.shownPath = levels_.empty() ? own : levels_.back().shownPath + u'\\' + own;
    }
    if (IsInFreshFolder()) {
      level.isFresh = true;
      tree_.MakeFolder(name, name);
    } else if (const std::optional<Status> existing = tree_.Find(name); existing.has_value()) {
      if (!replace_) {
        Fail(error::kExists, tree_.TextOf(name));
      }
      RefusePut(*existing, name);
      tree_.RequireReplaceable(item, *existing, name);
    } else {
      if (tree_.HasTemporaryNames()) {
        level.madeName = MakeTemporary([&](const Name& free) { tree_.MakeFolder(name, free); });
      } else {
        tree_.MakeFolder(name, name);
      }
      level.isFresh = true;
      level.isUnfinished = true;
    }
    try {
      level.identity = tree_.EnterDestination(name, level.madeName, level.isFresh);
    } catch (const RunTimeError&) {
      if (level.isUnfinished) {
        tree_.RemoveUnfinished(level.madeName);
      }
      throw;
    }
    levels_.push_back(std::move(level));
    const Level& entered = levels_.back();
    if (entered.identity.has_value()) {
      above_.push_back(*entered.identity);
      if (entered.identity == own) {
        Fail(error::kInvalidParameter, QStringLiteral("The source and the destination are the same item"),
             tree_.Text());
      }
    }
    if (!entered.isFresh) {
      tree_.SearchLeftovers();
    }
  }

  /// All but its folders, which follow when these are done: then only their names need to be kept.
  void CopyLevelItems() {
    std::vector<Item> items = tree_.List();
    filesKnown_ +=
        std::count_if(items.begin(), items.end(), [](const Item& item) { return !Tree::IsFolder(item); });
    for (Item& item : items) {
      const bool isCounted = !Tree::IsFolder(item);
      tree_.Examine(item, !levels_.back().isFresh);
      if (Tree::IsFolder(item)) {
        // Only now it is known to be one.
        filesKnown_ -= isCounted ? 1 : 0;
        levels_.back().folders.push_back(std::move(item));
        continue;
      }
      ReportProgress(item);
      if (AddToBatch(item)) {
        continue;
      }
      CopyItem(item, Tree::NameOf(item));
      ++files_;
    }
    FinishBatch();
  }

  /// False where it has to be copied alone.
  [[nodiscard]] bool AddToBatch(const Item& item) {
    if constexpr (BatchedTree<Tree>) {
      const std::optional<qint64> size = IsInFreshFolder() ? tree_.SizeInBatch(item) : std::nullopt;
      if (!size.has_value() || *size > content::kMostBytes) {
        return false;
      }
      const QString key = Tree::TextFromName(Tree::NameOf(item)).toLower();
      if (static_cast<qsizetype>(batch_.size()) == content::kMostFiles ||
          batchBytes_ + *size > content::kMostBytes || batchNames_.contains(key)) {
        FinishBatch();
      }
      batch_.push_back(item);
      batchBytes_ += *size;
      batchNames_.insert(key);
      return true;
    } else {
      return false;
    }
  }

  void FinishBatch() {
    if constexpr (BatchedTree<Tree>) {
      if (!batch_.empty()) {
        tree_.CopyContents(std::exchange(batch_, {}));
        files_ += batchNames_.size();
        batchBytes_ = 0;
        batchNames_.clear();
      }
    }
  }

  void LeaveLevel() {
    // Last, since every new item changes the times of its folder.
    if (levels_.back().isFresh) {
      tree_.CopyAttributes();
    }
    tree_.LeaveSource();
    tree_.LeaveDestination();
    const Level level = std::move(levels_.back());
    levels_.pop_back();
    if (level.identity.has_value()) {
      above_.pop_back();
    }
    if (level.isUnfinished && tree_.HasTemporaryNames()) {
      try {
        tree_.Rename(level.madeName, level.name, false);
      } catch (const RunTimeError&) {
        tree_.RemoveUnfinished(level.madeName);  // no level any more
        throw;
      }
    }
    if (!levels_.empty() && !levels_.back().isFresh) {
      NotePut(level.name, level.identity.has_value() ? level.identity : tree_.IdentityAt(level.name));
    }
  }

  /// Fails when `existing` was put there by this copy.
  void RefusePut(const Status& existing, const Name& name) const {
    if (levels_.empty()) {
      return;
    }
    std::optional<FileIdentity> own = Tree::IdentityOf(existing);
    if (!own.has_value()) {
      own = tree_.IdentityAt(name);
    }
    const Level& level = levels_.back();
    if (own.has_value() ? level.put.contains(*own)
                        : level.putNames.contains(Tree::TextFromName(name).toLower())) {
      Fail(error::kExists, QStringLiteral("Two names of the source are one name here"), tree_.TextOf(name));
    }
  }

  void NotePut(const Name& name, const std::optional<FileIdentity>& identity) {
    if (identity.has_value()) {
      levels_.back().put.insert(*identity);
    } else {
      levels_.back().putNames.insert(Tree::TextFromName(name).toLower());
    }
  }

  /// After a failure: the first failure is the one to report, so a copy that cannot be removed is left under
  /// its temporary name.
  void RemoveUnfinished() {
    try {
      while (!levels_.empty()) {
        const Level level = std::move(levels_.back());
        levels_.pop_back();
        tree_.LeaveDestination();
        if (level.isUnfinished) {
          tree_.RemoveUnfinished(level.madeName);
          return;  // all levels above existed before
        }
      }
    } catch (const RunTimeError&) {
      // As above.
    }
  }

  Tree& tree_;
  const ItemObserver& observer_;
  const bool replace_;
  CopyProgress progress_;
  /// The item that is being copied.
  ItemProgress item_;
  qint64 files_ = 0;
  qint64 filesKnown_ = 0;
  /// Of the current folder, which is new, and not copied yet.
  std::vector<Item> batch_;
  qint64 batchBytes_ = 0;
  QSet<QString> batchNames_;
  std::vector<Level> levels_;
  /// The folders from the destination upwards, and those of it that are being filled.
  std::vector<FileIdentity> above_;
};

/// Copies `top`, an item of the source's current folder, with everything below it to `newName` in the current
/// folder of the destination. New items are made under a temporary name and renamed when they are whole; an
/// unfinished copy is removed. With `replace` a folder is merged into an existing one and a file is replaced;
/// otherwise an existing destination is error::kExists, also one that appears meanwhile. Where two names of
/// the source are one at the destination, the second is error::kExists as well: it never replaces the first.
/// The items of a folder are copied before its folders. The observer is called with each item within a
/// folder. After a failure the current folders may be any.
template <CopyableTree Tree>
void CopyTree(Tree& tree, const typename Tree::Item& top, const typename Tree::Name& newName, bool replace,
              const ItemObserver& observer) {
  TreeCopy<Tree>(tree, replace, observer).Run(top, newName);
}

}  // namespace trevane

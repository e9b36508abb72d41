#pragma once

#include "base/InternedKeys.h"
#include "base/KeyIndex.h"
#include "base/RowMerge.h"
#include "views/tree/FolderNode.h"

#include <QAbstractItemModel>

#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace trevane {

class ImageList;

/// The nodes of the folder tree. Node handles stay valid until their node is removed. Keys are not stored:
/// they follow from the texts, so a renamed folder takes all keys below along.
class FolderTreeModel final : public QAbstractItemModel {
  Q_OBJECT

 public:
  /// `images` outlives the model; without it nodes have no pictures.
  explicit FolderTreeModel(const ImageList* images, QObject* parent = nullptr);
  ~FolderTreeModel() override;

  /// Sets the source of the tooltips of drives: it gets the node's text when a tooltip is about to be shown.
  void SetDriveToolTip(std::function<QString(const QString&)> source) { driveToolTip_ = std::move(source); }

  /// Adds a child of `relative`, or a root when that is null; after the last child, or in order when the
  /// children are sorted. An empty image key is none, no tag is 0. Fails with error::kKeyAlreadyThere when
  /// the key exists.
  FolderNode* AddTreeNode(FolderNode* relative, const QString& imageKey, const QString& text,
                          std::optional<qint32> tag = std::nullopt);

  /// By address or key, in any case; null when there is none. The cost is that of the components of the
  /// address, however large the tree is.
  [[nodiscard]] FolderNode* FindByKey(QStringView address) const;
  /// The child of `parent` (null: the root) of that text, in any case.
  [[nodiscard]] FolderNode* FindChild(const FolderNode* parent, QStringView text) const;
  /// Null when no node has that index.
  [[nodiscard]] FolderNode* FindByIndex(qint32 index) const;
  /// The first root, null in an empty tree.
  [[nodiscard]] FolderNode* FirstRoot() const;
  [[nodiscard]] qint32 Count() const noexcept { return count_; }

  void RemoveNode(FolderNode* node);
  void RemoveChildren(FolderNode* node);
  void Clear();

  /// Gives the node another text, and with it all nodes below other keys. Fails with error::kKeyAlreadyThere
  /// when a sibling has that text; a change of letter case only is none.
  void RenameNode(FolderNode* node, const QString& text);
  void SetTag(FolderNode* node, qint32 tag);
  void SetExpandedImageKey(FolderNode* node, const QString& key);
  /// Keeps the children in order of text from now on, and puts those in order that are there.
  void SetSorted(FolderNode* node, bool sorted);

  [[nodiscard]] const QString& ImageKey(const FolderNode* node) const;
  /// The image key while the node has no other one for its expanded state.
  [[nodiscard]] const QString& ExpandedImageKey(const FolderNode* node) const;

  /// Between these, children added to `parent` are found by key at once but enter the rows only at FlushBatch
  /// or EndBatch, all in one merge. One batch is open at a time: another BeginBatch ends the one before.
  /// Removing the parent ends it, too.
  void BeginBatch(FolderNode* parent);
  void FlushBatch();
  void EndBatch();

  /// Invalid for null and for a node that has no row yet.
  [[nodiscard]] QModelIndex IndexOf(const FolderNode* node) const;
  /// Null for an invalid index.
  [[nodiscard]] FolderNode* NodeAt(const QModelIndex& index) const;
  /// Rows are being removed: a change of the selection is not the user's then.
  [[nodiscard]] bool IsRemoving() const noexcept { return removing_ > 0; }

  [[nodiscard]] QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
  [[nodiscard]] QModelIndex parent(const QModelIndex& child) const override;
  [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] bool hasChildren(const QModelIndex& parent = {}) const override;
  [[nodiscard]] QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
  [[nodiscard]] Qt::ItemFlags flags(const QModelIndex& index) const override;

 private:
  [[nodiscard]] static size_t HashOf(const FolderNode* parent, QStringView text) noexcept;
  [[nodiscard]] static bool IsBefore(const FolderNode* left, const FolderNode* right) noexcept;
  [[nodiscard]] static std::vector<FolderNode*>& ChildrenOf(FolderNode* node);
  [[nodiscard]] static int RowOf(const FolderNode* node);
  /// The node and all its ancestors have rows, so that views know of it.
  [[nodiscard]] static bool IsShown(const FolderNode* node) noexcept;
  [[nodiscard]] static size_t PositionFor(const FolderNode* parent, const FolderNode* node,
                                          const FolderNode* except);

  [[nodiscard]] FolderNode* Make(FolderNode* parent, const QString& text);
  void Destroy(FolderNode* node);
  void ForgetStaged();
  void InsertRun(FolderNode* parent, const std::vector<FolderNode*>& added, const RowRun& run);
  void PutInOrder(FolderNode* parent, std::vector<FolderNode*> order);
  void Changed(const FolderNode* node, const QList<int>& roles);

  const ImageList* images_;
  std::function<QString(const QString&)> driveToolTip_;
  InternedKeys imageKeys_;
  /// Parent of the roots, with no row, text or index of its own.
  std::unique_ptr<FolderNode> root_;
  /// By index minus one; null where a node was removed.
  std::vector<std::unique_ptr<FolderNode>> nodes_;
  std::vector<qint32> freeIndexes_;
  KeyIndex keys_;
  qint32 count_ = 0;
  FolderNode* batchParent_ = nullptr;
  std::vector<FolderNode*> staged_;
  int removing_ = 0;
};

}  // namespace trevane

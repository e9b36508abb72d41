#pragma once

#include <QString>

#include <memory>
#include <vector>

namespace trevane {

/// A node of the folder tree, owned by its FolderTreeModel and valid until it is removed from it.
class FolderNode {
 public:
  FolderNode(const FolderNode&) = delete;
  FolderNode& operator=(const FolderNode&) = delete;

  [[nodiscard]] const QString& Text() const noexcept { return text_; }
  [[nodiscard]] qint32 Tag() const noexcept { return tag_; }
  /// 1 for the first node added to an empty tree, 2 for the second. A removed node's index is given again.
  [[nodiscard]] qint32 Index() const noexcept { return index_; }
  /// Null for a root.
  [[nodiscard]] FolderNode* Parent() const noexcept {
    return parent_->index_ != kInvisibleRoot ? parent_ : nullptr;
  }
  /// The children are kept in the order of their texts, without regard to case.
  [[nodiscard]] bool Sorted() const noexcept { return sorted_; }
  /// The texts of all ancestors and the own, with "\" between them: the node's address. Made on each call.
  [[nodiscard]] QString FullPath() const;
  /// The full path in lower case. Made on each call, so that it follows every renaming above.
  [[nodiscard]] QString Key() const;
  /// The children that have a row, in the order of the rows.
  [[nodiscard]] const std::vector<FolderNode*>& Children() const noexcept;
  /// `other` is this node or below it.
  [[nodiscard]] bool Contains(const FolderNode* other) const noexcept;

 private:
  friend class FolderTreeModel;

  static constexpr qint32 kInvisibleRoot = 0;
  /// In the tree and found by key, but not in the rows yet.
  static constexpr qint32 kStaged = -1;

  FolderNode() = default;

  QString text_;
  FolderNode* parent_ = nullptr;
  /// None for a node without children: most nodes are leaves.
  std::unique_ptr<std::vector<FolderNode*>> children_;
  qint32 index_ = kInvisibleRoot;
  qint32 tag_ = 0;
  /// A hint: right when the parent has this node at this row, otherwise the rows are counted anew.
  mutable qint32 row_ = 0;
  quint16 image_ = 0;
  quint16 expandedImage_ = 0;
  bool sorted_ = false;
};

}  // namespace trevane

#include "views/tree/FolderNode.h"

#include "views/addresses/Addresses.h"

namespace trevane {

QString FolderNode::FullPath() const {
  qsizetype size = -1;
  for (const FolderNode* node = this; node->index_ != kInvisibleRoot; node = node->parent_) {
    size += node->text_.size() + 1;
  }
  QString path(qMax<qsizetype>(size, 0), Qt::Uninitialized);
  qsizetype end = path.size();
  for (const FolderNode* node = this; node->index_ != kInvisibleRoot; node = node->parent_) {
    end -= node->text_.size();
    std::copy(node->text_.cbegin(), node->text_.cend(), path.begin() + end);
    if (end > 0) {
      path[--end] = kAddressSeparator;
    }
  }
  return path;
}

QString FolderNode::Key() const {
  return NodeKey(FullPath());
}

const std::vector<FolderNode*>& FolderNode::Children() const noexcept {
  static const std::vector<FolderNode*> kNone;
  return children_ ? *children_ : kNone;
}

bool FolderNode::Contains(const FolderNode* other) const noexcept {
  for (; other != nullptr; other = other->parent_) {
    if (other == this) {
      return true;
    }
  }
  return false;
}

}  // namespace trevane

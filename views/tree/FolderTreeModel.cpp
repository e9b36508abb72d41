#include "views/tree/FolderTreeModel.h"

#include "base/DisplayText.h"
#include "base/RunTimeError.h"
#include "base/TextOrder.h"
#include "views/ImageList.h"
#include "views/ItemRoles.h"
#include "views/addresses/Addresses.h"
#include "views/addresses/NodeTags.h"

#include <algorithm>
#include <functional>

namespace trevane {

FolderTreeModel::FolderTreeModel(const ImageList* images, QObject* parent)
    : QAbstractItemModel(parent), images_(images), root_(new FolderNode) {}

FolderTreeModel::~FolderTreeModel() = default;

size_t FolderTreeModel::HashOf(const FolderNode* parent, QStringView text) noexcept {
  return HashIgnoringCase(text, static_cast<size_t>(parent->index_) * 0x9E3779B97F4A7C15ULL);
}

bool FolderTreeModel::IsBefore(const FolderNode* left, const FolderNode* right) noexcept {
  const int order = CompareIgnoringCase(left->text_, right->text_);
  return order != 0 ? order < 0 : left->text_ < right->text_;
}

std::vector<FolderNode*>& FolderTreeModel::ChildrenOf(FolderNode* node) {
  if (!node->children_) {
    node->children_ = std::make_unique<std::vector<FolderNode*>>();
  }
  return *node->children_;
}

int FolderTreeModel::RowOf(const FolderNode* node) {
  const std::vector<FolderNode*>& siblings = node->parent_->Children();
  if (static_cast<size_t>(node->row_) >= siblings.size() ||
      siblings[static_cast<size_t>(node->row_)] != node) {
    for (size_t i = 0; i < siblings.size(); ++i) {
      siblings[i]->row_ = static_cast<qint32>(i);
    }
  }
  return node->row_;
}

bool FolderTreeModel::IsShown(const FolderNode* node) noexcept {
  for (; node != nullptr; node = node->parent_) {
    if (node->row_ == FolderNode::kStaged) {
      return false;
    }
  }
  return true;
}

size_t FolderTreeModel::PositionFor(const FolderNode* parent, const FolderNode* node,
                                    const FolderNode* except) {
  const std::vector<FolderNode*>& siblings = parent->Children();
  if (except == nullptr) {
    const auto position = std::upper_bound(siblings.begin(), siblings.end(), node, IsBefore);
    return static_cast<size_t>(position - siblings.begin());
  }
  // The node that is about to move does not count, wherever it is now.
  const auto self = siblings.begin() + RowOf(except);
  auto position = std::upper_bound(siblings.begin(), self, node, IsBefore);
  if (position == self) {
    position = std::upper_bound(self + 1, siblings.end(), node, IsBefore);
    if (position == self + 1) {
      position = self;
    }
  }
  return static_cast<size_t>(position - siblings.begin());
}

FolderNode* FolderTreeModel::Make(FolderNode* parent, const QString& text) {
  const size_t hash = HashOf(parent, text);
  std::unique_ptr<FolderNode> made(new FolderNode);
  FolderNode* node = made.get();
  node->text_ = text;
  node->parent_ = parent;
  if (freeIndexes_.empty()) {
    nodes_.push_back(std::move(made));
    node->index_ = static_cast<qint32>(nodes_.size());
  } else {
    node->index_ = freeIndexes_.back();
    freeIndexes_.pop_back();
    nodes_[static_cast<size_t>(node->index_) - 1] = std::move(made);
  }
  keys_.Insert(hash, static_cast<quint32>(node->index_));
  ++count_;
  return node;
}

void FolderTreeModel::Destroy(FolderNode* node) {
  if (node == batchParent_) {
    ForgetStaged();
    batchParent_ = nullptr;
  }
  for (FolderNode* child : node->Children()) {
    Destroy(child);
  }
  keys_.Remove(HashOf(node->parent_, node->text_), static_cast<quint32>(node->index_));
  freeIndexes_.push_back(node->index_);
  --count_;
  nodes_[static_cast<size_t>(node->index_) - 1].reset();
}

void FolderTreeModel::ForgetStaged() {
  std::vector<FolderNode*> staged;
  staged.swap(staged_);
  for (FolderNode* node : staged) {
    Destroy(node);
  }
}

FolderNode* FolderTreeModel::AddTreeNode(FolderNode* relative, const QString& imageKey, const QString& text,
                                         std::optional<qint32> tag) {
  FolderNode* parent = relative != nullptr ? relative : root_.get();
  if (FindChild(relative, text) != nullptr) {
    throw RunTimeError(error::kKeyAlreadyThere, QStringLiteral("The tree has \"%1\" already.").arg(text));
  }
  FolderNode* node = Make(parent, text);
  node->tag_ = tag.value_or(0);
  node->image_ = imageKeys_.NumberOf(imageKey);
  if (parent == batchParent_) {
    node->row_ = FolderNode::kStaged;
    staged_.push_back(node);
    return node;
  }
  std::vector<FolderNode*>& siblings = ChildrenOf(parent);
  const size_t position = parent->sorted_ ? PositionFor(parent, node, nullptr) : siblings.size();
  node->row_ = static_cast<qint32>(position);
  const bool shown = IsShown(parent);
  if (shown) {
    beginInsertRows(IndexOf(relative), node->row_, node->row_);
  }
  siblings.insert(siblings.begin() + static_cast<std::ptrdiff_t>(position), node);
  if (shown) {
    endInsertRows();
  }
  return node;
}

FolderNode* FolderTreeModel::FindChild(const FolderNode* parent, QStringView text) const {
  const FolderNode* owner = parent != nullptr ? parent : root_.get();
  const quint32 found = keys_.Find(HashOf(owner, text), [&](quint32 index) {
    const FolderNode* node = nodes_[index - 1].get();
    return node->parent_ == owner && EqualIgnoringCase(node->text_, text);
  });
  return found != KeyIndex::kNone ? nodes_[found - 1].get() : nullptr;
}

FolderNode* FolderTreeModel::FindByKey(QStringView address) const {
  FolderNode* node = nullptr;
  qsizetype begin = 0;
  while (begin <= address.size()) {
    qsizetype end = address.indexOf(kAddressSeparator, begin);
    if (end < 0) {
      end = address.size();
    }
    node = FindChild(node, address.mid(begin, end - begin));
    if (node == nullptr) {
      return nullptr;
    }
    begin = end + 1;
  }
  return node;
}

FolderNode* FolderTreeModel::FindByIndex(qint32 index) const {
  return index >= 1 && static_cast<size_t>(index) <= nodes_.size()
             ? nodes_[static_cast<size_t>(index) - 1].get()
             : nullptr;
}

FolderNode* FolderTreeModel::FirstRoot() const {
  return root_->Children().empty() ? nullptr : root_->Children().front();
}

void FolderTreeModel::RemoveNode(FolderNode* node) {
  if (node->row_ == FolderNode::kStaged) {
    staged_.erase(std::find(staged_.begin(), staged_.end(), node));
    Destroy(node);
    return;
  }
  const bool shown = IsShown(node);
  const int row = RowOf(node);
  FolderNode* parent = node->parent_;
  ++removing_;
  if (shown) {
    beginRemoveRows(IndexOf(node->Parent()), row, row);
  }
  parent->children_->erase(parent->children_->begin() + row);
  Destroy(node);
  if (shown) {
    endRemoveRows();
  }
  --removing_;
}

void FolderTreeModel::RemoveChildren(FolderNode* node) {
  if (node == batchParent_) {
    ForgetStaged();
  }
  if (node->Children().empty()) {
    return;
  }
  const bool shown = IsShown(node);
  ++removing_;
  if (shown) {
    beginRemoveRows(IndexOf(node), 0, static_cast<int>(node->Children().size()) - 1);
  }
  const std::unique_ptr<std::vector<FolderNode*>> children = std::move(node->children_);
  for (FolderNode* child : *children) {
    Destroy(child);
  }
  if (shown) {
    endRemoveRows();
  }
  --removing_;
}

void FolderTreeModel::Clear() {
  ++removing_;
  beginResetModel();
  batchParent_ = nullptr;
  staged_.clear();
  root_->children_.reset();
  nodes_.clear();
  freeIndexes_.clear();
  keys_.Clear();
  count_ = 0;
  endResetModel();
  --removing_;
}

void FolderTreeModel::RenameNode(FolderNode* node, const QString& text) {
  const FolderNode* other = FindChild(node->Parent(), text);
  if (other != nullptr && other != node) {
    throw RunTimeError(error::kKeyAlreadyThere, QStringLiteral("The tree has \"%1\" already.").arg(text));
  }
  keys_.Remove(HashOf(node->parent_, node->text_), static_cast<quint32>(node->index_));
  node->text_ = text;
  keys_.Insert(HashOf(node->parent_, node->text_), static_cast<quint32>(node->index_));
  if (node->row_ == FolderNode::kStaged) {
    return;
  }
  if (node->parent_->sorted_) {
    const int row = RowOf(node);
    const auto position = static_cast<int>(PositionFor(node->parent_, node, node));
    if (position != row) {
      const QModelIndex parent = IndexOf(node->Parent());
      const bool shown = IsShown(node) && beginMoveRows(parent, row, row, parent, position);
      const auto siblings = node->parent_->children_->begin();
      if (position > row) {
        std::rotate(siblings + row, siblings + row + 1, siblings + position);
      } else {
        std::rotate(siblings + position, siblings + row, siblings + row + 1);
      }
      if (shown) {
        endMoveRows();
      }
    }
  }
  Changed(node, {Qt::DisplayRole, Qt::EditRole, Qt::ToolTipRole, kKeyRole, kFullPathRole});
}

void FolderTreeModel::SetTag(FolderNode* node, qint32 tag) {
  if (node->tag_ != tag) {
    node->tag_ = tag;
    Changed(node, {kTagRole});
  }
}

void FolderTreeModel::SetExpandedImageKey(FolderNode* node, const QString& key) {
  const quint16 image = imageKeys_.NumberOf(key);
  if (node->expandedImage_ != image) {
    node->expandedImage_ = image;
    Changed(node, {Qt::DecorationRole, kExpandedImageKeyRole});
  }
}

void FolderTreeModel::SetSorted(FolderNode* node, bool sorted) {
  if (sorted == node->sorted_) {
    return;
  }
  node->sorted_ = sorted;
  if (sorted && !std::is_sorted(node->Children().begin(), node->Children().end(), IsBefore)) {
    std::vector<FolderNode*> order = node->Children();
    std::stable_sort(order.begin(), order.end(), IsBefore);
    PutInOrder(node, std::move(order));
  }
}

const QString& FolderTreeModel::ImageKey(const FolderNode* node) const {
  return imageKeys_.TextOf(node->image_);
}

const QString& FolderTreeModel::ExpandedImageKey(const FolderNode* node) const {
  return imageKeys_.TextOf(node->expandedImage_ != 0 ? node->expandedImage_ : node->image_);
}

void FolderTreeModel::BeginBatch(FolderNode* parent) {
  EndBatch();
  batchParent_ = parent;
}

void FolderTreeModel::EndBatch() {
  FlushBatch();
  batchParent_ = nullptr;
}

void FolderTreeModel::FlushBatch() {
  if (staged_.empty()) {
    return;
  }
  FolderNode* parent = batchParent_;
  std::vector<FolderNode*> added;
  added.swap(staged_);
  const std::vector<FolderNode*>& rows = ChildrenOf(parent);
  if (!parent->sorted_) {
    InsertRun(parent, added, {0, added.size(), rows.size()});
    return;
  }
  TextOrder texts;
  texts.Reserve(added.size());
  for (const FolderNode* node : added) {
    texts.Add(node->text_);
  }
  std::vector<FolderNode*> sorted;
  sorted.reserve(added.size());
  for (const quint32 position : texts.Sorted()) {
    sorted.push_back(added[position]);
  }
  const std::vector<RowRun> runs =
      MergeRuns(rows.size(), sorted.size(), [&](size_t a, size_t r) { return IsBefore(sorted[a], rows[r]); });
  if (runs.size() <= kMostSingleRuns) {
    for (auto run = runs.rbegin(); run != runs.rend(); ++run) {
      InsertRun(parent, sorted, *run);
    }
    return;
  }
  std::vector<FolderNode*> merged = MergedRows(rows, sorted, runs);
  InsertRun(parent, sorted, {0, sorted.size(), rows.size()});
  PutInOrder(parent, std::move(merged));
}

void FolderTreeModel::InsertRun(FolderNode* parent, const std::vector<FolderNode*>& added,
                                const RowRun& run) {
  const auto first = added.begin() + static_cast<std::ptrdiff_t>(run.first);
  for (size_t i = 0; i < run.count; ++i) {
    first[static_cast<std::ptrdiff_t>(i)]->row_ = static_cast<qint32>(run.row + i);
  }
  const bool shown = IsShown(parent);
  if (shown) {
    const QModelIndex index = parent != root_.get() ? IndexOf(parent) : QModelIndex();
    beginInsertRows(index, static_cast<int>(run.row), static_cast<int>(run.row + run.count) - 1);
  }
  std::vector<FolderNode*>& rows = ChildrenOf(parent);
  rows.insert(rows.begin() + static_cast<std::ptrdiff_t>(run.row), first,
              first + static_cast<std::ptrdiff_t>(run.count));
  if (shown) {
    endInsertRows();
  }
}

void FolderTreeModel::PutInOrder(FolderNode* parent, std::vector<FolderNode*> order) {
  const bool shown = IsShown(parent);
  const QList<QPersistentModelIndex> parents{
      QPersistentModelIndex(parent != root_.get() ? IndexOf(parent) : QModelIndex())};
  if (shown) {
    Q_EMIT layoutAboutToBeChanged(parents, VerticalSortHint);
  }
  *parent->children_ = std::move(order);
  for (size_t i = 0; i < parent->children_->size(); ++i) {
    (*parent->children_)[i]->row_ = static_cast<qint32>(i);
  }
  if (!shown) {
    return;
  }
  const QModelIndexList persistent = persistentIndexList();
  for (const QModelIndex& from : persistent) {
    const FolderNode* node = NodeAt(from);
    if (node->parent_ == parent && from.row() != node->row_) {
      changePersistentIndex(from, createIndex(node->row_, from.column(), node));
    }
  }
  Q_EMIT layoutChanged(parents, VerticalSortHint);
}

void FolderTreeModel::Changed(const FolderNode* node, const QList<int>& roles) {
  const QModelIndex index = IndexOf(node);
  if (index.isValid()) {
    Q_EMIT dataChanged(index, index, roles);
  }
}

QModelIndex FolderTreeModel::IndexOf(const FolderNode* node) const {
  if (node == nullptr || node == root_.get() || !IsShown(node)) {
    return {};
  }
  return createIndex(RowOf(node), 0, node);
}

FolderNode* FolderTreeModel::NodeAt(const QModelIndex& index) const {
  return index.isValid() ? static_cast<FolderNode*>(index.internalPointer()) : nullptr;
}

QModelIndex FolderTreeModel::index(int row, int column, const QModelIndex& parent) const {
  if (row < 0 || column != 0 || parent.column() > 0) {
    return {};
  }
  const FolderNode* owner = parent.isValid() ? NodeAt(parent) : root_.get();
  const std::vector<FolderNode*>& children = owner->Children();
  if (static_cast<size_t>(row) >= children.size()) {
    return {};
  }
  const FolderNode* node = children[static_cast<size_t>(row)];
  node->row_ = row;
  return createIndex(row, 0, node);
}

QModelIndex FolderTreeModel::parent(const QModelIndex& child) const {
  const FolderNode* node = NodeAt(child);
  const FolderNode* above = node != nullptr ? node->Parent() : nullptr;
  return above != nullptr ? createIndex(RowOf(above), 0, above) : QModelIndex();
}

int FolderTreeModel::rowCount(const QModelIndex& parent) const {
  const FolderNode* owner = parent.isValid() ? NodeAt(parent) : root_.get();
  return static_cast<int>(owner->Children().size());
}

int FolderTreeModel::columnCount(const QModelIndex& /*parent*/) const {
  return 1;
}

bool FolderTreeModel::hasChildren(const QModelIndex& parent) const {
  return rowCount(parent) > 0;
}

QVariant FolderTreeModel::data(const QModelIndex& index, int role) const {
  const FolderNode* node = NodeAt(index);
  if (node == nullptr) {
    return {};
  }
  switch (role) {
    case Qt::ToolTipRole:
      if (IsDrive(node->tag_) && driveToolTip_) {
        return driveToolTip_(node->text_);
      }
      return DisplayText(node->text_);
    case Qt::DisplayRole:
      return DisplayText(node->text_);
    case Qt::EditRole:
      return node->text_;
    case Qt::DecorationRole:
      return images_ != nullptr && node->image_ != 0 ? images_->Icon(ImageKey(node)) : QVariant();
    case kTagRole:
      return node->tag_;
    case kKeyRole:
      return node->Key();
    case kFullPathRole:
      return node->FullPath();
    case kImageKeyRole:
      return ImageKey(node);
    case kExpandedImageKeyRole:
      return ExpandedImageKey(node);
    default:
      return {};
  }
}

Qt::ItemFlags FolderTreeModel::flags(const QModelIndex& index) const {
  const FolderNode* node = NodeAt(index);
  if (node == nullptr) {
    return Qt::NoItemFlags;
  }
  Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
  if (IsFolderTag(node->tag_)) {
    flags |= Qt::ItemIsEditable;
  }
  return flags;
}

}  // namespace trevane

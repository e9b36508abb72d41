#include "views/list/FileListModel.h"

#include "base/DateFormatter.h"
#include "base/DisplayText.h"
#include "base/RunTimeError.h"
#include "views/ImageList.h"
#include "views/ItemRoles.h"
#include "views/addresses/Addresses.h"
#include "views/addresses/AttributeLetters.h"
#include "views/addresses/NodeTags.h"
#include "views/list/FileTypes.h"

#include <QDateTime>

#include <algorithm>

namespace trevane {

FileListModel::FileListModel(const ImageList* images, const FileTypes* types, const DateFormatter* dates,
                             QObject* parent)
    : QAbstractItemModel(parent), images_(images), types_(types), dates_(dates) {
  for (int i = 0; i < kFileColumnCount; ++i) {
    columns_.push_back(static_cast<FileColumn>(i));
  }
}

FileListModel::Handle FileListModel::AddListItem(std::optional<int> position, qint32 tag, const QString& text,
                                                 const QString& smallIconKey) {
  const size_t hash = HashIgnoringCase(text);
  const auto equal = [&](Handle item) { return EqualIgnoringCase(items_[item].text, text); };
  if (const Handle other = keys_.Find(hash, equal); other != kNoItem) {
    throw RunTimeError(error::kKeyAlreadyThere,
                       QStringLiteral("The list has \"%1\" already.").arg(items_[other].text));
  }
  auto handle = static_cast<Handle>(items_.size());
  if (freeItems_.empty()) {
    items_.emplace_back();
  } else {
    handle = freeItems_.back();
    freeItems_.pop_back();
  }
  FileListItem& item = items_[handle];
  item.text = text;
  item.tag = tag;
  item.image = imageKeys_.NumberOf(smallIconKey);
  keys_.Insert(hash, handle);
  ++count_;
  rootCount_ += IsFileOrFolder(tag) ? 0 : 1;
  if (position && !SortColumn()) {
    FlushStaged();
    const auto row = static_cast<size_t>(qBound(0, *position, static_cast<int>(rows_.size())));
    InsertRun({handle}, {0, 1, row});
  } else {
    staged_.push_back(handle);
  }
  return handle;
}

void FileListModel::SetDetails(Handle handle, const FileDetails& details) {
  FileListItem& item = items_[handle];
  item.size = details.size;
  item.modified = details.modified;
  item.accessed = details.accessed;
  item.created = details.created;
  item.fileType = details.fileType;
  item.hasDetails = true;
  if (item.row == FileListItem::kNoRow) {
    return;
  }
  MoveToSortedRow(handle);
  Q_EMIT dataChanged(IndexOf(handle), IndexOf(handle, columnCount() - 1));
}

void FileListModel::Reserve(qsizetype count) {
  const auto items = static_cast<size_t>(qMax<qsizetype>(count, 0));
  items_.reserve(items);
  rows_.reserve(items);
  keys_.Reserve(items);
}

void FileListModel::FlushStaged() {
  if (staged_.empty()) {
    return;
  }
  std::vector<Handle> added;
  added.swap(staged_);
  const std::optional<FileColumn> column = SortColumn();
  if (!column) {
    InsertRun(added, {0, added.size(), rows_.size()});
    return;
  }
  const FileListOrder order = OrderBy(*column);
  const std::vector<Handle> sorted = order.Sorted(added);
  const std::vector<RowRun> runs = MergeRuns(
      rows_.size(), sorted.size(), [&](size_t a, size_t r) { return order.IsBefore(sorted[a], rows_[r]); });
  if (runs.size() <= kMostSingleRuns) {
    for (auto run = runs.rbegin(); run != runs.rend(); ++run) {
      InsertRun(sorted, *run);
    }
    return;
  }
  std::vector<Handle> merged = MergedRows(rows_, sorted, runs);
  InsertRun(sorted, {0, sorted.size(), rows_.size()});
  PutInOrder(std::move(merged));
}

FileListModel::Handle FileListModel::FindByText(QStringView text) const {
  return keys_.Find(HashIgnoringCase(text),
                    [&](Handle item) { return EqualIgnoringCase(items_[item].text, text); });
}

FileListModel::Handle FileListModel::FindByKey(QStringView key) const {
  return key.startsWith(u'@') ? FindByText(key.mid(1)) : kNoItem;
}

bool FileListModel::RemoveByKey(QStringView key) {
  const Handle handle = FindByKey(key);
  if (handle == kNoItem) {
    return false;
  }
  keys_.Remove(HashIgnoringCase(items_[handle].text), handle);
  --count_;
  rootCount_ -= IsFileOrFolder(items_[handle].tag) ? 0 : 1;
  if (items_[handle].row == FileListItem::kNoRow) {
    staged_.erase(std::find(staged_.begin(), staged_.end(), handle));
  } else {
    const int row = RowOf(handle);
    ++removing_;
    beginRemoveRows({}, row, row);
    rows_.erase(rows_.begin() + row);
    endRemoveRows();
    --removing_;
  }
  items_[handle] = FileListItem{};
  freeItems_.push_back(handle);
  return true;
}

void FileListModel::Clear() {
  ++removing_;
  beginResetModel();
  // The memory of a large folder is released at once.
  std::vector<FileListItem>().swap(items_);
  std::vector<Handle>().swap(freeItems_);
  std::vector<Handle>().swap(rows_);
  std::vector<Handle>().swap(staged_);
  keys_.Clear();
  count_ = 0;
  rootCount_ = 0;
  endResetModel();
  --removing_;
}

void FileListModel::RenameItem(Handle handle, const QString& text) {
  const Handle other = FindByText(text);
  if (other != kNoItem && other != handle) {
    throw RunTimeError(error::kKeyAlreadyThere, QStringLiteral("The list has \"%1\" already.").arg(text));
  }
  FileListItem& item = items_[handle];
  keys_.Remove(HashIgnoringCase(item.text), handle);
  item.text = text;
  keys_.Insert(HashIgnoringCase(item.text), handle);
  if (item.row == FileListItem::kNoRow) {
    return;
  }
  MoveToSortedRow(handle);
  Q_EMIT dataChanged(IndexOf(handle), IndexOf(handle));
}

void FileListModel::SetType(Handle handle, const QString& smallIconKey, quint32 fileType) {
  FileListItem& item = items_[handle];
  item.image = imageKeys_.NumberOf(smallIconKey);
  item.fileType = fileType;
  if (item.row == FileListItem::kNoRow) {
    return;
  }
  MoveToSortedRow(handle);
  Q_EMIT dataChanged(IndexOf(handle), IndexOf(handle, columnCount() - 1));
}

QString FileListModel::Key(Handle item) const {
  return ListKey(items_[item].text);
}

const QString& FileListModel::ImageKey(Handle item) const {
  return imageKeys_.TextOf(items_[item].image);
}

void FileListModel::SetGhosted(Handle handle, bool ghosted) {
  FileListItem& item = items_[handle];
  if (item.ghosted == ghosted) {
    return;
  }
  item.ghosted = ghosted;
  if (item.row != FileListItem::kNoRow) {
    Q_EMIT dataChanged(IndexOf(handle), IndexOf(handle), {kGhostedRole});
  }
}

QString FileListModel::ColumnText(Handle handle, FileColumn column) const {
  const FileListItem& item = items_[handle];
  if (column == FileColumn::Name) {
    return item.text;
  }
  if (!item.hasDetails) {
    return {};
  }
  const auto dateText = [this](Date date) { return dates_ != nullptr ? dates_->Format(date) : QString(); };
  switch (column) {
    case FileColumn::Size:
      return IsFolderTag(item.tag) ? QString() : SizeText(item.size);
    case FileColumn::Type:
      return types_ != nullptr ? types_->Record(item.fileType).typeName : QString();
    case FileColumn::Modified:
      return dateText(item.modified);
    case FileColumn::Accessed:
      return dateText(item.accessed);
    case FileColumn::Created:
      return dateText(item.created);
    default:
      return AttributeLetters(item.tag);
  }
}

QStringList FileListModel::WidestTexts(FileColumn column) const {
  QStringList texts;
  switch (column) {
    case FileColumn::Size:
      for (char16_t digit = u'0'; digit <= u'9'; ++digit) {
        texts += QString(SizeText(0).size(), QChar(digit));
      }
      break;
    case FileColumn::Modified:
    case FileColumn::Accessed:
    case FileColumn::Created:
      // The names of months, and the words for the halves of the day, differ in width.
      for (int month = 1; dates_ != nullptr && month <= 12; ++month) {
        for (const int hour : {10, 22}) {
          const QDateTime date(QDate(2028, month, 28), QTime(hour, 48, 58));
          texts += dates_->Format(Date{date.toMSecsSinceEpoch()});
        }
      }
      break;
    case FileColumn::Attributes:
      texts += AttributeLetters(~0);
      break;
    default:
      break;
  }
  return texts;
}

bool FileListModel::IsColumnVisible(FileColumn column) const {
  return std::find(columns_.begin(), columns_.end(), column) != columns_.end();
}

void FileListModel::SetColumnVisible(FileColumn column, bool visible) {
  if (column == FileColumn::Name || visible == IsColumnVisible(column)) {
    return;
  }
  const auto position = std::lower_bound(columns_.begin(), columns_.end(), column);
  const auto section = static_cast<int>(position - columns_.begin());
  headerImages_[static_cast<size_t>(column)].clear();
  if (visible) {
    beginInsertColumns({}, section, section);
    columns_.insert(position, column);
    endInsertColumns();
  } else {
    beginRemoveColumns({}, section, section);
    columns_.erase(position);
    endRemoveColumns();
  }
  if (section <= sort_.key) {
    Resort();  // The sort key is a position, which means another column now.
  }
}

const QString& FileListModel::HeaderImage(int section) const {
  return headerImages_[static_cast<size_t>(columns_[static_cast<size_t>(section)])];
}

void FileListModel::SetHeaderImage(int section, const QString& key) {
  QString& image = headerImages_[static_cast<size_t>(columns_[static_cast<size_t>(section)])];
  if (image != key) {
    image = key;
    Q_EMIT headerDataChanged(Qt::Horizontal, section, section);
  }
}

void FileListModel::SetSorting(const SortState& sorting) {
  if (sort_ != sorting) {
    sort_ = sorting;
    Resort();
  }
}

std::optional<FileColumn> FileListModel::SortColumn() const {
  if (!sort_.sorted || sort_.key < 0 || static_cast<size_t>(sort_.key) >= columns_.size()) {
    return std::nullopt;
  }
  return columns_[static_cast<size_t>(sort_.key)];
}

FileListOrder FileListModel::OrderBy(FileColumn column) const {
  return FileListOrder(items_, types_, dates_, column, sort_.descending);
}

void FileListModel::InsertRun(const std::vector<Handle>& added, const RowRun& run) {
  const auto first = added.begin() + static_cast<std::ptrdiff_t>(run.first);
  beginInsertRows({}, static_cast<int>(run.row), static_cast<int>(run.row + run.count) - 1);
  rows_.insert(rows_.begin() + static_cast<std::ptrdiff_t>(run.row), first,
               first + static_cast<std::ptrdiff_t>(run.count));
  for (size_t i = 0; i < run.count; ++i) {
    items_[rows_[run.row + i]].row = static_cast<qint32>(run.row + i);
  }
  endInsertRows();
}

void FileListModel::PutInOrder(std::vector<Handle> order) {
  Q_EMIT layoutAboutToBeChanged({}, VerticalSortHint);
  const QModelIndexList from = persistentIndexList();
  QModelIndexList to;
  to.reserve(from.size());
  std::vector<Handle> held;
  held.reserve(static_cast<size_t>(from.size()));
  for (const QModelIndex& index : from) {
    held.push_back(rows_[static_cast<size_t>(index.row())]);
  }
  rows_ = std::move(order);
  for (size_t i = 0; i < rows_.size(); ++i) {
    items_[rows_[i]].row = static_cast<qint32>(i);
  }
  for (qsizetype i = 0; i < from.size(); ++i) {
    to.append(createIndex(items_[held[static_cast<size_t>(i)]].row, from[i].column()));
  }
  changePersistentIndexList(from, to);
  Q_EMIT layoutChanged({}, VerticalSortHint);
}

void FileListModel::Resort() {
  const std::optional<FileColumn> column = SortColumn();
  if (!column || rows_.size() < 2) {
    return;
  }
  std::vector<Handle> order = OrderBy(*column).Sorted(rows_);
  if (order != rows_) {
    PutInOrder(std::move(order));
  }
}

void FileListModel::MoveToSortedRow(Handle handle) {
  const std::optional<FileColumn> column = SortColumn();
  if (!column) {
    return;
  }
  const int row = RowOf(handle);
  const FileListOrder order = OrderBy(*column);
  const auto before = [&order](Handle left, Handle right) { return order.IsBefore(left, right); };
  // The item itself does not count, wherever it is now.
  const auto self = rows_.begin() + row;
  auto position = std::upper_bound(rows_.begin(), self, handle, before);
  if (position == self) {
    position = std::lower_bound(self + 1, rows_.end(), handle, before);
    if (position == self + 1) {
      return;
    }
  }
  const auto to = static_cast<int>(position - rows_.begin());
  if (!beginMoveRows({}, row, row, {}, to)) {
    return;
  }
  if (to > row) {
    std::rotate(self, self + 1, position);
  } else {
    std::rotate(position, self, self + 1);
  }
  endMoveRows();
}

QModelIndex FileListModel::IndexOf(Handle item, int column) const {
  return item != kNoItem && items_[item].row != FileListItem::kNoRow ? createIndex(RowOf(item), column)
                                                                     : QModelIndex();
}

FileListModel::Handle FileListModel::HandleAt(const QModelIndex& index) const {
  return index.isValid() && static_cast<size_t>(index.row()) < rows_.size() ? HandleAt(index.row()) : kNoItem;
}

int FileListModel::RowOf(Handle item) const {
  const qint32 hint = items_[item].row;
  if (static_cast<size_t>(hint) >= rows_.size() || rows_[static_cast<size_t>(hint)] != item) {
    for (size_t i = 0; i < rows_.size(); ++i) {
      items_[rows_[i]].row = static_cast<qint32>(i);
    }
  }
  return items_[item].row;
}

QModelIndex FileListModel::index(int row, int column, const QModelIndex& parent) const {
  return hasIndex(row, column, parent) ? createIndex(row, column) : QModelIndex();
}

QModelIndex FileListModel::parent(const QModelIndex& /*child*/) const {
  return {};
}

QModelIndex FileListModel::sibling(int row, int column, const QModelIndex& /*index*/) const {
  return index(row, column);
}

int FileListModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

int FileListModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(columns_.size());
}

bool FileListModel::hasChildren(const QModelIndex& parent) const {
  return !parent.isValid() && !rows_.empty();
}

QVariant FileListModel::data(const QModelIndex& index, int role) const {
  const Handle handle = HandleAt(index);
  if (handle == kNoItem || static_cast<size_t>(index.column()) >= columns_.size()) {
    return {};
  }
  const FileListItem& item = items_[handle];
  const FileColumn column = columns_[static_cast<size_t>(index.column())];
  const bool isName = column == FileColumn::Name;
  switch (role) {
    case Qt::DisplayRole:
      return isName ? DisplayText(item.text) : ColumnText(handle, column);
    case Qt::EditRole:
      return ColumnText(handle, column);
    case Qt::ToolTipRole:
      if (isName && IsDrive(item.tag) && driveToolTip_) {
        return driveToolTip_(item.text);
      }
      if (column == FileColumn::Size) {
        const bool shown = item.hasDetails && item.size >= 0 && !IsFolderTag(item.tag);
        return shown ? QString::number(item.size) : QString();
      }
      return DisplayText(ColumnText(handle, column));
    case Qt::DecorationRole:
      return isName && images_ != nullptr && item.image != 0 ? images_->Icon(ImageKey(handle)) : QVariant();
    case Qt::TextAlignmentRole:
      return column == FileColumn::Size ? QVariant(Qt::AlignRight | Qt::AlignVCenter) : QVariant();
    case kTagRole:
      return item.tag;
    case kKeyRole:
      return Key(handle);
    case kImageKeyRole:
      return ImageKey(handle);
    case kGhostedRole:
      return item.ghosted;
    default:
      return {};
  }
}

QVariant FileListModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || section < 0 || static_cast<size_t>(section) >= columns_.size()) {
    return {};
  }
  const FileColumn column = columns_[static_cast<size_t>(section)];
  switch (role) {
    case Qt::DisplayRole:
      return HeaderText(column);
    case Qt::TextAlignmentRole:
      return QVariant((column == FileColumn::Size ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter);
    case Qt::DecorationRole:
      return images_ != nullptr && !HeaderImage(section).isEmpty() ? images_->Icon(HeaderImage(section))
                                                                   : QVariant();
    case kImageKeyRole:
      return HeaderImage(section);
    default:
      return {};
  }
}

Qt::ItemFlags FileListModel::flags(const QModelIndex& index) const {
  const Handle handle = HandleAt(index);
  if (handle == kNoItem) {
    return Qt::NoItemFlags;
  }
  Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren;
  if (index.column() == 0 && (rootCount_ == 0 || IsFileOrFolder(items_[handle].tag))) {
    flags |= Qt::ItemIsEditable;
  }
  return flags;
}

}  // namespace trevane

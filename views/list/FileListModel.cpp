#include "views/list/FileListModel.h"

#include "base/DisplayText.h"
#include "base/RunTimeError.h"
#include "views/ImageList.h"
#include "views/ItemRoles.h"
#include "views/addresses/Addresses.h"
#include "views/addresses/NodeTags.h"
#include "views/list/DateFormatter.h"
#include "views/list/FileTypes.h"

#include <QDateTime>

#include <algorithm>

namespace trevane {
namespace {

/// The workspace, a machine root or a drive.
bool IsPlace(qint32 tag) {
  return (tag & (TAG_WORKSPACE | TAG_COMPUTER | TAG_DRIVE)) != 0;
}

}  // namespace

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
  Handle handle = static_cast<Handle>(items_.size());
  if (freeItems_.empty()) {
    items_.emplace_back();
  } else {
    handle = freeItems_.back();
    freeItems_.pop_back();
  }
  Item& item = items_[handle];
  item.text = text;
  item.tag = tag;
  item.image = imageKeys_.NumberOf(smallIconKey);
  keys_.Insert(hash, handle);
  ++count_;
  placeCount_ += IsPlace(tag) ? 1 : 0;
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
  Item& item = items_[handle];
  item.size = details.size;
  item.modified = details.modified;
  item.accessed = details.accessed;
  item.created = details.created;
  item.fileType = details.fileType;
  item.hasDetails = true;
  if (item.row == kNoRow) {
    return;
  }
  MoveToItsPlace(handle);
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
  const std::vector<Handle> sorted = InOrder(added, *column);
  const std::vector<quint32> ranks = TypeRanks();
  const std::vector<RowRun> runs = MergeRuns(rows_.size(), sorted.size(), [&](size_t a, size_t r) {
    return Compare(items_[sorted[a]], items_[rows_[r]], *column, ranks) < 0;
  });
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
  placeCount_ -= IsPlace(items_[handle].tag) ? 1 : 0;
  if (items_[handle].row == kNoRow) {
    staged_.erase(std::find(staged_.begin(), staged_.end(), handle));
  } else {
    const int row = RowOf(handle);
    ++removing_;
    beginRemoveRows({}, row, row);
    rows_.erase(rows_.begin() + row);
    endRemoveRows();
    --removing_;
  }
  items_[handle] = Item{};
  freeItems_.push_back(handle);
  return true;
}

void FileListModel::Clear() {
  ++removing_;
  beginResetModel();
  // The memory of a large folder goes back at once.
  std::vector<Item>().swap(items_);
  std::vector<Handle>().swap(freeItems_);
  std::vector<Handle>().swap(rows_);
  std::vector<Handle>().swap(staged_);
  keys_.Clear();
  count_ = 0;
  placeCount_ = 0;
  endResetModel();
  --removing_;
}

void FileListModel::RenameItem(Handle handle, const QString& text) {
  const Handle other = FindByText(text);
  if (other != kNoItem && other != handle) {
    throw RunTimeError(error::kKeyAlreadyThere, QStringLiteral("The list has \"%1\" already.").arg(text));
  }
  Item& item = items_[handle];
  keys_.Remove(HashIgnoringCase(item.text), handle);
  item.text = text;
  keys_.Insert(HashIgnoringCase(item.text), handle);
  if (item.row == kNoRow) {
    return;
  }
  MoveToItsPlace(handle);
  Q_EMIT dataChanged(IndexOf(handle), IndexOf(handle));
}

void FileListModel::SetType(Handle handle, const QString& smallIconKey, quint32 fileType) {
  Item& item = items_[handle];
  item.image = imageKeys_.NumberOf(smallIconKey);
  item.fileType = fileType;
  if (item.row == kNoRow) {
    return;
  }
  MoveToItsPlace(handle);
  Q_EMIT dataChanged(IndexOf(handle), IndexOf(handle, columnCount() - 1));
}

QString FileListModel::Key(Handle item) const {
  return ListKey(items_[item].text);
}

const QString& FileListModel::ImageKey(Handle item) const {
  return imageKeys_.TextOf(items_[item].image);
}

void FileListModel::SetGhosted(Handle handle, bool ghosted) {
  Item& item = items_[handle];
  if (item.ghosted == ghosted) {
    return;
  }
  item.ghosted = ghosted;
  if (item.row != kNoRow) {
    Q_EMIT dataChanged(IndexOf(handle), IndexOf(handle), {kGhostedRole});
  }
}

QString FileListModel::ColumnText(Handle handle, FileColumn column) const {
  const Item& item = items_[handle];
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

QString FileListModel::SubItem(Handle item, int number) const {
  return number >= 0 && static_cast<size_t>(number) < columns_.size()
             ? ColumnText(item, columns_[static_cast<size_t>(number)])
             : QString();
}

bool FileListModel::IsColumnVisible(FileColumn column) const {
  return std::find(columns_.begin(), columns_.end(), column) != columns_.end();
}

void FileListModel::SetColumnVisible(FileColumn column, bool visible) {
  if (column == FileColumn::Name || visible == IsColumnVisible(column)) {
    return;
  }
  const auto place = std::lower_bound(columns_.begin(), columns_.end(), column);
  const auto section = static_cast<int>(place - columns_.begin());
  headerImages_[static_cast<size_t>(column)].clear();
  if (visible) {
    beginInsertColumns({}, section, section);
    columns_.insert(place, column);
    endInsertColumns();
  } else {
    beginRemoveColumns({}, section, section);
    columns_.erase(place);
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

QModelIndex FileListModel::IndexOf(Handle item, int column) const {
  return item != kNoItem && items_[item].row != kNoRow ? createIndex(RowOf(item), column) : QModelIndex();
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
  const Item& item = items_[handle];
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
  if (index.column() == 0 && (placeCount_ == 0 || !IsPlace(items_[handle].tag))) {
    flags |= Qt::ItemIsEditable;
  }
  return flags;
}

}  // namespace trevane

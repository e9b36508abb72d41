// How FileListModel keeps its rows in order.

#include "base/TextOrder.h"
#include "views/addresses/Addresses.h"
#include "views/addresses/NodeTags.h"
#include "views/list/DateFormatter.h"
#include "views/list/FileListModel.h"
#include "views/list/FileTypes.h"

#include <algorithm>
#include <array>
#include <numeric>

namespace trevane {
namespace {

/// Ranks of the sixteen attribute texts in text order, by the bits R, H, S, A.
const std::array<quint8, 16>& AttributeRanks() {
  static const auto kRanks = [] {
    constexpr std::array<qint32, 4> kBits = {1, 2, 4, 32};
    std::array<QString, 16> texts;
    for (size_t i = 0; i < texts.size(); ++i) {
      qint32 attributes = 0;
      for (size_t bit = 0; bit < kBits.size(); ++bit) {
        attributes |= ((i >> bit) & 1U) != 0 ? kBits[bit] : 0;
      }
      texts[i] = AttributeLetters(attributes);
    }
    std::array<quint8, 16> ranks{};
    for (size_t i = 0; i < texts.size(); ++i) {
      ranks[i] = static_cast<quint8>(std::count_if(texts.begin(), texts.end(), [&](const QString& other) {
        return CompareIgnoringCase(other, texts[i]) < 0;
      }));
    }
    return ranks;
  }();
  return kRanks;
}

bool IsDateColumn(FileColumn column) {
  return column == FileColumn::Modified || column == FileColumn::Accessed || column == FileColumn::Created;
}

}  // namespace

std::vector<quint32> FileListModel::TypeRanks() const {
  if (types_ == nullptr || SortColumn() != FileColumn::Type) {
    return {};
  }
  const quint32 count = types_->Count();
  std::vector<quint32> ids(count);
  std::iota(ids.begin(), ids.end(), quint32{0});
  const auto name = [this](quint32 id) -> QStringView { return types_->Record(id).typeName; };
  std::sort(ids.begin(), ids.end(),
            [&](quint32 a, quint32 b) { return CompareIgnoringCase(name(a), name(b)) < 0; });
  // 0 is the empty text of items without a type.
  std::vector<quint32> ranks(count);
  quint32 rank = 0;
  QStringView last;
  for (const quint32 id : ids) {
    if (!EqualIgnoringCase(name(id), last)) {
      ++rank;
      last = name(id);
    }
    ranks[id] = rank;
  }
  return ranks;
}

quint64 FileListModel::NumberKey(const Item& item, FileColumn column,
                                 const std::vector<quint32>& typeRanks) const {
  if (!item.hasDetails) {
    return 0;
  }
  switch (column) {
    case FileColumn::Size:
      return IsFolderTag(item.tag) ? 0 : SizeSortKey(item.size);
    case FileColumn::Type:
      return item.fileType < typeRanks.size() ? typeRanks[item.fileType] : 0;
    default: {
      const auto bits = static_cast<quint32>(item.tag);
      return AttributeRanks()[(bits & 7U) | ((bits & 0x20U) >> 2U)];
    }
  }
}

int FileListModel::Compare(const Item& left, const Item& right, FileColumn column,
                           const std::vector<quint32>& typeRanks) const {
  int order = 0;
  if (column == FileColumn::Name) {
    order = CompareIgnoringCase(left.text, right.text);
  } else if (IsDateColumn(column)) {
    const auto text = [&](const Item& item) {
      return ColumnText(static_cast<Handle>(&item - items_.data()), column);
    };
    order = CompareIgnoringCase(text(left), text(right));
  } else {
    const quint64 a = NumberKey(left, column, typeRanks);
    const quint64 b = NumberKey(right, column, typeRanks);
    order = a < b ? -1 : a > b ? 1 : 0;
  }
  if (order == 0 && column != FileColumn::Name) {
    return CompareIgnoringCase(left.text, right.text);
  }
  return sort_.descending ? -order : order;
}

std::vector<FileListModel::Handle> FileListModel::InNameOrder(const std::vector<Handle>& items,
                                                              bool descending) const {
  TextOrder texts;
  texts.Reserve(items.size());
  for (const Handle item : items) {
    texts.Add(items_[item].text);
  }
  std::vector<Handle> order;
  order.reserve(items.size());
  for (const quint32 position : texts.Sorted(descending)) {
    order.push_back(items[position]);
  }
  return order;
}

std::vector<FileListModel::Handle> FileListModel::InOrder(const std::vector<Handle>& items,
                                                          FileColumn column) const {
  if (column == FileColumn::Name) {
    return InNameOrder(items, sort_.descending);
  }
  // Equal ones keep this order.
  const std::vector<Handle> byName = InNameOrder(items, false);
  std::vector<Handle> order;
  order.reserve(items.size());
  if (IsDateColumn(column)) {
    TextOrder texts;
    texts.Reserve(items.size());
    for (const Handle item : byName) {
      texts.Add(ColumnText(item, column));
    }
    for (const quint32 position : texts.Sorted(sort_.descending)) {
      order.push_back(byName[position]);
    }
    return order;
  }
  struct Record {
    quint64 key;
    quint32 position;
  };
  const std::vector<quint32> ranks = TypeRanks();
  std::vector<Record> records;
  records.reserve(items.size());
  for (const Handle item : byName) {
    records.push_back({NumberKey(items_[item], column, ranks), static_cast<quint32>(records.size())});
  }
  const bool descending = sort_.descending;
  std::sort(records.begin(), records.end(), [descending](const Record& a, const Record& b) {
    return a.key != b.key ? (a.key < b.key) != descending : a.position < b.position;
  });
  for (const Record& record : records) {
    order.push_back(byName[record.position]);
  }
  return order;
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
  std::vector<Handle> order = InOrder(rows_, *column);
  if (order != rows_) {
    PutInOrder(std::move(order));
  }
}

void FileListModel::MoveToItsPlace(Handle handle) {
  const std::optional<FileColumn> column = SortColumn();
  if (!column) {
    return;
  }
  const int row = RowOf(handle);
  const std::vector<quint32> ranks = TypeRanks();
  const auto before = [&](Handle left, Handle right) {
    return Compare(items_[left], items_[right], *column, ranks) < 0;
  };
  // The item itself does not count, wherever it stands now.
  const auto self = rows_.begin() + row;
  auto place = std::upper_bound(rows_.begin(), self, handle, before);
  if (place == self) {
    place = std::lower_bound(self + 1, rows_.end(), handle, before);
    if (place == self + 1) {
      return;
    }
  }
  const auto to = static_cast<int>(place - rows_.begin());
  if (!beginMoveRows({}, row, row, {}, to)) {
    return;
  }
  if (to > row) {
    std::rotate(self, self + 1, place);
  } else {
    std::rotate(place, self, self + 1);
  }
  endMoveRows();
}

}  // namespace trevane

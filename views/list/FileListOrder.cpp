#include "views/list/FileListOrder.h"

#include "base/DateFormatter.h"
#include "base/LowerCase.h"
#include "base/TextOrder.h"
#include "views/addresses/AttributeLetters.h"
#include "views/addresses/NodeTags.h"
#include "views/list/FileTypes.h"

#include <algorithm>
#include <numeric>

namespace trevane {
namespace {

bool IsDateColumn(FileColumn column) {
  return column == FileColumn::Modified || column == FileColumn::Accessed || column == FileColumn::Created;
}

std::vector<quint32> RanksOfTypes(const FileTypes& types) {
  const quint32 count = types.Count();
  std::vector<quint32> ids(count);
  std::iota(ids.begin(), ids.end(), quint32{0});
  const auto name = [&types](quint32 id) -> QStringView { return types.Record(id).typeName; };
  std::sort(ids.begin(), ids.end(),
            [&](quint32 a, quint32 b) { return CompareIgnoringCase(name(a), name(b)) < 0; });
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

std::vector<FileListOrder::Handle> InOrderOf(const TextOrder& texts, bool descending,
                                             const std::vector<FileListOrder::Handle>& handles) {
  std::vector<FileListOrder::Handle> sorted;
  sorted.reserve(handles.size());
  for (const quint32 position : texts.Sorted(descending)) {
    sorted.push_back(handles[position]);
  }
  return sorted;
}

}  // namespace

FileListOrder::FileListOrder(const std::vector<FileListItem>& items, const FileTypes* types,
                             const DateFormatter* dates, FileColumn column, bool descending)
    : items_(items), dates_(dates), column_(column), descending_(descending) {
  if (types != nullptr && column == FileColumn::Type) {
    typeRanks_ = RanksOfTypes(*types);
  }
}

std::vector<FileListOrder::Handle> FileListOrder::Sorted(const std::vector<Handle>& handles) const {
  if (column_ == FileColumn::Name) {
    return SortedByName(handles, descending_);
  }
  // Equal ones keep this order.
  const std::vector<Handle> byName = SortedByName(handles, false);
  return IsDateColumn(column_) ? SortedByDate(byName) : SortedByNumber(byName);
}

std::vector<FileListOrder::Handle> FileListOrder::SortedByName(const std::vector<Handle>& handles,
                                                               bool descending) const {
  TextOrder texts;
  texts.Reserve(handles.size());
  for (const Handle handle : handles) {
    texts.Add(items_[handle].text);
  }
  return InOrderOf(texts, descending, handles);
}

std::vector<FileListOrder::Handle> FileListOrder::SortedByDate(const std::vector<Handle>& byName) const {
  TextOrder texts;
  texts.Reserve(byName.size());
  for (const Handle handle : byName) {
    texts.Add(DateText(items_[handle]));
  }
  return InOrderOf(texts, descending_, byName);
}

std::vector<FileListOrder::Handle> FileListOrder::SortedByNumber(const std::vector<Handle>& byName) const {
  struct Record {
    quint64 key;
    quint32 position;
  };
  std::vector<Record> records;
  records.reserve(byName.size());
  for (const Handle handle : byName) {
    records.push_back({NumberKey(items_[handle]), static_cast<quint32>(records.size())});
  }
  const bool descending = descending_;
  std::sort(records.begin(), records.end(), [descending](const Record& a, const Record& b) {
    return a.key != b.key ? (a.key < b.key) != descending : a.position < b.position;
  });
  std::vector<Handle> sorted;
  sorted.reserve(byName.size());
  for (const Record& record : records) {
    sorted.push_back(byName[record.position]);
  }
  return sorted;
}

int FileListOrder::Compare(Handle leftHandle, Handle rightHandle) const {
  const FileListItem& left = items_[leftHandle];
  const FileListItem& right = items_[rightHandle];
  const int order = CompareColumn(left, right);
  if (order == 0 && column_ != FileColumn::Name) {
    return CompareIgnoringCase(left.text, right.text);
  }
  return descending_ ? -order : order;
}

int FileListOrder::CompareColumn(const FileListItem& left, const FileListItem& right) const {
  if (column_ == FileColumn::Name) {
    return CompareIgnoringCase(left.text, right.text);
  }
  if (IsDateColumn(column_)) {
    return CompareIgnoringCase(DateText(left), DateText(right));
  }
  const quint64 a = NumberKey(left);
  const quint64 b = NumberKey(right);
  return a < b ? -1 : a > b ? 1 : 0;
}

QString FileListOrder::DateText(const FileListItem& item) const {
  if (!item.hasDetails || dates_ == nullptr) {
    return {};
  }
  return dates_->Format(column_ == FileColumn::Modified   ? item.modified
                        : column_ == FileColumn::Accessed ? item.accessed
                                                          : item.created);
}

quint64 FileListOrder::NumberKey(const FileListItem& item) const {
  if (!item.hasDetails) {
    return 0;
  }
  switch (column_) {
    case FileColumn::Size:
      return IsFolderTag(item.tag) ? 0 : SizeSortKey(item.size);
    case FileColumn::Type:
      return item.fileType < typeRanks_.size() ? typeRanks_[item.fileType] : 0;
    default:
      return AttributeSortKey(item.tag);
  }
}

}  // namespace trevane

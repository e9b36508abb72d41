#pragma once

#include "views/list/FileColumns.h"
#include "views/list/FileListItem.h"

#include <vector>

namespace trevane {

class DateFormatter;
class FileTypes;

/// The order of the list's items by the texts of one column, without regard to case. Where a number yields
/// the same order no text is made. Equal items follow the name, in either direction.
class FileListOrder final {
 public:
  /// The position of an item in `items`.
  using Handle = quint32;

  /// All references and pointers outlive this object; `types` and `dates` may be null.
  FileListOrder(const std::vector<FileListItem>& items, const FileTypes* types, const DateFormatter* dates,
                FileColumn column, bool descending);

  [[nodiscard]] std::vector<Handle> Sorted(const std::vector<Handle>& handles) const;
  [[nodiscard]] bool IsBefore(Handle left, Handle right) const { return Compare(left, right) < 0; }

 private:
  /// Negative, zero, positive in the direction of the sort.
  [[nodiscard]] int Compare(Handle left, Handle right) const;
  [[nodiscard]] int CompareColumn(const FileListItem& left, const FileListItem& right) const;
  [[nodiscard]] QString DateText(const FileListItem& item) const;
  /// Orders as the text of a column that holds no dates.
  [[nodiscard]] quint64 NumberKey(const FileListItem& item) const;
  [[nodiscard]] std::vector<Handle> SortedByName(const std::vector<Handle>& handles, bool descending) const;
  [[nodiscard]] std::vector<Handle> SortedByDate(const std::vector<Handle>& byName) const;
  [[nodiscard]] std::vector<Handle> SortedByNumber(const std::vector<Handle>& byName) const;

  const std::vector<FileListItem>& items_;
  const DateFormatter* dates_;
  FileColumn column_;
  bool descending_;
  /// Ranks of the type names in text order, by FileTypeRecord::id; 0 is the empty text of items without one.
  std::vector<quint32> typeRanks_;
};

}  // namespace trevane

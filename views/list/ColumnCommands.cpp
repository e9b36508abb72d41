#include "views/list/ColumnCommands.h"

#include "views/addresses/ImageKeys.h"
#include "views/list/FileListModel.h"
#include "views/list/ListSorting.h"

#include <algorithm>

namespace trevane {

bool ToggleColumn(FileListModel& list, FileColumn column) {
  if (column == FileColumn::Name) {
    return true;
  }
  const bool visible = !list.IsColumnVisible(column);
  if (!visible && list.Sorting().key == static_cast<int>(column)) {
    SortByName(list);
  }

  SortState sorting = list.Sorting();
  const bool hasSorted = sorting.key >= 0 && sorting.key < list.columnCount();
  const FileColumn sorted =
      hasSorted ? list.VisibleColumns()[static_cast<size_t>(sorting.key)] : FileColumn::Name;
  list.SetColumnVisible(column, visible);

  const std::vector<FileColumn>& columns = list.VisibleColumns();
  const auto position = std::find(columns.begin(), columns.end(), sorted);
  if (hasSorted && position != columns.end()) {
    sorting.key = static_cast<int>(position - columns.begin());
    list.SetSorting(sorting);
  } else if (sorting.sorted && sorting.key >= list.columnCount()) {
    // There is no column at that position any more.
    SortByName(list);
  } else if (sorting.sorted) {
    list.SetHeaderImage(sorting.key, sorting.descending ? imagekey::kDescend : imagekey::kAscend);
  }
  return visible;
}

}  // namespace trevane

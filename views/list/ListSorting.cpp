#include "views/list/ListSorting.h"

#include "base/LowerCase.h"
#include "views/addresses/ImageKeys.h"
#include "views/list/FileListModel.h"

namespace trevane {

void ColumnClick(FileListModel& list, int clicked) {
  SortState sorting = list.Sorting();
  sorting.sorted = true;
  const QString clickedText = list.headerData(clicked, Qt::Horizontal).toString();
  for (int section = 0; section < list.columnCount(); ++section) {
    if (!EqualIgnoringCase(list.headerData(section, Qt::Horizontal).toString(), clickedText)) {
      list.SetHeaderImage(section, {});
      continue;
    }
    sorting.descending = list.HeaderImage(section) == imagekey::kAscend;
    sorting.key = section;
    list.SetHeaderImage(section, sorting.descending ? imagekey::kDescend : imagekey::kAscend);
  }
  list.SetSorting(sorting);
}

void SortByName(FileListModel& list) {
  for (int section = 0; section < list.columnCount(); ++section) {
    list.SetHeaderImage(section, section == 0 ? imagekey::kAscend : QString());
  }
  list.SetSorting({true, 0, false});
}

}  // namespace trevane

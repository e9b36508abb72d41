#pragma once

#include "views/list/FileColumns.h"

namespace trevane {

class FileListModel;

/// Shows a hidden column at its position in the fixed order and hides a visible one; the name stays. True
/// when it is visible afterwards. The folder must be displayed again.
///
/// Order and arrow stay on the sorted column when another one before it is shown or hidden. Hiding a column
/// whose number in the fixed order equals the sort key sorts by name again. The sort key is a position among
/// the visible columns: where columns before the sorted one are hidden, it is another column's number. When
/// the sorted column is hidden and its number differs from the key, the key stays, and the column at that
/// position becomes the sorted one.
bool ToggleColumn(FileListModel& list, FileColumn column);

}  // namespace trevane

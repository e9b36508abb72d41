#pragma once

#include "views/list/FileColumns.h"

namespace trevane {

class FileListModel;

/// Shows the column where it is hidden, at its place in the fixed order, and hides it where it is shown; the
/// name stays. True when it is shown now. The folder is to be displayed again afterwards.
///
/// Order and arrow stay on the sorted column while others come and go before it. Hiding a column whose number
/// in the fixed order equals the sort key sorts by name again; the key is the sorted column's position among
/// the visible ones, and so, where columns before it are hidden, another one's number. Where the sorted
/// column goes by another number than the key, the key stays, and the column that has its position now is the
/// sorted one.
bool ToggleColumn(FileListModel& list, FileColumn column);

}  // namespace trevane

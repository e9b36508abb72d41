#pragma once

namespace trevane {

class FileListModel;

/// A click on the header at that position: sorts by its column, ascending at first and in the other direction
/// when the header shows "ASCEND"; every other header loses its image. The header image is the only record of
/// a column's direction.
void ColumnClick(FileListModel& list, int clicked);

/// Sorts by name, ascending, with the matching header image.
void SortByName(FileListModel& list);

}  // namespace trevane

#pragma once

#include "views/list/FileColumns.h"

namespace trevane {

class AddressBar;
class CommandHost;
class FileListModel;
class FileListView;
class FilterBar;
class ListLanding;
class Navigator;

/// The commands that change what is displayed, and nothing else.
class ViewCommands final {
 public:
  /// All of it outlives this object.
  struct Parts {
    Navigator& navigator;
    FileListModel& list;
    FileListView& listView;
    ListLanding& landing;
    AddressBar& addressBar;
    FilterBar& filterBar;
    CommandHost& host;
  };

  explicit ViewCommands(const Parts& parts) : parts_(parts) {}
  ViewCommands(const ViewCommands&) = delete;
  ViewCommands& operator=(const ViewCommands&) = delete;

  void GoToParent();
  /// Displays the current folder again and keeps the selection.
  void Refresh();
  void SelectAll();
  /// Shows the column where it is hidden and hides it where it is shown; the name column stays.
  void ToggleColumn(FileColumn column);
  [[nodiscard]] bool IsColumnVisible(FileColumn column) const;
  /// Goes to the address in the address box.
  void GoToAddress();
  /// Both take the state of their button after the click.
  void SwitchFilter(bool on);
  void SwitchFilterType(bool excludes);

 private:
  Parts parts_;
};

}  // namespace trevane

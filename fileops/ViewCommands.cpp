#include "fileops/ViewCommands.h"

#include "fileops/CommandHost.h"
#include "views/bars/AddressBar.h"
#include "views/bars/FilterBar.h"
#include "views/list/ColumnCommands.h"
#include "views/list/FileListModel.h"
#include "views/list/FileListView.h"
#include "views/list/ListLanding.h"
#include "views/navigation/Navigator.h"
#include "views/tree/FolderNode.h"

namespace trevane {

void ViewCommands::GoToParent() {
  FolderNode* current = parts_.navigator.CurrentNode();
  FolderNode* parent = current ? current->Parent() : nullptr;
  if (!parent) {
    return;
  }
  parts_.navigator.DisplayNode(*parent);
  parts_.host.FocusActiveView();
}

void ViewCommands::Refresh() {
  parts_.landing.KeepSelection();
  parts_.navigator.Refresh();
}

void ViewCommands::SelectAll() {
  parts_.listView.setFocus();
  parts_.listView.selectAll();
}

void ViewCommands::ToggleColumn(FileColumn column) {
  trevane::ToggleColumn(parts_.list, column);
  Refresh();
}

bool ViewCommands::IsColumnVisible(FileColumn column) const {
  return parts_.list.IsColumnVisible(column);
}

void ViewCommands::GoToAddress() {
  parts_.addressBar.Go();
}

void ViewCommands::SwitchFilter(bool on) {
  parts_.filterBar.SwitchClicked(on);
}

void ViewCommands::SwitchFilterType(bool excludes) {
  parts_.filterBar.ModeClicked(excludes);
}

}  // namespace trevane

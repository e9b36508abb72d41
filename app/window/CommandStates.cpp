#include "app/window/CommandStates.h"

#include "app/window/CommandBars.h"
#include "fileops/OperationState.h"
#include "views/addresses/NodeTags.h"
#include "views/list/FileListModel.h"
#include "views/list/FileListView.h"
#include "views/navigation/Navigator.h"
#include "views/tree/FolderNode.h"

#include <QItemSelectionModel>

#include <algorithm>

namespace trevane {

void CommandStates::Update(qint32 tag, bool entry) {
  const FolderNode* current = navigator_.CurrentNode();
  bars_.ApplyState({.tag = tag,
                    .entry = entry,
                    .clipboardCount = operations_.clipboard.Count(),
                    .selectedListItems = static_cast<int>(list_.selectionModel()->selectedRows().size()),
                    .hasParent = current && !IsWorkspace(current->Tag())});
}

void CommandStates::UpdateBySelection() {
  const auto selected = list_.SelectedItems();
  const FileListModel& files = *list_.Files();
  if (selected.empty()) {
    if (const FolderNode* current = navigator_.CurrentNode()) {
      Update(current->Tag(), false);
      EnableDisconnect(IsController(current->Tag()));
    }
    return;
  }
  // The first of several items decides; a controller among others can be disconnected, though.
  Update(files.Tag(selected.front()), true);
  EnableDisconnect(std::ranges::any_of(
      selected, [&files](FileListModel::Handle item) { return IsController(files.Tag(item)); }));
}

void CommandStates::UpdateDisconnectByFolder() {
  const FolderNode* current = navigator_.CurrentNode();
  EnableDisconnect(current && IsController(current->Tag()));
}

void CommandStates::EnableDisconnect(bool enabled) {
  EnableDisconnectButton(enabled);
  EnableDisconnectItem(enabled);
}

void CommandStates::EnableDisconnectButton(bool enabled) {
  bars_.SetEnabled(CommandPlace::MainToolbar, CommandId::Disconnect, enabled);
}

void CommandStates::EnableDisconnectItem(bool enabled) {
  bars_.SetEnabled(CommandPlace::FileMenu, CommandId::Disconnect, enabled);
}

void CommandStates::EnablePasteButton(bool enabled) {
  bars_.SetEnabled(CommandPlace::MainToolbar, CommandId::Paste, enabled);
}

}  // namespace trevane

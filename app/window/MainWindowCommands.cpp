#include "app/window/MainWindowCommands.h"

#include "app/session/AppServices.h"
#include "app/workspace/WorkspaceFile.h"
#include "base/DateFormatter.h"
#include "dialogs/ShowProperties.h"
#include "fileops/CommandHost.h"
#include "prompts/UserPrompts.h"
#include "views/addresses/Addresses.h"
#include "views/list/FileListModel.h"
#include "views/list/FileListView.h"
#include "views/list/FileTypes.h"
#include "views/navigation/Navigator.h"
#include "views/tree/FolderNode.h"

#include <QWidget>

#include <algorithm>

namespace trevane {

void MainWindowCommands::OpenWorkspace() {
  parts_.workspace.Open();
}

void MainWindowCommands::SaveWorkspace() {
  parts_.workspace.Save();
}

void MainWindowCommands::SaveWorkspaceAs() {
  parts_.workspace.SaveAs();
}

void MainWindowCommands::ShowProperties() {
  const OperationParts& views = parts_.operations;
  const FolderNode* current = views.navigator.CurrentNode();
  if (!current) {
    return;
  }
  const PropertySources sources{
      .files = views.files,
      .dateText = [this](Date date) { return parts_.dates.Format(date); },
      .typeText = [&views](const QString& name) { return views.fileTypes.GetFileType(name).typeName; }};
  const auto selected = views.listView.SelectedItems();
  if (parts_.host.Active() == ActiveSide::List && !selected.empty()) {
    const auto focused = std::ranges::find(selected, views.listView.FocusedItem());
    const auto item = focused != selected.end() ? *focused : selected.front();
    trevane::ShowProperties(JoinAddress(current->FullPath(), views.list.Text(item)), views.list.Tag(item),
                            sources);
  } else {
    trevane::ShowProperties(current->FullPath(), current->Tag(), sources);
  }
}

void MainWindowCommands::ShowSettings() {
  parts_.services.prompts.ShowSettings();
}

void MainWindowCommands::ShowVersion() {
  parts_.services.prompts.MessageBox(
      parts_.services.baseName + QStringLiteral(" version ") + parts_.services.version, PromptIcon::None);
}

void MainWindowCommands::Close() {
  parts_.window.close();
}

}  // namespace trevane

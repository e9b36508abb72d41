#include "fileops/ConnectCommands.h"

#include "prompts/UserPrompts.h"
#include "views/addresses/Addresses.h"
#include "views/addresses/NodeTags.h"
#include "views/list/FileListModel.h"
#include "views/list/FileListView.h"
#include "views/navigation/Navigator.h"
#include "views/tree/FolderTreeModel.h"

#include <utility>

namespace trevane {

using namespace Qt::StringLiterals;

std::vector<SelectedItem> SelectedItemsOf(const FileListView& list) {
  std::vector<SelectedItem> items;
  for (const FileListModel::Handle item : list.SelectedItems())
    items.push_back({list.Files()->Text(item), list.Files()->Tag(item)});
  return items;
}

bool ConfirmDisconnectAll(UserPrompts& prompts) {
  return prompts.MessageBox(u"Disconnect All IxoControllers. Are you sure?"_s, PromptIcon::Question,
                            PromptButtons::OkCancel) == PromptAnswer::Ok;
}

bool ConnectCommands::Confirm(const QString& question) {
  return parts_.prompts.MessageBox(question, PromptIcon::Question, PromptButtons::OkCancel) ==
         PromptAnswer::Ok;
}

void ConnectCommands::Connect() {
  // Neither after a cancel nor after a failure is there a node that was just added.
  if (parts_.showConnectDialog() != 0)
    return;
  const FolderNode* workspace = parts_.tree.FirstRoot();
  if (!workspace || workspace->Children().empty())
    return;
  parts_.enableDisconnectButton(true);
  parts_.navigator.DisplayNode(*workspace->Children().back());
}

void ConnectCommands::DisconnectFromTree() {
  const FolderNode* current = parts_.navigator.CurrentNode();
  if (!current || !IsController(current->Tag()))
    return;
  const QString address = current->FullPath();
  const QString name = current->Text();
  if (!Confirm(u"Disconnect Selected Controller. Are you sure?"_s))
    return;
  static_cast<void>(DisconnectController(parts_.connection, address, name, DisconnectFrom::Tree));
  ShowWorkspace();
}

void ConnectCommands::DisconnectFromList(const std::vector<SelectedItem>& items) {
  const QString place = parts_.navigator.ListTag();
  if (!Confirm(u"Disconnect Selected Controllers. Are you sure?"_s))
    return;
  for (const SelectedItem& item : items) {
    if (!IsController(item.tag))
      continue;
    if (!DisconnectController(parts_.connection, JoinAddress(place, item.text), item.text,
                              DisconnectFrom::List))
      break;
  }
  ShowWorkspace();
}

void ConnectCommands::DisconnectAll() {
  if (!ConfirmDisconnectAll(parts_.prompts))
    return;
  static_cast<void>(DisconnectAllControllers(parts_.connection));
  ShowWorkspace();
}

void ConnectCommands::ShowWorkspace() {
  if (FolderNode* workspace = parts_.tree.FirstRoot())
    parts_.navigator.DisplayNode(*workspace);
  parts_.enableDisconnectButton(false);
  parts_.enableDisconnectItem(false);
}

}  // namespace trevane

#include "fileops/ConnectCommands.h"

#include "fileops/CommandHost.h"
#include "prompts/UserPrompts.h"
#include "views/addresses/Addresses.h"
#include "views/addresses/NodeTags.h"
#include "views/list/FileListModel.h"
#include "views/list/FileListView.h"
#include "views/navigation/Navigator.h"
#include "views/tree/FolderTreeModel.h"

#include <QStringList>

namespace trevane {

bool ConfirmDisconnectAll(UserPrompts& prompts) {
  return prompts.MessageBox(QStringLiteral("Disconnect All IxoControllers. Are you sure?"),
                            PromptIcon::Question, PromptButtons::OkCancel) == PromptAnswer::Ok;
}

bool ConnectCommands::Confirm(const QString& question) {
  return parts_.prompts.MessageBox(question, PromptIcon::Question, PromptButtons::OkCancel) ==
         PromptAnswer::Ok;
}

void ConnectCommands::Connect() {
  // Neither after a cancel nor after a failure is there a node that was just added.
  if (parts_.showConnectDialog() != 0) {
    return;
  }
  const FolderNode* workspace = parts_.tree.FirstRoot();
  if (!workspace || workspace->Children().empty()) {
    return;
  }
  parts_.host.EnableDisconnectButton(true);
  parts_.navigator.DisplayNode(*workspace->Children().back());
}

void ConnectCommands::Disconnect() {
  const FolderNode* current = parts_.navigator.CurrentNode();
  // Controllers are items of the list only while it shows the workspace.
  if (current && IsWorkspace(current->Tag()) && parts_.host.Active() == ActiveSide::List) {
    DisconnectFromList();
  } else {
    DisconnectFromTree();
  }
}

void ConnectCommands::DisconnectFromTree() {
  const FolderNode* current = parts_.navigator.CurrentNode();
  if (!current || !IsController(current->Tag())) {
    return;
  }
  const QString address = current->FullPath();
  const QString name = current->Text();
  if (!Confirm(QStringLiteral("Disconnect Selected Controller. Are you sure?"))) {
    return;
  }
  static_cast<void>(parts_.connector.DisconnectController(address, name, DisconnectFrom::Tree));
  ShowWorkspace();
}

void ConnectCommands::DisconnectFromList() {
  const QString place = parts_.navigator.CurrentAddress();
  QStringList controllers;
  for (const FileListModel::Handle item : parts_.listView.SelectedItems()) {
    if (IsController(parts_.listView.Files()->Tag(item))) {
      controllers += parts_.listView.Files()->Text(item);
    }
  }
  if (!Confirm(QStringLiteral("Disconnect Selected Controllers. Are you sure?"))) {
    return;
  }
  for (const QString& name : controllers) {
    if (!parts_.connector.DisconnectController(JoinAddress(place, name), name, DisconnectFrom::List)) {
      break;
    }
  }
  ShowWorkspace();
}

void ConnectCommands::DisconnectAll() {
  if (!ConfirmDisconnectAll(parts_.prompts)) {
    return;
  }
  static_cast<void>(parts_.connector.DisconnectAllControllers());
  ShowWorkspace();
}

void ConnectCommands::ShowWorkspace() {
  if (FolderNode* workspace = parts_.tree.FirstRoot()) {
    parts_.navigator.DisplayNode(*workspace);
  }
  parts_.host.EnableDisconnectButton(false);
  parts_.host.EnableDisconnectItem(false);
}

}  // namespace trevane

#include "views/navigation/Navigator.h"

#include "base/RunTimeError.h"
#include "prompts/UserPrompts.h"
#include "views/addresses/NodeTags.h"
#include "views/navigation/NavigatorListener.h"
#include "views/tree/FolderTreeModel.h"

#include <QScopedValueRollback>

namespace trevane {

Navigator::Navigator(const Parts& parts)
    : parts_(parts),
      location_(parts.listener),
      builder_({.files = parts.files,
                .fileTypes = parts.fileTypes,
                .tree = parts.tree,
                .location = location_,
                .requests = requests_}),
      goneFolders_(parts.files, parts.tree, location_),
      reader_(parts.files, builder_, location_, requests_),
      filler_(parts.files, parts.fileTypes, parts.tree, parts.list),
      folderDisplay_({.files = parts.files,
                      .reader = reader_,
                      .builder = builder_,
                      .filler = filler_,
                      .tree = parts.tree,
                      .list = parts.list,
                      .requests = requests_,
                      .listener = parts.listener}) {}

void Navigator::DisplayNode(FolderNode& node) {
  const UserPrompts& prompts = parts_.files.Prompts();
  if (prompts.IsEnding()) {
    return;
  }
  if (displaying_) {
    requests_.DisplayNext(node.FullPath());
    parts_.listener.DisplayGivenUp();
    return;
  }
  {
    const QScopedValueRollback<bool> displaying(displaying_, true);
    FolderNode* next = &node;
    while (next != nullptr && !prompts.IsEnding()) {
      requests_.Begin();
      DisplayNow(*next);
      next = NextNode();
    }
  }
  parts_.listener.DisplayEnded();
}

void Navigator::CancelDisplay() {
  requests_.Cancel();
  if (displaying_) {
    parts_.listener.DisplayGivenUp();
  }
}

FolderNode* Navigator::NextNode() {
  const auto address = requests_.TakeNext();
  if (!address) {
    return nullptr;
  }
  FolderNode* next = parts_.tree.FindByKey(*address);
  // If the node has been removed meanwhile, the location that was being listed is listed again, whole.
  return next != nullptr && next->FullPath() == *address ? next : location_.Node();
}

void Navigator::DisplayNow(FolderNode& node) {
  location_.Display(node);
  shown_ = false;
  // The node may be removed during the display.
  const qint32 tag = node.Tag();
  parts_.listener.ShowCurrentNode(node);
  parts_.listener.ShowStatus(QStringLiteral("Selected ") + node.Text());
  parts_.listener.UpdateCommandStates(node.Tag(), false);
  try {
    ShowContents(node, tag);
    shown_ = true;
  } catch (const RunTimeError& failure) {
    folderDisplay_.FlushViews();
    parts_.files.Prompts().MessageBox(failure.Description(), PromptIcon::Exclamation);
    // A time-out or a refusal does not mean that the folder is gone.
    if (failure.Number() == error::kNotFound && location_.Node() == &node && LeaveGoneFolder(node)) {
      return;
    }
  }
  parts_.listener.ShowAddress(location_.Address());
  parts_.listener.UpdateCommandStates(tag, false);
}

void Navigator::ShowContents(FolderNode& node, qint32 tag) {
  if (IsWorkspace(tag)) {
    filler_.ShowWorkspace();
    parts_.listener.EnableDisconnect(false);
  } else if (IsMyComputer(tag)) {
    filler_.Clear();
    builder_.RebuildDrives();
    filler_.ShowDrives();
  } else {
    folderDisplay_.Show(node);
  }
}

bool Navigator::LeaveGoneFolder(FolderNode& node) {
  const FolderNode* gone = &node;
  FolderNode& nearest = goneFolders_.NearestExisting(node);
  if (&nearest == gone) {
    return false;
  }
  if (!requests_.Next() || parts_.tree.FindByKey(*requests_.Next()) == nullptr) {
    requests_.DisplayNext(nearest.FullPath());
  }
  return true;
}

void Navigator::Refresh() {
  if (FolderNode* current = location_.Node(); current != nullptr) {
    DisplayNode(*current);
  }
}

bool Navigator::RemoveFolders(const QStringList& addresses) {
  if (!goneFolders_.RemoveNodes(addresses)) {
    return false;
  }
  DisplayNode(goneFolders_.NearestExisting(*location_.Node()));
  return true;
}

bool Navigator::NodeAboutToBeRemoved(const FolderNode& node) {
  if (!location_.IsIn(node)) {
    return false;
  }
  requests_.Cancel();
  location_.MoveTo(node.Parent());
  return true;
}

}  // namespace trevane

#include "fileops/FileCommands.h"

#include "base/RunTimeError.h"
#include "engine/items/clsIxoFile.h"
#include "views/addresses/Addresses.h"
#include "views/addresses/NodeTags.h"
#include "views/list/FileListView.h"
#include "views/navigation/Navigator.h"
#include "views/tree/FolderNode.h"
#include "views/tree/FolderTreeModel.h"
#include "views/tree/FolderTreeView.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace trevane {

namespace {

/// Something can be put into it: a drive, a controller or a folder.
constexpr bool CanHoldFiles(qint32 tag) {
  return IsDrive(tag) || IsController(tag) || IsFolderTag(tag);
}

}  // namespace

FileCommands::FileCommands(const OperationParts& parts, OperationState& state, OperationGuard& guard,
                           CommandHost& window)
    : parts_(parts),
      state_(state),
      guard_(guard),
      window_(window),
      operations_({.files = parts.files, .log = parts.log, .host = parts.host, .state = state}),
      labels_(parts),
      newFolder_(parts),
      open_(parts) {}

void FileCommands::Copy() {
  CopyOrCut(OperationState::kCopy);
}

void FileCommands::Cut() {
  CopyOrCut(OperationState::kCut);
}

void FileCommands::Paste() {
  PasteInto(std::nullopt);
}

void FileCommands::MoveHere() {
  TakeDragged();
  PasteInto(std::exchange(dropped_, std::nullopt));
}

void FileCommands::OpenItem(FileListModel::Handle item) {
  // While a folder is being displayed another one can be chosen.
  if (!guard_.IsFileOperationRunning() && !guard_.IsEnding() &&
      (!guard_.IsWaiting() || parts_.navigator.IsDisplaying())) {
    open_.OpenItem(item);
  }
}

void FileCommands::CopyOrCut(qint32 mode) {
  parts_.host.SetBusyPointer(true);
  state_.nFileOpMode = mode;
  state_.clipboard.Clear();
  bool filled = false;
  switch (window_.Active()) {
    case ActiveSide::List:
      filled = AddFromList(state_.clipboard);
      GhostSelection(mode == OperationState::kCut);
      break;
    case ActiveSide::Tree:
      filled = AddFromNode(parts_.navigator.CurrentNode(), state_.clipboard);
      break;
    case ActiveSide::Neither:
      break;
  }
  if (filled) {
    window_.EnablePasteButton(true);
  }
  parts_.host.SetBusyPointer(false);
}

bool FileCommands::AddFromList(clsClipBrds& set) const {
  const FolderNode* current = parts_.navigator.CurrentNode();
  if (!current) {
    return false;
  }
  const QString folder = current->FullPath();
  for (const FileListModel::Handle item : parts_.listView.SelectedItems()) {
    // A paste cannot use a drive or a controller.
    if (IsFileOrFolder(parts_.list.Tag(item))) {
      set.Add(ClipBrdOfItem(parts_.files.Session().gIxoCtrls(), folder, parts_.list.Text(item),
                            parts_.list.Tag(item)),
              QString());
    }
  }
  return true;
}

void FileCommands::GhostSelection(bool ghosted) {
  for (const FileListModel::Handle item : parts_.listView.SelectedItems()) {
    parts_.list.SetGhosted(item, ghosted && IsFileOrFolder(parts_.list.Tag(item)));
  }
}

bool FileCommands::AddFromNode(const FolderNode* node, clsClipBrds& set) const {
  if (!node || !IsFolderTag(node->Tag())) {
    return false;
  }
  const clsClipBrd entry = ClipBrdOfNode(parts_.files.Session().gIxoCtrls(), node->FullPath(), node->Tag());
  if (entry.CtrlIdx() == clsClipBrd::kNoController) {
    return false;
  }
  set.Add(entry, QString());
  return true;
}

void FileCommands::PasteInto(const std::optional<clsClipBrd>& destination) {
  parts_.host.SetBusyPointer(true);
  const auto target = destination ? destination : DestinationOfSelection();
  if (!target && window_.Active() == ActiveSide::Neither && !parts_.listView.SelectedItems().empty()) {
    // The one way out that keeps the hourglass.
    return;
  }
  if (target && target->CtrlIdx() != clsClipBrd::kNoController) {
    const bool moves = state_.nFileOpMode == OperationState::kCut;
    const bool done = operations_.Transfer(*target);
    if (!parts_.files.Prompts().IsEnding()) {
      RefreshAfterPaste(*target);
      if (done) {
        ShowTransferred(*target);
      }
    }
    if (moves) {
      state_.clipboard.Clear();
      window_.EnablePasteButton(false);
    }
  }
  parts_.host.SetBusyPointer(false);
  if (target && target->CtrlIdx() != clsClipBrd::kNoController && !parts_.files.Prompts().IsEnding()) {
    ShowLeftovers(target->PastePath());
  }
}

void FileCommands::ShowLeftovers(const QString& folder) {
  constexpr size_t kMostNamed = 5;
  clsIxoFile file = parts_.files.FileAt(folder);
  const std::vector<Leftover> found = file.TakeLeftovers();
  if (found.empty()) {
    return;
  }
  QStringList lines;
  for (size_t i = 0; i < std::min(found.size(), kMostNamed); ++i) {
    lines.append(found[i].path +
                 (found[i].removed ? QStringLiteral(": removed") : QStringLiteral(": still there")));
  }
  const QString text =
      found.size() == 1 ? QStringLiteral("An interrupted copy has left an item behind.")
                        : QStringLiteral("Interrupted copies have left %1 items behind.").arg(found.size());
  parts_.files.Prompts().ShowMessage(
      {.text = text, .icon = PromptIcon::Information, .informativeText = lines.join(u'\n')});
}

std::optional<clsClipBrd> FileCommands::DestinationOfSelection() const {
  const FolderNode* current = parts_.navigator.CurrentNode();
  if (!current) {
    return std::nullopt;
  }
  const ActiveSide side = window_.Active();
  const auto selected = parts_.listView.SelectedItems();
  if (side != ActiveSide::Tree && !selected.empty()) {
    if (side == ActiveSide::Neither) {
      return std::nullopt;
    }
    const FileListModel::Handle item = selected.front();
    if (IsFolderTag(parts_.list.Tag(item))) {
      return ClipBrdOfItem(parts_.files.Session().gIxoCtrls(), current->FullPath(), parts_.list.Text(item),
                           parts_.list.Tag(item));
    }
  }
  return ClipBrdOfNode(parts_.files.Session().gIxoCtrls(), current->FullPath(), current->Tag());
}

void FileCommands::RefreshAfterPaste(const clsClipBrd& destination) {
  ShowNewFolders(destination);
  if (parts_.navigator.RemoveFolders(operations_.GoneAddresses())) {
    return;
  }
  parts_.navigator.Refresh();
  if (destination.Origin() != clsClipBrd::kFromItem) {
    return;
  }
  // The first item keeps whatever state it has.
  const int last = parts_.list.rowCount() - 1;
  if (last >= 1) {
    parts_.listView.selectionModel()->select(
        QItemSelection(parts_.list.index(1, 0), parts_.list.index(last, 0)),
        QItemSelectionModel::Deselect | QItemSelectionModel::Rows);
  }
}

void FileCommands::ShowTransferred(const clsClipBrd& destination) {
  const int count = operations_.TransferredEntries();
  if (count == 0) {
    return;
  }
  const QString objects =
      count == 1 ? QStringLiteral("1 object ") : QString::number(count) + QStringLiteral(" objects ");
  window_.ShowStatus(objects +
                     (operations_.HasMoved() ? QStringLiteral("moved to ") : QStringLiteral("copied to ")) +
                     destination.PastePath());
}

void FileCommands::ShowNewFolders(const clsClipBrd& destination) {
  const auto isFolder = [](const clsClipBrd& entry) { return (entry.Attributes() & kFolderBit) != 0; };
  FolderNode* node = parts_.tree.FindByKey(destination.PastePath());
  // A folder that was never displayed is filled when it is displayed.
  if (!node || node->FullPath() != destination.PastePath() || node == parts_.navigator.CurrentNode() ||
      node->Children().empty() || std::ranges::none_of(state_.clipboard, isFolder)) {
    return;
  }
  try {
    parts_.navigator.Builder().AddFolderNodes(destination.PastePath(), *node);
  } catch (const RunTimeError&) {
    // The failure is shown when the folder is displayed.
  }
}

void FileCommands::Delete() {
  parts_.host.SetBusyPointer(true);
  state_.nFileOpMode = OperationState::kDelete;
  const DeleteRequest request = RequestOf(window_.Active());
  if (request.side != DeleteRequest::Side::Neither) {
    const bool done = operations_.Delete(request);
    if (parts_.files.Prompts().IsEnding()) {
      // The views are no longer visible.
    } else if (!done) {
      RemoveGone(request);
    } else if (!parts_.navigator.RemoveFolders(operations_.GoneAddresses())) {
      FolderNode* current = parts_.navigator.CurrentNode();
      FolderNode* next = request.side == DeleteRequest::Side::Tree ? current->Parent() : current;
      parts_.navigator.DisplayNode(*next);
    }
  }
  parts_.host.SetBusyPointer(false);
}

DeleteRequest FileCommands::RequestOf(ActiveSide side) const {
  DeleteRequest request;
  const FolderNode* current = parts_.navigator.CurrentNode();
  if (!current) {
    return request;
  }
  if (side == ActiveSide::List) {
    request.side = DeleteRequest::Side::List;
    request.basePath = parts_.navigator.CurrentAddress();
    for (const FileListModel::Handle item : parts_.listView.SelectedItems()) {
      if (IsFileOrFolder(parts_.list.Tag(item))) {
        request.items.push_back({.text = parts_.list.Text(item), .tag = parts_.list.Tag(item)});
      }
    }
  } else if (side == ActiveSide::Tree && IsFolderTag(current->Tag())) {
    request.side = DeleteRequest::Side::Tree;
    request.nodeAddress = current->FullPath();
    request.nodeTag = current->Tag();
  }
  return request;
}

void FileCommands::RemoveGone(const DeleteRequest& request) {
  for (const QString& address : operations_.GoneAddresses()) {
    const auto separator = address.lastIndexOf(kAddressSeparator);
    const QString name = address.mid(separator + 1);
    const FileListModel::Handle item = parts_.list.FindByText(name);
    // The list may show another one whose name differs in case.
    if (address.left(separator) == parts_.navigator.CurrentAddress() &&
        address.left(separator) == request.basePath && item != FileListModel::kNoItem &&
        parts_.list.Text(item) == name) {
      parts_.list.RemoveByKey(ListKey(name));
    }
  }
  parts_.navigator.RemoveFolders(operations_.GoneAddresses());
}

void FileCommands::Run() {
  const FolderNode* current = parts_.navigator.CurrentNode();
  switch (window_.Active()) {
    case ActiveSide::Tree:
      if (current) {
        open_.RunNode(current->FullPath());
      }
      break;
    case ActiveSide::List:
      open_.RunAll(SelectedAddresses());
      break;
    case ActiveSide::Neither:
      break;
  }
}

QStringList FileCommands::SelectedAddresses() const {
  QStringList addresses;
  if (const FolderNode* current = parts_.navigator.CurrentNode()) {
    const QString folder = current->FullPath();
    for (const FileListModel::Handle item : parts_.listView.SelectedItems()) {
      addresses += JoinAddress(folder, parts_.list.Text(item));
    }
  }
  return addresses;
}

void FileCommands::Rename() {
  if (window_.Active() == ActiveSide::Tree) {
    parts_.treeView.SelectNode(parts_.navigator.CurrentNode());
    parts_.treeView.StartLabelEdit();
  } else if (window_.Active() == ActiveSide::List) {
    const auto selected = parts_.listView.SelectedItems();
    if (selected.empty()) {
      return;
    }
    if (std::ranges::find(selected, parts_.listView.FocusedItem()) == selected.end()) {
      parts_.listView.selectionModel()->setCurrentIndex(parts_.list.IndexOf(selected.front()),
                                                        QItemSelectionModel::NoUpdate);
    }
    parts_.listView.StartLabelEdit();
  }
}

void FileCommands::MakeFolder() {
  const FolderNode* current = parts_.navigator.CurrentNode();
  if (!current) {
    return;
  }
  QString parent = current->FullPath();
  const auto selected = parts_.listView.SelectedItems();
  if (window_.Active() == ActiveSide::List && !selected.empty() &&
      IsFolderTag(parts_.list.Tag(selected.front()))) {
    parent = JoinAddress(parent, parts_.list.Text(selected.front()));
  }
  if (const QString name = newFolder_.MakeIn(parent); !name.isEmpty()) {
    NameItem(parent, name);
  }
}

void FileCommands::NameItem(const QString& folder, const QString& name) {
  const FileListModel::Handle item = parts_.list.FindByText(name);
  if (parts_.navigator.CurrentAddress() != folder || item == FileListModel::kNoItem ||
      parts_.list.Text(item) != name) {
    return;
  }
  parts_.listView.setFocus();
  parts_.listView.setCurrentIndex(parts_.list.IndexOf(item));
  parts_.listView.scrollTo(parts_.list.IndexOf(item));
  parts_.listView.StartLabelEdit();
}

bool FileCommands::BeginDrag(FolderNode* node) {
  dropped_.reset();
  if (!guard_.MayBegin()) {
    return false;
  }
  if (node) {
    if (!IsFolderTag(node->Tag())) {
      return false;
    }
  } else {
    const auto selected = parts_.listView.SelectedItems();
    const auto canGo = [this](FileListModel::Handle item) { return IsFileOrFolder(parts_.list.Tag(item)); };
    if (selected.empty() || !std::ranges::all_of(selected, canGo)) {
      return false;
    }
  }
  dragged_.Clear();
  draggedFromList_ = !node;
  return node ? AddFromNode(node, dragged_) : AddFromList(dragged_);
}

void FileCommands::TakeDragged() {
  state_.nFileOpMode = OperationState::kCut;
  if (!dropped_) {
    return;
  }
  state_.clipboard = std::exchange(dragged_, {});
  // Items that an earlier Cut dimmed no longer wait for their Paste.
  if (draggedFromList_) {
    GhostSelection(false);
  }
  window_.EnablePasteButton(true);
}

std::optional<clsClipBrd> FileCommands::DestinationAt(const DropTarget& target) const {
  const FolderNode* node = target.node ? target.node : parts_.navigator.CurrentNode();
  if (!node) {
    return std::nullopt;
  }
  if (!target.node && target.item != FileListModel::kNoItem) {
    const qint32 tag = parts_.list.Tag(target.item);
    const QString& text = parts_.list.Text(target.item);
    if (IsFolderTag(tag)) {
      return ClipBrdOfItem(parts_.files.Session().gIxoCtrls(), node->FullPath(), text, tag);
    }
    if (!IsFileOrFolder(tag)) {
      node = parts_.tree.FindChild(node, text);
    }
  }
  if (!node || !CanHoldFiles(node->Tag())) {
    return std::nullopt;
  }
  return ClipBrdOfNode(parts_.files.Session().gIxoCtrls(), node->FullPath(), node->Tag());
}

bool FileCommands::CanDrop(const DropTarget& target) const {
  if (guard_.IsWaiting()) {
    return false;
  }
  const auto destination = DestinationAt(target);
  return destination && destination->CtrlIdx() != clsClipBrd::kNoController;
}

void FileCommands::Drop(const DropTarget& target) {
  dropped_ = DestinationAt(target);
}

}  // namespace trevane

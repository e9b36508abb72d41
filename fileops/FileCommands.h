#pragma once

#include "fileops/CommandHost.h"
#include "fileops/LabelRename.h"
#include "fileops/NewFolder.h"
#include "fileops/OpenAndRun.h"
#include "fileops/OperationGuard.h"
#include "fileops/OperationHost.h"
#include "fileops/OperationParts.h"
#include "fileops/OperationState.h"
#include "fileops/clsClipBrds.h"
#include "fileops/modIxoFile.h"
#include "views/drag/RightDrag.h"
#include "views/list/FileListModel.h"

#include <optional>

namespace trevane {

/// The commands on files and folders. Each takes its items from the views when it begins, and updates the
/// views afterwards.
class FileCommands final : public RightDragHandler {
 public:
  /// All of them outlive this object.
  FileCommands(const OperationParts& parts, OperationState& state, OperationGuard& guard,
               CommandHost& window);
  FileCommands(const FileCommands&) = delete;
  FileCommands& operator=(const FileCommands&) = delete;

  void Copy();
  void Cut();
  void Paste();
  /// Moves the dragged items to the folder that they were dropped on.
  void MoveHere();
  void Delete();
  void Run();
  void Rename();
  void MakeFolder();

  /// Double click or Enter.
  void OpenItem(FileListModel::Handle item);
  /// While a folder is being displayed: opening the item displays another one instead.
  [[nodiscard]] bool IsAnotherPlace(FileListModel::Handle item) const { return open_.IsAnotherPlace(item); }
  /// Call it when a display has ended.
  void DisplayEnded() { open_.DisplayEnded(); }
  /// The handler of the labels of both views.
  [[nodiscard]] LabelEditHandler& Labels() noexcept { return labels_; }

  /// Notes the dragged entries. The clipboard set keeps its entries until Move Here replaces them.
  [[nodiscard]] bool BeginDrag(FolderNode* node) override;
  [[nodiscard]] bool CanDrop(const DropTarget& target) const override;
  /// Notes the destination of the next Move Here.
  void Drop(const DropTarget& target) override;

 private:
  void CopyOrCut(qint32 mode);
  [[nodiscard]] bool AddFromList(clsClipBrds& set) const;
  [[nodiscard]] bool AddFromNode(const FolderNode* node, clsClipBrds& set) const;
  void GhostSelection(bool ghosted);
  /// Makes the dropped entries the clipboard set, to be moved.
  void TakeDragged();
  void PasteInto(const std::optional<clsClipBrd>& destination);
  [[nodiscard]] std::optional<clsClipBrd> DestinationOfSelection() const;
  [[nodiscard]] std::optional<clsClipBrd> DestinationAt(const DropTarget& target) const;
  void RefreshAfterPaste(const clsClipBrd& destination);
  void ShowNewFolders(const clsClipBrd& destination);
  /// Shows what an interrupted copy has left in the folder.
  void ShowLeftovers(const QString& folder);
  [[nodiscard]] DeleteRequest RequestOf(ActiveSide side) const;
  void RemoveGone(const DeleteRequest& request);
  /// Selects the item and starts to edit its label, if the list shows it.
  void NameItem(const QString& folder, const QString& name);
  void ShowTransferred(const clsClipBrd& destination);
  [[nodiscard]] QStringList SelectedAddresses() const;

  OperationParts parts_;
  OperationState& state_;
  OperationGuard& guard_;
  CommandHost& window_;
  modIxoFile operations_;
  LabelRename labels_;
  NewFolder newFolder_;
  OpenAndRun open_;
  clsClipBrds dragged_;
  bool draggedFromList_ = false;
  std::optional<clsClipBrd> dropped_;
};

}  // namespace trevane

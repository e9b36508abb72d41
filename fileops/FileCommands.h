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

/// The commands on files and folders: what they act on is taken from the views when the command is given, and
/// the views follow what was done.
class FileCommands final : public RightDragHandler {
 public:
  /// All of them outlive this.
  FileCommands(const OperationParts& parts, OperationState& state, OperationGuard& guard,
               CommandHost& window);
  FileCommands(const FileCommands&) = delete;
  FileCommands& operator=(const FileCommands&) = delete;

  void Copy();
  void Cut();
  void Paste();
  /// Moves what was dragged to where it was dropped.
  void MoveHere();
  void Delete();
  void Run();
  void Rename();
  void MakeFolder();

  /// Double click or Enter.
  void OpenItem(FileListModel::Handle item);
  /// To be told when no display is running any more.
  void DisplayEnded() { open_.DisplayEnded(); }
  /// The handler of the labels of both views.
  [[nodiscard]] LabelEditHandler& Labels() noexcept { return labels_; }

  /// The dragged entries are noted; the clipboard set stays what Copy or Cut made of it until Move Here takes
  /// them.
  [[nodiscard]] bool BeginDrag(FolderNode* node) override;
  [[nodiscard]] bool CanDrop(const DropTarget& target) const override;
  /// The target is the destination of the next Move Here.
  void Drop(const DropTarget& target) override;

 private:
  void CopyOrCut(qint32 mode);
  [[nodiscard]] bool AddFromList(clsClipBrds& set) const;
  [[nodiscard]] bool AddFromNode(const FolderNode* node, clsClipBrds& set) const;
  void GhostSelection(bool ghosted);
  /// What was dropped becomes the clipboard set, to be moved.
  void TakeDragged();
  void PasteInto(const std::optional<clsClipBrd>& destination);
  [[nodiscard]] std::optional<clsClipBrd> DestinationOfSelection() const;
  [[nodiscard]] std::optional<clsClipBrd> DestinationAt(const DropTarget& target) const;
  void RefreshAfterPaste(const clsClipBrd& destination);
  void ShowNewFolders(const clsClipBrd& destination);
  /// What a killed program has left where something was just pasted.
  void TellLeftovers(const QString& folder);
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

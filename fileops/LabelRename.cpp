#include "fileops/LabelRename.h"

#include "base/LowerCase.h"
#include "base/RunTimeError.h"
#include "engine/controllers/EventLog.h"
#include "engine/items/clsIxoFile.h"
#include "engine/model/FileEntry.h"
#include "engine/model/ItemName.h"
#include "fileops/GivenUpCall.h"
#include "fileops/OperationHost.h"
#include "prompts/ItemQuestions.h"
#include "prompts/ShowFailure.h"
#include "views/addresses/Addresses.h"
#include "views/addresses/NodeTags.h"
#include "views/list/FileListModel.h"
#include "views/list/FileTypes.h"
#include "views/navigation/Navigator.h"
#include "views/tree/FolderNode.h"
#include "views/tree/FolderTreeModel.h"

#include <memory>

namespace trevane {

namespace {

/// Two entries are of one kind when they agree in these.
constexpr qint32 kKindBits = attribute::kFolder | attribute::kDevice | attribute::kLink;
constexpr qint32 kNeverReplaced = attribute::kFolder | attribute::kDevice;

bool Holds(clsIxoFile& folder, const QString& name) {
  const Variant listed = folder.FileNames();
  if (folder.Result() != 0) {
    throw RunTimeError(folder.Result(), ReasonOf(folder.Result(), folder.ResultText()));
  }
  const auto* names = std::get_if<QStringList>(&listed);
  return names && names->contains(name);
}

}  // namespace

bool LabelRename::BeforeLabelEdit(const LabelEdit& edit) {
  if (parts_.navigator.IsDisplaying() || parts_.files.Prompts().IsEnding() || parts_.host.IsWaiting()) {
    return false;
  }
  if (edit.IsInTree()) {
    return IsFolderTag(edit.tag);
  }
  return parts_.navigator.CurrentNode() && IsFileOrFolder(edit.tag);
}

QString LabelRename::FolderOf(const LabelEdit& edit) const {
  if (edit.folder) {
    return *edit.folder;
  }
  const FolderNode* current = parts_.navigator.CurrentNode();
  return current ? current->FullPath() : QString();
}

void LabelRename::AfterLabelEdit(const LabelEdit& edit, const QString& text, bool* cancel) {
  *cancel = true;
  // The call comes from the event loop; the window may have been closed in the meantime.
  if (text == edit.oldText || parts_.files.Prompts().IsEnding() || parts_.host.IsWaiting()) {
    return;
  }
  const std::shared_ptr<void> command = parts_.host.BeginCommand();
  bool renamed = false;
  bool happened = false;
  bool replaced = false;
  qint32 failed = 0;
  QString reason;
  try {
    const QString folder = FolderOf(edit);
    const QString oldAddress = JoinAddress(folder, edit.oldText);
    clsIxoFile entry = parts_.files.FileAt(oldAddress);
    reason = ReasonOf(entry.Result(), entry.ResultText());
    if (entry.Result() == 0) {
      switch (FindClash(entry, folder, edit, text, reason)) {
        case Clash::Keep:
          return;
        case Clash::Replace:
          replaced = true;
          [[fallthrough]];
        case Clash::None:
          entry.Rename(text);
          renamed = entry.Result() == 0;
          failed = entry.Result();
          reason = ReasonOf(entry.Result(), entry.ResultText());
          // After a Cancel nothing more is asked.
          happened = renamed || (entry.Result() != error::kCancelled &&
                                 HappenedAllTheSame(oldAddress, JoinAddress(folder, text)));
          break;
        case Clash::Refused:
          break;
      }
    }
    if (happened) {
      *cancel = false;
      parts_.log.LogEvent(QStringLiteral("RENAME"), AddressToEnginePath(oldAddress), text);
      ShowRenamed(edit, folder, text, replaced);
    }
  } catch (const RunTimeError& failure) {
    // Shown below, unless only the update of the views failed.
    if (happened && !parts_.navigator.RemoveFolders({JoinAddress(FolderOf(edit), edit.oldText)})) {
      parts_.navigator.Refresh();
    } else {
      reason = ReasonOf(failure);
    }
  }
  if (!happened && IsToBeShownAnew(failed, parts_.files, FolderOf(edit))) {
    parts_.navigator.Refresh();
  }
  if (!renamed) {
    ShowFailure(parts_.files.Prompts(), parts_.host, QStringLiteral("Failed to rename the file."),
                {.item = edit.oldText, .reason = reason});
  }
}

bool LabelRename::HappenedAllTheSame(const QString& oldAddress, const QString& newAddress) const {
  clsIxoFile entry = parts_.files.FileAt(oldAddress);
  if (!entry.IsAbsent()) {
    return false;
  }
  entry.SetPath(newAddress);
  return entry.Result() == 0;
}

LabelRename::Clash LabelRename::FindClash(clsIxoFile& entry, const QString& folder, const LabelEdit& edit,
                                          const QString& text, QString& reason) {
  // Such a name would name another place, or none.
  if (!IsValidItemName(text)) {
    reason = InvalidItemNameText(text);
    return Clash::Refused;
  }
  clsIxoFile other = parts_.files.FileAt(JoinAddress(folder, text));
  if (other.Result() != 0) {
    // An item that could not be checked may exist.
    reason = ReasonOf(other.Result(), other.ResultText());
    return other.IsAbsent() ? Clash::None : Clash::Refused;
  }
  if (EqualIgnoringCase(text, edit.oldText)) {
    // If case does not count, this is the entry itself, which tells its own spelling where the file system
    // has one; otherwise the folder may hold both names.
    if (other.Name() == edit.oldText) {
      return Clash::None;
    }
    clsIxoFile parent = parts_.files.FileAt(folder);
    if (!Holds(parent, text)) {
      return Clash::None;
    }
  }
  const qint32 ownKind = entry.FileAttribute();
  const qint32 otherKind = other.FileAttribute();
  if (entry.Result() != 0 || other.Result() != 0) {
    reason = entry.Result() != 0 ? ReasonOf(entry.Result(), entry.ResultText())
                                 : ReasonOf(other.Result(), other.ResultText());
    return Clash::Refused;
  }
  if (((ownKind ^ otherKind) & kKindBits) != 0 || ((ownKind | otherKind) & kNeverReplaced) != 0) {
    reason = QStringLiteral("The existing item cannot be replaced: '%1'").arg(text);
    return Clash::Refused;
  }
  const ItemAnswer answer = AskOverwrite(parts_.files.Prompts(), text, ItemAnswer::Cancel);
  // Another program may have changed both while the question was open.
  entry.ForgetLearnt();
  return answer == ItemAnswer::Yes || answer == ItemAnswer::YesAll ? Clash::Replace : Clash::Keep;
}

void LabelRename::ShowRenamed(const LabelEdit& edit, const QString& folder, const QString& text,
                              bool replaced) {
  FolderNode* parent = parts_.tree.FindByKey(folder);
  FolderNode* node = parent ? parts_.tree.FindChild(parent, edit.oldText) : nullptr;
  // A node or item that already has the name belongs to a replaced or vanished folder or file.
  if (parent && parts_.tree.FindChild(parent, text) != node) {
    parts_.navigator.RemoveFolders({JoinAddress(folder, text)});
  }
  if (node && node->Text() == edit.oldText) {
    parts_.tree.RenameNode(node, text);
  }
  parts_.navigator.NodeRenamed();

  if (parts_.navigator.CurrentAddress() != folder) {
    return;
  }
  FileListModel::Handle item = parts_.list.FindByText(edit.oldText);
  if (item != FileListModel::kNoItem && parts_.list.Text(item) != edit.oldText) {
    item = FileListModel::kNoItem;
  }
  const FileListModel::Handle other = parts_.list.FindByText(text);
  if (other != FileListModel::kNoItem && other != item && (replaced || parts_.list.Text(other) == text)) {
    parts_.list.RemoveByKey(ListKey(text));
  }
  if (item == FileListModel::kNoItem) {
    return;
  }
  parts_.list.RenameItem(item, text);
  if ((parts_.list.Tag(item) & kFolderBit) == 0) {
    const FileTypeRecord& type = parts_.fileTypes.GetFileType(text);
    parts_.list.SetType(item, type.imageKey, type.id);
  }
}

}  // namespace trevane

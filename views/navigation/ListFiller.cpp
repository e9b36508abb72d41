#include "views/navigation/ListFiller.h"

#include "base/LowerCase.h"
#include "base/RunTimeError.h"
#include "engine/controllers/EngineSession.h"
#include "prompts/ShowFailure.h"
#include "views/addresses/Addresses.h"
#include "views/addresses/DriveTable.h"
#include "views/addresses/ImageKeys.h"
#include "views/addresses/NodeTags.h"
#include "views/list/FileListModel.h"
#include "views/list/FileTypes.h"
#include "views/tree/FolderTreeModel.h"

namespace trevane {

void ListFiller::ShowWorkspace() {
  list_.Clear();
  list_.AddListItem({}, kMyComputerTag, kMyComputerName.toString(), imagekey::kMyCom);
  for (const auto& controller : files_.Session().gIxoCtrls()) {
    const QString& name = controller->RealCtrlName();
    if (!EqualIgnoringCase(name, files_.Session().gLocalCtrlName)) {
      list_.AddListItem({}, kControllerTag, name, imagekey::kController);
    }
  }
  // Controllers that failed to connect are in the tree only.
  for (const FolderNode* node : tree_.FirstRoot()->Children()) {
    if (tree_.ImageKey(node) == imagekey::kErrController &&
        list_.FindByText(node->Text()) == FileListModel::kNoItem) {
      list_.AddListItem({}, kControllerTag, node->Text(), imagekey::kErrController);
    }
  }
  list_.FlushStaged();
}

void ListFiller::Clear() {
  list_.Clear();
}

void ListFiller::ShowDrives() {
  for (const DriveInfo& drive : files_.Drives().Drives()) {
    list_.AddListItem({}, kDriveItemTag, drive.Text, drive.ImageKey);
  }
  list_.FlushStaged();
}

std::optional<Message> ListFiller::AddFileItem(const FileEntry& entry, bool onController) {
  const FileTypeRecord& type =
      entry.IsFolder() ? fileTypes_.GetFolderImages() : fileTypes_.GetFileType(entry.name);
  try {
    const FileListModel::Handle item =
        list_.AddListItem({}, MakeFileTag(entry.attributes, onController), entry.name, type.imageKey);
    list_.SetDetails(item, {.size = entry.IsFolder() ? -1 : entry.size,
                            .modified = entry.modified,
                            .accessed = entry.accessed,
                            .created = entry.created,
                            .fileType = type.id});
  } catch (const RunTimeError& failure) {
    if (failure.Number() != error::kKeyAlreadyThere) {
      throw;
    }
    return FailureMessage(QStringLiteral("Can't display ") + entry.name + QStringLiteral("."),
                          {.item = entry.name, .reason = failure.Description()});
  }
  return std::nullopt;
}

}  // namespace trevane

#include "views/navigation/ControllerEntries.h"

#include "base/RunTimeError.h"
#include "engine/controllers/clsIxoCtrl.h"
#include "views/addresses/Addresses.h"
#include "views/addresses/ImageKeys.h"
#include "views/addresses/NodeTags.h"
#include "views/list/FileListModel.h"
#include "views/navigation/Navigator.h"
#include "views/navigation/NavigatorListener.h"
#include "views/tree/FolderTreeModel.h"

#include <vector>

namespace trevane {

namespace {

const QString& ImageOf(bool failed) {
  return failed ? imagekey::kErrController : imagekey::kController;
}

}  // namespace

bool ControllerEntries::AddControllerNode(const clsIxoCtrl& ctrl, bool failed) {
  FolderNode* workspace = tree_.FirstRoot();
  const QString& name = ctrl.RealCtrlName();
  if (!workspace || name.isEmpty()) {
    return false;
  }
  try {
    // A controller that failed under that name may still have it in the engine, which then assigns another.
    for (const QString& given : {name, ctrl.CtrlName()}) {
      FolderNode* old = given.isEmpty() ? nullptr : tree_.FindChild(workspace, given);
      if (old && IsError(*old)) {
        Remove(*old);
      }
    }
    FolderNode* node = tree_.AddTreeNode(workspace, ImageOf(failed), name, kControllerTag);
    tree_.SetSorted(node, true);
    return true;
  } catch (const RunTimeError&) {
    return false;
  }
}

bool ControllerEntries::AddControllerItem(const clsIxoCtrl& ctrl, bool failed) {
  const QString& name = ctrl.RealCtrlName();
  if (name.isEmpty()) {
    return false;
  }
  try {
    for (const QString& given : {name, ctrl.CtrlName()}) {
      const FileListModel::Handle old = list_.FindByText(given);
      if (old != FileListModel::kNoItem && list_.ImageKey(old) == imagekey::kErrController) {
        list_.RemoveByKey(ListKey(given));
      }
    }
    list_.AddListItem({}, kControllerTag, name, ImageOf(failed));
    list_.FlushStaged();
    return true;
  } catch (const RunTimeError&) {
    return false;
  }
}

FolderNode* ControllerEntries::Find(const QString& nodePath) const {
  const FolderNode* workspace = tree_.FirstRoot();
  if (!workspace) {
    return nullptr;
  }
  // Not through the pieces of the address: a name that failed to connect may hold anything.
  for (FolderNode* node : workspace->Children()) {
    if (IsController(node->Tag()) && EqualIgnoringCase(node->FullPath(), nodePath)) {
      return node;
    }
  }
  return nullptr;
}

bool ControllerEntries::IsError(const FolderNode& node) const {
  return tree_.ImageKey(&node) == imagekey::kErrController;
}

void ControllerEntries::Remove(FolderNode& node) {
  static_cast<void>(navigator_.NodeAboutToBeRemoved(node));
  tree_.RemoveNode(&node);
}

void ControllerEntries::RemoveControllerNode(const QString& nodePath) {
  FolderNode* node = Find(nodePath);
  if (!node) {
    throw RunTimeError(error::kNoSuchKey, QStringLiteral("The tree has no controller \"%1\".").arg(nodePath));
  }
  Remove(*node);
}

void ControllerEntries::RemoveControllerItem(const QString& ctrlName) {
  if (!list_.RemoveByKey(ListKey(ctrlName))) {
    throw RunTimeError(error::kNoSuchKey, QStringLiteral("The list has no controller \"%1\".").arg(ctrlName));
  }
}

bool ControllerEntries::IsErrorNode(const QString& nodePath) const {
  const FolderNode* node = Find(nodePath);
  return node && IsError(*node);
}

void ControllerEntries::RemoveErrorNodes() {
  if (!tree_.FirstRoot()) {
    return;
  }
  const std::vector<FolderNode*> children = tree_.FirstRoot()->Children();
  for (FolderNode* node : children) {
    if (IsError(*node)) {
      Remove(*node);
    }
  }
}

void ControllerEntries::ClearProgressText() {
  listener_.ShowStatus({});
}

}  // namespace trevane

#include "views/navigation/GoneFolders.h"

#include "base/RunTimeError.h"
#include "engine/items/clsIxoFile.h"
#include "views/addresses/NodeTags.h"
#include "views/navigation/CurrentLocation.h"
#include "views/tree/FolderTreeModel.h"

namespace trevane {

bool GoneFolders::RemoveNodes(const QStringList& addresses) {
  bool moved = false;
  for (const QString& address : addresses) {
    FolderNode* node = tree_.FindByKey(address);
    // The tree ignores case, but the folder that is gone had its very name.
    if (node == nullptr || node->Parent() == nullptr || !IsFolderTag(node->Tag()) ||
        node->FullPath() != address) {
      continue;
    }
    if (location_.IsIn(*node)) {
      location_.MoveTo(node->Parent());
      moved = true;
    }
    tree_.RemoveNode(node);
  }
  return moved;
}

FolderNode& GoneFolders::NearestExisting(FolderNode& node) {
  FolderNode* nearest = &node;
  FolderNode* gone = nullptr;
  while (IsFolderTag(nearest->Tag()) && nearest->Parent() != nullptr && IsGone(*nearest)) {
    gone = nearest;
    nearest = nearest->Parent();
  }
  if (gone != nullptr) {
    location_.MoveTo(nearest);
    tree_.RemoveNode(gone);
  }
  return *nearest;
}

bool GoneFolders::IsGone(const FolderNode& node) const {
  const clsIxoFile folder = files_.FileAt(node.FullPath(), LookUp::Navigate);
  return folder.Result() == error::kNotFound && folder.IsAbsent();
}

}  // namespace trevane

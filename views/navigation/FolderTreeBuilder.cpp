#include "views/navigation/FolderTreeBuilder.h"

#include "base/LowerCase.h"
#include "base/RunTimeError.h"
#include "engine/items/clsIxoFile.h"
#include "views/addresses/Addresses.h"
#include "views/addresses/DriveTable.h"
#include "views/addresses/ImageKeys.h"
#include "views/addresses/NodeTags.h"
#include "views/list/FileTypes.h"
#include "views/navigation/CurrentLocation.h"
#include "views/navigation/DisplayRequests.h"
#include "views/navigation/MayHold.h"
#include "views/navigation/TreeBatch.h"
#include "views/tree/FolderTreeModel.h"

#include <utility>

namespace trevane {

void FolderTreeBuilder::RebuildTree() {
  parts_.location.MoveTo(nullptr);
  parts_.tree.Clear();
  FolderNode* root =
      parts_.tree.AddTreeNode(nullptr, imagekey::kWorkspace, kWorkspaceAddress.toString(), TAG_WORKSPACE);
  parts_.tree.AddTreeNode(root, imagekey::kMyCom, kMyComputerName.toString(), kMyComputerTag);
  parts_.files.Drives().RefreshDrives();
  AddDriveNodes();
}

void FolderTreeBuilder::RebuildDrives() {
  parts_.files.Drives().RefreshDrives();
  parts_.tree.RemoveChildren(parts_.tree.FindByIndex(2));
  AddDriveNodes();
}

void FolderTreeBuilder::AddDriveNodes() {
  DriveTable& drives = parts_.files.Drives();
  for (int index = 0; index <= drives.DriveCount(); ++index) {
    FolderNode* node = AddDriveNode(index);
    if (node == nullptr || drives.Drive(index).DriveType != drivetype::kFixed) {
      continue;
    }
    try {
      AddFolderNodes(node->FullPath(), *node);
    } catch (const RunTimeError&) {
      // The display of the drive reports what is wrong with it; the other drives are shown all the same.
    }
  }
}

FolderNode* FolderTreeBuilder::AddDriveNode(int index) {
  DriveInfo& drive = parts_.files.Drives().Drive(index);
  const DriveLook look = LookOfDrive(drive.DriveType);
  drive.ImageKey = look.imageKey;
  drive.NodeIndex = 0;
  if (look.imageKey.isEmpty()) {
    return nullptr;
  }
  FolderNode* node = parts_.tree.AddTreeNode(parts_.tree.FindByIndex(2), look.imageKey, drive.Text,
                                             look.kindBit | TAG_DRIVE);
  parts_.tree.SetSorted(node, true);
  drive.NodeIndex = node->Index();
  return node;
}

void FolderTreeBuilder::AddFolderNodes(const QString& address, FolderNode& under) {
  clsIxoFile folder = parts_.files.FileAt(address);
  const Listing entries = folder.Result() == 0 ? folder.List() : Listing();
  if (folder.Result() != 0) {
    throw RunTimeError(folder.Result(), folder.ResultText());
  }
  const bool onController = folder.IsOnController();
  const TreeBatch batch(parts_.tree, under);
  Respellings found;
  for (const FileEntry& entry : entries) {
    if (entry.IsFolder()) {
      UpdateFolderNode(under, entry, onController, found);
    }
  }
  Respell(under, std::move(found), {&entries, 1});
}

FolderNode& FolderTreeBuilder::AddFolderNode(FolderNode& under, const QString& name, qint32 tag) {
  const FileTypeRecord& images = parts_.fileTypes.GetFolderImages();
  FolderNode* node = parts_.tree.AddTreeNode(&under, images.imageKey, name, tag);
  parts_.tree.SetExpandedImageKey(node, images.openImageKey);
  parts_.tree.SetSorted(node, true);
  return *node;
}

void FolderTreeBuilder::UpdateFolderNode(FolderNode& under, const FileEntry& folder, bool onController,
                                         Respellings& found) {
  if (!IsShownInTree(folder.attributes)) {
    return;
  }
  const FolderNode* known = parts_.tree.FindChild(&under, folder.name);
  if (known == nullptr) {
    AddFolderNode(under, folder.name, MakeFolderTag(folder.attributes, onController));
  } else if (known->Text() != folder.name && !found.contains(known->Text())) {
    found.insert(known->Text(), folder.name);
  }
}

void FolderTreeBuilder::Respell(FolderNode& under, Respellings found, std::span<const Listing> entries) {
  if (found.isEmpty()) {
    return;
  }
  for (const Listing& batch : entries) {
    for (const FileEntry& entry : batch) {
      found.remove(entry.name);
    }
  }
  for (auto folder = found.cbegin(); folder != found.cend(); ++folder) {
    if (FolderNode* known = parts_.tree.FindChild(&under, folder.key()); known != nullptr) {
      parts_.tree.RenameNode(known, folder.value());
      parts_.location.UpdateAddress();
    }
  }
}

FolderNode& FolderTreeBuilder::FindOrAddFolderNode(FolderNode& under, const QString& name, qint32 tag) {
  FolderNode* known = parts_.tree.FindChild(&under, name);
  if (known == nullptr) {
    return AddFolderNode(under, name, tag);
  }
  // On a file system that ignores case the name that the folder really has stays.
  const auto mayHold = [&](const QString& text) { return MayHold(parts_.files, under.FullPath(), text); };
  if (known->Text() == name || (!mayHold(name) && mayHold(known->Text()))) {
    return *known;
  }
  if (parts_.location.IsIn(*known)) {
    parts_.requests.Cancel();
    parts_.location.MoveTo(known);
  }
  parts_.tree.RemoveChildren(known);
  parts_.tree.RenameNode(known, name);
  parts_.tree.SetTag(known, tag);
  return *known;
}

void FolderTreeBuilder::RespellNodes(FolderNode& node, QStringList found) {
  for (FolderNode* at = &node; at != nullptr && IsFolderTag(at->Tag()) && !found.isEmpty();
       at = at->Parent()) {
    const QString name = found.takeLast();
    if (at->Text() != name && EqualIgnoringCase(at->Text(), name)) {
      parts_.tree.RenameNode(at, name);
    }
  }
}

}  // namespace trevane

#pragma once

#include "engine/model/FileEntry.h"

#include <QtGlobal>

/// Tags of tree nodes and list items: 32 bits that encode the kind of an entry and, for files and
/// folders, their attributes in the low 16.
namespace trevane {

inline constexpr qint32 TAG_WORKSPACE = 0x400000;
/// A machine root: "My Computer" or a controller.
inline constexpr qint32 TAG_COMPUTER = 0x200000;
/// A controller, or a file or folder that lives on one.
inline constexpr qint32 TAG_CONTROLLER = 0x100000;
inline constexpr qint32 TAG_MYCOM = 0x80000;
inline constexpr qint32 TAG_DRIVE = 0x40000;

// Kinds of drive. They overlap the attributes of files and mean something beside TAG_DRIVE only.
inline constexpr qint32 TAG_RAMDISK = 0x20000;
inline constexpr qint32 TAG_CDROM = 0x10000;
inline constexpr qint32 TAG_REMOTE = 0x8000;
inline constexpr qint32 TAG_HDD = 0x4000;
inline constexpr qint32 TAG_FDISK = 0x2000;
inline constexpr qint32 TAG_QUESTION = 0x1000;

// Tags that occur as they are.
inline constexpr qint32 kMyComputerTag = TAG_COMPUTER | TAG_MYCOM;
inline constexpr qint32 kControllerTag = TAG_COMPUTER | TAG_CONTROLLER;
/// A drive in the list; its node in the tree has its kind besides.
inline constexpr qint32 kDriveItemTag = TAG_DRIVE;

inline constexpr qint32 kAttributeBits = 0xFFFF;
inline constexpr qint32 kFolderBit = attribute::kFolder;
inline constexpr qint32 kDriveKindBits =
    TAG_RAMDISK | TAG_CDROM | TAG_REMOTE | TAG_HDD | TAG_FDISK | TAG_QUESTION;

/// The tag of a file or folder. Attributes beyond 16 bits are dropped, so that they cannot pass for a kind of
/// place.
[[nodiscard]] constexpr qint32 MakeFileTag(qint32 attributes, bool onController) noexcept {
  return (attributes & kAttributeBits) | (onController ? TAG_CONTROLLER : 0);
}

/// MakeFileTag of a folder.
[[nodiscard]] constexpr qint32 MakeFolderTag(qint32 attributes, bool onController) noexcept {
  return MakeFileTag(attributes | kFolderBit, onController);
}

[[nodiscard]] constexpr bool IsWorkspace(qint32 tag) noexcept {
  return (tag & TAG_WORKSPACE) != 0;
}
[[nodiscard]] constexpr bool IsMyComputer(qint32 tag) noexcept {
  return (tag & TAG_MYCOM) != 0;
}
[[nodiscard]] constexpr bool IsDrive(qint32 tag) noexcept {
  return (tag & TAG_DRIVE) != 0;
}

/// The node or item of a controller itself; files and folders on a controller have other bits besides.
[[nodiscard]] constexpr bool IsController(qint32 tag) noexcept {
  return tag == kControllerTag;
}

[[nodiscard]] constexpr bool IsOnController(qint32 tag) noexcept {
  return (tag & TAG_CONTROLLER) != 0;
}

/// The workspace, the local machine or a drive: nothing that can be copied, cut or pasted onto by key.
[[nodiscard]] constexpr bool IsWorkspaceComputerOrDrive(qint32 tag) noexcept {
  return (tag & (TAG_WORKSPACE | TAG_MYCOM | TAG_DRIVE)) != 0;
}

/// A file or a folder: not the workspace, a machine root or a drive.
[[nodiscard]] constexpr bool IsFileOrFolder(qint32 tag) noexcept {
  return (tag & (TAG_WORKSPACE | TAG_COMPUTER | TAG_DRIVE)) == 0;
}

/// A folder, and not the workspace, a machine root or a drive.
[[nodiscard]] constexpr bool IsFolderTag(qint32 tag) noexcept {
  return IsFileOrFolder(tag) && (tag & kFolderBit) != 0;
}

/// An ordinary file, which may be run. Not for the workspace and the local machine.
[[nodiscard]] constexpr bool IsRunnableFile(qint32 tag) noexcept {
  return (tag & (TAG_DRIVE | kFolderBit)) == 0 && tag != kControllerTag;
}

/// The tree shows a folder with these attributes unless it is both hidden and system.
[[nodiscard]] constexpr bool IsShownInTree(qint32 attributes) noexcept {
  constexpr qint32 kBoth = attribute::kHidden | attribute::kSystem;
  return (attributes & kBoth) != kBoth;
}

/// The list shows an entry with these attributes unless it is hidden or system.
[[nodiscard]] constexpr bool IsShownInList(qint32 attributes) noexcept {
  return (attributes & (attribute::kHidden | attribute::kSystem)) == 0;
}

/// The kind of the drive, or 0 for an entry that is no drive.
[[nodiscard]] constexpr qint32 DriveKindBits(qint32 tag) noexcept {
  return IsDrive(tag) ? tag & kDriveKindBits : 0;
}

}  // namespace trevane

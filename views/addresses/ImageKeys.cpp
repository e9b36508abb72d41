#include "views/addresses/ImageKeys.h"

#include "platform/Volumes.h"

namespace trevane {

DriveLook LookOfDrive(qint32 driveType) {
  switch (driveType) {
    case drivetype::kNoRoot:
      return {};
    case drivetype::kRemovable:
      return {imagekey::kFDisk, TAG_FDISK};
    case drivetype::kFixed:
      return {imagekey::kHdd, TAG_HDD};
    case drivetype::kRemote:
      return {imagekey::kRemote, TAG_REMOTE};
    case drivetype::kCdrom:
      return {imagekey::kCdrom, TAG_CDROM};
    case drivetype::kRamDisk:
      return {imagekey::kRamDisk, TAG_RAMDISK};
    case drivetype::kUnknown:
    default:
      return {imagekey::kQuestion, TAG_QUESTION};
  }
}

}  // namespace trevane

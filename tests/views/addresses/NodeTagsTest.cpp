#include "platform/Volumes.h"
#include "views/addresses/ImageKeys.h"
#include "views/addresses/NodeTags.h"

#include <gtest/gtest.h>

namespace trevane {
namespace {

TEST(NodeTags, TheTagsOfPlacesHaveTheirFixedValues) {
  EXPECT_EQ(TAG_WORKSPACE, 0x400000);
  EXPECT_EQ(kMyComputerTag, 0x280000);
  EXPECT_EQ(kControllerTag, 0x300000);
  EXPECT_EQ(kDriveItemTag, 0x40000);
  EXPECT_EQ(TAG_DRIVE | LookOfDrive(drivetype::kFixed).kindBit, 0x44000);
  EXPECT_EQ(TAG_DRIVE | LookOfDrive(drivetype::kCdrom).kindBit, 0x50000);
}

TEST(NodeTags, AFolderOnAControllerHasBothBits) {
  const qint32 tag = MakeFolderTag(0x10 | 1, true);
  EXPECT_EQ(tag, 0x100011);
  EXPECT_TRUE(IsFolderTag(tag));
  EXPECT_TRUE(IsOnController(tag));
  EXPECT_FALSE(IsController(tag));
}

TEST(NodeTags, BitsAreSetAndNotAdded) {
  EXPECT_EQ(MakeFolderTag(0x10, false), 0x10);
  EXPECT_EQ(MakeFolderTag(0, false), 0x10);
}

TEST(NodeTags, AttributesBeyondSixteenBitsCannotPassForAPlace) {
  EXPECT_EQ(MakeFileTag(0x400000 | 0x40000 | 0x20, false), 0x20);
  EXPECT_EQ(MakeFileTag(-1, false), 0xFFFF);
  EXPECT_EQ(MakeFileTag(0x300000, true), TAG_CONTROLLER);
}

TEST(NodeTags, AControllerIsNeverARunnableFile) {
  EXPECT_TRUE(IsController(kControllerTag));
  EXPECT_FALSE(IsRunnableFile(kControllerTag));
  EXPECT_TRUE(IsRunnableFile(MakeFileTag(0x20, true)));
  EXPECT_TRUE(IsRunnableFile(MakeFileTag(0x20, false)));
  EXPECT_FALSE(IsRunnableFile(kDriveItemTag));
  EXPECT_FALSE(IsRunnableFile(MakeFolderTag(0, false)));
}

TEST(NodeTags, ThePlacesThatCannotBeCopiedAreRecognised) {
  EXPECT_TRUE(IsWorkspaceComputerOrDrive(TAG_WORKSPACE));
  EXPECT_TRUE(IsWorkspaceComputerOrDrive(kMyComputerTag));
  EXPECT_TRUE(IsWorkspaceComputerOrDrive(kDriveItemTag));
  EXPECT_FALSE(IsWorkspaceComputerOrDrive(kControllerTag));
  EXPECT_FALSE(IsWorkspaceComputerOrDrive(MakeFolderTag(0xFFFF, true)));
}

TEST(NodeTags, NoPlaceIsAFolder) {
  EXPECT_FALSE(IsFolderTag(TAG_WORKSPACE | kFolderBit));
  EXPECT_FALSE(IsFolderTag(kMyComputerTag | kFolderBit));
  EXPECT_FALSE(IsFolderTag(kControllerTag));
  EXPECT_FALSE(IsFolderTag(TAG_DRIVE | kFolderBit));
  EXPECT_TRUE(IsFolderTag(0x10));
}

TEST(NodeTags, TheKindOfADriveIsLookedAtOnDrivesOnly) {
  EXPECT_EQ(DriveKindBits(TAG_DRIVE | TAG_HDD), TAG_HDD);
  EXPECT_EQ(DriveKindBits(TAG_DRIVE), 0);
  EXPECT_EQ(DriveKindBits(MakeFileTag(0x4000 | 0x2000, false)), 0) << "encrypted and not indexed";
}

struct DriveRow {
  qint32 type;
  QString imageKey;
  qint32 kindBit;
};

TEST(NodeTags, EachDriveTypeHasItsImageAndKindBit) {
  const DriveRow rows[] = {{0, QStringLiteral("QUESTION"), 0x1000}, {1, QString(), 0},
                           {2, QStringLiteral("FDISK"), 0x2000},    {3, QStringLiteral("HDD"), 0x4000},
                           {4, QStringLiteral("REMOTE"), 0x8000},   {5, QStringLiteral("CDROM"), 0x10000},
                           {6, QStringLiteral("RAMDISK"), 0x20000}, {99, QStringLiteral("QUESTION"), 0x1000}};
  for (const DriveRow& row : rows) {
    const DriveLook look = LookOfDrive(row.type);
    EXPECT_EQ(look.imageKey, row.imageKey) << row.type;
    EXPECT_EQ(look.kindBit, row.kindBit) << row.type;
  }
}

TEST(NodeTags, ADriveWithoutARootGetsNoImageAndNoKind) {
  EXPECT_TRUE(LookOfDrive(drivetype::kNoRoot).imageKey.isEmpty());
  EXPECT_EQ(LookOfDrive(drivetype::kNoRoot).kindBit, 0);
}

}  // namespace
}  // namespace trevane

#include "base/RunTimeError.h"
#include "tests/support/FakeVolumes.h"
#include "views/addresses/DriveTable.h"

#include <gtest/gtest.h>

namespace trevane {
namespace {

const Volume kDiskC{QStringLiteral("C:"), QStringLiteral("/"), drivetype::kFixed};
const Volume kStickD{QStringLiteral("D:"), QStringLiteral("/media/stick/"), drivetype::kRemovable};

TEST(DriveTable, IsEmptyBeforeTheFirstRefresh) {
  test::FakeVolumes volumes({kDiskC});
  DriveTable drives(volumes);
  EXPECT_EQ(drives.DriveCount(), -1);
  EXPECT_TRUE(drives.Drives().empty());
}

TEST(DriveTable, DriveCountIsTheUpperBound) {
  test::FakeVolumes volumes({kDiskC, kStickD});
  DriveTable drives(volumes);
  drives.RefreshDrives();
  EXPECT_EQ(drives.DriveCount(), 1);
  EXPECT_EQ(drives.Drive(0).Root, QStringLiteral("C:"));
  EXPECT_EQ(drives.Drive(0).Text, QStringLiteral("C:"));
  EXPECT_EQ(drives.Drive(0).DriveType, drivetype::kFixed);
  EXPECT_EQ(drives.Drive(1).Root, QStringLiteral("D:"));
  EXPECT_EQ(drives.Drive(1).DriveType, drivetype::kRemovable);
}

TEST(DriveTable, NoAnswerLeavesTheTableAsItWas) {
  test::FakeVolumes volumes({kDiskC});
  DriveTable drives(volumes);
  drives.RefreshDrives();
  volumes.SetAnswers(false);
  drives.RefreshDrives();
  EXPECT_EQ(drives.DriveCount(), 0);
}

TEST(DriveTable, AnEmptyAnswerLeavesTheTableAsItWas) {
  test::FakeVolumes volumes({kDiskC});
  DriveTable drives(volumes);
  drives.RefreshDrives();
  volumes.SetNext({});
  EXPECT_FALSE(volumes.Refresh());
  EXPECT_EQ(volumes.Current().size(), 1U);
  drives.RefreshDrives();
  EXPECT_EQ(drives.DriveCount(), 0);
  EXPECT_EQ(drives.Drive(0).Root, QStringLiteral("C:"));
}

TEST(DriveTable, WhatIsNotAskedOfTheSystemStaysWithItsPosition) {
  test::FakeVolumes volumes({kDiskC, kStickD});
  DriveTable drives(volumes);
  drives.RefreshDrives();
  drives.Drive(0).NodeIndex = 3;
  drives.Drive(0).ImageKey = QStringLiteral("HDD");
  drives.Drive(1).NodeIndex = 4;
  volumes.Set({kStickD});
  drives.RefreshDrives();
  ASSERT_EQ(drives.DriveCount(), 0);
  EXPECT_EQ(drives.Drive(0).Root, QStringLiteral("D:"));
  EXPECT_EQ(drives.Drive(0).NodeIndex, 3);
  EXPECT_EQ(drives.Drive(0).ImageKey, QStringLiteral("HDD"));
  volumes.Set({kDiskC, kStickD});
  drives.RefreshDrives();
  EXPECT_EQ(drives.Drive(1).NodeIndex, 0) << "a record that is new starts empty";
}

TEST(DriveTable, APositionBeyondTheTableIsOutOfRange) {
  test::FakeVolumes volumes({kDiskC});
  DriveTable drives(volumes);
  drives.RefreshDrives();
  for (const int index : {-1, 1}) {
    try {
      (void)drives.Drive(index);
      FAIL() << index;
    } catch (const RunTimeError& failure) {
      EXPECT_EQ(failure.Number(), error::kOutOfRange);
    }
  }
}

}  // namespace
}  // namespace trevane

// Disks on which a fetched file has no room.
#include "tests/engine/fetched/FetchedWorld.h"
#include "tests/support/SmallDisk.h"

#include <gtest/gtest.h>

namespace trevane::test {
namespace {

TEST(FullDiskTest, AFileThatHasNoRoomLeavesNothing) {
  const SmallDisk disk;
  if (!disk.IsMounted()) {
    GTEST_SKIP() << "nothing can be mounted here";
  }
  FetchedWorld world;
  QStringList opened;
  FetchedFiles fetched({.files = world.files,
                        .place = disk.Path() + QStringLiteral("/fetched"),
                        .open =
                            [&](const QString& path) {
                              opened += path;
                              return OpenOutcome{};
                            },
                        .now = [] { return qint64{0}; }});
  world.robot->AddFile(QStringLiteral("large.bin"), QByteArray(1024 * 1024, 'x'));
  clsIxoFile file = world.files.FileAt(FetchedWorld::At(QStringLiteral("Robot\\large.bin")));
  try {
    fetched.Run(file);
    ADD_FAILURE() << "it did not fail";
  } catch (const RunTimeError& failure) {
    EXPECT_EQ(failure.Number(), error::kDiskFull);
  }
  EXPECT_TRUE(opened.isEmpty());
  EXPECT_TRUE(fetched.End().empty());
  EXPECT_EQ(EntriesOf(disk.Path() + QStringLiteral("/fetched")), QStringList());
}

}  // namespace
}  // namespace trevane::test

#include "tests/support/FakeVolumes.h"
#include "views/addresses/DriveTable.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <memory>
#include <thread>

namespace trevane::test {
namespace {

class DriveSpacesTest : public testing::Test {
 protected:
  DriveSpacesTest() {
    volumes_.Set({{QStringLiteral("A:"), QStringLiteral("/a/"), drivetype::kRemovable},
                  {QStringLiteral("C:"), QStringLiteral("/c/"), drivetype::kFixed},
                  {QStringLiteral("N:"), QStringLiteral("/n/"), drivetype::kRemote},
                  {QStringLiteral("R:"), QStringLiteral("/r/"), drivetype::kRamDisk}});
    for (const Volume& volume : volumes_.Current()) {
      volumes_.SetSpace(volume.name, {.free = 1, .total = 2});
    }
  }

  std::optional<VolumeSpace> SpaceOf(const QString& root) {
    return drives_->SpaceOf(*drives_->VolumeOf(root));
  }

  /// Asked again until it is known.
  VolumeSpace AwaitSpaceOf(const QString& root) {
    for (;;) {
      if (const auto space = SpaceOf(root)) {
        return *space;
      }
      std::this_thread::yield();
    }
  }

  FakeVolumes volumes_;
  std::unique_ptr<DriveTable> drives_ = std::make_unique<DriveTable>(volumes_);
};

TEST_F(DriveSpacesTest, OnlyFixedDrivesAreAskedOnTheCallersThread) {
  const auto caller = std::this_thread::get_id();
  const auto onCaller = std::make_shared<std::atomic<int>>(0);
  const auto elsewhere = std::make_shared<std::atomic<int>>(0);
  volumes_.SetBeforeSpace(
      [=](const QString&) { ++(std::this_thread::get_id() == caller ? *onCaller : *elsewhere); });
  EXPECT_EQ(SpaceOf(QStringLiteral("C:"))->free, 1);
  EXPECT_EQ(SpaceOf(QStringLiteral("R:"))->total, 2);
  EXPECT_EQ(onCaller->load(), 2);
  EXPECT_EQ(AwaitSpaceOf(QStringLiteral("A:")).free, 1);
  EXPECT_EQ(AwaitSpaceOf(QStringLiteral("N:")).free, 1);
  EXPECT_EQ(onCaller->load(), 2);
  EXPECT_GE(elsewhere->load(), 2);
}

TEST_F(DriveSpacesTest, ADriveThatHangsIsShownWithoutItsSpace) {
  std::promise<void> answer;
  const std::shared_future<void> answered = answer.get_future().share();
  const auto asked = std::make_shared<std::atomic<int>>(0);
  volumes_.SetBeforeSpace([=](const QString& name) {
    if (name == QStringLiteral("A:")) {
      ++*asked;
      answered.wait();
    }
  });
  for (int i = 0; i < 5; ++i) {
    EXPECT_FALSE(SpaceOf(QStringLiteral("A:")));
  }
  // Not once more while it hangs, and no other drive waits for it.
  EXPECT_LE(asked->load(), 1);
  EXPECT_EQ(AwaitSpaceOf(QStringLiteral("N:")).free, 1);
  EXPECT_EQ(SpaceOf(QStringLiteral("C:"))->free, 1);
  answer.set_value();
  EXPECT_EQ(AwaitSpaceOf(QStringLiteral("A:")).free, 1);
}

TEST_F(DriveSpacesTest, AThreadThatHangsOutlivesTheTable) {
  auto answer = std::make_shared<std::promise<void>>();
  auto told = std::make_shared<std::promise<void>>();
  const std::shared_future<void> answered = answer->get_future().share();
  volumes_.SetBeforeSpace([=](const QString&) {
    answered.wait();
    told->set_value();
  });
  EXPECT_FALSE(SpaceOf(QStringLiteral("A:")));
  drives_.reset();
  answer->set_value();
  told->get_future().wait();
}

TEST_F(DriveSpacesTest, AnotherVolumeUnderTheLetterIsAskedAnew) {
  EXPECT_EQ(AwaitSpaceOf(QStringLiteral("A:")).free, 1);
  volumes_.Set({{QStringLiteral("A:"), QStringLiteral("/other/"), drivetype::kRemovable}});
  volumes_.SetSpace(QStringLiteral("A:"), {.free = 7, .total = 8});
  EXPECT_EQ(AwaitSpaceOf(QStringLiteral("A:")).free, 7);
}

}  // namespace
}  // namespace trevane::test

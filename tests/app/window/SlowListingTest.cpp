// The listing of a large folder of a slow controller in the window.
#include "tests/app/window/WaitingWorld.h"

namespace trevane::test {
namespace {

constexpr int kFolders = 2000;
/// Of the scripted controller.
constexpr int kBatch = 64;

class SlowListingTest : public testing::Test {
 protected:
  SlowListingTest() {
    for (int i = 0; i < kFolders; ++i) {
      world_.robot->AddFolder(QStringLiteral("parts\\part%1").arg(i));
    }
    world_.ShowRobot();
    world_.server->HangAtBatch(2);
  }
  [[nodiscard]] RecordingGauge& Gauge() { return world_.prompts_.RecordedGauge(); }

  WaitingWorld world_;
  const QString parts_ = WaitingWorld::Robot(QStringLiteral("parts"));
};

TEST_F(SlowListingTest, RowsAndGaugeComeWithTheFirstBatch) {
  world_.WhenHanging([this] {
    EXPECT_EQ(world_.Window()->ListModel().rowCount(), kBatch);
    EXPECT_EQ(world_.Node(parts_)->Children().size(), static_cast<size_t>(kBatch));
    EXPECT_TRUE(Gauge().IsVisible());
    EXPECT_TRUE(Gauge().IsCancelEnabled());
    EXPECT_EQ(Gauge().GageMax(), kBatch + 1);
    world_.server->HangAtBatch(0);
    world_.server->Release();
  });
  world_.ClickNode(parts_);
  EXPECT_TRUE(world_.acted);
  EXPECT_EQ(world_.Window()->ListModel().rowCount(), kFolders);
  EXPECT_FALSE(Gauge().IsVisible());
}

TEST_F(SlowListingTest, CancelOfTheGaugeEndsIt) {
  world_.WhenHanging([this] { Gauge().ClickCancel(); });
  world_.ClickNode(parts_);
  EXPECT_TRUE(world_.acted);
  EXPECT_EQ(world_.Nav().CurrentAddress(), parts_);
  EXPECT_EQ(world_.Window()->ListModel().rowCount(), kBatch);
  EXPECT_TRUE(world_.prompts_.Asked().empty());
  EXPECT_FALSE(Gauge().IsVisible());
}

TEST_F(SlowListingTest, AClickOnAnotherPlaceGoesThere) {
  world_.WhenHanging(
      [this] { world_.ClickAt(*world_.Tree().viewport(), world_.PointOf(QStringLiteral("Workspace"))); });
  world_.ClickNode(parts_);
  EXPECT_TRUE(world_.acted);
  EXPECT_EQ(world_.Nav().CurrentAddress(), QStringLiteral("Workspace"));
  EXPECT_TRUE(world_.prompts_.Asked().empty());
}

TEST_F(SlowListingTest, ClosingCloses) {
  bool unloaded = false;
  QObject::connect(world_.Window(), &frmFileMgr::Unloaded, world_.Window(), [&] { unloaded = true; });
  world_.WhenHanging([this] { EXPECT_FALSE(world_.Window()->close()); });
  world_.ClickNode(parts_);
  EXPECT_TRUE(QTest::qWaitFor([&] { return unloaded; }, 5000));
  EXPECT_TRUE(world_.prompts_.Asked().empty());
}

TEST(SlowListingNamesTest, DoubleNamesAreReportedAfterTheListing) {
  WaitingWorld world;
  world.robot->AddFile(QStringLiteral("parts\\Main.pac"));
  world.robot->AddFile(QStringLiteral("parts\\main.PAC"));
  world.ShowRobot();
  world.prompts_.AnswerAllBoxes(PromptAnswer::Ok);
  bool asked = false;
  world.prompts_.onQuestion = [&](const AskedQuestion& question) {
    asked = true;
    EXPECT_TRUE(question.text.startsWith(QStringLiteral("Can't display ")));
    EXPECT_FALSE(world.shippedWaiter.IsWaiting());
    // The rows are there already.
    EXPECT_EQ(world.Window()->ListModel().rowCount(), 1);
  };
  world.ClickNode(WaitingWorld::Robot(QStringLiteral("parts")));
  EXPECT_TRUE(asked);
  EXPECT_EQ(world.prompts_.Asked().size(), 1U);
}

}  // namespace
}  // namespace trevane::test

#include "app/window/WindowLayout.h"

#include <gtest/gtest.h>

namespace trevane {
namespace {

ResizeInput Usual() {
  return {.innerWidth = 12000,
          .innerHeight = 8000,
          .mainToolbarHeight = 390,
          .addressToolbarHeight = 390,
          .statusBarHeight = 330,
          .treeTop = 780,
          .treeWidth = 3000,
          .splitterWidth = 60,
          .addressBoxLeft = 900,
          .filterBoxWidth = 1700};
}

TEST(WindowLayoutTest, ViewsFillWhatTheBarsLeave) {
  const ResizeResult result = LayOut(Usual());
  EXPECT_EQ(result.viewHeight, 8000 - (390 + 390 + 330 + 50));
  EXPECT_EQ(result.statusTop, 780 + result.viewHeight + 50);
  EXPECT_EQ(result.listWidth, 12000 - 3060 - 50);
}

TEST(WindowLayoutTest, ViewsKeepAHeightOf100) {
  ResizeInput input = Usual();
  input.innerHeight = 200;
  const ResizeResult result = LayOut(input);
  EXPECT_EQ(result.viewHeight, 100);
  EXPECT_EQ(result.statusTop, 780 + 100 + 50);
}

TEST(WindowLayoutTest, TheListKeepsAWidthOf450) {
  ResizeInput input = Usual();
  input.innerWidth = 2000;
  EXPECT_EQ(LayOut(input).listWidth, 450);
}

TEST(WindowLayoutTest, TheBoxesFollowTheRightEdge) {
  const ResizeResult result = LayOut(Usual());
  ASSERT_TRUE(result.boxesFollow);
  EXPECT_EQ(result.addressBoxWidth, 12000 - (900 + 1000));
  EXPECT_EQ(result.addressPlaceholderWidth, 900 + result.addressBoxWidth + 50);
  EXPECT_EQ(result.filterBoxLeft, 12000 - 2500);
  EXPECT_EQ(result.filterPlaceholderWidth, 9500 + 1700 - 3600);
}

TEST(WindowLayoutTest, TheBoxesStayBelowAListWidthOf3001) {
  ResizeInput input = Usual();
  input.innerWidth = 3060 + 3000;
  EXPECT_FALSE(LayOut(input).boxesFollow);
  input.innerWidth = 3060 + 3001;
  EXPECT_TRUE(LayOut(input).boxesFollow);
}

DragInput UsualDrag() {
  return {.splitterLeft = 3000, .mouseX = 0, .treeLeft = 0, .windowWidth = 12000, .splitterWidth = 60};
}

TEST(SplitterTest, FollowsTheMouse) {
  DragInput input = UsualDrag();
  input.mouseX = 450;
  const DragResult result = DragSplitter(input);
  EXPECT_EQ(result.splitterLeft, 3450);
  EXPECT_EQ(result.treeWidth, 3450);
  EXPECT_EQ(result.listLeft, 3510);
  EXPECT_EQ(result.listWidth, 12000 - (3450 + 60 + 120));
}

TEST(SplitterTest, StopsAThousandFromTheTreesLeftEdge) {
  DragInput input = UsualDrag();
  input.mouseX = -2500;
  EXPECT_EQ(DragSplitter(input).splitterLeft, 1000);
  input.mouseX = -2000;
  EXPECT_EQ(DragSplitter(input).splitterLeft, 1000);
  input.mouseX = -1985;
  EXPECT_EQ(DragSplitter(input).splitterLeft, 1015);
}

TEST(SplitterTest, StopsTwoThousandShortOfTheWindowsWidth) {
  DragInput input = UsualDrag();
  input.mouseX = 9000;
  EXPECT_EQ(DragSplitter(input).splitterLeft, 10000);
  input.mouseX = 6985;
  EXPECT_EQ(DragSplitter(input).splitterLeft, 9985);
}

TEST(WindowLayoutTest, LargeWindowsFitOntoTheScreenWithTheirFrame) {
  const QRect screen(0, 20, 1280, 780);
  const QMargins frame(2, 24, 2, 4);
  EXPECT_EQ(FitToScreen({-10, 5, 1280, 800}, frame, screen), QRect(2, 44, 1276, 752));
  EXPECT_EQ(FitToScreen({100, 700, 600, 900}, frame, screen), QRect(100, 44, 600, 752));
}

TEST(WindowLayoutTest, SmallWindowsStayWhereTheyAre) {
  const QRect screen(0, 0, 1280, 800);
  const QRect halfOutside(-300, 100, 1200, 700);
  EXPECT_EQ(FitToScreen(halfOutside, {2, 24, 2, 4}, screen), halfOutside);
}

}  // namespace
}  // namespace trevane

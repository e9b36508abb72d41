#include "dialogs/WindowGauge.h"

#include <QPushButton>

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace trevane {
namespace {

using namespace Qt::StringLiterals;

struct WindowGaugeTest : testing::Test {
  std::vector<qint32> slept;
  WindowGauge gauge{[this](qint32 milliseconds) { slept.push_back(milliseconds); }};
};

TEST_F(WindowGaugeTest, IsNotLoadedBeforeItsFirstUse) {
  EXPECT_EQ(gauge.Window(), nullptr);
  gauge.IncrementGageValue(u"x"_s);
  gauge.UnloadGage();
  EXPECT_FALSE(gauge.IsClickedCancel());
  EXPECT_EQ(gauge.Window(), nullptr);
}

TEST_F(WindowGaugeTest, LoadsOneWindowAndKeepsIt) {
  gauge.SetGageMax(7);
  frmGage* const window = gauge.Window();
  ASSERT_NE(window, nullptr);
  EXPECT_FALSE(window->isVisible());
  gauge.ShowGage(u"first"_s);
  gauge.ShowGage(u"second"_s);
  EXPECT_EQ(gauge.Window(), window);
  EXPECT_EQ(window->windowTitle(), u"second"_s);
  EXPECT_EQ(gauge.Window()->GageMax(), 8);
}

TEST_F(WindowGaugeTest, ANewLoadForgetsTheCancelClickAndEverythingElse) {
  gauge.ShowGage(u"x"_s);
  gauge.CancelEnable(true);
  gauge.SetGageMax(3);
  gauge.IncrementGageValue(u"entry"_s);
  gauge.Window()->findChild<QPushButton*>(u"cmdCancel"_s)->click();
  ASSERT_TRUE(gauge.IsClickedCancel());
  const QPointer<frmGage> old = gauge.Window();

  gauge.UnloadGage();
  EXPECT_TRUE(old.isNull());
  EXPECT_FALSE(gauge.IsClickedCancel());

  gauge.ShowGage(u"y"_s);
  EXPECT_FALSE(gauge.IsClickedCancel());
  EXPECT_EQ(gauge.Window()->GageMax(), 100);
  EXPECT_EQ(gauge.Window()->GageValue(), 0);
  EXPECT_EQ(gauge.Window()->GageLabel(), QString());
  EXPECT_FALSE(gauge.Window()->findChild<QPushButton*>(u"cmdCancel"_s)->isEnabled());
}

TEST_F(WindowGaugeTest, WaitBlocksForTheTimeGivenAndNotAtAllForNone) {
  gauge.ShowGage(u"x"_s);
  gauge.WaitGage(30);
  gauge.WaitGage(0);
  gauge.WaitGage(-5);
  EXPECT_EQ(slept, std::vector<qint32>{30});
}

TEST_F(WindowGaugeTest, GoesWithItsParentAndIsLoadedAfreshAfterwards) {
  auto parent = std::make_unique<QWidget>();
  parent->show();
  gauge.SetParentWindow(parent.get());
  gauge.ShowGage(u"x"_s);
  EXPECT_EQ(gauge.Window()->parentWidget(), parent.get());
  parent.reset();
  EXPECT_EQ(gauge.Window(), nullptr);
  gauge.IncrementGageValue(u"entry"_s);
  gauge.ShowGage(u"y"_s);
  EXPECT_EQ(gauge.Window()->parentWidget(), nullptr);
}

}  // namespace
}  // namespace trevane

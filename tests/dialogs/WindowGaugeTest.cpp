#include "dialogs/WindowGauge.h"

#include <QPushButton>

#include <gtest/gtest.h>

#include <memory>
#include <utility>
#include <vector>

namespace trevane {
namespace {

struct WindowGaugeTest : testing::Test {
  std::vector<qint32> slept;
  WindowGauge gauge{[this](qint32 milliseconds) { slept.push_back(milliseconds); }};
};

TEST_F(WindowGaugeTest, IsNotLoadedBeforeItsFirstUse) {
  EXPECT_EQ(gauge.Window(), nullptr);
  gauge.IncrementGageValue(QStringLiteral("x"));
  gauge.UnloadGage();
  EXPECT_FALSE(gauge.IsClickedCancel());
  EXPECT_EQ(gauge.Window(), nullptr);
}

TEST_F(WindowGaugeTest, LoadsOneWindowAndKeepsIt) {
  gauge.SetGageMax(7);
  frmGage* const window = gauge.Window();
  ASSERT_NE(window, nullptr);
  EXPECT_FALSE(window->isVisible());
  gauge.ShowGage(QStringLiteral("first"));
  gauge.ShowGage(QStringLiteral("second"));
  EXPECT_EQ(gauge.Window(), window);
  EXPECT_EQ(window->windowTitle(), QStringLiteral("second"));
  EXPECT_EQ(gauge.Window()->GageMax(), 8);
}

TEST_F(WindowGaugeTest, ANewLoadForgetsTheCancelClickAndEverythingElse) {
  gauge.ShowGage(QStringLiteral("x"));
  gauge.CancelEnable(true);
  gauge.SetGageMax(3);
  gauge.IncrementGageValue(QStringLiteral("entry"));
  gauge.Window()->findChild<QPushButton*>(QStringLiteral("cmdCancel"))->click();
  ASSERT_TRUE(gauge.IsClickedCancel());
  const QPointer<frmGage> old = gauge.Window();

  gauge.UnloadGage();
  EXPECT_TRUE(old.isNull());
  EXPECT_FALSE(gauge.IsClickedCancel());

  gauge.ShowGage(QStringLiteral("y"));
  EXPECT_FALSE(gauge.IsClickedCancel());
  EXPECT_EQ(gauge.Window()->GageMax(), 100);
  EXPECT_EQ(gauge.Window()->GageValue(), 0);
  EXPECT_EQ(gauge.Window()->GageLabel(), QString());
  EXPECT_FALSE(gauge.Window()->findChild<QPushButton*>(QStringLiteral("cmdCancel"))->isEnabled());
}

TEST_F(WindowGaugeTest, WaitBlocksForTheTimeGivenAndNotAtAllForNone) {
  gauge.ShowGage(QStringLiteral("x"));
  gauge.WaitGage(30);
  gauge.WaitGage(0);
  gauge.WaitGage(-5);
  EXPECT_EQ(slept, std::vector<qint32>{30});
}

TEST_F(WindowGaugeTest, ThoseWhoShowTheProgressAreToldItAndItsEnd) {
  std::vector<std::pair<qint32, qint32>> told;
  gauge.SetProgressListener([&told](qint32 value, qint32 maximum) { told.emplace_back(value, maximum); });
  gauge.SetGageMax(9);
  EXPECT_TRUE(told.empty());
  gauge.ShowGage(QStringLiteral("x"));
  ASSERT_FALSE(told.empty());
  EXPECT_EQ(told.back(), std::pair(0, 10));
  for (int i = 0; i < 4; ++i) {
    gauge.IncrementGageValue(QStringLiteral("entry"));
  }
  gauge.PaintGage();
  EXPECT_EQ(told.back(), std::pair(4, 10));
  gauge.UnloadGage();
  EXPECT_EQ(told.back(), std::pair(0, 0));

  auto* const parent = new QWidget;
  gauge.SetParentWindow(parent);
  gauge.ShowGage(QStringLiteral("y"));
  EXPECT_EQ(told.back(), std::pair(0, 100));
  delete parent;
  EXPECT_EQ(told.back(), std::pair(0, 0));
}

TEST_F(WindowGaugeTest, IsDeletedWithItsParentAndLoadedAgain) {
  auto parent = std::make_unique<QWidget>();
  parent->show();
  gauge.SetParentWindow(parent.get());
  gauge.ShowGage(QStringLiteral("x"));
  EXPECT_EQ(gauge.Window()->parentWidget(), parent.get());
  parent.reset();
  EXPECT_EQ(gauge.Window(), nullptr);
  gauge.IncrementGageValue(QStringLiteral("entry"));
  gauge.ShowGage(QStringLiteral("y"));
  EXPECT_EQ(gauge.Window()->parentWidget(), nullptr);
}

}  // namespace
}  // namespace trevane

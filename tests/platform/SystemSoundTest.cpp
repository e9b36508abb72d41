#include "platform/SystemSound.h"

#include <QElapsedTimer>

#include <gtest/gtest.h>

#include <vector>

namespace trevane {
namespace {

TEST(SystemSound, WithoutABeeperNothingIsHeardAndNothingWaits) {
  systemsound::SetBeeper({});
  QElapsedTimer timer;
  timer.start();
  systemsound::Beep(systemsound::kCritical);
  EXPECT_LT(timer.elapsed(), 30'000);
}

TEST(SystemSound, BeeperIsToldTheKind) {
  std::vector<qint32> heard;
  systemsound::SetBeeper([&heard](qint32 kind) { heard.push_back(kind); });
  for (const qint32 kind : {32, 48, 64, 16}) {
    systemsound::Beep(kind);
  }
  systemsound::SetBeeper({});
  systemsound::Beep(16);
  EXPECT_EQ(heard, (std::vector<qint32>{systemsound::kQuestion, systemsound::kExclamation,
                                        systemsound::kInformation, systemsound::kCritical}));
}

TEST(SystemSound, SleepTakesItsTime) {
  QElapsedTimer timer;
  timer.start();
  systemsound::SleepMilliseconds(30);
  EXPECT_GE(timer.elapsed(), 29);
}

TEST(SystemSound, SleepOfNothingOrLessReturnsAtOnce) {
  QElapsedTimer timer;
  timer.start();
  systemsound::SleepMilliseconds(0);
  systemsound::SleepMilliseconds(-1);
  systemsound::SleepMilliseconds(-2147483647);
  EXPECT_LT(timer.elapsed(), 30'000);
}

}  // namespace
}  // namespace trevane

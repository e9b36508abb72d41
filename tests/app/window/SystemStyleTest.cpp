#include "app/window/SystemStyle.h"

#include <QColor>
#include <QPalette>

#include <gtest/gtest.h>

namespace trevane::test {
namespace {

using namespace Qt::StringLiterals;

QPalette PaletteOf(Qt::GlobalColor window, Qt::GlobalColor text) {
  QPalette palette;
  palette.setColor(QPalette::Window, window);
  palette.setColor(QPalette::WindowText, text);
  return palette;
}

TEST(SystemStyleTest, AStyleThatDrawsLightWindowsAloneGivesWayInTheDark) {
  const QPalette dark = PaletteOf(Qt::black, Qt::white);
  EXPECT_EQ(SystemStyle::StyleFor(u"windowsvista"_s, dark), u"fusion"_s);
  EXPECT_EQ(SystemStyle::StyleFor(u"WindowsVista"_s, dark), u"fusion"_s);
}

TEST(SystemStyleTest, TheSystemsOwnStyleDrawsWhereItCan) {
  const QPalette light = PaletteOf(Qt::white, Qt::black);
  EXPECT_EQ(SystemStyle::StyleFor(u"windowsvista"_s, light), u"windowsvista"_s);
  for (const QString& style : {u"fusion"_s, u"windows"_s, u"breeze"_s}) {
    EXPECT_EQ(SystemStyle::StyleFor(style, light), style);
    EXPECT_EQ(SystemStyle::StyleFor(style, PaletteOf(Qt::darkGray, Qt::white)), style);
  }
}

}  // namespace
}  // namespace trevane::test

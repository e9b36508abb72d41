#include "app/window/SystemStyle.h"

#include <QColor>
#include <QPalette>

#include <gtest/gtest.h>

namespace trevane::test {
namespace {

QPalette PaletteOf(Qt::GlobalColor window, Qt::GlobalColor text) {
  QPalette palette;
  palette.setColor(QPalette::Window, window);
  palette.setColor(QPalette::WindowText, text);
  return palette;
}

TEST(SystemStyleTest, LightOnlyStylesAreReplacedInTheDark) {
  const QPalette dark = PaletteOf(Qt::black, Qt::white);
  EXPECT_EQ(SystemStyle::StyleFor(QStringLiteral("windowsvista"), dark), QStringLiteral("fusion"));
  EXPECT_EQ(SystemStyle::StyleFor(QStringLiteral("WindowsVista"), dark), QStringLiteral("fusion"));
}

TEST(SystemStyleTest, OtherStylesStay) {
  const QPalette light = PaletteOf(Qt::white, Qt::black);
  EXPECT_EQ(SystemStyle::StyleFor(QStringLiteral("windowsvista"), light), QStringLiteral("windowsvista"));
  for (const QString& style :
       {QStringLiteral("fusion"), QStringLiteral("windows"), QStringLiteral("breeze")}) {
    EXPECT_EQ(SystemStyle::StyleFor(style, light), style);
    EXPECT_EQ(SystemStyle::StyleFor(style, PaletteOf(Qt::darkGray, Qt::white)), style);
  }
}

}  // namespace
}  // namespace trevane::test

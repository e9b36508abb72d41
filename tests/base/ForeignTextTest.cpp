#include "base/ForeignText.h"

#include <QString>

#include <gtest/gtest.h>

namespace trevane {
namespace {

TEST(ForeignText, LinesStayAndNoMoreThanOneIsBlank) {
  EXPECT_EQ(
      ForeignText(QStringLiteral("\r\n  Welcome to cell 4.\r\n \r\n\r\nPassword\twill expire.\rBye \n"), 200),
      QStringLiteral("Welcome to cell 4.\n\nPassword will expire.\nBye"));
  EXPECT_EQ(ForeignLine(QStringLiteral("one\ntwo\n\n\nthree"), 200), QStringLiteral("one two three"));
  EXPECT_EQ(ForeignText(QString(), 200), QString());
}

TEST(ForeignText, ControlCharactersAreSeenAndDoNothing) {
  EXPECT_EQ(ForeignText(QStringLiteral("\x1B[2Jgone\x07"), 200), QStringLiteral("\u241B[2Jgone\u2407"));
  EXPECT_EQ(ForeignText(QStringLiteral("a\u0085b\u009Bc"), 200), QStringLiteral("a\u2424b\uFFFDc"));
  EXPECT_EQ(ForeignText(QStringLiteral("exe\u202Etxt.\u2066x\u200Bz\uFEFF"), 200),
            QStringLiteral("exe\uFFFDtxt.\uFFFDx\uFFFDz\uFFFD"));
}

TEST(ForeignText, ALongTextIsCutBetweenTwoCharacters) {
  EXPECT_EQ(ForeignText(QString(100000, u'w'), 10), QString(9, u'w') + QChar(0x2026));
  EXPECT_EQ(ForeignText(QString(10, u'w'), 10), QString(10, u'w'));
  const QString smileys = QStringLiteral("\U0001F600").repeated(50);
  EXPECT_EQ(ForeignText(smileys, 10), QStringLiteral("\U0001F600").repeated(4) + QChar(0x2026));
}

TEST(ForeignText, LineEndsOfTwoCharactersCountAsOne) {
  EXPECT_EQ(ForeignText(QStringLiteral("a\r\nb\r\nc\r\nd"), 7), QStringLiteral("a\nb\nc\nd"));
}

}  // namespace
}  // namespace trevane

#include "base/ShownText.h"

#include <QString>
#include <QStringList>

#include <gtest/gtest.h>

namespace trevane {
namespace {

TEST(ShownText, CarriedCharactersAreShownAsWhatTheyStandFor) {
  EXPECT_EQ(WithReadableNames(QStringLiteral("a\uF05Cb \uF03A\uF02A\uF07C")), QStringLiteral("a\\b :*|"));
  EXPECT_EQ(WithReadableNames(QStringLiteral("plain \uF8FF \uF061")), QStringLiteral("plain \uF8FF \uF061"));
}

TEST(ShownText, ATypedNameCarriesWhatItsOldNameCarried) {
  EXPECT_EQ(WithCarriersOf(QStringLiteral("a\uF05Cb"), QStringLiteral("x\\y\\z:")),
            QStringLiteral("x\uF05Cy\uF05Cz:"));
  EXPECT_EQ(WithCarriersOf(QStringLiteral("ab"), QStringLiteral("x\\y")), QStringLiteral("x\\y"));
}

TEST(ShownText, ALongToolTipHasLinesOfBoundedLength) {
  for (const QString& text : {QString(1000, u'w'), QStringLiteral("C:\\folder with blanks\\").repeated(40),
                              QStringLiteral("\U0001F600").repeated(300)}) {
    const QString shown = PlainToolTip(text);
    EXPECT_EQ(QString(shown).remove(u'\n'), text) << "nothing is lost or added";
    EXPECT_GT(shown.count(u'\n'), 5);
    for (const QString& line : shown.split(u'\n')) {
      EXPECT_LE(line.size(), kToolTipLine);
      EXPECT_FALSE(line.front().isLowSurrogate());
    }
  }
  EXPECT_EQ(PlainToolTip(QStringLiteral("short")), QStringLiteral("short"));
}

TEST(ShownText, ALineOfAToolTipEndsBehindASeparator) {
  const QString shown = PlainToolTip(QStringLiteral("one\\two\\three\\").repeated(20));
  for (const QString& line : shown.split(u'\n')) {
    EXPECT_TRUE(line.endsWith(u'\\')) << line.toStdString();
  }
}

TEST(ShownText, AToolTipThatLooksLikeMarkupIsShownAsText) {
  EXPECT_EQ(PlainToolTip(QStringLiteral("<b>x</b>")),
            QStringLiteral("<p style='white-space:pre'>&lt;b&gt;x&lt;/b&gt;</p>"));
  EXPECT_TRUE(PlainToolTip(QStringLiteral("&lt;") + QString(100, u'w')).contains(QStringLiteral("<br/>")));
}

}  // namespace
}  // namespace trevane

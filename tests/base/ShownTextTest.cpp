#include "base/ShownText.h"

#include <QString>
#include <QStringList>

#include <gtest/gtest.h>

namespace trevane {
namespace {

using namespace Qt::StringLiterals;

TEST(ShownText, CarriedCharactersAreShownAsWhatTheyStandFor) {
  EXPECT_EQ(WithReadableNames(u"a\uF05Cb \uF03A\uF02A\uF07C"_s), u"a\\b :*|"_s);
  EXPECT_EQ(WithReadableNames(u"plain \uF8FF \uF061"_s), u"plain \uF8FF \uF061"_s);
}

TEST(ShownText, ATypedNameCarriesWhatItsOldNameCarried) {
  EXPECT_EQ(WithCarriersOf(u"a\uF05Cb"_s, u"x\\y\\z:"_s), u"x\uF05Cy\uF05Cz:"_s);
  EXPECT_EQ(WithCarriersOf(u"ab"_s, u"x\\y"_s), u"x\\y"_s);
}

TEST(ShownText, ALongToolTipHasLinesOfBoundedLength) {
  for (const QString& text :
       {QString(1000, u'w'), u"C:\\folder with blanks\\"_s.repeated(40), u"\U0001F600"_s.repeated(300)}) {
    const QString shown = PlainToolTip(text);
    EXPECT_EQ(QString(shown).remove(u'\n'), text) << "nothing is lost or added";
    EXPECT_GT(shown.count(u'\n'), 5);
    for (const QString& line : shown.split(u'\n')) {
      EXPECT_LE(line.size(), kToolTipLine);
      EXPECT_FALSE(line.front().isLowSurrogate());
    }
  }
  EXPECT_EQ(PlainToolTip(u"short"_s), u"short"_s);
}

TEST(ShownText, ALineOfAToolTipEndsBehindASeparator) {
  const QString shown = PlainToolTip(u"one\\two\\three\\"_s.repeated(20));
  for (const QString& line : shown.split(u'\n')) {
    EXPECT_TRUE(line.endsWith(u'\\')) << line.toStdString();
  }
}

TEST(ShownText, AToolTipThatLooksLikeMarkUpIsShownAsItStands) {
  EXPECT_EQ(PlainToolTip(u"<b>x</b>"_s), u"<p style='white-space:pre'>&lt;b&gt;x&lt;/b&gt;</p>"_s);
  EXPECT_TRUE(PlainToolTip(u"&lt;"_s + QString(100, u'w')).contains(u"<br/>"_s));
}

}  // namespace
}  // namespace trevane

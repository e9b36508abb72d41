#include "base/LowerCase.h"

#include <QStringList>

#include <gtest/gtest.h>

namespace trevane {
namespace {

TEST(LowerCase, MapsEachCodePointOnItsOwn) {
  EXPECT_EQ(LowerCase(QStringLiteral("ReadMe.TXT")), QStringLiteral("readme.txt"));
  EXPECT_EQ(LowerCase(QStringLiteral("ÀÉÑΩЖ")), QStringLiteral("àéñωж"));
  EXPECT_EQ(LowerCase(QStringLiteral("ΣΑΣ")), QStringLiteral("σασ"))
      << "no final form: it would depend on the neighbours";
  EXPECT_EQ(LowerCase(QStringLiteral("ß")), QStringLiteral("ß"));
}

TEST(LowerCase, MapsCodePointsBeyondTheBasicPlane) {
  EXPECT_EQ(LowerCase(QString::fromUcs4(U"\U00010400x")), QString::fromUcs4(U"\U00010428x"));
  EXPECT_TRUE(EqualIgnoringCase(QString::fromUcs4(U"\U00010400"), QString::fromUcs4(U"\U00010428")));
}

TEST(LowerCase, LettersThatOnlyFoldingMakesEqualStayDifferent) {
  // File systems that ignore case keep these apart: as one name, one of two files would be lost.
  EXPECT_FALSE(EqualIgnoringCase(QStringLiteral("\u017F"), QStringLiteral("s"))) << "long s";
  EXPECT_FALSE(EqualIgnoringCase(QStringLiteral("\u00B5"), QStringLiteral("\u03BC"))) << "micro sign and mu";
  EXPECT_FALSE(EqualIgnoringCase(QStringLiteral("\u03C2"), QStringLiteral("\u03C3")))
      << "final and other sigma";
  EXPECT_FALSE(EqualIgnoringCase(QStringLiteral("\u00DF"), QStringLiteral("ss")));
}

TEST(LowerCase, NeverChangesTheLength) {
  for (char32_t c = 0; c < 0x20000; ++c) {
    if (c >= 0xD800 && c < 0xE000) {
      continue;
    }
    const QString one = QString::fromUcs4(&c, 1);
    ASSERT_EQ(LowerCase(one).size(), one.size()) << std::hex << static_cast<quint32>(c);
  }
}

TEST(LowerCase, KeepsLoneSurrogates) {
  const QString lone =
      QString(QChar(0xDC80)) + QStringLiteral("A") + QChar(0xD801) + QStringLiteral("B") + QChar(0xD801);
  const QString lower =
      QString(QChar(0xDC80)) + QStringLiteral("a") + QChar(0xD801) + QStringLiteral("b") + QChar(0xD801);
  EXPECT_EQ(LowerCase(lone), lower);
  EXPECT_FALSE(EqualIgnoringCase(QString(QChar(0xDC80)), QString(QChar(0xDC81))));
}

TEST(LowerCase, SharesATextThatIsLowerCaseAlready) {
  const QString text = QStringLiteral("readme.txt") + QString::number(1);
  EXPECT_EQ(LowerCase(text).constData(), text.constData());
}

TEST(LowerCase, ComparisonsAgreeWithTheTextsThatTheyStandFor) {
  const QStringList texts = {QString(),
                             QStringLiteral("a"),
                             QStringLiteral("A"),
                             QStringLiteral("ab"),
                             QStringLiteral("Z"),
                             QStringLiteral("_"),
                             QStringLiteral("é"),
                             QStringLiteral("É1"),
                             QString::fromUcs4(U"\U00010400"),
                             QString::fromUcs4(U"\U00010428z"),
                             QString(QChar(0xDC80)),
                             QString(QChar(0xD801)) + QStringLiteral("x"),
                             QString(QChar(0xFF21)),
                             QString(QChar(0xE000))};
  for (const QString& left : texts) {
    for (const QString& right : texts) {
      const QString a = LowerCase(left);
      const QString b = LowerCase(right);
      EXPECT_EQ(EqualIgnoringCase(left, right), a == b);
      EXPECT_EQ(CompareIgnoringCase(left, right) < 0, a < b) << left.toStdString() << right.toStdString();
      EXPECT_EQ(CompareIgnoringCase(left, right) > 0, a > b);
      EXPECT_EQ(StartsWithIgnoringCase(left, right), a.startsWith(b));
      if (a == b) {
        EXPECT_EQ(HashIgnoringCase(left, 7), HashIgnoringCase(right, 7));
      }
      std::vector<char16_t> units;
      AppendLowerCase(left, units);
      EXPECT_EQ(QStringView(units.data(), static_cast<qsizetype>(units.size())), a);
    }
  }
}

}  // namespace
}  // namespace trevane

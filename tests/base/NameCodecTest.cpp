#include "base/NameCodec.h"

#include <gtest/gtest.h>

#include <iterator>
#include <random>

namespace trevane {
namespace {

TEST(NameCodec, AsciiStaysAsItIs) {
  EXPECT_EQ(DecodeBytes("plain name.txt"), QStringLiteral("plain name.txt"));
  EXPECT_EQ(EncodeText(u"plain name.txt"), "plain name.txt");
}

TEST(NameCodec, EmptyIsNotNull) {
  EXPECT_FALSE(DecodeBytes({}).isNull());
  EXPECT_TRUE(DecodeBytes({}).isEmpty());
}

TEST(NameCodec, WellFormedUtf8OfEveryLengthIsDecoded) {
  EXPECT_EQ(DecodeBytes("\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80"), QStringLiteral("é€😀"));
  EXPECT_EQ(EncodeText(u"é€😀"), "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80");
}

TEST(NameCodec, ByteOrderMarkIsKept) {
  EXPECT_EQ(DecodeBytes("\xEF\xBB\xBFx"), QStringLiteral("\uFEFFx"));
  EXPECT_EQ(EncodeText(u"\uFEFFx"), "\xEF\xBB\xBFx");
}

TEST(NameCodec, UndecodableByteBecomesLoneSurrogate) {
  const QString text = DecodeBytes("a\xFFz");
  ASSERT_EQ(text.size(), 3);
  EXPECT_EQ(text.at(1), QChar(0xDCFF));
  EXPECT_EQ(EncodeText(text), "a\xFFz");
}

TEST(NameCodec, OverlongSurrogateAndOutOfRangeSequencesAreEscaped) {
  for (const QByteArray& bytes :
       {QByteArray("\xC0\x80"), QByteArray("\xE0\x80\x80"), QByteArray("\xED\xA0\x80"),
        QByteArray("\xF4\x90\x80\x80"), QByteArray("\xF8\x88\x80\x80\x80"), QByteArray("\xE2\x82")}) {
    const QString text = DecodeBytes(bytes);
    EXPECT_EQ(text.size(), bytes.size());
    for (const QChar unit : text) {
      EXPECT_TRUE(unit.isLowSurrogate());
    }
    EXPECT_EQ(EncodeText(text), bytes);
  }
}

TEST(NameCodec, LoneSurrogateWithoutAByteIsReplaced) {
  const char16_t high[] = {u'a', 0xD83D, u'b'};
  EXPECT_EQ(EncodeText(QStringView(high, 3)),
            "a\xEF\xBF\xBD"
            "b");
  const char16_t low[] = {0xDC7F};
  EXPECT_EQ(EncodeText(QStringView(low, 1)), "\xEF\xBF\xBD");
}

TEST(NameCodec, CutLengthCutsNoCharacterInTwo) {
  const QByteArray text("a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80z");
  const qsizetype expected[] = {0, 1, 1, 3, 3, 3, 6, 6, 6, 6, 10, 11, 11};
  for (qsizetype limit = 0; limit < qsizetype(std::size(expected)); ++limit) {
    EXPECT_EQ(CutLength(text, limit), expected[limit]) << limit;
  }
  EXPECT_EQ(CutLength(text, -1), 0);
  // Bytes that are no character are cut at the limit.
  const QByteArray broken("\xE2\x82\xE2\x82\xE2\x82");
  EXPECT_EQ(CutLength(broken, 5), 5);
  EXPECT_EQ(CutLength(QByteArray(9, '\x80'), 7), 7);
}

TEST(NameCodec, EveryByteSequenceComesBack) {
  std::mt19937 random(7);  // a fixed seed: the same sequences in every run
  for (int round = 0; round < 20000; ++round) {
    QByteArray bytes(int(random() % 12), '\0');
    for (char& byte : bytes) {
      const unsigned pick = random();
      // Mostly lead and continuation bytes, so that long sequences and their fragments occur.
      byte = static_cast<char>((pick & 3) == 0 ? pick >> 8 : (0x80 | (pick >> 8)));
    }
    ASSERT_EQ(EncodeText(DecodeBytes(bytes)), bytes) << bytes.toHex().toStdString();
  }
}

}  // namespace
}  // namespace trevane

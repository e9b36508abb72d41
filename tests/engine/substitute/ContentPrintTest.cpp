#include "engine/substitute/ContentPrint.h"

#include <gtest/gtest.h>

namespace trevane {
namespace {

ContentPrint PrintOf(const QByteArray& content, qsizetype piece) {
  ContentPrint print;
  for (qsizetype at = 0; at < content.size(); at += piece) {
    print.Add(content.mid(at, piece));
  }
  return print;
}

TEST(ContentPrintTest, DoesNotDependOnThePieces) {
  QByteArray content;
  for (int i = 0; i < 1000; ++i) {
    content.append(static_cast<char>(i * 7));
  }
  const ContentPrint whole = PrintOf(content, content.size());
  EXPECT_EQ(whole.Size(), 1000);
  for (const qsizetype piece : {1, 7, 31, 32, 33, 100, 999}) {
    EXPECT_TRUE(PrintOf(content, piece).IsSame(whole)) << piece;
  }
}

TEST(ContentPrintTest, SeesEachChangedByteAndTheLength) {
  const QByteArray content(100, 'x');
  const ContentPrint whole = PrintOf(content, 13);
  for (qsizetype at = 0; at < content.size(); ++at) {
    QByteArray other = content;
    other[at] = 'y';
    EXPECT_FALSE(PrintOf(other, 13).IsSame(whole)) << at;
  }
  EXPECT_FALSE(PrintOf(content.first(99), 13).IsSame(whole));
  EXPECT_FALSE(PrintOf(content + QByteArray(1, '\0'), 13).IsSame(whole));
  EXPECT_TRUE(ContentPrint().IsSame(PrintOf({}, 1)));
}

TEST(ContentPrintTest, KnowsAPartThatTheContentBeginsWith) {
  const ContentPrint whole = PrintOf("content", 3);
  EXPECT_TRUE(PrintOf("cont", 1).IsStartOf(whole));
  EXPECT_TRUE(PrintOf({}, 1).IsStartOf(whole));
  EXPECT_TRUE(PrintOf("content", 2).IsStartOf(whole));
  EXPECT_FALSE(PrintOf("cond", 1).IsStartOf(whole));
  EXPECT_FALSE(PrintOf("contenT", 1).IsStartOf(whole));
  EXPECT_FALSE(PrintOf("contents", 1).IsStartOf(whole));
}

}  // namespace
}  // namespace trevane

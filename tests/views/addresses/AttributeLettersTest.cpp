#include "views/addresses/AttributeLetters.h"

#include <gtest/gtest.h>

namespace trevane {
namespace {

TEST(AttributeLetters, TheLettersAreInTheOrderRhsa) {
  EXPECT_EQ(AttributeLetters(0), QString());
  EXPECT_EQ(AttributeLetters(1 | 32), QStringLiteral("RA"));
  EXPECT_EQ(AttributeLetters(2 | 4), QStringLiteral("HS"));
  EXPECT_EQ(AttributeLetters(1 | 2 | 4 | 32), QStringLiteral("RHSA"));
  EXPECT_EQ(AttributeLetters(8 | 16 | 64 | 0x400), QString()) << "other bits are not shown";
  EXPECT_EQ(AttributeLetters(-1), QStringLiteral("RHSA"));
}

TEST(AttributeLetters, SortKeysOrderAsTheTextsDo) {
  for (qint32 left = 0; left < 64; ++left) {
    for (qint32 right = 0; right < 64; ++right) {
      EXPECT_EQ(AttributeSortKey(left) < AttributeSortKey(right),
                AttributeLetters(left) < AttributeLetters(right))
          << left << " and " << right;
    }
  }
}

}  // namespace
}  // namespace trevane

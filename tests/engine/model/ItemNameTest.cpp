#include "base/RunTimeError.h"
#include "engine/model/ItemName.h"

#include <gtest/gtest.h>

namespace trevane::test {
namespace {

TEST(ItemNameTest, RefusesNamesThatLeadElsewhere) {
  for (const QString& name : {QString(), QStringLiteral("."), QStringLiteral(".."), QStringLiteral("a/b"),
                              QStringLiteral("a\\b"), QStringLiteral("a") + QChar(0)}) {
    EXPECT_FALSE(IsValidItemName(name)) << name.toStdString();
    try {
      RequireItemName(name);
      ADD_FAILURE() << name.toStdString();
    } catch (const RunTimeError& failure) {
      EXPECT_EQ(failure.Number(), error::kInvalidName);
      EXPECT_EQ(failure.Description(), QStringLiteral("The name is not valid: '%1'").arg(name));
    }
  }
}

TEST(ItemNameTest, TakesEveryOtherName) {
  for (const QString& name : {QStringLiteral("a"), QStringLiteral("..."), QStringLiteral(" "),
                              QStringLiteral("%1"), QStringLiteral("a") + QChar(0xDC80)}) {
    EXPECT_TRUE(IsValidItemName(name)) << name.toStdString();
    EXPECT_NO_THROW(RequireItemName(name));
  }
}

}  // namespace
}  // namespace trevane::test

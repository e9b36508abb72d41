#include "base/Variant.h"

#include <gtest/gtest.h>

namespace trevane {
namespace {

TEST(VariantTest, AnIntegerIsReadWhateverItsWidth) {
  EXPECT_EQ(IntegerIn(qint32(-70000)), -70000);
  EXPECT_EQ(IntegerIn(qint16(3)), 3);
  EXPECT_EQ(IntegerIn(Missing{}), std::nullopt);
  EXPECT_EQ(IntegerIn(QStringLiteral("3")), std::nullopt);
}

TEST(VariantTest, AnyOtherTagIsAnAbsentDate) {
  EXPECT_EQ(DateIn(Date{5}), Date{5});
  EXPECT_FALSE(DateIn(Missing{}).IsPresent());
  EXPECT_FALSE(DateIn(qint32(5)).IsPresent());
}

}  // namespace
}  // namespace trevane

#include "engine/controllers/FindControllerOfAddress.h"

#include <gtest/gtest.h>

namespace trevane {
namespace {

class FindControllerOfAddressTest : public testing::Test {
 protected:
  FindControllerOfAddressTest() {
    for (const QString& name :
         {QStringLiteral("LocalFile1"), QStringLiteral("Robot"), QStringLiteral("12")}) {
      auto record = std::make_shared<clsIxoCtrl>();
      record->SetRealCtrlName(name);
      registry_.Add(record);
    }
  }

  QString NameOf(const QString& address) const {
    const auto record = FindControllerOfAddress(registry_, address);
    return record ? record->RealCtrlName() : QStringLiteral("(none)");
  }

  clsIxoCtrls registry_;
};

TEST_F(FindControllerOfAddressTest, MyComputerIsTheFirstRecordInAnyCase) {
  EXPECT_EQ(NameOf(QStringLiteral("Workspace\\My Computer\\C:\\dir")), QStringLiteral("LocalFile1"));
  EXPECT_EQ(NameOf(QStringLiteral("workspace\\MY COMPUTER")), QStringLiteral("LocalFile1"));
}

TEST_F(FindControllerOfAddressTest, TakesTheTextBetweenTheFirstTwoSeparators) {
  EXPECT_EQ(NameOf(QStringLiteral("Workspace\\ROBOT\\dir\\sub")), QStringLiteral("Robot"));
  EXPECT_EQ(NameOf(QStringLiteral("Workspace\\robot")), QStringLiteral("Robot"));
  EXPECT_EQ(NameOf(QStringLiteral("Robot")), QStringLiteral("Robot"));
  EXPECT_EQ(NameOf(QStringLiteral("Workspace\\12\\x")), QStringLiteral("12"));
}

TEST_F(FindControllerOfAddressTest, FindsNoControllerThatIsNotConnected) {
  EXPECT_EQ(NameOf(QStringLiteral("Workspace\\Robo\\dir")), QStringLiteral("(none)"));
  EXPECT_EQ(NameOf(QStringLiteral("Workspace")), QStringLiteral("(none)"));
  EXPECT_EQ(NameOf({}), QStringLiteral("(none)"));
  EXPECT_EQ(FindControllerOfAddress(clsIxoCtrls(), QStringLiteral("Workspace\\My Computer")), nullptr);
}

}  // namespace
}  // namespace trevane

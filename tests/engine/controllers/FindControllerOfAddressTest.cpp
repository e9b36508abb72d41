#include "engine/controllers/FindControllerOfAddress.h"

#include <gtest/gtest.h>

namespace trevane {
namespace {

using namespace Qt::StringLiterals;

class FindControllerOfAddressTest : public testing::Test {
 protected:
  FindControllerOfAddressTest() {
    for (const QString& name : {u"LocalFile1"_s, u"Robot"_s, u"12"_s}) {
      auto record = std::make_shared<clsIxoCtrl>();
      record->SetRealCtrlName(name);
      registry_.Add(record);
    }
  }

  QString NameOf(const QString& address) const {
    const auto record = FindControllerOfAddress(registry_, address);
    return record ? record->RealCtrlName() : u"(none)"_s;
  }

  clsIxoCtrls registry_;
};

TEST_F(FindControllerOfAddressTest, MyComputerIsTheFirstRecordInAnyCase) {
  EXPECT_EQ(NameOf(u"Workspace\\My Computer\\C:\\dir"_s), u"LocalFile1"_s);
  EXPECT_EQ(NameOf(u"workspace\\MY COMPUTER"_s), u"LocalFile1"_s);
}

TEST_F(FindControllerOfAddressTest, TakesTheTextBetweenTheFirstTwoSeparators) {
  EXPECT_EQ(NameOf(u"Workspace\\ROBOT\\dir\\sub"_s), u"Robot"_s);
  EXPECT_EQ(NameOf(u"Workspace\\robot"_s), u"Robot"_s);
  EXPECT_EQ(NameOf(u"Robot"_s), u"Robot"_s);
  EXPECT_EQ(NameOf(u"Workspace\\12\\x"_s), u"12"_s);
}

TEST_F(FindControllerOfAddressTest, FindsNothingForWhatIsNotConnected) {
  EXPECT_EQ(NameOf(u"Workspace\\Robo\\dir"_s), u"(none)"_s);
  EXPECT_EQ(NameOf(u"Workspace"_s), u"(none)"_s);
  EXPECT_EQ(NameOf({}), u"(none)"_s);
  EXPECT_EQ(FindControllerOfAddress(clsIxoCtrls(), u"Workspace\\My Computer"_s), nullptr);
}

}  // namespace
}  // namespace trevane

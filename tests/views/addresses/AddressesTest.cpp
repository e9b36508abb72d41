#include "views/addresses/Addresses.h"
#include "views/addresses/ImageKeys.h"

#include <gtest/gtest.h>

#include <array>

namespace trevane {
namespace {

using namespace Qt::StringLiterals;

struct PathRow {
  const char* name;
  QString from;
  QString to;
};

std::string NameOf(const testing::TestParamInfo<PathRow>& info) {
  return info.param.name;
}

class AddressToEnginePathRows : public testing::TestWithParam<PathRow> {};

TEST_P(AddressToEnginePathRows, GivesThePath) {
  EXPECT_EQ(AddressToEnginePath(GetParam().from), GetParam().to);
}

INSTANTIATE_TEST_SUITE_P(
    Addresses, AddressToEnginePathRows,
    testing::Values(PathRow{"LocalFolder", u"Workspace\\My Computer\\C:\\dir"_s, u"C:\\dir"_s},
                    PathRow{"LocalDrive", u"Workspace\\My Computer\\C:"_s, u"C:"_s},
                    PathRow{"OnController", u"Workspace\\Ctrl1\\dir"_s, u"Ctrl1\\dir"_s},
                    PathRow{"Controller", u"Workspace\\Ctrl1"_s, u"Ctrl1"_s},
                    PathRow{"Workspace", u"Workspace"_s, QString()},
                    PathRow{"MyComputer", u"Workspace\\My Computer"_s, QString()},
                    PathRow{"OtherCase", u"wORKSPACE\\mY cOMPUTER\\c:\\Dir"_s, u"c:\\Dir"_s},
                    PathRow{"MyComputerIsCutByLength", u"Workspace\\My ComputerXY"_s, u"Y"_s},
                    PathRow{"WorkspaceIsCutByLength", u"WorkspaceXY"_s, u"Y"_s},
                    PathRow{"NoWorkspaceInFront", u"C:\\dir"_s, u"C:\\dir"_s},
                    PathRow{"WorkspaceInside", u"C:\\Workspace"_s, u"C:\\Workspace"_s},
                    PathRow{"Empty", QString(), QString()}),
    NameOf);

class EnginePathToAddressRows : public testing::TestWithParam<PathRow> {};

TEST_P(EnginePathToAddressRows, GivesTheAddress) {
  EXPECT_EQ(EnginePathToAddress(GetParam().from), GetParam().to);
}

INSTANTIATE_TEST_SUITE_P(
    Addresses, EnginePathToAddressRows,
    testing::Values(PathRow{"LocalFolder", u"C:\\dir"_s, u"Workspace\\My Computer\\C:\\dir"_s},
                    PathRow{"DriveAlone", u"C:"_s, u"Workspace\\My Computer\\C:"_s},
                    PathRow{"AnyCharacterBeforeTheColon", u"?:x"_s, u"Workspace\\My Computer\\?:x"_s},
                    PathRow{"OnController", u"Ctrl1\\dir"_s, u"Workspace\\Ctrl1\\dir"_s},
                    PathRow{"ColonFurtherOn", u"Ctrl:1"_s, u"Workspace\\Ctrl:1"_s},
                    PathRow{"OneCharacter", u"C"_s, u"Workspace\\C"_s},
                    PathRow{"Empty", QString(), u"Workspace\\"_s}),
    NameOf);

TEST(Addresses, APathOfALocalFolderGoesThereAndBack) {
  const QString address = u"Workspace\\My Computer\\C:\\dir\\sub"_s;
  EXPECT_EQ(EnginePathToAddress(AddressToEnginePath(address)), address);
}

TEST(Addresses, JoinPutsOneSeparatorBetween) {
  EXPECT_EQ(JoinAddress(u"Workspace\\Ctrl1"_s, u"dir"_s), u"Workspace\\Ctrl1\\dir"_s);
}

TEST(Addresses, WorkspaceAndMyComputerAreRecognisedInAnyCase) {
  EXPECT_TRUE(IsWorkspaceAddress(u"WORKSPACE"));
  EXPECT_FALSE(IsWorkspaceAddress(u"Workspace\\"));
  EXPECT_TRUE(IsMyComputerAddress(u"workspace\\my computer"));
  EXPECT_FALSE(IsMyComputerAddress(u"Workspace\\My Computer\\C:"));
  EXPECT_TRUE(IsLocalAddress(u"workspace\\MY COMPUTER\\c:"));
  EXPECT_TRUE(IsLocalAddress(u"Workspace\\My Computer"));
  EXPECT_FALSE(IsLocalAddress(u"Workspace\\My Computers"));
  EXPECT_FALSE(IsLocalAddress(u"Workspace\\Ctrl1"));
}

TEST(Addresses, AddressesThatDifferInCaseHaveOneNodeKey) {
  EXPECT_EQ(NodeKey(u"Workspace\\My Computer\\C:"_s), u"workspace\\my computer\\c:"_s);
  EXPECT_EQ(NodeKey(u"Workspace\\My Computer\\C:"_s), NodeKey(u"workspace\\MY COMPUTER\\c:"_s));
}

TEST(Addresses, AListKeyOfDigitsCannotBeTakenForAPosition) {
  EXPECT_EQ(ListKey(u"123"_s), u"@123"_s);
  EXPECT_EQ(ListKey(u"ReadMe.TXT"_s), u"@readme.txt"_s);
}

TEST(Addresses, ASystemIconIsKeyedByItsDecimalIndex) {
  EXPECT_EQ(SystemIconKey(0), u"iIcon:0"_s);
  EXPECT_EQ(SystemIconKey(1234), u"iIcon:1234"_s);
}

}  // namespace
}  // namespace trevane

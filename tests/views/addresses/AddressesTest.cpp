#include "views/addresses/Addresses.h"
#include "views/addresses/ImageKeys.h"

#include <gtest/gtest.h>

#include <array>

namespace trevane {
namespace {

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
    testing::Values(
        PathRow{"LocalFolder", QStringLiteral("Workspace\\My Computer\\C:\\dir"), QStringLiteral("C:\\dir")},
        PathRow{"LocalDrive", QStringLiteral("Workspace\\My Computer\\C:"), QStringLiteral("C:")},
        PathRow{"OnController", QStringLiteral("Workspace\\Ctrl1\\dir"), QStringLiteral("Ctrl1\\dir")},
        PathRow{"Controller", QStringLiteral("Workspace\\Ctrl1"), QStringLiteral("Ctrl1")},
        PathRow{"Workspace", QStringLiteral("Workspace"), QString()},
        PathRow{"MyComputer", QStringLiteral("Workspace\\My Computer"), QString()},
        PathRow{"OtherCase", QStringLiteral("wORKSPACE\\mY cOMPUTER\\c:\\Dir"), QStringLiteral("c:\\Dir")},
        PathRow{"MyComputerIsCutByLength", QStringLiteral("Workspace\\My ComputerXY"), QStringLiteral("Y")},
        PathRow{"WorkspaceIsCutByLength", QStringLiteral("WorkspaceXY"), QStringLiteral("Y")},
        PathRow{"NoWorkspaceInFront", QStringLiteral("C:\\dir"), QStringLiteral("C:\\dir")},
        PathRow{"WorkspaceInside", QStringLiteral("C:\\Workspace"), QStringLiteral("C:\\Workspace")},
        PathRow{"Empty", QString(), QString()}),
    NameOf);

class EnginePathToAddressRows : public testing::TestWithParam<PathRow> {};

TEST_P(EnginePathToAddressRows, GivesTheAddress) {
  EXPECT_EQ(EnginePathToAddress(GetParam().from), GetParam().to);
}

INSTANTIATE_TEST_SUITE_P(
    Addresses, EnginePathToAddressRows,
    testing::Values(
        PathRow{"LocalFolder", QStringLiteral("C:\\dir"), QStringLiteral("Workspace\\My Computer\\C:\\dir")},
        PathRow{"DriveAlone", QStringLiteral("C:"), QStringLiteral("Workspace\\My Computer\\C:")},
        PathRow{"AnyCharacterBeforeTheColon", QStringLiteral("?:x"),
                QStringLiteral("Workspace\\My Computer\\?:x")},
        PathRow{"OnController", QStringLiteral("Ctrl1\\dir"), QStringLiteral("Workspace\\Ctrl1\\dir")},
        PathRow{"ColonFurtherOn", QStringLiteral("Ctrl:1"), QStringLiteral("Workspace\\Ctrl:1")},
        PathRow{"OneCharacter", QStringLiteral("C"), QStringLiteral("Workspace\\C")},
        PathRow{"Empty", QString(), QStringLiteral("Workspace\\")}),
    NameOf);

TEST(Addresses, APathOfALocalFolderGoesThereAndBack) {
  const QString address = QStringLiteral("Workspace\\My Computer\\C:\\dir\\sub");
  EXPECT_EQ(EnginePathToAddress(AddressToEnginePath(address)), address);
}

TEST(Addresses, JoinPutsOneSeparatorBetween) {
  EXPECT_EQ(JoinAddress(QStringLiteral("Workspace\\Ctrl1"), QStringLiteral("dir")),
            QStringLiteral("Workspace\\Ctrl1\\dir"));
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
  EXPECT_EQ(NodeKey(QStringLiteral("Workspace\\My Computer\\C:")),
            QStringLiteral("workspace\\my computer\\c:"));
  EXPECT_EQ(NodeKey(QStringLiteral("Workspace\\My Computer\\C:")),
            NodeKey(QStringLiteral("workspace\\MY COMPUTER\\c:")));
}

TEST(Addresses, AListKeyOfDigitsCannotBeTakenForAPosition) {
  EXPECT_EQ(ListKey(QStringLiteral("123")), QStringLiteral("@123"));
  EXPECT_EQ(ListKey(QStringLiteral("ReadMe.TXT")), QStringLiteral("@readme.txt"));
}

TEST(Addresses, ASystemIconIsKeyedByItsDecimalIndex) {
  EXPECT_EQ(SystemIconKey(0), QStringLiteral("iIcon:0"));
  EXPECT_EQ(SystemIconKey(1234), QStringLiteral("iIcon:1234"));
}

}  // namespace
}  // namespace trevane

#include "engine/substitute/ControllerNames.h"

#include <gtest/gtest.h>

namespace trevane {
namespace {

struct CleanCase {
  const char* name;
  QString requested;
  QString cleaned;
};

class CleanName : public testing::TestWithParam<CleanCase> {};

TEST_P(CleanName, KeepsTheCharactersThatAnAddressCanHold) {
  EXPECT_EQ(CleanControllerName(GetParam().requested), GetParam().cleaned);
}

INSTANTIATE_TEST_SUITE_P(
    All, CleanName,
    testing::Values(
        CleanCase{"Plain", QStringLiteral("Robot 1"), QStringLiteral("Robot 1")},
        CleanCase{"Brackets", QStringLiteral("a[b]c"), QStringLiteral("abc")},
        CleanCase{"Separators", QStringLiteral("a/b\\c"), QStringLiteral("abc")},
        CleanCase{"LineEnds", QStringLiteral("a\r\nb"), QStringLiteral("ab")},
        CleanCase{"UnicodeLineEnd", QStringLiteral("a\u2028b\u2029c\u0085d"), QStringLiteral("abcd")},
        CleanCase{"Nul", QStringLiteral("a") + QChar(0) + QStringLiteral("b"), QStringLiteral("ab")},
        CleanCase{"OuterBlanks", QStringLiteral("  a b  "), QStringLiteral("a b")},
        CleanCase{"SemicolonInFront", QStringLiteral(" ; ;a;b"), QStringLiteral("a;b")},
        CleanCase{"OnlyBrackets", QStringLiteral("[]"), {}}, CleanCase{"Dot", QStringLiteral("."), {}},
        CleanCase{"DotsLeftOver", QStringLiteral("[..]"), {}},
        CleanCase{"DriveLike", QStringLiteral("X:"), QStringLiteral("X:")}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(ChooseName, OfAnEmptyRequestIsTheProvidersNameAndANumber) {
  EXPECT_EQ(ChooseControllerName({}, QStringLiteral("IxoProv.LocalFile"), {}), QStringLiteral("LocalFile1"));
  EXPECT_EQ(ChooseControllerName({}, QStringLiteral("IxoProv.LocalFile"), {QStringLiteral("localfile1")}),
            QStringLiteral("LocalFile2"));
}

TEST(ChooseName, ATakenNameGetsANumber) {
  EXPECT_EQ(ChooseControllerName(QStringLiteral("Robot"), QStringLiteral("P"), {QStringLiteral("ROBOT")}),
            QStringLiteral("Robot (2)"));
  EXPECT_EQ(ChooseControllerName(QStringLiteral("Robot"), QStringLiteral("P"),
                                 {QStringLiteral("ROBOT"), QStringLiteral("robot (2)")}),
            QStringLiteral("Robot (3)"));
  EXPECT_EQ(ChooseControllerName(QStringLiteral("cell1"), QStringLiteral("P"), {QStringLiteral("Cell1")}),
            QStringLiteral("cell1 (2)"));
  EXPECT_EQ(ChooseControllerName(QStringLiteral("100%1%2"), QStringLiteral("P"), {QStringLiteral("100%1%2")}),
            QStringLiteral("100%1%2 (2)"));
}

TEST(ChooseName, IsNeverMyComputer) {
  EXPECT_EQ(ChooseControllerName(QStringLiteral("my computer"), QStringLiteral("P"), {}),
            QStringLiteral("my computer (2)"));
  EXPECT_EQ(ChooseControllerName(QStringLiteral("[My Computer]"), QStringLiteral("P"), {}),
            QStringLiteral("My Computer (2)"));
}

TEST(ChooseName, IsMadeUpForAProviderWithoutAUsableName) {
  EXPECT_EQ(ChooseControllerName(QStringLiteral("[]"), QStringLiteral("a.[]"), {}),
            QStringLiteral("Controller1"));
}

}  // namespace
}  // namespace trevane

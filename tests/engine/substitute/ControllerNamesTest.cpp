#include "engine/substitute/ControllerNames.h"

#include <gtest/gtest.h>

namespace trevane {
namespace {

using namespace Qt::StringLiterals;

struct CleanCase {
  const char* name;
  QString requested;
  QString cleaned;
};

class CleanName : public testing::TestWithParam<CleanCase> {};

TEST_P(CleanName, LeavesWhatCanStandInAnAddressAndASectionName) {
  EXPECT_EQ(CleanControllerName(GetParam().requested), GetParam().cleaned);
}

INSTANTIATE_TEST_SUITE_P(All, CleanName,
                         testing::Values(CleanCase{"Plain", u"Robot 1"_s, u"Robot 1"_s},
                                         CleanCase{"Brackets", u"a[b]c"_s, u"abc"_s},
                                         CleanCase{"Separators", u"a/b\\c"_s, u"abc"_s},
                                         CleanCase{"LineEnds", u"a\r\nb"_s, u"ab"_s},
                                         CleanCase{"UnicodeLineEnd", u"a\u2028b\u2029c\u0085d"_s, u"abcd"_s},
                                         CleanCase{"Nul", u"a"_s + QChar(0) + u"b"_s, u"ab"_s},
                                         CleanCase{"OuterBlanks", u"  a b  "_s, u"a b"_s},
                                         CleanCase{"SemicolonInFront", u" ; ;a;b"_s, u"a;b"_s},
                                         CleanCase{"OnlyBrackets", u"[]"_s, {}}, CleanCase{"Dot", u"."_s, {}},
                                         CleanCase{"DotsLeftOver", u"[..]"_s, {}},
                                         CleanCase{"DriveLike", u"X:"_s, u"X:"_s}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(ChooseName, OfAnEmptyRequestIsTheProvidersLastPartAndANumber) {
  EXPECT_EQ(ChooseControllerName({}, u"IxoProv.LocalFile"_s, {}), u"LocalFile1"_s);
  EXPECT_EQ(ChooseControllerName({}, u"IxoProv.LocalFile"_s, {u"localfile1"_s}), u"LocalFile2"_s);
}

TEST(ChooseName, ThatIsTakenInAnyCaseGetsANumber) {
  EXPECT_EQ(ChooseControllerName(u"Robot"_s, u"P"_s, {u"ROBOT"_s}), u"Robot (2)"_s);
  EXPECT_EQ(ChooseControllerName(u"Robot"_s, u"P"_s, {u"ROBOT"_s, u"robot (2)"_s}), u"Robot (3)"_s);
  EXPECT_EQ(ChooseControllerName(u"cell1"_s, u"P"_s, {u"Cell1"_s}), u"cell1 (2)"_s);
  EXPECT_EQ(ChooseControllerName(u"100%1%2"_s, u"P"_s, {u"100%1%2"_s}), u"100%1%2 (2)"_s);
}

TEST(ChooseName, IsNeverMyComputer) {
  EXPECT_EQ(ChooseControllerName(u"my computer"_s, u"P"_s, {}), u"my computer (2)"_s);
  EXPECT_EQ(ChooseControllerName(u"[My Computer]"_s, u"P"_s, {}), u"My Computer (2)"_s);
}

TEST(ChooseName, IsThereForAProviderWithoutAUsableName) {
  EXPECT_EQ(ChooseControllerName(u"[]"_s, u"a.[]"_s, {}), u"Controller1"_s);
}

}  // namespace
}  // namespace trevane

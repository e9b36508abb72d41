#include "app/ParseCommandLine.h"

#include <gtest/gtest.h>

namespace trevane {
namespace {

struct Row {
  const char* name;
  const char16_t* text;
  qint16 count;
  const char16_t* argument;
};

class ParseCommandLineTest : public testing::TestWithParam<Row> {};

TEST_P(ParseCommandLineTest, TakesTheFirstArgument) {
  ArgumentBuffer arguments;
  EXPECT_EQ(ParseCommandLine(QString::fromUtf16(GetParam().text), arguments), GetParam().count);
  EXPECT_EQ(arguments[0], QString::fromUtf16(GetParam().argument));
}

INSTANTIATE_TEST_SUITE_P(
    Rows, ParseCommandLineTest,
    testing::Values(
        Row{"NoText", u"", 0, u""}, Row{"OnlySpacesAndTabs", u" \t  \t", 0, u""},
        Row{"Plain", u"cell.fmg", 1, u"cell.fmg"}, Row{"BlanksAround", u"  cell.fmg \t", 1, u"cell.fmg"},
        Row{"QuotedPathWithSpacesAndAFurtherWord", u"\"C:\\My Cells\\a b.fmg\" further", 1,
            u"C:\\My Cells\\a b.fmg"},
        Row{"PlainKeepsAQuoteInside", u"ce\"ll\".fmg", 1, u"ce\"ll\".fmg"},
        Row{"UnterminatedQuoteRunsToTheEnd", u"\"C:\\a b \t", 1, u"C:\\a b \t"},
        Row{"SecondPlainArgumentIgnored", u"one two", 1, u"one"}, Row{"TabEndsPlain", u"one\ttwo", 1, u"one"},
        Row{"TabKeptInQuotes", u"\"one\ttwo\"", 1, u"one\ttwo"}, Row{"EmptyQuotes", u"\"\"", 1, u""},
        Row{"TextRightBehindTheQuoteIgnored", u"\"a b\"c", 1, u"a b"}, Row{"LoneQuote", u"\"", 1, u""}),
    [](const auto& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace trevane

#include "base/RunTimeError.h"
#include "prompts/ShowFailure.h"
#include "tests/support/ScriptedPrompts.h"

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>

namespace trevane::test {
namespace {

using namespace Qt::StringLiterals;

class RecordingLine final : public ReasonLine {
 public:
  void ShowReason(const QString& line) override { lines += line; }
  QStringList lines;
};

TEST(ShowFailureTest, ItemAndReasonStandBelowTheText) {
  ScriptedPrompts prompts;
  RecordingLine line;
  prompts.ExpectBox(u"It failed."_s);
  ShowFailure(prompts, line, u"It failed."_s, {.item = u"f.txt"_s, .reason = u"denied\r\nby the server"_s});
  const AskedQuestion& asked = prompts.Asked().at(0);
  EXPECT_EQ(asked.informativeText, u"f.txt\ndenied\r\nby the server"_s);
  EXPECT_EQ(asked.icon, PromptIcon::Exclamation);
  EXPECT_EQ(asked.buttons, PromptButtons::Ok);
  EXPECT_EQ(asked.title, QString());
  EXPECT_EQ(line.lines, QStringList{u"denied"_s});
}

TEST(ShowFailureTest, TheLineIsThereBeforeTheBoxIsClosed) {
  ScriptedPrompts prompts;
  RecordingLine line;
  prompts.ExpectBox(u"It failed."_s);
  prompts.onQuestion = [&line](const AskedQuestion&) { EXPECT_EQ(line.lines, QStringList{u"denied"_s}); };
  ShowFailure(prompts, line, u"It failed."_s, {.item = u"f.txt"_s, .reason = u"denied"_s});
}

TEST(ShowFailureTest, AReasonThatIsTheTextIsNotToldTwice) {
  EXPECT_EQ(FailureMessage(u"denied"_s, {.item = u"f.txt"_s, .reason = u"denied"_s}).informativeText,
            u"f.txt"_s);
}

TEST(ShowFailureTest, MissingPartsLeaveNoEmptyLine) {
  EXPECT_EQ(FailureMessage(u"It failed."_s, {.item = {}, .reason = u"denied"_s}).informativeText,
            u"denied"_s);
  EXPECT_EQ(FailureMessage(u"It failed."_s, {.item = u"f"_s, .reason = {}}).informativeText, u"f"_s);
  EXPECT_EQ(FailureMessage(u"It failed."_s, {}).informativeText, QString());
}

TEST(ShowFailureTest, WithoutAReasonTheLineStaysAsItIs) {
  ScriptedPrompts prompts;
  RecordingLine line;
  prompts.ExpectBox();
  ShowFailure(prompts, line, u"It failed."_s, {.item = u"f"_s, .reason = u" \n"_s});
  EXPECT_TRUE(line.lines.isEmpty());
}

TEST(ShowFailureTest, EveryExceptionHasAReasonForPeople) {
  EXPECT_EQ(ReasonOf(RunTimeError(error::kAccessDenied, u"\u00fc denied"_s)), u"\u00fc denied"_s);
  EXPECT_EQ(ReasonOf(std::bad_alloc()), u"There is not enough memory"_s);
  EXPECT_EQ(ReasonOf(std::runtime_error("other")), u"other"_s);
}

}  // namespace
}  // namespace trevane::test

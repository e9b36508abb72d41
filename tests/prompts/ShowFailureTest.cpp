#include "base/RunTimeError.h"
#include "prompts/ShowFailure.h"
#include "tests/support/ScriptedPrompts.h"

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>

namespace trevane::test {
namespace {

class RecordingLine final : public ReasonLine {
 public:
  void ShowReason(const QString& line) override { lines += line; }
  QStringList lines;
};

TEST(ShowFailureTest, ItemAndReasonStandBelowTheText) {
  ScriptedPrompts prompts;
  RecordingLine line;
  prompts.ExpectBox(QStringLiteral("It failed."));
  ShowFailure(prompts, line, QStringLiteral("It failed."),
              {.item = QStringLiteral("f.txt"), .reason = QStringLiteral("denied\r\nby the server")});
  const AskedQuestion& asked = prompts.Asked().at(0);
  EXPECT_EQ(asked.informativeText, QStringLiteral("f.txt\ndenied\r\nby the server"));
  EXPECT_EQ(asked.icon, PromptIcon::Exclamation);
  EXPECT_EQ(asked.buttons, PromptButtons::Ok);
  EXPECT_EQ(asked.title, QString());
  EXPECT_EQ(line.lines, QStringList{QStringLiteral("denied")});
}

TEST(ShowFailureTest, TheLineIsThereBeforeTheBoxIsClosed) {
  ScriptedPrompts prompts;
  RecordingLine line;
  prompts.ExpectBox(QStringLiteral("It failed."));
  prompts.onQuestion = [&line](const AskedQuestion&) {
    EXPECT_EQ(line.lines, QStringList{QStringLiteral("denied")});
  };
  ShowFailure(prompts, line, QStringLiteral("It failed."),
              {.item = QStringLiteral("f.txt"), .reason = QStringLiteral("denied")});
}

TEST(ShowFailureTest, AReasonThatEqualsTheTextIsNotShownTwice) {
  EXPECT_EQ(FailureMessage(QStringLiteral("denied"),
                           {.item = QStringLiteral("f.txt"), .reason = QStringLiteral("denied")})
                .informativeText,
            QStringLiteral("f.txt"));
}

TEST(ShowFailureTest, MissingPartsLeaveNoEmptyLine) {
  EXPECT_EQ(FailureMessage(QStringLiteral("It failed."), {.item = {}, .reason = QStringLiteral("denied")})
                .informativeText,
            QStringLiteral("denied"));
  EXPECT_EQ(FailureMessage(QStringLiteral("It failed."), {.item = QStringLiteral("f"), .reason = {}})
                .informativeText,
            QStringLiteral("f"));
  EXPECT_EQ(FailureMessage(QStringLiteral("It failed."), {}).informativeText, QString());
}

TEST(ShowFailureTest, WithoutAReasonTheLineStaysAsItIs) {
  ScriptedPrompts prompts;
  RecordingLine line;
  prompts.ExpectBox();
  ShowFailure(prompts, line, QStringLiteral("It failed."),
              {.item = QStringLiteral("f"), .reason = QStringLiteral(" \n")});
  EXPECT_TRUE(line.lines.isEmpty());
}

TEST(ShowFailureTest, EveryExceptionHasAReasonForPeople) {
  EXPECT_EQ(ReasonOf(RunTimeError(error::kAccessDenied, QStringLiteral("\u00fc denied"))),
            QStringLiteral("\u00fc denied"));
  EXPECT_EQ(ReasonOf(std::bad_alloc()), QStringLiteral("There is not enough memory"));
  EXPECT_EQ(ReasonOf(std::runtime_error("other")), QStringLiteral("other"));
}

}  // namespace
}  // namespace trevane::test

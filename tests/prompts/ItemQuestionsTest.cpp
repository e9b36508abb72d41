#include "prompts/ItemQuestions.h"
#include "tests/support/ScriptedPrompts.h"

#include <gtest/gtest.h>

namespace trevane {
namespace {

void ExpectFourButtons(const AskedQuestion& asked) {
  EXPECT_EQ(asked.icon, PromptIcon::Information);
  EXPECT_EQ(asked.captions, (QStringList{QStringLiteral("Yes(&Y)"), QStringLiteral("Yes All(&A)"),
                                         QStringLiteral("No(&N)"), QStringLiteral("Cancel")}));
  EXPECT_EQ(asked.defaultButton, 0);
}

TEST(ItemQuestionsTest, OverwriteHasFourButtonsAndClosesAsYesAll) {
  ScriptedPrompts prompts;
  const QString text = QStringLiteral("'a.txt' already existed.\r\nOverwrite?");
  prompts.ExpectChoice(text, 2);
  EXPECT_EQ(AskOverwrite(prompts, QStringLiteral("a.txt")), ItemAnswer::No);
  ExpectFourButtons(prompts.Asked().at(0));
  EXPECT_EQ(prompts.Asked().at(0).title, QStringLiteral("OverWrite"));
  EXPECT_EQ(prompts.Asked().at(0).cancelButton, 1);
  prompts.ExpectChoice(text, 3);
  EXPECT_EQ(AskOverwrite(prompts, QStringLiteral("a.txt"), ItemAnswer::Cancel), ItemAnswer::Cancel);
  EXPECT_EQ(prompts.Asked().at(1).cancelButton, 3);
}

TEST(ItemQuestionsTest, RemoveHasTheSameButtonsAndClosesAsYesAll) {
  ScriptedPrompts prompts;
  prompts.ExpectChoice(QStringLiteral("'a.txt' Do you want to Remove it?"), 1);
  EXPECT_EQ(AskRemove(prompts, QStringLiteral("a.txt")), ItemAnswer::YesAll);
  ExpectFourButtons(prompts.Asked().at(0));
  EXPECT_EQ(prompts.Asked().at(0).title, QStringLiteral("Remove"));
  EXPECT_EQ(prompts.Asked().at(0).cancelButton, 1);
}

TEST(ItemQuestionsTest, WithdrawnQuestionsAreAnsweredWithCancel) {
  ScriptedPrompts prompts;
  prompts.End(UserPrompts::Ending::ByUser);
  EXPECT_EQ(AskOverwrite(prompts, QStringLiteral("a.txt")), ItemAnswer::Cancel);
  EXPECT_EQ(AskRemove(prompts, QStringLiteral("a.txt")), ItemAnswer::Cancel);
  EXPECT_TRUE(prompts.Asked().empty());
}

}  // namespace
}  // namespace trevane

#include "prompts/OverwritePrompt.h"
#include "tests/support/ScriptedPrompts.h"

#include <gtest/gtest.h>

namespace trevane {
namespace {

using namespace Qt::StringLiterals;

TEST(OverwritePromptTest, AsksWithFourButtonsAndClosesAsYesAll) {
  ScriptedPrompts prompts;
  prompts.ExpectChoice(u"'a.txt' already existed.\r\nOverwrite?"_s, 2);
  EXPECT_EQ(AskOverwrite(prompts, u"a.txt"_s), 2);
  const AskedQuestion& asked = prompts.Asked().at(0);
  EXPECT_EQ(asked.title, u"OverWrite"_s);
  EXPECT_EQ(asked.icon, PromptIcon::Information);
  EXPECT_EQ(asked.captions, (QStringList{u"Yes(&Y)"_s, u"Yes All(&A)"_s, u"No(&N)"_s, u"Cancel"_s}));
  EXPECT_EQ(asked.defaultButton, 0);
  EXPECT_EQ(asked.cancelButton, 1);
}

}  // namespace
}  // namespace trevane

#include "prompts/ItemQuestions.h"

namespace trevane {

namespace {

ItemAnswer Ask(UserPrompts& prompts, const QString& prompt, const QString& title, ItemAnswer closingAnswer) {
  ChoiceQuestion question;
  question.prompt = prompt;
  question.title = title;
  question.icon = PromptIcon::Information;
  question.captions = {QStringLiteral("Yes(&Y)"), QStringLiteral("Yes All(&A)"), QStringLiteral("No(&N)"),
                       QStringLiteral("Cancel")};
  question.defaultButton = static_cast<int>(ItemAnswer::Yes);
  question.cancelButton = static_cast<int>(closingAnswer);
  question.harmlessButton = static_cast<int>(ItemAnswer::Cancel);
  const int button = prompts.Choose(question);
  return button >= 0 && button < question.captions.size() ? static_cast<ItemAnswer>(button)
                                                          : ItemAnswer::Cancel;
}

}  // namespace

ItemAnswer AskOverwrite(UserPrompts& prompts, const QString& name, ItemAnswer closingAnswer) {
  return Ask(prompts, u'\'' + name + QStringLiteral("' already existed.\r\nOverwrite?"),
             QStringLiteral("OverWrite"), closingAnswer);
}

ItemAnswer AskRemove(UserPrompts& prompts, const QString& name) {
  return Ask(prompts, u'\'' + name + QStringLiteral("' Do you want to Remove it?"), QStringLiteral("Remove"),
             ItemAnswer::YesAll);
}

}  // namespace trevane

#include "prompts/OverwritePrompt.h"

namespace trevane {

int AskOverwrite(UserPrompts& prompts, const QString& name, int closingAnswer) {
  ChoiceQuestion question;
  question.prompt = u'\'' + name + QStringLiteral("' already existed.\r\nOverwrite?");
  question.title = QStringLiteral("OverWrite");
  question.icon = PromptIcon::Information;
  question.captions = {QStringLiteral("Yes(&Y)"), QStringLiteral("Yes All(&A)"), QStringLiteral("No(&N)"),
                       QStringLiteral("Cancel")};
  question.defaultButton = overwriteanswer::kYes;
  question.cancelButton = closingAnswer;
  question.harmlessButton = overwriteanswer::kCancel;
  return prompts.Choose(question);
}

}  // namespace trevane

#include "tests/support/ScriptedPrompts.h"

#include <gtest/gtest.h>

namespace trevane {

namespace {

bool HasButton(PromptButtons buttons, PromptAnswer answer) {
  switch (buttons) {
    case PromptButtons::Ok:
      return answer == PromptAnswer::Ok;
    case PromptButtons::OkCancel:
      return answer == PromptAnswer::Ok || answer == PromptAnswer::Cancel;
    case PromptButtons::RetryCancel:
      return answer == PromptAnswer::Retry || answer == PromptAnswer::Cancel;
    case PromptButtons::YesNo:
      return answer == PromptAnswer::Yes || answer == PromptAnswer::No;
  }
  return false;
}

std::optional<QString> TextOrAny(const QString& text) {
  return text.isEmpty() ? std::nullopt : std::optional(text);
}

}  // namespace

ScriptedPrompts::~ScriptedPrompts() {
  VerifyAllAsked();
}

void ScriptedPrompts::ExpectBox(PromptAnswer answer) {
  script_.push_back({AskedQuestion::Kind::MessageBox, std::nullopt, static_cast<int>(answer)});
}

void ScriptedPrompts::ExpectBox(const QString& text, PromptAnswer answer) {
  script_.push_back({AskedQuestion::Kind::MessageBox, text, static_cast<int>(answer)});
}

void ScriptedPrompts::ExpectChoice(int answer) {
  script_.push_back({AskedQuestion::Kind::Choice, std::nullopt, answer});
}

void ScriptedPrompts::ExpectChoice(const QString& text, int answer) {
  script_.push_back({AskedQuestion::Kind::Choice, text, answer});
}

void ScriptedPrompts::ExpectSecret(const QString& text, const QString& secret, bool remember) {
  script_.push_back({AskedQuestion::Kind::Secret, TextOrAny(text), 0,
                     SecretAnswer{.secret = Secret(QStringView(secret)), .remember = remember}});
}

void ScriptedPrompts::ExpectCancelledSecret(const QString& text) {
  script_.push_back({AskedQuestion::Kind::Secret, TextOrAny(text), 0});
}

void ScriptedPrompts::AnswerAllChoices(int answer) {
  allChoices_ = answer;
}

void ScriptedPrompts::AnswerAllBoxes(PromptAnswer answer) {
  allBoxes_ = static_cast<int>(answer);
}

QStringList ScriptedPrompts::Texts() const {
  QStringList texts;
  for (const AskedQuestion& question : asked_) {
    texts.append(question.text);
  }
  return texts;
}

void ScriptedPrompts::VerifyAllAsked() {
  for (const Answer& answer : script_) {
    ADD_FAILURE() << "a question was scripted and never asked: "
                  << (answer.text ? answer.text->toStdString() : std::string("(any text)"));
  }
  script_.clear();
  EXPECT_TRUE(files_.empty()) << "a file was scripted and never asked for";
  files_.clear();
}

ScriptedPrompts::Answer ScriptedPrompts::AnswerOf(const AskedQuestion& question,
                                                  const std::optional<int>& afterScript, int unscripted) {
  asked_.push_back(question);
  if (onQuestion) {
    onQuestion(question);
  }
  if (script_.empty()) {
    if (afterScript) {
      return {question.kind, std::nullopt, *afterScript};
    }
    ADD_FAILURE() << "an unexpected question: " << question.text.toStdString();
    return {question.kind, std::nullopt, unscripted};
  }
  const Answer answer = script_.front();
  script_.pop_front();
  if (answer.kind != question.kind || (answer.text && *answer.text != question.text)) {
    ADD_FAILURE() << "the script expects "
                  << (answer.text ? answer.text->toStdString() : std::string("another kind of question"))
                  << " and not: " << question.text.toStdString();
    return {question.kind, std::nullopt, unscripted};
  }
  return answer;
}

PromptAnswer ScriptedPrompts::DoShowMessage(const Message& message) {
  AskedQuestion question;
  question.kind = AskedQuestion::Kind::MessageBox;
  question.text = message.text;
  question.title = message.title;
  question.icon = message.icon;
  question.buttons = message.buttons;
  question.informativeText = message.informativeText;
  question.defaultAnswer = message.defaultAnswer;
  const auto answer = static_cast<PromptAnswer>(
      AnswerOf(question, allBoxes_, static_cast<int>(HarmlessAnswer(message.buttons))).value);
  if (!HasButton(message.buttons, answer)) {
    ADD_FAILURE() << "the scripted answer is no button of: " << message.text.toStdString();
    return HarmlessAnswer(message.buttons);
  }
  return answer;
}

int ScriptedPrompts::DoChoose(const ChoiceQuestion& question) {
  AskedQuestion asked;
  asked.kind = AskedQuestion::Kind::Choice;
  asked.text = question.prompt;
  asked.informativeText = question.informativeText;
  asked.title = question.title;
  asked.icon = question.icon;
  asked.captions = question.captions;
  asked.defaultButton = question.defaultButton;
  asked.cancelButton = question.cancelButton;
  const int answer = AnswerOf(asked, allChoices_, question.cancelButton).value;
  EXPECT_TRUE(answer >= 0 && answer < question.captions.size())
      << "the scripted answer is no button of: " << question.prompt.toStdString();
  return answer;
}

std::optional<SecretAnswer> ScriptedPrompts::DoAskSecret(const SecretQuestion& question) {
  AskedQuestion asked;
  asked.kind = AskedQuestion::Kind::Secret;
  asked.text = question.prompt;
  asked.informativeText = question.informativeText;
  asked.title = question.title;
  asked.isHidden = question.isHidden;
  asked.offersRemember = question.offersRemember;
  asked.whyNotRemember = question.whyNotRemember;
  const std::optional<SecretAnswer> answer = AnswerOf(asked, std::nullopt, 0).secret;
  EXPECT_FALSE(answer && answer->remember && (!asked.offersRemember || !asked.whyNotRemember.isEmpty()))
      << "the box is not there to be checked: " << question.prompt.toStdString();
  return answer;
}

QString ScriptedPrompts::DoChooseFile(const FileQuestion& question) {
  askedFiles_.push_back(question);
  if (files_.empty()) {
    ADD_FAILURE() << "nobody expected a file question: " << question.title.toStdString();
    return {};
  }
  const QString file = files_.front();
  files_.pop_front();
  return file;
}

}  // namespace trevane

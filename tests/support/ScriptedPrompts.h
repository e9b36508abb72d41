#pragma once

#include "prompts/UserPrompts.h"
#include "tests/support/RecordingGauge.h"

#include <deque>
#include <functional>
#include <optional>
#include <vector>

namespace trevane {

/// A question as it reached the user.
struct AskedQuestion {
  enum class Kind { MessageBox, Choice, Secret };
  Kind kind = Kind::MessageBox;
  QString text;
  QString title;
  PromptIcon icon = PromptIcon::None;
  QString informativeText;
  /// Of a message box.
  PromptButtons buttons = PromptButtons::Ok;
  std::optional<PromptAnswer> defaultAnswer;
  /// Of a choice.
  QStringList captions;
  int defaultButton = 0;
  int cancelButton = 0;
  /// Of a secret.
  bool isHidden = true;
  bool offersRemember = false;
  QString whyNotRemember;
};

/// Answers from a script and records each question. A question that the script does not hold, one of another
/// kind or text than in the script, and an answer that nobody asked for (seen when this is destroyed or
/// VerifyAllAsked is called) fail the test.
class ScriptedPrompts : public UserPrompts {
 public:
  ScriptedPrompts() = default;
  ~ScriptedPrompts() override;
  ScriptedPrompts(const ScriptedPrompts&) = delete;
  ScriptedPrompts& operator=(const ScriptedPrompts&) = delete;

  /// The next question is a message box, answered with `answer`; with a text it must have exactly that one.
  void ExpectBox(PromptAnswer answer = PromptAnswer::Ok);
  void ExpectBox(const QString& text, PromptAnswer answer = PromptAnswer::Ok);

  /// The next question is a choice, answered with the button at `answer`.
  void ExpectChoice(int answer);
  void ExpectChoice(const QString& text, int answer);

  /// The next question is for a secret and is answered with `secret`, or cancelled; it must have exactly that
  /// prompt, where `text` is not empty.
  void ExpectSecret(const QString& text, const QString& secret, bool remember = false);
  void ExpectCancelledSecret(const QString& text);

  /// Every choice after the end of the script gets this answer; there may be none.
  void AnswerAllChoices(int answer);
  /// Every message box after the end of the script gets this answer; there may be none.
  void AnswerAllBoxes(PromptAnswer answer);

  /// Called while a question is on the screen, before it is answered.
  std::function<void(const AskedQuestion&)> onQuestion;

  [[nodiscard]] const std::vector<AskedQuestion>& Asked() const noexcept { return asked_; }
  /// The texts alone, in order.
  [[nodiscard]] QStringList Texts() const;
  void ForgetAsked() { asked_.clear(); }

  /// Fails the test for each scripted answer that was not asked for, and drops the script.
  void VerifyAllAsked();

  [[nodiscard]] RecordingGauge& RecordedGauge() noexcept { return gauge_; }

  /// The next file question is answered with this file, or cancelled with an empty one.
  void ExpectFile(const QString& file) { files_.push_back(file); }
  [[nodiscard]] const std::vector<FileQuestion>& AskedFiles() const noexcept { return askedFiles_; }

  [[nodiscard]] ProgressGauge& Gauge() override { return gauge_; }

  /// In order; nobody has to expect a window that asks nothing.
  [[nodiscard]] const std::vector<PropertyTable>& ShownProperties() const noexcept {
    return shownProperties_;
  }
  /// How often the settings window was shown.
  [[nodiscard]] int ShownSettings() const noexcept { return shownSettings_; }
  void UnloadWindows() override { ++unloads_; }
  /// How often the windows were taken away.
  [[nodiscard]] int Unloads() const noexcept { return unloads_; }

  /// For a second start of the program within one test.
  using UserPrompts::ForgetEnding;

 private:
  PromptAnswer DoShowMessage(const Message& message) override;
  [[nodiscard]] int DoChoose(const ChoiceQuestion& question) override;
  /// Answers the files of ExpectFile in their order; one that nobody expected fails the test and is a cancel.
  [[nodiscard]] QString DoChooseFile(const FileQuestion& question) override;
  [[nodiscard]] std::optional<SecretAnswer> DoAskSecret(const SecretQuestion& question) override;
  void DoShowProperties(const PropertyTable& table) override { shownProperties_.push_back(table); }
  void DoShowSettings() override { ++shownSettings_; }
  /// A script's question is shown for no longer than onQuestion takes.
  void CloseQuestions() override {}

  struct Answer {
    AskedQuestion::Kind kind;
    std::optional<QString> text;
    int value = 0;
    std::optional<SecretAnswer> secret = {};
  };

  [[nodiscard]] Answer AnswerOf(const AskedQuestion& question, const std::optional<int>& afterScript,
                                int unscripted);

  std::deque<Answer> script_;
  std::optional<int> allChoices_;
  std::optional<int> allBoxes_;
  std::vector<AskedQuestion> asked_;
  std::deque<QString> files_;
  std::vector<FileQuestion> askedFiles_;
  std::vector<PropertyTable> shownProperties_;
  int shownSettings_ = 0;
  int unloads_ = 0;
  RecordingGauge gauge_;
};

}  // namespace trevane

#pragma once

#include "platform/Secret.h"
#include "prompts/ProgressGauge.h"

#include <QScopedValueRollback>
#include <QString>
#include <QStringList>

#include <optional>

namespace trevane {

enum class PromptIcon { None, Critical, Question, Exclamation, Information };
enum class PromptButtons { Ok, OkCancel, RetryCancel, YesNo };
enum class PromptAnswer { Ok, Cancel, Retry, Yes, No };

/// A system message box.
struct Message {
  QString text;
  PromptIcon icon = PromptIcon::None;
  PromptButtons buttons = PromptButtons::Ok;
  /// Empty is no title.
  QString title = {};
  /// Stands below the text in the system's smaller type: of a failure the item's name and the reason. May be
  /// empty.
  QString informativeText = {};
  /// The button that Enter presses; without one it is the first of the buttons' order (Ok, Retry, Yes).
  std::optional<PromptAnswer> defaultAnswer = {};
  /// Shown also while the program ends, if somebody is there to read it.
  bool isLastWord = false;
};

/// A question with as many answers as it has captions ("&" marks the access key).
struct ChoiceQuestion {
  QString prompt;
  QString title;
  PromptIcon icon = PromptIcon::None;
  QStringList captions;
  /// The button that Enter presses.
  int defaultButton = 0;
  /// The button that Esc and the frame's close box press.
  int cancelButton = 0;
  /// The answer that does nothing, given when the question is withdrawn; the last one where none is named.
  int harmlessButton = -1;
  /// Stands below the prompt in the system's smaller type, and can be selected and copied. May be empty.
  QString informativeText = {};
};

/// A password, passphrase or other answer for a log-on.
struct SecretQuestion {
  /// "Log on to cell 4"
  QString title;
  /// What is asked for: "Password of joe on cell4:22".
  QString prompt;
  /// Stands below the prompt: of a log-on that was refused the reason, of a server its own words. May be
  /// empty.
  QString informativeText = {};
  /// What is typed is not shown.
  bool isHidden = true;
  /// The box "Remember" is offered. Where it cannot be checked, `whyNotRemember` says why.
  bool offersRemember = false;
  QString whyNotRemember = {};
};

struct SecretAnswer {
  Secret secret;
  bool remember = false;
};

/// Which file the user is asked for.
struct FileQuestion {
  enum class Mode { Open, Save };
  Mode mode = Mode::Open;
  /// "Open" or "Save".
  QString title;
  /// Pairs of a name and a pattern, all separated by "|"; the first is selected. A name to save under that
  /// has no extension gets the one of the selected pattern.
  QString filter;
  /// Preset, with or without a folder, which then comes before the initial one; may be empty.
  QString fileName;
  QString initialFolder;
};

/// The content of a properties window: a value for each label, from top to bottom.
struct PropertyTable {
  QStringList labels;
  /// As many as labels; an unknown value is empty.
  QStringList values;
  /// What else is known, a line each, in a text below the grid. May be empty.
  QStringList details = {};
};

/// Every question reaches the user through here.
///
/// A question can be withdrawn while it is shown: its answer is then the one that does nothing (Cancel, No,
/// no file; Ok where there is nothing else), whatever button Esc or Enter would press. Once the program ends
/// no further question reaches the user at all, and each is answered like that at once.
class UserPrompts {
 public:
  /// Somebody closed the window; or the system asked for the end, and nobody may be there.
  enum class Ending { ByUser, BySystem };

  virtual ~UserPrompts() = default;

  PromptAnswer ShowMessage(const Message& message) {
    const bool shown = !ending_ || (message.isLastWord && ending_ == Ending::ByUser);
    return shown ? Ask([&] { return DoShowMessage(message); }, HarmlessAnswer(message.buttons))
                 : HarmlessAnswer(message.buttons);
  }

  /// A system message box of a text alone.
  PromptAnswer MessageBox(const QString& text, PromptIcon icon, PromptButtons buttons = PromptButtons::Ok,
                          const QString& title = {}) {
    return ShowMessage({.text = text, .icon = icon, .buttons = buttons, .title = title});
  }

  /// A question with free captions; the answer is the position of the pressed one, from 0.
  [[nodiscard]] int Choose(const ChoiceQuestion& question) {
    const int harmless = HarmlessAnswer(question);
    return ending_ ? harmless : Ask([&] { return DoChoose(question); }, harmless);
  }

  /// The chosen file, absolute, as the operating system names it; empty when the user cancelled. Saving over
  /// an existing file has been confirmed.
  [[nodiscard]] QString ChooseFile(const FileQuestion& question) {
    return ending_ ? QString() : Ask([&] { return DoChooseFile(question); }, QString());
  }

  /// A secret as it was typed; nothing when the user cancelled.
  [[nodiscard]] std::optional<SecretAnswer> AskSecret(const SecretQuestion& question) {
    return ending_ ? std::nullopt : Ask([&] { return DoAskSecret(question); }, std::optional<SecretAnswer>());
  }

  [[nodiscard]] virtual ProgressGauge& Gauge() = 0;

  /// Shows the one properties window, which stays open while the user works; another table replaces the one
  /// that it shows.
  void ShowProperties(const PropertyTable& table) {
    if (!ending_) {
      DoShowProperties(table);
    }
  }

  /// Shows the settings window and waits until the user has closed it. It changes nothing.
  void ShowSettings() {
    if (!ending_) {
      Ask(
          [&] {
            DoShowSettings();
            return true;
          },
          true);
    }
  }

  /// Closes the settings and the properties window, in this order. Where there is none this is no error.
  virtual void UnloadWindows() = 0;

  /// From now on, and for good, nobody is asked. Questions on the screen are withdrawn. A second call only
  /// counts when it is the system's.
  void End(Ending how) {
    if (!ending_ || how == Ending::BySystem) {
      ending_ = how;
    }
    WithdrawQuestions();
  }
  /// No operation is to begin any more.
  [[nodiscard]] bool IsEnding() const noexcept { return ending_.has_value(); }
  /// Every operation polls this once an entry: the program ends, or the gauge's Cancel was pressed.
  [[nodiscard]] bool IsCancelled() { return IsEnding() || Gauge().IsClickedCancel(); }
  /// A question is on the screen, and its caller on the stack.
  [[nodiscard]] bool IsAsking() const noexcept { return standing_ > 0; }

  /// Withdraws every question on the screen.
  void WithdrawQuestions() {
    ++withdrawals_;
    CloseQuestions();
  }

 protected:
  virtual PromptAnswer DoShowMessage(const Message& message) = 0;
  [[nodiscard]] virtual int DoChoose(const ChoiceQuestion& question) = 0;
  [[nodiscard]] virtual QString DoChooseFile(const FileQuestion& question) = 0;
  [[nodiscard]] virtual std::optional<SecretAnswer> DoAskSecret(const SecretQuestion& question) = 0;
  virtual void DoShowProperties(const PropertyTable& table) = 0;
  virtual void DoShowSettings() = 0;
  /// Closes every window that waits for an answer; those answers are not heard.
  virtual void CloseQuestions() = 0;

  [[nodiscard]] static PromptAnswer HarmlessAnswer(PromptButtons buttons) {
    switch (buttons) {
      case PromptButtons::OkCancel:
      case PromptButtons::RetryCancel:
        return PromptAnswer::Cancel;
      case PromptButtons::YesNo:
        return PromptAnswer::No;
      case PromptButtons::Ok:
        break;
    }
    return PromptAnswer::Ok;
  }
  [[nodiscard]] static int HarmlessAnswer(const ChoiceQuestion& question) {
    return question.harmlessButton >= 0 ? question.harmlessButton : int(question.captions.size()) - 1;
  }

  /// As if the program had just begun.
  void ForgetEnding() noexcept { ending_.reset(); }

 private:
  template <class Question, class Answer>
  Answer Ask(const Question& question, const Answer& harmless) {
    const int before = withdrawals_;
    const QScopedValueRollback<int> standing(standing_, standing_ + 1);
    const Answer answer = question();
    return withdrawals_ == before ? answer : harmless;
  }

  std::optional<Ending> ending_;
  int standing_ = 0;
  int withdrawals_ = 0;
};

}  // namespace trevane

#pragma once

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
  /// The gauge, where one is shown, can be used beside the box, and its Cancel closes the box like Esc.
  bool endsWithGauge = false;
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
};

/// The progress gauge of a long operation. It does no work itself: the operation advances it and polls
/// IsClickedCancel once an entry, after it has let window events run.
class ProgressGauge {
 public:
  virtual ~ProgressGauge() = default;

  /// Loads a fresh gauge where there is none, and shows it.
  virtual void ShowGage(const QString& caption) = 0;
  virtual void GageClear() = 0;
  /// The bar's maximum becomes n + 1, so that a bar advanced once an entry never reaches its end.
  virtual void SetGageMax(qint32 n) = 0;
  [[nodiscard]] virtual qint32 GageMax() const = 0;
  [[nodiscard]] virtual qint32 GageValue() const = 0;
  /// Advances by one, only while the gauge is visible; an empty label keeps the one that is shown.
  virtual void IncrementGageValue(const QString& label) = 0;
  virtual void SetGageLabel(const QString& label) = 0;
  [[nodiscard]] virtual QString GageLabel() const = 0;
  virtual void CancelEnable(bool enabled) = 0;
  virtual void SetCancelVisible(bool visible) = 0;
  virtual void SetGageBarVisible(bool visible) = 0;
  virtual void GageFormInit() = 0;
  [[nodiscard]] virtual bool IsClickedCancel() const = 0;
  virtual void WaitGage(qint32 milliseconds) = 0;
  /// Closes the gauge; the next ShowGage loads a fresh one. No gauge is no error.
  virtual void UnloadGage() = 0;
};

/// Which file the user is asked for.
struct FileQuestion {
  enum class Mode { Open, Save };
  Mode mode = Mode::Open;
  /// "Open" or "Save".
  QString title;
  /// Pairs of a name and a pattern, all separated by "|"; the first is selected.
  QString filter;
  /// Preset; may be empty.
  QString fileName;
  QString initialFolder;
};

/// What a properties window shows: a value for each label, from top to bottom.
struct PropertyTable {
  QStringList labels;
  /// As many as labels; an unknown value is empty.
  QStringList values;
};

/// Every question reaches the user through here.
class UserPrompts {
 public:
  virtual ~UserPrompts() = default;

  virtual PromptAnswer ShowMessage(const Message& message) = 0;

  /// A system message box of a text alone.
  PromptAnswer MessageBox(const QString& text, PromptIcon icon, PromptButtons buttons = PromptButtons::Ok,
                          const QString& title = {}) {
    return ShowMessage({.text = text, .icon = icon, .buttons = buttons, .title = title});
  }

  /// A question with free captions; the answer is the position of the pressed one, from 0.
  [[nodiscard]] virtual int Choose(const ChoiceQuestion& question) = 0;

  /// The chosen file, absolute, as the operating system names it; empty when the user cancelled. Saving over
  /// an existing file has been confirmed.
  [[nodiscard]] virtual QString ChooseFile(const FileQuestion& question) = 0;

  [[nodiscard]] virtual ProgressGauge& Gauge() = 0;

  /// Shows the one properties window, which stays while the user goes on; another table replaces the one that
  /// it shows.
  virtual void ShowProperties(const PropertyTable& table) = 0;

  /// Shows the settings window and waits until the user has closed it. It changes nothing.
  virtual void ShowSettings() = 0;

  /// Closes the settings and the properties window, in this order. Where there is none this is no error.
  virtual void UnloadWindows() = 0;
};

}  // namespace trevane

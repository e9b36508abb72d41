#pragma once

#include "prompts/UserPrompts.h"

#include <QString>

#include <exception>

namespace trevane {

/// The details of a failure, shown below the fixed text of its message box.
struct Failure {
  /// The name of what failed, as the user knows it. May be empty.
  QString item;
  /// The reason, in the words of the engine. May be empty.
  QString reason;
};

/// The line of the main window in which the reason of a failure stays when its box has been closed.
class ReasonLine {
 public:
  virtual ~ReasonLine() = default;

  /// Nothing that the operation shows there by custom when it ends replaces the line.
  virtual void ShowReason(const QString& line) = 0;
};

/// The text of an exception, for people.
[[nodiscard]] QString ReasonOf(const std::exception& failure);
/// The same of an error's number and its text.
[[nodiscard]] QString ReasonOf(qint32 number, const QString& text);

/// The message box of a failure: the item and, below it, the reason as informative text, each where there is
/// one. A reason that equals the text is not shown twice.
[[nodiscard]] Message FailureMessage(const QString& text, const Failure& failure,
                                     PromptIcon icon = PromptIcon::Exclamation);

/// Shows that box with an OK button, and the reason's first line in the main window.
void ShowFailure(UserPrompts& prompts, ReasonLine& line, const QString& text, const Failure& failure);

}  // namespace trevane

#pragma once

#include "prompts/UserPrompts.h"

#include <QString>

namespace trevane {

/// Answers of the overwrite question, by the position of the button.
namespace overwriteanswer {
inline constexpr int kYes = 0;
/// Replace this and, within a folder that is copied between controllers, all further items without asking.
inline constexpr int kYesAll = 1;
inline constexpr int kNo = 2;
inline constexpr int kCancel = 3;
}  // namespace overwriteanswer

/// Asks whether the item `name` may be replaced. Closing the box and Esc give `closingAnswer`.
[[nodiscard]] int AskOverwrite(UserPrompts& prompts, const QString& name,
                               int closingAnswer = overwriteanswer::kYesAll);

}  // namespace trevane

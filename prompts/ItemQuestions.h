#pragma once

#include "prompts/UserPrompts.h"

#include <QString>

namespace trevane {

/// The answers of the questions about one item of several, in the order of their buttons.
enum class ItemAnswer {
  Yes,
  /// This and all further items, without asking.
  YesAll,
  No,
  Cancel
};

/// Asks whether the item `name` may be replaced. Closing the box and Esc give `closingAnswer`; a withdrawn
/// question is answered with Cancel.
[[nodiscard]] ItemAnswer AskOverwrite(UserPrompts& prompts, const QString& name,
                                      ItemAnswer closingAnswer = ItemAnswer::YesAll);

/// Asks whether the item `name` may be deleted. Closing the box and Esc give YesAll; a withdrawn question is
/// answered with Cancel.
[[nodiscard]] ItemAnswer AskRemove(UserPrompts& prompts, const QString& name);

}  // namespace trevane

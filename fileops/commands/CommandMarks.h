#pragma once

#include "fileops/commands/CommandId.h"

namespace trevane {

/// The check marks of menu items and the pressed buttons of toolbars. The window implements it.
class CommandMarks {
 public:
  virtual ~CommandMarks() = default;

  [[nodiscard]] virtual bool IsChecked(CommandId id) const = 0;
  virtual void SetChecked(CommandId id, bool checked) = 0;
};

}  // namespace trevane

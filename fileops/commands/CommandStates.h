#pragma once

#include "fileops/commands/Commands.h"

#include <QtGlobal>

#include <optional>

namespace trevane {

/// What the enabled states depend on.
struct CommandContext {
  /// The tag of the entry in question.
  qint32 tag = 0;
  /// True when the entry itself was pointed at, false when the place it stands in is meant.
  bool entry = false;
  /// How many entries the clipboard set holds.
  int clipboardCount = 0;
  int selectedListItems = 0;
};

/// Whether the row at a place is enabled; nothing for a row that the entry in question does not decide.
[[nodiscard]] std::optional<bool> EnabledByEntry(Place place, int index, const CommandContext& context);

}  // namespace trevane

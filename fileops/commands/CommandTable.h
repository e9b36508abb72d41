#pragma once

#include "fileops/commands/Commands.h"

#include <QString>

#include <span>

namespace trevane {

enum class RowStyle {
  Command,
  Separator,
  /// A command that stays down or carries a check mark.
  Check,
  /// Opens the rows of the place `submenu`.
  Submenu,
  /// Room for a box that the window puts there.
  Placeholder,
};

/// One place of a command in a menu, toolbar or pop-up.
struct CommandRow {
  Place place;
  /// Position from 1 in a toolbar, index from 0 in a menu.
  int index;
  RowStyle style = RowStyle::Separator;
  Command command = Command::None;
  /// With "&" before the access key.
  const char* caption = "";
  /// A key sequence in portable text.
  const char* keys = "";
  const char* toolTip = "";
  /// The picture at start, and for a check row the one while it is down.
  const char* imageKey = "";
  const char* checkedImageKey = "";
  Place submenu = Place::File;
  bool checkedAtStart = false;
  /// Stays disabled until something else enables it.
  bool disabledAtStart = false;
  /// The row's name in a toolbar.
  const char* key = "";

  [[nodiscard]] QString Caption() const { return QString::fromLatin1(caption); }
  /// The caption as a screen reader says it: without "&".
  [[nodiscard]] QString SpokenCaption() const { return Caption().remove(u'&'); }
};

/// All rows of a place, in order.
[[nodiscard]] std::span<const CommandRow> RowsOf(Place place);

/// The row at a place and index; null when there is none.
[[nodiscard]] const CommandRow* FindRow(Place place, int index);

}  // namespace trevane

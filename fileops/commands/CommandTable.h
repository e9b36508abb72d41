#pragma once

#include "fileops/commands/CommandId.h"
#include "fileops/commands/CommandPlace.h"
#include "fileops/commands/EnabledColumn.h"

#include <QString>

#include <span>
#include <vector>

namespace trevane {

struct Command;
struct CommandTargets;

enum class ItemStyle {
  Command,
  Separator,
  /// Opens the menu `submenu`.
  Submenu,
  /// Room in a toolbar for a box of the window.
  Box,
};

/// One item of a menu, toolbar or pop-up menu.
struct CommandItem {
  CommandPlace place = CommandPlace::MainToolbar;
  /// From 1 in a toolbar, from 0 in a menu.
  int position = 0;
  ItemStyle style = ItemStyle::Separator;
  /// With "&" before the access key.
  const char* caption = "";
  /// A key sequence in portable text.
  const char* keys = "";
  const char* toolTip = "";
  const char* image = "";
  /// The picture while a button that can be pressed is down.
  const char* pressedImage = "";
  /// The name of a toolbar's item.
  const char* key = "";
  EnabledColumn enabled = {};
  bool enabledAtStart = true;
  CommandPlace submenu = CommandPlace::MainToolbar;
  /// Null unless the style is Command.
  const Command* command = nullptr;

  [[nodiscard]] QString Caption() const { return QString::fromLatin1(caption); }
  /// The caption without "&", for screen readers.
  [[nodiscard]] QString SpokenCaption() const { return Caption().remove(u'&'); }
};

/// When a command may be executed.
enum class CommandKind {
  /// At any time, except while a controller is waited for and while a folder is being displayed.
  Immediate,
  /// Alone: not while another operation runs or a folder is being displayed.
  Operation,
  /// As Operation; while its result is being displayed, an item of the list can be opened.
  Connection,
};

[[nodiscard]] constexpr bool RunsAlone(CommandKind kind) noexcept {
  return kind != CommandKind::Immediate;
}

enum class CheckMark { None, Unchecked, Checked };

/// One row of the command table.
struct Command {
  CommandId id;
  CommandKind kind;
  void (*handler)(const CommandTargets& targets);
  std::vector<CommandItem> places;
  /// Whether the command's items can be checked, and are at the start.
  CheckMark checkMark = CheckMark::None;
};

enum class BarKind { Toolbar, Menu, Popup, Submenu };

/// A menu, toolbar or pop-up menu as a whole.
struct CommandBar {
  CommandPlace place;
  BarKind kind;
  /// The object name of the menu or toolbar; empty for a submenu.
  const char* name;
  /// The object names of its items begin with this; the position follows.
  const char* itemName;
  /// Empty for a toolbar and for a submenu.
  const char* title;
};

/// All commands, a row each.
[[nodiscard]] std::span<const Command> AllCommands();
[[nodiscard]] const Command& FindCommand(CommandId id);

[[nodiscard]] std::span<const CommandBar> AllCommandBars();
[[nodiscard]] const CommandBar& FindCommandBar(CommandPlace place);

/// All items of a place, by position.
[[nodiscard]] std::vector<const CommandItem*> ItemsOf(CommandPlace place);
/// The command's item at a place; null when it has none there.
[[nodiscard]] const CommandItem* FindItem(CommandPlace place, CommandId id);

}  // namespace trevane

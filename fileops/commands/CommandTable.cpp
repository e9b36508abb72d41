#include "fileops/commands/CommandTable.h"

#include "fileops/ConnectCommands.h"
#include "fileops/FileCommands.h"
#include "fileops/ViewCommands.h"
#include "fileops/commands/CommandMarks.h"
#include "fileops/commands/CommandTargets.h"
#include "fileops/commands/WindowCommands.h"

#include <QtGlobal>

#include <algorithm>
#include <array>

namespace trevane {

namespace {

using To = const CommandTargets&;
using enum CommandPlace;
using enum CommandKind;

// The columns of a rule are workspace, My Computer, drive, controller, file or folder.
constexpr auto Off = EnabledCell::Off;
constexpr auto On = EnabledCell::On;
constexpr auto P = EnabledCell::Paste;
constexpr auto E = EnabledCell::OnForEntry;
constexpr auto N = EnabledCell::OffForEntry;
constexpr auto U = EnabledCell::WithParent;

CommandItem Button(CommandPlace place, int position, const char* key, const char* image, const char* caption,
                   const char* toolTip, const EnabledColumn& enabled = {}) {
  return {.place = place,
          .position = position,
          .style = ItemStyle::Command,
          .caption = caption,
          .toolTip = toolTip,
          .image = image,
          .key = key,
          .enabled = enabled};
}

CommandItem PressButton(int position, const char* key, const char* image, const char* pressedImage,
                        const char* caption, const char* toolTip) {
  CommandItem item = Button(MainToolbar, position, key, image, caption, toolTip);
  item.pressedImage = pressedImage;
  return item;
}

CommandItem Item(CommandPlace place, int position, const char* caption, const char* keys = "",
                 const EnabledColumn& enabled = {}) {
  return {.place = place,
          .position = position,
          .style = ItemStyle::Command,
          .caption = caption,
          .keys = keys,
          .enabled = enabled};
}

CommandItem Disabled(CommandItem item) {
  item.enabledAtStart = false;
  return item;
}

template <CommandId id, FileColumn column>
void ShowColumn(To to) {
  to.views->ToggleColumn(column);
  to.marks->SetChecked(id, to.views->IsColumnVisible(column));
}

const std::array kCommands = std::to_array<Command>({
    {CommandId::OpenWorkspace,
     Connection,
     [](To to) { to.window->OpenWorkspace(); },
     {Button(MainToolbar, 2, "OPEN", "FILEOPEN", "&Open...", "Open File", {On, On, On, On, On}),
      Item(FileMenu, 0, "&Open...")}},
    {CommandId::SaveWorkspace,
     Connection,
     [](To to) { to.window->SaveWorkspace(); },
     {Button(MainToolbar, 3, "SAVE", "FILESAVE", "&Save", "Save File", {On, On, On, On, On}),
      Item(FileMenu, 1, "&Save")}},
    {CommandId::SaveWorkspaceAs,
     Connection,
     [](To to) { to.window->SaveWorkspaceAs(); },
     {Item(FileMenu, 2, "Save &As...")}},
    {CommandId::Connect,
     Connection,
     [](To to) { to.connections->Connect(); },
     {Button(MainToolbar, 12, "CONNECT", "CONNECT", "C&onnect", "Connect IxoController",
             {On, On, On, On, On}),
      Item(FileMenu, 4, "&Connect...."), Item(WorkspacePopup, 0, "&Add Controller..."),
      Item(ActionMenu, 0, "&Connect...")}},
    {CommandId::Disconnect,
     Connection,
     [](To to) { to.connections->Disconnect(); },
     {Button(MainToolbar, 13, "DISCONNECT", "DISCONNECT", "D&isconnect", "Disconnect IxoController",
             {Off, Off, Off, On, Off}),
      Item(FileMenu, 5, "&Disconnect"), Item(ActionMenu, 1, "&Disconnect")}},
    {CommandId::DisconnectAll,
     Connection,
     [](To to) { to.connections->DisconnectAll(); },
     {Item(FileMenu, 6, "D&isconnect All")}},
    {CommandId::Close, Immediate, [](To to) { to.window->Close(); }, {Item(FileMenu, 8, "C&lose")}},

    {CommandId::Cut,
     Operation,
     [](To to) { to.files->Cut(); },
     {Button(MainToolbar, 8, "CUT", "CUT", "C&ut", "Cut", {Off, Off, Off, Off, On}),
      Item(EditMenu, 0, "Cu&t", "Ctrl+X", {Off, Off, Off, Off, On}),
      Item(EntryPopup, 4, "Cu&t", "", {Off, Off, Off, Off, E})}},
    {CommandId::Copy,
     Operation,
     [](To to) { to.files->Copy(); },
     {Button(MainToolbar, 7, "COPY", "COPY", "&Copy", "Copy", {Off, Off, Off, Off, On}),
      Item(EditMenu, 1, "&Copy", "Ctrl+C", {Off, Off, Off, Off, On}),
      Item(EntryPopup, 5, "&Copy", "", {Off, Off, Off, Off, E})}},
    {CommandId::Paste,
     Operation,
     [](To to) { to.files->Paste(); },
     {Button(MainToolbar, 9, "PASTE", "PASTE", "P&aste", "Paste", {Off, Off, P, P, P}),
      Item(EditMenu, 2, "&Paste", "Ctrl+V", {Off, Off, P, P, P}),
      Item(EntryPopup, 6, "&Paste", "", {Off, Off, P, P, P})}},
    {CommandId::Delete,
     Operation,
     [](To to) { to.files->Delete(); },
     {Button(MainToolbar, 10, "DELETE", "DELETE", "&Delete", "Delete", {Off, Off, Off, Off, On}),
      Item(EditMenu, 4, "&Delete", "Del", {Off, Off, Off, Off, On}),
      Item(EntryPopup, 8, "&Delete", "", {Off, Off, Off, Off, E})}},
    {CommandId::SelectAll,
     Immediate,
     [](To to) { to.views->SelectAll(); },
     {Item(EditMenu, 6, "Select &All", "Ctrl+A", {On, On, On, On, On})}},

    {CommandId::NameColumn,
     Immediate,
     ShowColumn<CommandId::NameColumn, FileColumn::Name>,
     {Disabled(Item(ColumnsMenu, 0, "&Name"))},
     CheckMark::Checked},
    {CommandId::SizeColumn,
     Immediate,
     ShowColumn<CommandId::SizeColumn, FileColumn::Size>,
     {Item(ColumnsMenu, 1, "&Size")},
     CheckMark::Checked},
    {CommandId::TypeColumn,
     Immediate,
     ShowColumn<CommandId::TypeColumn, FileColumn::Type>,
     {Item(ColumnsMenu, 2, "&Type")},
     CheckMark::Checked},
    {CommandId::ModifiedColumn,
     Immediate,
     ShowColumn<CommandId::ModifiedColumn, FileColumn::Modified>,
     {Item(ColumnsMenu, 3, "&Modified")},
     CheckMark::Checked},
    {CommandId::AccessedColumn,
     Immediate,
     ShowColumn<CommandId::AccessedColumn, FileColumn::Accessed>,
     {Item(ColumnsMenu, 4, "&Accessed")},
     CheckMark::Checked},
    {CommandId::CreatedColumn,
     Immediate,
     ShowColumn<CommandId::CreatedColumn, FileColumn::Created>,
     {Item(ColumnsMenu, 5, "&Created")},
     CheckMark::Checked},
    {CommandId::AttributesColumn,
     Immediate,
     ShowColumn<CommandId::AttributesColumn, FileColumn::Attributes>,
     {Item(ColumnsMenu, 6, "Att&ributes")},
     CheckMark::Checked},
    {CommandId::Parent,
     Immediate,
     [](To to) { to.views->GoToParent(); },
     {Button(MainToolbar, 5, "PARENT", "UPDIR", "&Parent", "Move To Parent", {Off, N, On, On, On}),
      Item(ViewMenu, 2, "&Parent", "", {U, U, U, U, U})}},
    {CommandId::Refresh,
     Immediate,
     [](To to) { to.views->Refresh(); },
     {Item(ViewMenu, 3, "&Refresh", "F5")}},

    {CommandId::Option,
     Immediate,
     [](To to) { to.window->ShowSettings(); },
     {Disabled(Item(ToolMenu, 0, "&Option..."))}},
    {CommandId::Version,
     Immediate,
     [](To to) { to.window->ShowVersion(); },
     {Item(HelpMenu, 0, "&Version...")}},

    {CommandId::MoveHere, Operation, [](To to) { to.files->MoveHere(); }, {Item(DragPopup, 0, "&Move Here")}},
    // Fills the clipboard set anew from the selection, like Copy; nothing is transferred.
    {CommandId::CopyHere, Operation, [](To to) { to.files->Copy(); }, {Item(DragPopup, 1, "&Copy Here")}},

    {CommandId::Run,
     Operation,
     [](To to) { to.files->Run(); },
     {Item(EntryPopup, 2, "&Run", "", {Off, Off, On, E, E})}},
    {CommandId::Rename,
     Operation,
     [](To to) { to.files->Rename(); },
     {Item(EntryPopup, 10, "Rena&me", "", {Off, Off, Off, Off, E})}},
    {CommandId::NewFolder, Operation, [](To to) { to.files->MakeFolder(); }, {Item(NewMenu, 0, "&Folder")}},
    {CommandId::Properties,
     Immediate,
     [](To to) { to.window->ShowProperties(); },
     {Item(EntryPopup, 13, "P&roperties...", "", {Off, E, E, E, E})}},

    {CommandId::GoToAddress,
     Immediate,
     [](To to) { to.views->GoToAddress(); },
     {Button(AddressToolbar, 2, "GO", "GO", "&Go", "Go To Address")}},
    {CommandId::FilterOnOff,
     Immediate,
     [](To to) { to.views->SwitchFilter(to.marks->IsChecked(CommandId::FilterOnOff)); },
     {PressButton(16, "FILTER", "NOFILTER", "FILTER", "&Filter", "Filter On/Off")},
     CheckMark::Unchecked},
    {CommandId::FilterType,
     Immediate,
     [](To to) { to.views->SwitchFilterType(to.marks->IsChecked(CommandId::FilterType)); },
     {PressButton(17, "FILTERTYPE", "INCLUDE", "EXCLUDE", "Filter &Type", "Filter Type")},
     CheckMark::Unchecked},
});

constexpr CommandItem Separator(CommandPlace place, int position) {
  return {.place = place, .position = position};
}

constexpr CommandItem Box(CommandPlace place, int position, const char* key) {
  return {.place = place, .position = position, .style = ItemStyle::Box, .key = key};
}

constexpr CommandItem Submenu(CommandPlace place, int position, const char* caption, CommandPlace submenu,
                              const EnabledColumn& enabled = {}) {
  return {.place = place,
          .position = position,
          .style = ItemStyle::Submenu,
          .caption = caption,
          .enabled = enabled,
          .submenu = submenu};
}

constexpr auto kOtherItems = std::to_array<CommandItem>({
    Separator(MainToolbar, 1),
    Separator(MainToolbar, 4),
    Separator(MainToolbar, 6),
    Separator(MainToolbar, 11),
    Separator(MainToolbar, 14),
    Box(MainToolbar, 15, "FILTERCMB"),
    Box(AddressToolbar, 1, "ADDRESSCMB"),
    Separator(FileMenu, 3),
    Separator(FileMenu, 7),
    Separator(EditMenu, 3),
    Separator(EditMenu, 5),
    Submenu(ViewMenu, 0, "&Columns", ColumnsMenu),
    Separator(ViewMenu, 1),
    Submenu(EntryPopup, 0, "&Action", ActionMenu),
    Separator(EntryPopup, 1),
    Separator(EntryPopup, 3),
    Separator(EntryPopup, 7),
    Separator(EntryPopup, 9),
    Submenu(EntryPopup, 11, "&New", NewMenu, {Off, Off, On, On, On}),
    Separator(EntryPopup, 12),
});

constexpr auto kBars = std::to_array<CommandBar>({
    {MainToolbar, BarKind::Toolbar, "tlbarMain", "", ""},
    {AddressToolbar, BarKind::Toolbar, "tlbarAddress", "", ""},
    {FileMenu, BarKind::Menu, "mnuFile", "mnuFileItem", "&File"},
    {EditMenu, BarKind::Menu, "mnuEdit", "mnuEditItem", "&Edit"},
    {ViewMenu, BarKind::Menu, "mnuView", "mnuViewItem", "&View"},
    {ToolMenu, BarKind::Menu, "mnuTool", "mnuToolItem", "&Tool"},
    {HelpMenu, BarKind::Menu, "mnuHelp", "mnuHelpItem", "&Help"},
    {WorkspacePopup, BarKind::Popup, "mnuWSPop", "mnuWSPopAddCon", "WSPopup"},
    {DragPopup, BarKind::Popup, "mnuRPopup", "mnuRPopupItem", "RightPopup"},
    {EntryPopup, BarKind::Popup, "mnuPopup", "mnuPopupItem", "Popup"},
    {ColumnsMenu, BarKind::Submenu, "", "mnuViewColumnItem", ""},
    {ActionMenu, BarKind::Submenu, "", "mnuActionItem", ""},
    {NewMenu, BarKind::Submenu, "", "mnuNewItem", ""},
});

/// The items of all places, each command's with the command.
std::vector<CommandItem> MakeItems() {
  std::vector<CommandItem> items(kOtherItems.begin(), kOtherItems.end());
  for (const Command& command : kCommands) {
    for (CommandItem item : command.places) {
      item.command = &command;
      items.push_back(item);
    }
  }
  std::ranges::stable_sort(items, {}, &CommandItem::position);
  return items;
}

const std::vector<CommandItem>& AllItems() {
  static const std::vector<CommandItem> items = MakeItems();
  return items;
}

}  // namespace

std::span<const Command> AllCommands() {
  return kCommands;
}

const Command& FindCommand(CommandId id) {
  const auto command = std::ranges::find(kCommands, id, &Command::id);
  Q_ASSERT(command != kCommands.end());
  return *command;
}

std::span<const CommandBar> AllCommandBars() {
  return kBars;
}

const CommandBar& FindCommandBar(CommandPlace place) {
  const auto bar = std::ranges::find(kBars, place, &CommandBar::place);
  Q_ASSERT(bar != kBars.end());
  return *bar;
}

std::vector<const CommandItem*> ItemsOf(CommandPlace place) {
  std::vector<const CommandItem*> items;
  for (const CommandItem& item : AllItems()) {
    if (item.place == place) {
      items.push_back(&item);
    }
  }
  return items;
}

const CommandItem* FindItem(CommandPlace place, CommandId id) {
  const auto item = std::ranges::find_if(AllItems(), [&](const CommandItem& candidate) {
    return candidate.place == place && candidate.command && candidate.command->id == id;
  });
  return item != AllItems().end() ? &*item : nullptr;
}

}  // namespace trevane

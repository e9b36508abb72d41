#include "fileops/commands/CommandTable.h"

#include <algorithm>
#include <array>

namespace trevane {

namespace {

constexpr CommandRow Separator(Place place, int index) {
  return {.place = place, .index = index};
}

constexpr auto kToolbar = std::to_array<CommandRow>({
    Separator(Place::Toolbar, 1),
    {.place = Place::Toolbar,
     .index = 2,
     .style = RowStyle::Command,
     .command = Command::OpenWorkspace,
     .caption = "&Open...",
     .toolTip = "Open File",
     .imageKey = "FILEOPEN",
     .key = "OPEN"},
    {.place = Place::Toolbar,
     .index = 3,
     .style = RowStyle::Command,
     .command = Command::SaveWorkspace,
     .caption = "&Save",
     .toolTip = "Save File",
     .imageKey = "FILESAVE",
     .key = "SAVE"},
    Separator(Place::Toolbar, 4),
    {.place = Place::Toolbar,
     .index = 5,
     .style = RowStyle::Command,
     .command = Command::Parent,
     .caption = "&Parent",
     .toolTip = "Move To Parent",
     .imageKey = "UPDIR",
     .key = "PARENT"},
    Separator(Place::Toolbar, 6),
    {.place = Place::Toolbar,
     .index = 7,
     .style = RowStyle::Command,
     .command = Command::Copy,
     .caption = "&Copy",
     .toolTip = "Copy",
     .imageKey = "COPY",
     .key = "COPY"},
    {.place = Place::Toolbar,
     .index = 8,
     .style = RowStyle::Command,
     .command = Command::Cut,
     .caption = "C&ut",
     .toolTip = "Cut",
     .imageKey = "CUT",
     .key = "CUT"},
    {.place = Place::Toolbar,
     .index = 9,
     .style = RowStyle::Command,
     .command = Command::Paste,
     .caption = "P&aste",
     .toolTip = "Paste",
     .imageKey = "PASTE",
     .key = "PASTE"},
    {.place = Place::Toolbar,
     .index = 10,
     .style = RowStyle::Command,
     .command = Command::Delete,
     .caption = "&Delete",
     .toolTip = "Delete",
     .imageKey = "DELETE",
     .key = "DELETE"},
    Separator(Place::Toolbar, 11),
    {.place = Place::Toolbar,
     .index = 12,
     .style = RowStyle::Command,
     .command = Command::Connect,
     .caption = "C&onnect",
     .toolTip = "Connect IxoController",
     .imageKey = "CONNECT",
     .key = "CONNECT"},
    {.place = Place::Toolbar,
     .index = 13,
     .style = RowStyle::Command,
     .command = Command::Disconnect,
     .caption = "D&isconnect",
     .toolTip = "Disconnect IxoController",
     .imageKey = "DISCONNECT",
     .key = "DISCONNECT"},
    Separator(Place::Toolbar, 14),
    {.place = Place::Toolbar, .index = 15, .style = RowStyle::Placeholder, .key = "FILTERCMB"},
    {.place = Place::Toolbar,
     .index = 16,
     .style = RowStyle::Check,
     .command = Command::FilterOnOff,
     .caption = "&Filter",
     .toolTip = "Filter On/Off",
     .imageKey = "NOFILTER",
     .checkedImageKey = "FILTER",
     .key = "FILTER"},
    {.place = Place::Toolbar,
     .index = 17,
     .style = RowStyle::Check,
     .command = Command::FilterType,
     .caption = "Filter &Type",
     .toolTip = "Filter Type",
     .imageKey = "INCLUDE",
     .checkedImageKey = "EXCLUDE",
     .key = "FILTERTYPE"},
});

constexpr auto kAddressToolbar = std::to_array<CommandRow>({
    {.place = Place::AddressToolbar, .index = 1, .style = RowStyle::Placeholder, .key = "ADDRESSCMB"},
    {.place = Place::AddressToolbar,
     .index = 2,
     .style = RowStyle::Command,
     .command = Command::GoToAddress,
     .caption = "&Go",
     .toolTip = "Go To Address",
     .imageKey = "GO",
     .key = "GO"},
});

constexpr auto kFile = std::to_array<CommandRow>({
    {.place = Place::File,
     .index = 0,
     .style = RowStyle::Command,
     .command = Command::OpenWorkspace,
     .caption = "&Open..."},
    {.place = Place::File,
     .index = 1,
     .style = RowStyle::Command,
     .command = Command::SaveWorkspace,
     .caption = "&Save"},
    {.place = Place::File,
     .index = 2,
     .style = RowStyle::Command,
     .command = Command::SaveWorkspaceAs,
     .caption = "Save &As..."},
    Separator(Place::File, 3),
    {.place = Place::File,
     .index = 4,
     .style = RowStyle::Command,
     .command = Command::Connect,
     .caption = "&Connect...."},
    {.place = Place::File,
     .index = 5,
     .style = RowStyle::Command,
     .command = Command::Disconnect,
     .caption = "&Disconnect"},
    {.place = Place::File,
     .index = 6,
     .style = RowStyle::Command,
     .command = Command::DisconnectAll,
     .caption = "D&isconnect All"},
    Separator(Place::File, 7),
    {.place = Place::File,
     .index = 8,
     .style = RowStyle::Command,
     .command = Command::Close,
     .caption = "C&lose"},
});

constexpr auto kEdit = std::to_array<CommandRow>({
    {.place = Place::Edit,
     .index = 0,
     .style = RowStyle::Command,
     .command = Command::Cut,
     .caption = "Cu&t",
     .keys = "Ctrl+X"},
    {.place = Place::Edit,
     .index = 1,
     .style = RowStyle::Command,
     .command = Command::Copy,
     .caption = "&Copy",
     .keys = "Ctrl+C"},
    {.place = Place::Edit,
     .index = 2,
     .style = RowStyle::Command,
     .command = Command::Paste,
     .caption = "&Paste",
     .keys = "Ctrl+V"},
    Separator(Place::Edit, 3),
    {.place = Place::Edit,
     .index = 4,
     .style = RowStyle::Command,
     .command = Command::Delete,
     .caption = "&Delete",
     .keys = "Del"},
    Separator(Place::Edit, 5),
    {.place = Place::Edit,
     .index = 6,
     .style = RowStyle::Command,
     .command = Command::SelectAll,
     .caption = "Select &All",
     .keys = "Ctrl+A"},
});

constexpr auto kView = std::to_array<CommandRow>({
    {.place = Place::View,
     .index = 0,
     .style = RowStyle::Submenu,
     .caption = "&Columns",
     .submenu = Place::ViewColumn},
    Separator(Place::View, 1),
    {.place = Place::View,
     .index = 2,
     .style = RowStyle::Command,
     .command = Command::Parent,
     .caption = "&Parent"},
    {.place = Place::View,
     .index = 3,
     .style = RowStyle::Command,
     .command = Command::Refresh,
     .caption = "&Refresh",
     .keys = "F5"},
});

constexpr CommandRow Column(int index, const char* caption) {
  return {.place = Place::ViewColumn,
          .index = index,
          .style = RowStyle::Check,
          .command = Command::ShowColumn,
          .caption = caption,
          .checkedAtStart = true,
          .disabledAtStart = index == 0};
}

constexpr auto kViewColumn = std::to_array<CommandRow>({
    Column(0, "&Name"),
    Column(1, "&Size"),
    Column(2, "&Type"),
    Column(3, "&Modified"),
    Column(4, "&Accessed"),
    Column(5, "&Created"),
    Column(6, "Att&ributes"),
});

constexpr auto kTool = std::to_array<CommandRow>({
    {.place = Place::Tool,
     .index = 0,
     .style = RowStyle::Command,
     .command = Command::Option,
     .caption = "&Option...",
     .disabledAtStart = true},
});

constexpr auto kHelp = std::to_array<CommandRow>({
    {.place = Place::Help,
     .index = 0,
     .style = RowStyle::Command,
     .command = Command::Version,
     .caption = "&Version..."},
});

constexpr auto kWorkspacePopup = std::to_array<CommandRow>({
    {.place = Place::WorkspacePopup,
     .index = 0,
     .style = RowStyle::Command,
     .command = Command::Connect,
     .caption = "&Add Controller..."},
});

constexpr auto kRightPopup = std::to_array<CommandRow>({
    {.place = Place::RightPopup,
     .index = 0,
     .style = RowStyle::Command,
     .command = Command::MoveHere,
     .caption = "&Move Here"},
    {.place = Place::RightPopup,
     .index = 1,
     .style = RowStyle::Command,
     .command = Command::CopyHere,
     .caption = "&Copy Here"},
});

constexpr auto kPopup = std::to_array<CommandRow>({
    {.place = Place::Popup,
     .index = 0,
     .style = RowStyle::Submenu,
     .caption = "&Action",
     .submenu = Place::Action},
    Separator(Place::Popup, 1),
    {.place = Place::Popup,
     .index = 2,
     .style = RowStyle::Command,
     .command = Command::Run,
     .caption = "&Run"},
    Separator(Place::Popup, 3),
    {.place = Place::Popup,
     .index = 4,
     .style = RowStyle::Command,
     .command = Command::Cut,
     .caption = "Cu&t"},
    {.place = Place::Popup,
     .index = 5,
     .style = RowStyle::Command,
     .command = Command::Copy,
     .caption = "&Copy"},
    {.place = Place::Popup,
     .index = 6,
     .style = RowStyle::Command,
     .command = Command::Paste,
     .caption = "&Paste"},
    Separator(Place::Popup, 7),
    {.place = Place::Popup,
     .index = 8,
     .style = RowStyle::Command,
     .command = Command::Delete,
     .caption = "&Delete"},
    Separator(Place::Popup, 9),
    {.place = Place::Popup,
     .index = 10,
     .style = RowStyle::Command,
     .command = Command::Rename,
     .caption = "Rena&me"},
    {.place = Place::Popup,
     .index = 11,
     .style = RowStyle::Submenu,
     .caption = "&New",
     .submenu = Place::New},
    Separator(Place::Popup, 12),
    {.place = Place::Popup,
     .index = 13,
     .style = RowStyle::Command,
     .command = Command::Properties,
     .caption = "P&roperties..."},
});

constexpr auto kAction = std::to_array<CommandRow>({
    {.place = Place::Action,
     .index = 0,
     .style = RowStyle::Command,
     .command = Command::Connect,
     .caption = "&Connect..."},
    {.place = Place::Action,
     .index = 1,
     .style = RowStyle::Command,
     .command = Command::Disconnect,
     .caption = "&Disconnect"},
});

constexpr auto kNew = std::to_array<CommandRow>({
    {.place = Place::New,
     .index = 0,
     .style = RowStyle::Command,
     .command = Command::NewFolder,
     .caption = "&Folder"},
});

}  // namespace

std::span<const CommandRow> RowsOf(Place place) {
  switch (place) {
    case Place::Toolbar:
      return kToolbar;
    case Place::AddressToolbar:
      return kAddressToolbar;
    case Place::File:
      return kFile;
    case Place::Edit:
      return kEdit;
    case Place::View:
      return kView;
    case Place::ViewColumn:
      return kViewColumn;
    case Place::Tool:
      return kTool;
    case Place::Help:
      return kHelp;
    case Place::WorkspacePopup:
      return kWorkspacePopup;
    case Place::RightPopup:
      return kRightPopup;
    case Place::Popup:
      return kPopup;
    case Place::Action:
      return kAction;
    case Place::New:
      return kNew;
  }
  return {};
}

const CommandRow* FindRow(Place place, int index) {
  const auto rows = RowsOf(place);
  const auto row = std::ranges::find(rows, index, &CommandRow::index);
  return row != rows.end() ? &*row : nullptr;
}

}  // namespace trevane

#pragma once

namespace trevane {

/// Everything the program can be told to do. A command may stand in several places (menu, toolbar, pop-up).
enum class Command {
  None,
  OpenWorkspace,
  SaveWorkspace,
  SaveWorkspaceAs,
  Connect,
  Disconnect,
  DisconnectAll,
  Close,
  Cut,
  Copy,
  Paste,
  Delete,
  SelectAll,
  ShowColumn,
  Parent,
  Refresh,
  Option,
  Version,
  MoveHere,
  CopyHere,
  Run,
  Rename,
  NewFolder,
  Properties,
  GoToAddress,
  FilterOnOff,
  FilterType,
};

/// Where a command stands. Toolbar positions count from 1, menu indexes from 0.
enum class Place {
  Toolbar,
  AddressToolbar,
  File,
  Edit,
  View,
  ViewColumn,
  Tool,
  Help,
  WorkspacePopup,
  RightPopup,
  Popup,
  Action,
  New,
};

}  // namespace trevane

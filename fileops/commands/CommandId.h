#pragma once

namespace trevane {

/// The commands of the program. Code names a command by its id, never by a position in a menu or toolbar.
enum class CommandId {
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
  NameColumn,
  SizeColumn,
  TypeColumn,
  ModifiedColumn,
  AccessedColumn,
  CreatedColumn,
  AttributesColumn,
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

}  // namespace trevane

#pragma once

namespace trevane {

/// The menus, toolbars and pop-up menus that commands appear in.
enum class CommandPlace {
  MainToolbar,
  AddressToolbar,
  FileMenu,
  EditMenu,
  ViewMenu,
  ColumnsMenu,
  ToolMenu,
  HelpMenu,
  /// On the workspace node of the tree.
  WorkspacePopup,
  /// After a drag with the right button.
  DragPopup,
  /// On the tree and the list.
  EntryPopup,
  ActionMenu,
  NewMenu,
};

}  // namespace trevane

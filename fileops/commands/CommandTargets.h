#pragma once

namespace trevane {

class CommandMarks;
class ConnectCommands;
class FileCommands;
class ViewCommands;
class WindowCommands;

/// The objects that execute the commands. Each outlives the dispatcher that is given them.
struct CommandTargets {
  FileCommands* files = nullptr;
  ConnectCommands* connections = nullptr;
  ViewCommands* views = nullptr;
  WindowCommands* window = nullptr;
  CommandMarks* marks = nullptr;
};

}  // namespace trevane

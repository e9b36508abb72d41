#pragma once

#include "app/workspace/WorkspaceFile.h"
#include "engine/controllers/frmConnIxoCtrl.h"
#include "fileops/ConnectCommands.h"
#include "fileops/OperationParts.h"
#include "views/navigation/ControllerEntries.h"

#include <memory>

class QWidget;

namespace trevane {

class CommandHost;
class NavigatorListener;
struct AppServices;

/// The parts of the main window for connected controllers: the connect dialog, the commands that connect and
/// disconnect, and the workspace files.
class Connections final {
 public:
  /// All of it outlives this object. `mainWindow` is the parent of the dialog, and its title names the
  /// workspace file.
  Connections(AppServices& services, const OperationParts& parts, NavigatorListener& listener,
              CommandHost& host, QWidget& mainWindow);
  ~Connections();
  Connections(const Connections&) = delete;
  Connections& operator=(const Connections&) = delete;

  /// Loads the connect dialog, hidden.
  void LoadDialog();
  /// Unloads the dialog. A dialog that does not exist is created first.
  void UnloadDialog();

  [[nodiscard]] ConnectCommands& Commands() noexcept { return commands_; }
  [[nodiscard]] WorkspaceFile& Workspace() noexcept { return workspace_; }

 private:
  [[nodiscard]] frmConnIxoCtrl& Dialog();

  UserPrompts& prompts_;
  OperationHost& host_;
  QWidget& mainWindow_;
  ControllerEntries entries_;
  ControllerConnector connector_;
  std::unique_ptr<frmConnIxoCtrl> dialog_;
  ConnectCommands commands_;
  WorkspaceFile workspace_;
};

}  // namespace trevane

#pragma once

#include "app/workspace/WorkspaceFile.h"
#include "engine/controllers/frmConnIxoCtrl.h"
#include "fileops/ActiveSide.h"
#include "fileops/ConnectCommands.h"
#include "fileops/commands/Commands.h"
#include "views/navigation/ControllerNodes.h"

#include <QString>

#include <functional>
#include <memory>

class QWidget;

namespace trevane {

class CommandBars;
class FileListModel;
class FileListView;
class NavigatorListener;
struct AppServices;

/// Everything about connected controllers as the main window offers it: the dialog, the commands that connect
/// and disconnect, and the workspace files.
class Connections final {
 public:
  /// All of it outlives this object.
  struct Parts {
    AppServices& services;
    EngineSession& session;
    DriveTable& drives;
    EventLog& log;
    Navigator& navigator;
    FolderTreeModel& tree;
    FileListModel& list;
    FileListView& listView;
    NavigatorListener& listener;
    OperationHost& host;
    FileCommandsHost& window;
    CommandBars& bars;
    /// The window that the dialog stands above and whose title names the workspace file.
    QWidget& mainWindow;
  };

  explicit Connections(const Parts& parts);
  ~Connections();
  Connections(const Connections&) = delete;
  Connections& operator=(const Connections&) = delete;

  /// False when the command is none of these.
  bool Carry(Command command);

  /// Loads the connect dialog, hidden.
  void LoadDialog();
  /// Unloads the dialog; it is created first where it does not exist.
  void UnloadDialog();

  [[nodiscard]] WorkspaceFile& Workspace() { return workspace_; }
  /// One of the commands is on the stack: what it works with must stay.
  [[nodiscard]] bool IsRunning() const noexcept { return running_; }

 private:
  [[nodiscard]] frmConnIxoCtrl& Dialog();
  void Disconnect();

  Parts parts_;
  ControllerNodes nodes_;
  ConnectionParts connection_;
  std::unique_ptr<frmConnIxoCtrl> dialog_;
  ConnectCommands commands_;
  WorkspaceFile workspace_;
  bool running_ = false;
};

}  // namespace trevane

#pragma once

#include "engine/controllers/ControllerConnector.h"

#include <QString>

#include <functional>

namespace trevane {

class CommandHost;
class FileListView;
class FolderTreeModel;
class Navigator;
class UserPrompts;

/// The commands that connect and disconnect controllers. Each reads the views once, before its question, and
/// acts on what it read.
class ConnectCommands {
 public:
  struct Parts {
    ControllerConnector& connector;
    UserPrompts& prompts;
    Navigator& navigator;
    FolderTreeModel& tree;
    const FileListView& listView;
    CommandHost& host;
    /// Shows the connect dialog modally and returns its result: -1 cancelled, 0 connected, otherwise an
    /// error's number.
    std::function<qint32()> showConnectDialog;
  };

  explicit ConnectCommands(Parts parts) : parts_(std::move(parts)) {}
  ConnectCommands(const ConnectCommands&) = delete;
  ConnectCommands& operator=(const ConnectCommands&) = delete;

  /// Shows the dialog, and then displays the controller that was connected.
  void Connect();

  /// Asks, and disconnects the selected controllers, in list order and until one fails, while the list shows
  /// the workspace and is the active view; otherwise the controller that is the current folder, if it is one.
  void Disconnect();

  /// Asks, and disconnects every controller except the local one.
  void DisconnectAll();

 private:
  [[nodiscard]] bool Confirm(const QString& question);
  void DisconnectFromTree();
  void DisconnectFromList();
  void ShowWorkspace();

  Parts parts_;
};

/// The question before all controllers are disconnected.
[[nodiscard]] bool ConfirmDisconnectAll(UserPrompts& prompts);

}  // namespace trevane

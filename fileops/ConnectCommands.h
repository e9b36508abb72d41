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

/// The commands that connect and disconnect controllers. What one of them acts on is what is there when it is
/// given: nothing is read from the views again after its question.
class ConnectCommands {
 public:
  struct Parts {
    ControllerConnector& connector;
    UserPrompts& prompts;
    Navigator& navigator;
    FolderTreeModel& tree;
    const FileListView& listView;
    CommandHost& host;
    /// Shows the connect dialog modally and answers its result: -1 cancelled, 0 connected, otherwise an
    /// error's number.
    std::function<qint32()> showConnectDialog;
  };

  explicit ConnectCommands(Parts parts) : parts_(std::move(parts)) {}
  ConnectCommands(const ConnectCommands&) = delete;
  ConnectCommands& operator=(const ConnectCommands&) = delete;

  /// Shows the dialog, and then the controller that it connected.
  void Connect();

  /// Asks, and disconnects. While the list shows the workspace and is the active view, the selected
  /// controllers are meant, in list order and until one fails; otherwise the controller that is the current
  /// place, and nothing where that is none.
  void Disconnect();

  /// Asks, and disconnects every controller but the local one.
  void DisconnectAll();

 private:
  [[nodiscard]] bool Confirm(const QString& question);
  void DisconnectFromTree();
  void DisconnectFromList();
  void ShowWorkspace();

  Parts parts_;
};

/// What is asked before all controllers are disconnected.
[[nodiscard]] bool ConfirmDisconnectAll(UserPrompts& prompts);

}  // namespace trevane

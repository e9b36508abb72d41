#pragma once

#include "engine/controllers/ConnectController.h"

#include <QString>

#include <functional>
#include <vector>

namespace trevane {

class FileListView;
class FolderTreeModel;
class Navigator;
class UserPrompts;

/// What the commands need of an item of the list that is selected.
struct SelectedItem {
  QString text;
  qint32 tag = 0;
};

/// The items that are selected now, in the order of the list.
[[nodiscard]] std::vector<SelectedItem> SelectedItemsOf(const FileListView& list);

/// The commands that connect and disconnect controllers. What one of them acts on is what is there when it is
/// given: nothing is read from the views again after its question.
class ConnectCommands {
 public:
  struct Parts {
    ConnectionParts connection;
    UserPrompts& prompts;
    Navigator& navigator;
    FolderTreeModel& tree;
    /// Shows the connect dialog modally and answers its result: -1 cancelled, 0 connected, otherwise an
    /// error's number.
    std::function<qint32()> showConnectDialog;
    /// The toolbar's disconnect button.
    std::function<void(bool)> enableDisconnectButton;
    /// The File menu's disconnect item.
    std::function<void(bool)> enableDisconnectItem;
  };

  explicit ConnectCommands(Parts parts) : parts_(std::move(parts)) {}
  ConnectCommands(const ConnectCommands&) = delete;
  ConnectCommands& operator=(const ConnectCommands&) = delete;

  /// Shows the dialog, and then the controller that it connected.
  void Connect();

  /// Asks, and disconnects the controller whose node is the current place. Anything else is left alone.
  void DisconnectFromTree();

  /// Asks, and disconnects those of the items that are controllers, in their order, until one fails.
  void DisconnectFromList(const std::vector<SelectedItem>& items);

  /// Asks, and disconnects every controller but the local one.
  void DisconnectAll();

 private:
  [[nodiscard]] bool Confirm(const QString& question);
  void ShowWorkspace();

  Parts parts_;
};

/// What is asked before all controllers are disconnected.
[[nodiscard]] bool ConfirmDisconnectAll(UserPrompts& prompts);

}  // namespace trevane

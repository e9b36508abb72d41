#pragma once

#include "app/workspace/WorkspaceFormat.h"
#include "engine/controllers/ControllerConnector.h"

#include <cstddef>
#include <vector>

namespace trevane {

class Navigator;
class OperationHost;
class UserPrompts;

/// Connects the controllers of a workspace file, with the gauge. Slow ones are opened side by side; they are
/// registered, shown and logged in the order of the file. One that fails is reported and shown as failed, and
/// the next follows.
class WorkspaceConnector {
 public:
  struct Parts {
    ControllerConnector& connector;
    UserPrompts& prompts;
    Navigator& navigator;
    OperationHost& host;
  };

  explicit WorkspaceConnector(const Parts& parts) : parts_(parts) {}
  WorkspaceConnector(const WorkspaceConnector&) = delete;
  WorkspaceConnector& operator=(const WorkspaceConnector&) = delete;

  /// Ends early when the program ends, or the user cancels: then the controllers that are open already are
  /// connected still, and all others are ended without a word. The gauge stays until the caller unloads it.
  void Connect(const WorkspaceContent& content);

 private:
  struct Item;
  void ConnectItem(const Item& item, ControllerOpening* opening, size_t position);
  /// False when it was not connected.
  [[nodiscard]] ConnectOutcome TakeController(const Item& item, ControllerOpening* opening, size_t position);
  void TakeOpened(const std::vector<Item>& items, ControllerOpening& opening, size_t first);
  void ShowFailed(const clsIxoCtrl& controller, const QString& section);
  /// The list shows the workspace, and with it the controllers.
  [[nodiscard]] bool IsWorkspaceShown() const;

  Parts parts_;
};

}  // namespace trevane

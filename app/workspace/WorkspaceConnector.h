#pragma once

#include "app/workspace/WorkspaceFormat.h"
#include "engine/controllers/ControllerConnector.h"

namespace trevane {

class Navigator;
class OperationHost;
class UserPrompts;

/// Connects the controllers of a workspace file one after the other, with the gauge. One that fails is
/// reported and shown as failed, and the next is tried.
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

  /// Ends early when the user cancels or the program ends. The gauge stays until the caller unloads it.
  void Connect(const WorkspaceContent& content);

 private:
  void ConnectSection(const WorkspaceSection& section);
  void ShowFailed(const clsIxoCtrl& controller, const QString& section);
  /// The list shows the workspace, and with it the controllers.
  [[nodiscard]] bool IsWorkspaceShown() const;

  Parts parts_;
};

}  // namespace trevane

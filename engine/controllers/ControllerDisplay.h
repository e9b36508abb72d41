#pragma once

#include <QString>

namespace trevane {

class clsIxoCtrl;

/// How controllers are shown, as connection management needs it. The views implement it.
class ControllerDisplay {
 public:
  virtual ~ControllerDisplay() = default;

  /// Adds the controller's node below "Workspace", with the image of an error when it `failed` to connect. An
  /// error node of that name is replaced. False when the node could not be added.
  [[nodiscard]] virtual bool AddControllerNode(const clsIxoCtrl& ctrl, bool failed) = 0;
  /// Likewise its item in the list, which shows the workspace.
  [[nodiscard]] virtual bool AddControllerItem(const clsIxoCtrl& ctrl, bool failed) = 0;

  /// Removes the tree node of an address with all below it. A node that is not there fails with
  /// error::kNoSuchKey.
  virtual void RemoveControllerNode(const QString& nodePath) = 0;
  /// Removes the list item of a name. An item that is not there fails with error::kNoSuchKey.
  virtual void RemoveControllerItem(const QString& ctrlName) = 0;

  /// The node at an address is that of a controller that failed to connect.
  [[nodiscard]] virtual bool IsErrorNode(const QString& nodePath) const = 0;
  /// Removes all nodes of controllers that failed to connect.
  virtual void RemoveErrorNodes() = 0;

  /// Empties the part of the status bar that shows progress.
  virtual void ClearProgressText() = 0;
};

}  // namespace trevane

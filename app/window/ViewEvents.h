#pragma once

#include "fileops/ActiveSide.h"
#include "fileops/OperationHost.h"
#include "fileops/OperationParts.h"
#include "fileops/commands/CommandId.h"
#include "fileops/commands/CommandPlace.h"
#include "views/drag/RightDrag.h"
#include "views/list/FileListModel.h"

#include <QObject>

#include <functional>
#include <memory>

namespace trevane {

class ActiveView;
class CommandBars;
class CommandHost;
class CommandStates;
class FileCommands;
class FolderNode;

/// Reacts to clicks, keys and selections in tree and list: displays what was clicked, opens the pop-up menus,
/// executes the commands of the keys, and lets status bar and enabled states follow the selection.
class ViewEvents final : public QObject {
  Q_OBJECT

 public:
  /// All of it outlives this object.
  struct Parts {
    OperationParts views;
    FileCommands& files;
    CommandHost& host;
    CommandBars& bars;
    CommandStates& states;
    ActiveView& activeView;
    /// Executes a command as a toolbar's button does.
    std::function<void(CommandId)> execute;
    /// The command ends with the returned object.
    std::function<std::shared_ptr<void>()> beginCommand;
  };

  explicit ViewEvents(Parts parts);

  /// Drags end without a drop.
  void EndGestures() { rightDrag_.Cancel(); }

 private:
  /// A controller is waited for: no command may begin.
  [[nodiscard]] bool IsWaiting() const { return parts_.views.host.IsWaiting(); }
  void ConnectTree();
  void ConnectList();
  void DisplayNode(FolderNode& node);
  void OpenItem(FileListModel::Handle item);
  void PopUp(CommandPlace menu, const QPoint& position);
  void PopUpTreeMenu(const QPoint& position);
  void PopUpListMenu(FileListModel::Handle item, const QPoint& position);
  void ListSpaceReleased(Qt::MouseButton button, const QPoint& position);
  void ListSelectionChanged();
  /// Shows in the status bar what is selected in the list.
  void ShowListSelection();
  void PasteByKey();
  void ViewGotFocus(ActiveSide side);

  Parts parts_;
  RightDrag rightDrag_;
};

}  // namespace trevane

#pragma once

#include "fileops/OperationParts.h"
#include "fileops/commands/WindowCommands.h"

class QWidget;

namespace trevane {

class CommandHost;
class DateFormatter;
class WorkspaceFile;
struct AppServices;

/// The commands that need more than the views: the workspace files, the secondary windows and the program's
/// end.
class MainWindowCommands final : public WindowCommands {
 public:
  /// All of it outlives this object.
  struct Parts {
    AppServices& services;
    OperationParts operations;
    const DateFormatter& dates;
    CommandHost& host;
    WorkspaceFile& workspace;
    QWidget& window;
  };

  explicit MainWindowCommands(const Parts& parts) : parts_(parts) {}

  void OpenWorkspace() override;
  void SaveWorkspace() override;
  void SaveWorkspaceAs() override;
  /// Of the selected item while the list is the active view, otherwise of the current folder.
  void ShowProperties() override;
  void ShowSettings() override;
  void ShowVersion() override;
  void Close() override;

 private:
  Parts parts_;
};

}  // namespace trevane
